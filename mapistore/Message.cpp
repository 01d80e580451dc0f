#include "Message.h"

#include <algorithm>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "Table.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMessage", method);
}

} // namespace

void MessageState::Change(const PropertyChange& change)
{
    for (const ULONG gone : change.removed)
    {
        body.props.Remove(gone);
        set.erase(gone);
        removed.insert(gone);
    }
    for (const CValue& value : change.set)
    {
        body.props.Set(value);
        set[value.Id()] = value;
        removed.erase(value.Id());
    }
}

void MessageState::Forget()
{
    set.clear();
    removed.clear();
    recipientsChanged = false;
    attachmentsChanged = false;
}

CMessageObject::CMessageObject(MessagePtr state, Operation madeBy)
    : CPropObject("IMessage", Op("GetLastError"), madeBy, state->store->folder, state->store->life),
      m_state(std::move(state))
{
}

bool CMessageObject::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMessage || iid == kOwnMessage;
}

void CMessageObject::Dispose() noexcept
{
    m_state.reset();
    DropFolder();
}

void CMessageObject::RequireWrite() const
{
    if (!m_state->writable)
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the message is open for reading only");
    }
}

const CValue* CMessageObject::FindValue(ULONG id, CValue& scratch)
{
    const StoreContext& store = *m_state->store;
    const bool saved = m_state->id != 0;
    switch (id)
    {
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
        if (!saved)
        {
            return nullptr;
        }
        scratch = CValue::Binary(id == PROP_ID(PR_ENTRYID) ? PR_ENTRYID : PR_RECORD_KEY,
                                 MakeEntryId({store.uid, MAPI_MESSAGE, m_state->id, false}));
        return &scratch;
    case PROP_ID(PR_INSTANCE_KEY):
        if (!saved)
        {
            return nullptr;
        }
        scratch = MakeInstanceKey(m_state->id);
        return &scratch;
    case PROP_ID(PR_PARENT_ENTRYID):
        if (m_state->embedded)
        {
            return nullptr;
        }
        scratch = CValue::Binary(PR_PARENT_ENTRYID,
                                 MakeEntryId({store.uid, MAPI_FOLDER, m_state->folder, false}));
        return &scratch;
    case PROP_ID(PR_STORE_ENTRYID):
        scratch = CValue::Binary(PR_STORE_ENTRYID,
                                 MakeEntryId({store.uid, MAPI_STORE, store.store, false}));
        return &scratch;
    case PROP_ID(PR_STORE_RECORD_KEY):
        scratch = MakeStoreRecordKey(store.uid);
        return &scratch;
    case PROP_ID(PR_MAPPING_SIGNATURE):
        scratch = MakeStoreRecordKey(store.uid).WithTag(PR_MAPPING_SIGNATURE);
        return &scratch;
    case PROP_ID(PR_ACCESS_LEVEL):
        scratch = CValue::Long(PR_ACCESS_LEVEL, m_state->writable ? MAPI_MODIFY : 0);
        return &scratch;
    default:
        return FindMessageValue(m_state->body, id, scratch);
    }
}

void CMessageObject::AddTags(std::vector<ULONG>& tags)
{
    for (const CValue& value : m_state->body.props)
    {
        tags.push_back(value.Tag());
    }
    AddComputedMessageTags(m_state->body, tags);
    for (const ULONG tag : {PR_ENTRYID,
                            PR_RECORD_KEY,
                            PR_INSTANCE_KEY,
                            PR_PARENT_ENTRYID,
                            PR_STORE_ENTRYID,
                            PR_STORE_RECORD_KEY,
                            PR_MAPPING_SIGNATURE})
    {
        CValue scratch;
        if (FindValue(PROP_ID(tag), scratch) != nullptr)
        {
            tags.push_back(tag);
        }
    }
}

SCODE CMessageObject::ProblemOf(ULONG id) const
{
    switch (id)
    {
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
    case PROP_ID(PR_PARENT_ENTRYID):
    case PROP_ID(PR_STORE_ENTRYID):
    case PROP_ID(PR_STORE_RECORD_KEY):
    case PROP_ID(PR_MAPPING_SIGNATURE):
    case PROP_ID(PR_OBJECT_TYPE):
    case PROP_ID(PR_HASATTACH):
    case PROP_ID(PR_MESSAGE_SIZE):
    case PROP_ID(PR_ACCESS):
    case PROP_ID(PR_ACCESS_LEVEL):
    case PROP_ID(PR_ATTACH_NUM):
    case PROP_ID(PR_ROWID):
        return MAPI_E_COMPUTED;
    default:
        return S_OK;
    }
}

void CMessageObject::Change(const PropertyChange& change)
{
    m_state->Change(change);
}

std::function<void(CValue)> CMessageObject::StreamTarget()
{
    return [state = m_state](CValue value) {
        const std::scoped_lock hold(state->store->folder->Lock());
        PropertyChange change;
        change.set.push_back(std::move(value));
        state->Change(change);
    };
}

void CMessageObject::Store()
{
    MessageState& state = *m_state;
    if (state.embedded)
    {
        state.attachment->data.message = std::make_shared<const MessageBody>(state.body);
        state.attachment->changed = true;
        state.Forget();
        return;
    }
    CStoreFolder& folder = *state.store->folder;
    if (state.body.props.Find(PROP_ID(PR_MESSAGE_CLASS_W)) == nullptr)
    {
        PropertyChange change;
        change.set.push_back(CValue::Text(PR_MESSAGE_CLASS_W, L"IPM.Note"));
        state.Change(change);
    }
    std::shared_ptr<const CMessageRow> row;
    if (state.id == 0)
    {
        row = folder.CreateMessage(state.store->store, state.folder, state.associated, state.body);
    }
    else
    {
        PropertyChange change;
        for (const auto& [id, value] : state.set)
        {
            change.set.push_back(value);
        }
        change.removed.assign(state.removed.begin(), state.removed.end());
        row = folder.ChangeMessage(
            state.id, state.body, change, state.recipientsChanged, state.attachmentsChanged);
    }
    state.id = row->Id();
    state.folder = row->FolderId();
    state.body = *row->Body();
    state.Forget();
}

HRESULT CMessageObject::Save(ULONG flags)
{
    RequireWrite();
    if (m_state->submitted)
    {
        return MAPI_E_SUBMITTED;
    }
    if (m_state->Changed() || m_state->id == 0)
    {
        Store();
    }
    if ((flags & KEEP_OPEN_READWRITE) == 0)
    {
        // Read-only, or, without either flag, closed for good: what is left is reading and Release.
        m_state->writable = false;
    }
    return S_OK;
}

IUnknown* OpenMessageObject(
    const StorePtr& store, std::uint64_t id, const IID* iid, ULONG flags, Operation madeBy)
{
    const Store* data = store->folder->Data().FindStore(store->store);
    const auto found = data != nullptr ? data->messages.find(id) : decltype(data->messages.end()){};
    if (data == nullptr || found == data->messages.end())
    {
        throw CMapiError(MAPI_E_NOT_FOUND, L"the store has no such message");
    }
    auto state = std::make_shared<MessageState>();
    state->store = store;
    state->id = id;
    state->folder = found->second->FolderId();
    state->associated = found->second->Associated();
    state->writable = (flags & (MAPI_MODIFY | MAPI_BEST_ACCESS)) != 0;
    state->body = *found->second->Body();
    auto* message = new CMessageObject(std::move(state), madeBy);
    CheckInterface(message, iid);
    return message;
}

IMessage* NewMessageObject(
    const StorePtr& store, std::uint64_t folder, bool associated, const IID* iid, Operation madeBy)
{
    auto state = std::make_shared<MessageState>();
    state->store = store;
    state->folder = folder;
    state->associated = associated;
    state->writable = true;
    // What a new message is before anybody says otherwise.
    state->body.props.Set(CValue::Text(PR_MESSAGE_CLASS_W, L"IPM.Note"));
    state->body.props.Set(
        CValue::Long(PR_MESSAGE_FLAGS, static_cast<LONG>(MSGFLAG_READ | MSGFLAG_UNSENT)));
    auto* message = new CMessageObject(std::move(state), madeBy);
    CheckInterface(message, iid);
    return message;
}

} // namespace mapistore
