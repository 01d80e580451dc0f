#include "AddressBook.h"

#include "FolderRow.h"
#include "MapiTags64.h"
#include "NameResolver.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IAddrBook", method);
}

std::wstring TextOf(LPTSTR text, bool unicode)
{
    if (text == nullptr)
    {
        return {};
    }
    return unicode ? std::wstring(text) : FromAnsi(reinterpret_cast<const char*>(text));
}

} // namespace

CAddressBook::CAddressBook(std::shared_ptr<CStoreFolder> folder, Lifeline life, Operation madeBy)
    : CPropObject("IAddrBook", Op("GetLastError"), madeBy, std::move(folder), std::move(life))
{
}

bool CAddressBook::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IAddrBook;
}

void CAddressBook::Dispose() noexcept
{
    DropFolder();
}

const CValue* CAddressBook::FindValue(ULONG id, CValue& scratch)
{
    if (id != PROP_ID(PR_OBJECT_TYPE))
    {
        return nullptr;
    }
    scratch = CValue::Long(PR_OBJECT_TYPE, MAPI_ADDRBOOK);
    return &scratch;
}

void CAddressBook::AddTags(std::vector<ULONG>& tags)
{
    tags.push_back(PR_OBJECT_TYPE);
}

HRESULT CAddressBook::NoSupport(Operation operation) noexcept
{
    return Run(operation, [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CAddressBook::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* objectType, IUnknown** out)
{
    ClearOut(objectType);
    ClearOut(out);
    constexpr Operation kOp = Op("OpenEntry");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(Files()->Lock());
        CheckFlags(kOp, flags, kOpenFlags);
        RequireOut(objectType);
        RequireOut(out);
        *out = OpenBookEntry(Files(), Life(), cb, entryId, iid, flags, objectType, kOp);
        return S_OK;
    });
}

HRESULT CAddressBook::CompareEntryIDs(
    ULONG cbFirst, ENTRYID* first, ULONG cbSecond, ENTRYID* second, ULONG flags, ULONG* result)
{
    ClearOut(result);
    constexpr Operation kOp = Op("CompareEntryIDs");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, 0);
        RequireOut(result);
        *result = SameEntry(cbFirst, first, cbSecond, second) ? 1 : 0;
        return S_OK;
    });
}

HRESULT CAddressBook::Advise(ULONG, ENTRYID*, ULONG, IMAPIAdviseSink*, mapi64::Connection* out)
{
    if (out != nullptr)
    {
        *out = 0;
    }
    return NoSupport(Op("Advise"));
}

HRESULT CAddressBook::Unadvise(mapi64::Connection)
{
    return NoSupport(Op("Unadvise"));
}

HRESULT CAddressBook::CreateOneOff(
    LPTSTR name, LPTSTR addressType, LPTSTR address, ULONG flags, ULONG* cb, ENTRYID** entryId)
{
    ClearOut(cb);
    ClearOut(entryId);
    constexpr Operation kOp = Op("CreateOneOff");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_UNICODE | MAPI_SEND_NO_RICH_INFO);
        RequireOut(cb);
        RequireOut(entryId);
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        const OneOff oneOff{
            TextOf(name, unicode), TextOf(addressType, unicode), TextOf(address, unicode)};
        if (oneOff.addressType.empty() || oneOff.address.empty())
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a one-off without address type or address");
        }
        *entryId = GiveEntryId(MakeOneOff(oneOff), cb, kOp);
        return S_OK;
    });
}

HRESULT CAddressBook::ResolveName(ULONG_PTR, ULONG flags, LPTSTR, ADRLIST* list)
{
    constexpr Operation kOp = Op("ResolveName");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(Files()->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE | MAPI_DIALOG | kAbUnicodeUi);
        RequireOut(list);
        CNameResolver resolver(*Files(), (flags & MAPI_UNICODE) != 0, kOp);
        // Every name is tried, so that those which are found are filled in; the first that is not
        // decides the status. No dialog ever asks which was meant.
        HRESULT hr = S_OK;
        for (ULONG i = 0; i < list->cEntries; ++i)
        {
            const HRESULT one = resolver.Resolve(*list, list->aEntries[i], nullptr);
            hr = hr == S_OK ? one : hr;
        }
        return hr;
    });
}

HRESULT CAddressBook::PrepareRecips(ULONG flags, SPropTagArray* tags, ADRLIST* list)
{
    constexpr Operation kOp = Op("PrepareRecips");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(Files()->Lock());
        CheckFlags(kOp, flags, 0);
        RequireOut(list);
        CNameResolver resolver(*Files(), true, kOp);
        for (ULONG i = 0; i < list->cEntries; ++i)
        {
            resolver.Complete(*list, list->aEntries[i], tags);
        }
        return S_OK;
    });
}

HRESULT CAddressBook::GiveContainer(Operation operation,
                                    bool global,
                                    ULONG* cb,
                                    ENTRYID** entryId) noexcept
{
    ClearOut(cb);
    ClearOut(entryId);
    return Run(operation, [&]() -> HRESULT {
        const std::scoped_lock hold(Files()->Lock());
        RequireOut(cb);
        RequireOut(entryId);
        const AddressBook& book = Files()->Data().addressBook;
        for (const Container& container : book.containers)
        {
            const CPropertyBag bag = ContainerProperties(book, container);
            const bool isGlobal = bag.LongOf(PROP_ID(PR_DISPLAY_TYPE), 0) == DT_GLOBAL;
            if (isGlobal == global)
            {
                *entryId = GiveEntryId(ContainerEntryId(book, container.id), cb, operation);
                return S_OK;
            }
        }
        return MAPI_E_NOT_FOUND;
    });
}

HRESULT CAddressBook::GetPAB(ULONG* cb, ENTRYID** entryId)
{
    return GiveContainer(Op("GetPAB"), false, cb, entryId);
}

HRESULT CAddressBook::GetDefaultDir(ULONG* cb, ENTRYID** entryId)
{
    return GiveContainer(Op("GetDefaultDir"), true, cb, entryId);
}

HRESULT CAddressBook::GetSearchPath(ULONG flags, SRowSet** path)
{
    ClearOut(path);
    constexpr Operation kOp = Op("GetSearchPath");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(Files()->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE);
        RequireOut(path);
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        const AddressBook& book = Files()->Data().addressBook;
        static constexpr ULONG kColumns[] = {
            PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DISPLAY_TYPE};
        constexpr size_t kCount = sizeof(kColumns) / sizeof(kColumns[0]);
        CBuffer buffer(CbNewSRowSet(book.containers.size()), kOp);
        auto* rows = buffer.As<SRowSet>();
        rows->cRows = 0;
        for (const Container& container : book.containers)
        {
            const CPropertyBag bag = ContainerProperties(book, container);
            CBuffer values(kCount * sizeof(SPropValue), kOp);
            for (size_t i = 0; i < kCount; ++i)
            {
                const ULONG tag = PROP_TYPE(kColumns[i]) == PT_UNICODE
                                      ? ChangeType(kColumns[i], PT_UNSPECIFIED)
                                      : kColumns[i];
                WriteValue(values,
                           values.As<SPropValue>()[i],
                           bag.Find(PROP_ID(tag)),
                           tag,
                           unicode,
                           ~std::uint64_t{0});
            }
            SRow& row = rows->aRow[rows->cRows++];
            row.ulAdrEntryPad = 0;
            row.cValues = kCount;
            row.lpProps = static_cast<SPropValue*>(values.Detach());
        }
        *path = static_cast<SRowSet*>(buffer.Detach());
        return S_OK;
    });
}

HRESULT CAddressBook::NewEntry(
    ULONG_PTR, ULONG, ULONG, ENTRYID*, ULONG, ENTRYID*, ULONG* cbNew, ENTRYID** newEntry)
{
    ClearOut(cbNew);
    ClearOut(newEntry);
    return NoSupport(Op("NewEntry"));
}

HRESULT CAddressBook::Address(ULONG_PTR*, ADRPARM*, ADRLIST**)
{
    return NoSupport(Op("Address"));
}

HRESULT CAddressBook::Details(
    ULONG_PTR*, LPFNDISMISS, void*, ULONG, ENTRYID*, LPFNBUTTON, void*, LPTSTR, ULONG)
{
    return NoSupport(Op("Details"));
}

HRESULT CAddressBook::RecipOptions(ULONG_PTR, ULONG, ADRENTRY*)
{
    return NoSupport(Op("RecipOptions"));
}

HRESULT
CAddressBook::QueryDefaultRecipOpt(LPTSTR, ULONG, ULONG* count, SPropValue** options)
{
    ClearOut(count);
    ClearOut(options);
    return NoSupport(Op("QueryDefaultRecipOpt"));
}

HRESULT CAddressBook::SetPAB(ULONG, ENTRYID*)
{
    return NoSupport(Op("SetPAB"));
}

HRESULT CAddressBook::SetDefaultDir(ULONG, ENTRYID*)
{
    return NoSupport(Op("SetDefaultDir"));
}

HRESULT CAddressBook::SetSearchPath(ULONG, SRowSet*)
{
    return NoSupport(Op("SetSearchPath"));
}

} // namespace mapistore
