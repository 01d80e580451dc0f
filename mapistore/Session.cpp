#include "Session.h"

#include "AddressBook.h"
#include "FolderRow.h"
#include "MapiTags64.h"
#include "StoreObject.h"
#include "Table.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPISession", method);
}

constexpr ULONG kStoreFlags = MDB_NO_DIALOG | MDB_WRITE | MAPI_DEFERRED_ERRORS | MAPI_BEST_ACCESS |
                              MDB_TEMPORARY | MDB_NO_MAIL | kMdbOnline;

} // namespace

CSession::CSession(std::shared_ptr<CStoreFolder> folder, std::wstring profile, Operation madeBy)
    : CSession(std::move(folder), std::move(profile), madeBy, std::make_shared<CLifeline>())
{
}

CSession::CSession(std::shared_ptr<CStoreFolder> folder,
                   std::wstring profile,
                   Operation madeBy,
                   const std::shared_ptr<CLifeline>& life)
    : CObject("IMAPISession", madeBy, life), m_folder(std::move(folder)),
      m_profile(std::move(profile)), m_life(life)
{
}

bool CSession::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPISession;
}

void CSession::Dispose() noexcept
{
    m_life->End();
    m_folder.reset();
}

/// The profile as the document has it now; one that was removed since has no stores.
const Profile& CSession::ProfileOf() const
{
    static const Profile kNone;
    for (const Profile& profile : m_folder->Data().profiles)
    {
        if (EqualText(profile.name, m_profile))
        {
            return profile;
        }
    }
    return kNone;
}

StorePtr CSession::OpenContext(const Uid& uid, ULONG)
{
    const Store* store = m_folder->Data().FindStore(uid);
    if (store == nullptr)
    {
        throw CMapiError(MAPI_E_UNKNOWN_ENTRYID, L"no store has this identifier");
    }
    auto context = std::make_shared<StoreContext>();
    context->folder = m_folder;
    context->store = store->identity->id;
    context->uid = uid;
    context->life = std::make_shared<CLifeline>(m_life);
    return context;
}

HRESULT CSession::NoSupport(Operation operation) noexcept
{
    return Run(operation, [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CSession::GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error)
{
    return LastError(Op("GetLastError"), hr, flags, error);
}

HRESULT CSession::GetMsgStoresTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetMsgStoresTable");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_UNICODE);
        RequireOut(out);
        const std::scoped_lock hold(m_folder->Lock());
        std::vector<RowPtr> rows;
        for (const std::uint64_t id : ProfileOf().stores)
        {
            const Store* store = m_folder->Data().FindStore(id);
            if (store != nullptr)
            {
                CPropertyBag bag = StoreRowProperties(*store);
                bag.Set(CValue::Binary(PR_ENTRYID, StoreEntryId(*store->identity)));
                rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
            }
        }
        CTable* table = MakeStaticTable("stores",
                                        std::move(rows),
                                        {PR_ENTRYID,
                                         PR_DISPLAY_NAME_W,
                                         PR_DEFAULT_STORE,
                                         PR_MDB_PROVIDER,
                                         PR_RECORD_KEY,
                                         PR_INSTANCE_KEY,
                                         PR_OBJECT_TYPE,
                                         PR_RESOURCE_FLAGS,
                                         PR_PROVIDER_DISPLAY_W},
                                        (flags & MAPI_UNICODE) != 0,
                                        kOp,
                                        m_life);
        *out = reinterpret_cast<::IMAPITable*>(table);
        return S_OK;
    });
}

HRESULT CSession::OpenMsgStore(
    ULONG_PTR, ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ::IMsgStore** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("OpenMsgStore");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, kStoreFlags);
        RequireOut(out);
        const std::scoped_lock hold(m_folder->Lock());
        const std::optional<EntryName> name = ReadEntryId(cb, entryId);
        if (!name || name->objectType != MAPI_STORE)
        {
            Refuse(kOp, MAPI_E_INVALID_ENTRYID, "no identifier of a store");
        }
        constexpr ULONG kWrite = MAPI_BEST_ACCESS | MDB_WRITE;
        auto* store =
            new CStoreObject(OpenContext(name->uid, MAPI_STORE), (flags & kWrite) != 0, kOp);
        CheckInterface(store, iid);
        *out = reinterpret_cast<::IMsgStore*>(store);
        return S_OK;
    });
}

HRESULT CSession::OpenAddressBook(ULONG_PTR, const IID* iid, ULONG flags, ::IAddrBook** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("OpenAddressBook");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, AB_NO_DIALOG);
        RequireOut(out);
        auto* book = new CAddressBook(m_folder, m_life, kOp);
        CheckInterface(book, iid);
        *out = reinterpret_cast<::IAddrBook*>(book);
        return S_OK;
    });
}

HRESULT CSession::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* objectType, IUnknown** out)
{
    ClearOut(objectType);
    ClearOut(out);
    constexpr Operation kOp = Op("OpenEntry");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, kOpenFlags);
        RequireOut(out);
        const std::scoped_lock hold(m_folder->Lock());
        if (cb == 0 || IsBookEntry(*m_folder, cb, entryId))
        {
            *out = OpenBookEntry(m_folder, m_life, cb, entryId, iid, flags, objectType, kOp);
            return S_OK;
        }
        const std::optional<EntryName> name = ReadEntryId(cb, entryId);
        if (!name)
        {
            Refuse(kOp, MAPI_E_INVALID_ENTRYID, "no identifier of this library");
        }
        const StorePtr store = OpenContext(name->uid, name->objectType);
        if (name->objectType == MAPI_STORE)
        {
            auto* object = new CStoreObject(store, (flags & MAPI_BEST_ACCESS) != 0, kOp);
            CheckInterface(object, iid);
            if (objectType != nullptr)
            {
                *objectType = MAPI_STORE;
            }
            *out = object;
            return S_OK;
        }
        *out = OpenStoreEntry(store, cb, entryId, iid, flags, objectType, kOp);
        return S_OK;
    });
}

HRESULT CSession::CompareEntryIDs(
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

HRESULT CSession::QueryIdentity(ULONG* cb, ENTRYID** entryId)
{
    ClearOut(cb);
    ClearOut(entryId);
    constexpr Operation kOp = Op("QueryIdentity");
    return Run(kOp, [&]() -> HRESULT {
        RequireOut(cb);
        RequireOut(entryId);
        const std::scoped_lock hold(m_folder->Lock());
        const Entry* entry = m_folder->Data().FindEntry(ProfileOf().identity);
        if (entry == nullptr)
        {
            return MAPI_E_NOT_FOUND;
        }
        *entryId = GiveEntryId(EntryEntryId(m_folder->Data().addressBook, *entry), cb, kOp);
        return S_OK;
    });
}

HRESULT CSession::Logoff(ULONG_PTR, ULONG flags, ULONG reserved)
{
    constexpr Operation kOp = Op("Logoff");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_LOGOFF_SHARED | MAPI_LOGOFF_UI);
        if (reserved != 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a reserved parameter that is not 0");
        }
        m_life->End();
        return S_OK;
    });
}

} // namespace mapistore
