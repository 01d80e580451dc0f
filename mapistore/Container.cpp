#include "Container.h"

#include "FolderRow.h"
#include "MapiTags64.h"
#include "NameResolver.h"
#include "Table.h"

namespace mapistore
{
namespace
{

constexpr ULONG kTableFlags = MAPI_UNICODE | MAPI_DEFERRED_ERRORS;

// Places of the operations behind those of IMAPIProp, the same for both interfaces.
constexpr int kGetContentsTable = 11;
constexpr int kGetHierarchyTable = 12;
constexpr int kOpenEntry = 13;
constexpr int kSetSearchCriteria = 14;
constexpr int kGetSearchCriteria = 15;
constexpr int kCreateEntry = 16;
constexpr int kCopyEntries = 17;
constexpr int kDeleteEntries = 18;
constexpr int kResolveNames = 19;

static_assert(OperationOf("IABContainer", "GetLastError") + kResolveNames ==
              OperationOf("IABContainer", "ResolveNames"));
static_assert(OperationOf("IDistList", "GetLastError") + kResolveNames ==
              OperationOf("IDistList", "ResolveNames"));

std::vector<ULONG> EntryColumns()
{
    return {PR_ENTRYID,
            PR_DISPLAY_NAME_W,
            PR_OBJECT_TYPE,
            PR_DISPLAY_TYPE,
            PR_ADDRTYPE_W,
            PR_EMAIL_ADDRESS_W,
            kTagSmtpAddressW,
            PR_INSTANCE_KEY,
            PR_RECORD_KEY};
}

std::vector<ULONG> ContainerColumns()
{
    return {PR_ENTRYID,
            PR_DISPLAY_NAME_W,
            PR_OBJECT_TYPE,
            PR_CONTAINER_FLAGS,
            PR_DISPLAY_TYPE,
            PR_DEPTH,
            PR_INSTANCE_KEY};
}

void AddContainers(
    const AddressBook& book, std::uint64_t parent, LONG depth, bool deep, std::vector<RowPtr>& rows)
{
    for (const Container& container : book.containers)
    {
        if (container.parent == parent)
        {
            CPropertyBag bag = ContainerProperties(book, container);
            bag.Set(CValue::Long(PR_DEPTH, depth));
            rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
            if (deep)
            {
                AddContainers(book, container.id, depth + 1, deep, rows);
            }
        }
    }
}

} // namespace

template <class Interface>
HRESULT CContainerBase<Interface>::NoSupport(int index) noexcept
{
    return this->Run(OpAt(index), [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

template <class Interface>
::IMAPITable* CContainerBase<Interface>::Contents(bool unicode, Operation operation) const
{
    const AddressBook& book = this->Files()->Data().addressBook;
    std::vector<RowPtr> rows;
    for (const Entry* entry : Entries())
    {
        if (entry != nullptr)
        {
            rows.push_back(
                std::make_shared<CBagRow>(rows.size() + 1, EntryProperties(book, *entry)));
        }
    }
    return reinterpret_cast<::IMAPITable*>(MakeStaticTable(
        "abContents", std::move(rows), EntryColumns(), unicode, operation, this->Life()));
}

template <class Interface>
::IMAPITable* CContainerBase<Interface>::Hierarchy(bool deep,
                                                   bool unicode,
                                                   Operation operation) const
{
    std::vector<RowPtr> rows;
    if (HasContainers())
    {
        AddContainers(this->Files()->Data().addressBook, m_id, 0, deep, rows);
    }
    return reinterpret_cast<::IMAPITable*>(MakeStaticTable(
        "abHierarchy", std::move(rows), ContainerColumns(), unicode, operation, this->Life()));
}

template <class Interface>
IUnknown* CContainerBase<Interface>::OpenObject(ULONG tag,
                                                const IID& iid,
                                                ULONG interfaceFlags,
                                                ULONG)
{
    if (iid != IID_IMAPITable)
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
    const bool unicode = (interfaceFlags & MAPI_UNICODE) != 0;
    const Operation operation = OpAt(kOpenProperty);
    if (tag == PR_CONTAINER_HIERARCHY)
    {
        return Hierarchy((interfaceFlags & CONVENIENT_DEPTH) != 0, unicode, operation);
    }
    if (tag == PR_CONTAINER_CONTENTS)
    {
        return Contents(unicode, operation);
    }
    throw CMapiError(MAPI_E_NOT_FOUND);
}

template <class Interface>
HRESULT CContainerBase<Interface>::GetContentsTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    return this->Run(OpAt(kGetContentsTable), [&]() -> HRESULT {
        const std::scoped_lock hold(this->Files()->Lock());
        this->CheckFlags(OpAt(kGetContentsTable), flags, kTableFlags);
        RequireOut(out);
        *out = Contents((flags & MAPI_UNICODE) != 0, OpAt(kGetContentsTable));
        return S_OK;
    });
}

template <class Interface>
HRESULT CContainerBase<Interface>::GetHierarchyTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    return this->Run(OpAt(kGetHierarchyTable), [&]() -> HRESULT {
        const std::scoped_lock hold(this->Files()->Lock());
        this->CheckFlags(OpAt(kGetHierarchyTable), flags, kTableFlags | CONVENIENT_DEPTH);
        RequireOut(out);
        if (!HasContainers())
        {
            return MAPI_E_NO_SUPPORT;
        }
        *out = Hierarchy(
            (flags & CONVENIENT_DEPTH) != 0, (flags & MAPI_UNICODE) != 0, OpAt(kGetHierarchyTable));
        return S_OK;
    });
}

template <class Interface>
HRESULT CContainerBase<Interface>::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* objectType, IUnknown** out)
{
    ClearOut(objectType);
    ClearOut(out);
    return this->Run(OpAt(kOpenEntry), [&]() -> HRESULT {
        const std::scoped_lock hold(this->Files()->Lock());
        this->CheckFlags(OpAt(kOpenEntry), flags, kOpenFlags);
        RequireOut(out);
        *out = OpenBookEntry(
            this->Files(), this->Life(), cb, entryId, iid, flags, objectType, OpAt(kOpenEntry));
        return S_OK;
    });
}

template <class Interface>
HRESULT CContainerBase<Interface>::SetSearchCriteria(SRestriction*, ENTRYLIST*, ULONG)
{
    return NoSupport(kSetSearchCriteria);
}

template <class Interface>
HRESULT CContainerBase<Interface>::GetSearchCriteria(ULONG,
                                                     SRestriction** res,
                                                     ENTRYLIST** containers,
                                                     ULONG* state)
{
    ClearOut(res);
    ClearOut(containers);
    ClearOut(state);
    return NoSupport(kGetSearchCriteria);
}

template <class Interface>
HRESULT CContainerBase<Interface>::CreateEntry(ULONG, ENTRYID*, ULONG, IMAPIProp** out)
{
    ClearOut(out);
    return this->Run(OpAt(kCreateEntry), [&]() -> HRESULT { return MAPI_E_NO_ACCESS; });
}

template <class Interface>
HRESULT CContainerBase<Interface>::CopyEntries(ENTRYLIST*, ULONG, IMAPIProgress*, ULONG)
{
    return this->Run(OpAt(kCopyEntries), [&]() -> HRESULT { return MAPI_E_NO_ACCESS; });
}

template <class Interface>
HRESULT CContainerBase<Interface>::DeleteEntries(ENTRYLIST*, ULONG)
{
    return this->Run(OpAt(kDeleteEntries), [&]() -> HRESULT { return MAPI_E_NO_ACCESS; });
}

template <class Interface>
HRESULT CContainerBase<Interface>::ResolveNames(SPropTagArray* tags,
                                                ULONG flags,
                                                ADRLIST* list,
                                                FlagList* results)
{
    return this->Run(OpAt(kResolveNames), [&]() -> HRESULT {
        const std::scoped_lock hold(this->Files()->Lock());
        this->CheckFlags(OpAt(kResolveNames), flags, MAPI_UNICODE);
        RequireOut(list);
        RequireOut(results);
        if (results->cFlags != list->cEntries)
        {
            this->Refuse(
                OpAt(kResolveNames), MAPI_E_INVALID_PARAMETER, "not as many flags as names");
        }
        CNameResolver resolver(*this->Files(), (flags & MAPI_UNICODE) != 0, OpAt(kResolveNames));
        resolver.Within(m_id);
        for (ULONG i = 0; i < list->cEntries; ++i)
        {
            if (results->ulFlag[i] == MAPI_RESOLVED)
            {
                continue;
            }
            const HRESULT hr = resolver.Resolve(*list, list->aEntries[i], tags);
            results->ulFlag[i] =
                hr == S_OK ? MAPI_RESOLVED
                           : (hr == MAPI_E_AMBIGUOUS_RECIP ? MAPI_AMBIGUOUS : MAPI_UNRESOLVED);
        }
        return S_OK;
    });
}

template class CContainerBase<IABContainer>;
template class CContainerBase<IDistList>;

} // namespace mapistore
