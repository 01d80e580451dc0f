#include "MapiTags64.h"
#include "Message.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IAttach", method);
}

} // namespace

CAttachObject::CAttachObject(AttachPtr state, Operation madeBy)
    : CPropObject("IAttach",
                  Op("GetLastError"),
                  madeBy,
                  state->message->store->folder,
                  state->message->store->life),
      m_state(std::move(state))
{
}

bool CAttachObject::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IAttachment;
}

void CAttachObject::Dispose() noexcept
{
    m_state.reset();
    DropFolder();
}

const CValue* CAttachObject::FindValue(ULONG id, CValue& scratch)
{
    switch (id)
    {
    case PROP_ID(PR_ATTACH_NUM):
        scratch = CValue::Long(PR_ATTACH_NUM,
                               m_state->number >= 0
                                   ? m_state->number
                                   : static_cast<LONG>(m_state->message->body.attachments.size()));
        return &scratch;
    case PROP_ID(PR_OBJECT_TYPE):
        scratch = CValue::Long(PR_OBJECT_TYPE, MAPI_ATTACH);
        return &scratch;
    case PROP_ID(PR_ACCESS_LEVEL):
        scratch = CValue::Long(PR_ACCESS_LEVEL, m_state->writable ? MAPI_MODIFY : 0);
        return &scratch;
    default:
        return m_state->data.props.Find(id);
    }
}

void CAttachObject::AddTags(std::vector<ULONG>& tags)
{
    tags.push_back(PR_ATTACH_NUM);
    tags.push_back(PR_OBJECT_TYPE);
    tags.push_back(PR_ACCESS_LEVEL);
    for (const CValue& value : m_state->data.props)
    {
        tags.push_back(value.Tag());
    }
}

SCODE CAttachObject::ProblemOf(ULONG id) const
{
    const bool computed = id == PROP_ID(PR_ATTACH_NUM) || id == PROP_ID(PR_OBJECT_TYPE) ||
                          id == PROP_ID(PR_ACCESS_LEVEL) || id == PROP_ID(PR_RECORD_KEY) ||
                          id == PROP_ID(PR_ENTRYID) || id == PROP_ID(PR_INSTANCE_KEY);
    return computed ? MAPI_E_COMPUTED : S_OK;
}

void CAttachObject::Change(const PropertyChange& change)
{
    for (const ULONG id : change.removed)
    {
        m_state->data.props.Remove(id);
    }
    for (const CValue& value : change.set)
    {
        m_state->data.props.Set(value);
    }
    m_state->changed = true;
}

std::function<void(CValue)> CAttachObject::StreamTarget()
{
    return [state = m_state](CValue value) {
        const std::scoped_lock hold(state->message->store->folder->Lock());
        state->data.props.Set(std::move(value));
        state->changed = true;
    };
}

/// Puts the attachment into its message, which still has to be saved itself.
HRESULT CAttachObject::Save(ULONG flags)
{
    if (!m_state->writable)
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the attachment is open for reading only");
    }
    MessageState& message = *m_state->message;
    if (m_state->changed)
    {
        const LONG method = m_state->data.props.LongOf(PROP_ID(PR_ATTACH_METHOD), 0);
        if (method != ATTACH_EMBEDDED_MSG)
        {
            m_state->data.message.reset();
        }
        else if (!m_state->data.message)
        {
            throw CMapiError(MAPI_E_MISSING_REQUIRED_COLUMN,
                             L"an attachment that should hold a message holds none");
        }
        if (m_state->number < 0)
        {
            m_state->number = static_cast<LONG>(message.body.attachments.size());
            message.body.attachments.emplace_back();
        }
        if (static_cast<size_t>(m_state->number) >= message.body.attachments.size())
        {
            throw CMapiError(MAPI_E_OBJECT_DELETED, L"the attachment was deleted meanwhile");
        }
        m_state->data.props.Set(CValue::Long(PR_ATTACH_NUM, m_state->number));
        message.body.attachments[static_cast<size_t>(m_state->number)] = m_state->data;
        message.attachmentsChanged = true;
        m_state->changed = false;
    }
    if ((flags & KEEP_OPEN_READWRITE) == 0)
    {
        m_state->writable = false;
    }
    return S_OK;
}

IUnknown* CAttachObject::OpenObject(ULONG tag, const IID& iid, ULONG, ULONG flags)
{
    if (PROP_ID(tag) != PROP_ID(PR_ATTACH_DATA_OBJ) || PROP_TYPE(tag) != PT_OBJECT)
    {
        throw CMapiError(MAPI_E_NOT_FOUND);
    }
    if (iid != IID_IMessage && iid != IID_IMAPIProp)
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
    const bool create = (flags & MAPI_CREATE) != 0;
    const bool write = create || (flags & MAPI_MODIFY) != 0;
    if (write && !m_state->writable)
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the attachment is open for reading only");
    }
    if (!m_state->data.message && !create)
    {
        throw CMapiError(MAPI_E_NOT_FOUND);
    }
    auto message = std::make_shared<MessageState>();
    message->store = m_state->message->store;
    message->embedded = true;
    message->writable = write;
    message->attachment = m_state;
    if (create)
    {
        message->body.props.Set(CValue::Text(PR_MESSAGE_CLASS_W, L"IPM.Note"));
        m_state->data.message = std::make_shared<const MessageBody>(message->body);
        m_state->changed = true;
    }
    else
    {
        message->body = *m_state->data.message;
    }
    return new CMessageObject(std::move(message), Op("OpenProperty"));
}

} // namespace mapistore
