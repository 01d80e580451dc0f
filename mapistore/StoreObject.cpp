#include "StoreObject.h"

#include <algorithm>
#include <cstring>

#include "FolderRow.h"
#include "Table.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMsgStore", method);
}

constexpr ULONG kLogoffFlags = LOGOFF_NO_WAIT | LOGOFF_ORDERLY | LOGOFF_PURGE | LOGOFF_ABORT |
                               LOGOFF_QUIET | LOGOFF_COMPLETE | LOGOFF_INBOUND | LOGOFF_OUTBOUND |
                               LOGOFF_OUTBOUND_QUEUE;
constexpr ULONG kKnownEvents = fnevCriticalError | fnevNewMail | fnevObjectCreated |
                               fnevObjectDeleted | fnevObjectModified | fnevObjectMoved |
                               fnevObjectCopied | fnevSearchComplete;

std::wstring ClassText(LPTSTR messageClass, bool unicode)
{
    if (messageClass == nullptr)
    {
        return {};
    }
    return unicode ? std::wstring(messageClass)
                   : FromAnsi(reinterpret_cast<const char*>(messageClass));
}

} // namespace

CStoreObject::CStoreObject(StorePtr store, bool bestAccess, Operation madeBy)
    : CPropObject("IMsgStore", Op("GetLastError"), madeBy, store->folder, store->life),
      m_store(std::move(store)), m_bestAccess(bestAccess)
{
}

bool CStoreObject::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMsgStore;
}

void CStoreObject::Dispose() noexcept
{
    for (const auto& [connection, ticket] : m_tickets)
    {
        const std::scoped_lock hold(m_store->folder->Lock());
        m_store->folder->Unadvise(connection);
        Runtime().Notifier().Disconnect(connection);
    }
    m_store.reset();
    DropFolder();
}

const Store& CStoreObject::Data() const
{
    const Store* store = m_store->folder->Data().FindStore(m_store->store);
    if (store == nullptr)
    {
        throw CMapiError(MAPI_E_OBJECT_DELETED, L"the store is gone from the document");
    }
    return *store;
}

const CValue* CStoreObject::FindValue(ULONG id, CValue& scratch)
{
    const CPropertyBag bag = StoreProperties(Data());
    const CValue* value = bag.Find(id);
    if (value == nullptr)
    {
        return nullptr;
    }
    scratch = *value;
    return &scratch;
}

void CStoreObject::AddTags(std::vector<ULONG>& tags)
{
    for (const CValue& value : StoreProperties(Data()))
    {
        tags.push_back(value.Tag());
    }
}

IUnknown* CStoreObject::OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG)
{
    if (tag == PR_RECEIVE_FOLDER_SETTINGS)
    {
        if (iid != IID_IMAPITable)
        {
            throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
        }
        return ReceiveFolders((interfaceFlags & MAPI_UNICODE) != 0,
                              OperationOf("IMsgStore", "OpenProperty"));
    }
    throw CMapiError(MAPI_E_NOT_FOUND);
}

HRESULT CStoreObject::Advise(
    ULONG cb, ENTRYID* entryId, ULONG eventMask, IMAPIAdviseSink* sink, mapi64::Connection* out)
{
    if (out != nullptr)
    {
        *out = 0;
    }
    constexpr Operation kOp = Op("Advise");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        RequireOut(out);
        RequireOut(sink);
        if ((eventMask & ~kKnownEvents) != 0 || eventMask == 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "events that no store has");
        }
        ObjectAdvise advise;
        advise.store = m_store->store;
        advise.mask = eventMask;
        if (cb != 0)
        {
            const std::optional<EntryName> name = ReadEntryId(cb, entryId);
            if (!name || name->uid != m_store->uid)
            {
                Refuse(kOp, MAPI_E_INVALID_ENTRYID, "no identifier of this store");
            }
            advise.object = name->objectType == MAPI_STORE ? 0 : name->id;
        }
        advise.connection = Runtime().Notifier().Connect(sink);
        m_store->folder->Advise(advise);
        m_tickets[advise.connection] =
            Runtime().Ledger().Hand(LedgerKind::Connection, "connection", kOp, 0);
        *out = advise.connection;
        return S_OK;
    });
}

HRESULT CStoreObject::Unadvise(mapi64::Connection connection)
{
    constexpr Operation kOp = Op("Unadvise");
    const HRESULT hr = Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        const auto found = m_tickets.find(connection);
        if (found == m_tickets.end())
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a connection that this store did not give");
        }
        m_store->folder->Unadvise(connection);
        Runtime().Ledger().Return(found->second);
        m_tickets.erase(found);
        return S_OK;
    });
    if (hr == S_OK)
    {
        Runtime().Notifier().Disconnect(connection);
    }
    return hr;
}

HRESULT CStoreObject::CompareEntryIDs(
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

HRESULT CStoreObject::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* objectType, IUnknown** out)
{
    ClearOut(objectType);
    ClearOut(out);
    constexpr Operation kOp = Op("OpenEntry");
    const std::optional<EntryName> name = ReadEntryId(cb, entryId);
    const char* subject = name && name->objectType == MAPI_MESSAGE ? "message" : "folder";
    return Run(kOp,
               [&]() -> HRESULT {
                   const std::scoped_lock hold(m_store->folder->Lock());
                   CheckFlags(kOp, flags, kOpenFlags);
                   RequireOut(out);
                   *out = OpenStoreEntry(m_store, cb, entryId, iid, flags, objectType, kOp);
                   return S_OK;
               },
               {subject});
}

HRESULT CStoreObject::SetReceiveFolder(LPTSTR, ULONG, ULONG, ENTRYID*)
{
    return NoSupport(Op("SetReceiveFolder"));
}

HRESULT CStoreObject::GetReceiveFolder(
    LPTSTR messageClass, ULONG flags, ULONG* cb, ENTRYID** entryId, LPTSTR* explicitClass)
{
    ClearOut(cb);
    ClearOut(entryId);
    ClearOut(explicitClass);
    constexpr Operation kOp = Op("GetReceiveFolder");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE);
        RequireOut(cb);
        RequireOut(entryId);
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        const std::wstring asked = ClassText(messageClass, unicode);
        const Folder* inbox = FindRole(Data(), FolderRole::Inbox);
        if (inbox == nullptr)
        {
            return MAPI_E_NOT_FOUND;
        }
        *entryId = GiveEntryId(FolderEntryId(*Data().identity, inbox->id), cb, kOp);
        if (explicitClass != nullptr)
        {
            const bool isMail =
                EqualText(asked.substr(0, 3), L"IPM") && (asked.size() == 3 || asked[3] == L'.');
            const std::wstring text = isMail ? L"IPM" : L"";
            const std::string narrow = ToAnsi(text);
            const size_t cbText = unicode ? (text.size() + 1) * sizeof(wchar_t) : narrow.size() + 1;
            CBuffer copy(cbText, kOp);
            std::memcpy(copy.Data(),
                        unicode ? static_cast<const void*>(text.c_str()) : narrow.c_str(),
                        cbText);
            *explicitClass = static_cast<LPTSTR>(copy.Detach());
        }
        return S_OK;
    });
}

::IMAPITable* CStoreObject::ReceiveFolders(bool unicode, Operation operation) const
{
    std::vector<RowPtr> rows;
    const Folder* inbox = FindRole(Data(), FolderRole::Inbox);
    for (const wchar_t* messageClass : {L"", L"IPM"})
    {
        if (inbox != nullptr)
        {
            CPropertyBag bag;
            bag.Set(CValue::Text(PR_MESSAGE_CLASS_W, messageClass));
            bag.Set(CValue::Binary(PR_ENTRYID, FolderEntryId(*Data().identity, inbox->id)));
            bag.Set(CValue::Binary(PR_RECORD_KEY, FolderEntryId(*Data().identity, inbox->id)));
            rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
        }
    }
    CTable* table = MakeStaticTable("receiveFolders",
                                    std::move(rows),
                                    {PR_ENTRYID, PR_MESSAGE_CLASS_W, PR_RECORD_KEY},
                                    unicode,
                                    operation,
                                    Life());
    return reinterpret_cast<::IMAPITable*>(table);
}

HRESULT CStoreObject::GetReceiveFolderTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetReceiveFolderTable");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
        RequireOut(out);
        *out = ReceiveFolders((flags & MAPI_UNICODE) != 0, kOp);
        return S_OK;
    });
}

HRESULT CStoreObject::StoreLogoff(ULONG* flags)
{
    constexpr Operation kOp = Op("StoreLogoff");
    return Run(kOp, [&]() -> HRESULT {
        if (flags != nullptr)
        {
            CheckFlags(kOp, *flags, kLogoffFlags);
            *flags = LOGOFF_COMPLETE;
        }
        m_store->life->End();
        return S_OK;
    });
}

HRESULT CStoreObject::NoSupport(Operation operation) noexcept
{
    return Run(operation, [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CStoreObject::AbortSubmit(ULONG cb, ENTRYID* entryId, ULONG flags)
{
    constexpr Operation kOp = Op("AbortSubmit");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, 0);
        const std::optional<EntryName> name = ReadEntryId(cb, entryId);
        if (!name || name->objectType != MAPI_MESSAGE || name->uid != m_store->uid)
        {
            Refuse(kOp, MAPI_E_INVALID_ENTRYID, "no identifier of a message of this store");
        }
        // Once it has gone there is nothing to take back.
        return m_store->folder->Recall(name->id) ? S_OK : MAPI_E_NOT_IN_QUEUE;
    });
}

HRESULT CStoreObject::GetOutgoingQueue(ULONG, ::IMAPITable** out)
{
    ClearOut(out);
    return NoSupport(Op("GetOutgoingQueue"));
}

HRESULT CStoreObject::SetLockState(IMessage*, ULONG)
{
    return NoSupport(Op("SetLockState"));
}

HRESULT CStoreObject::FinishedMsg(ULONG, ULONG, ENTRYID*)
{
    return NoSupport(Op("FinishedMsg"));
}

HRESULT CStoreObject::NotifyNewMail(NOTIFICATION*)
{
    return NoSupport(Op("NotifyNewMail"));
}

} // namespace mapistore
