#include <algorithm>

#include "MapiTags64.h"
#include "Message.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMessage", method);
}

constexpr ULONG kOpenAttachFlags = MAPI_MODIFY | MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS;

} // namespace

HRESULT CMessageObject::OpenAttach(ULONG number, const IID* iid, ULONG flags, IAttach** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("OpenAttach");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, kOpenAttachFlags);
        RequireOut(out);
        if (number >= m_state->body.attachments.size())
        {
            return MAPI_E_NOT_FOUND;
        }
        if ((flags & MAPI_MODIFY) != 0)
        {
            RequireWrite();
        }
        auto state = std::make_shared<AttachState>();
        state->message = m_state;
        state->number = static_cast<LONG>(number);
        state->data = m_state->body.attachments[number];
        state->writable = m_state->writable && (flags & (MAPI_MODIFY | MAPI_BEST_ACCESS)) != 0;
        auto* attach = new CAttachObject(std::move(state), kOp);
        CheckInterface(attach, iid);
        *out = attach;
        return S_OK;
    });
}

HRESULT CMessageObject::CreateAttach(const IID* iid, ULONG flags, ULONG* number, IAttach** out)
{
    ClearOut(number);
    ClearOut(out);
    constexpr Operation kOp = Op("CreateAttach");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_DEFERRED_ERRORS);
        RequireOut(number);
        RequireOut(out);
        RequireWrite();
        auto state = std::make_shared<AttachState>();
        state->message = m_state;
        state->writable = true;
        state->data.props.Set(CValue::Long(PR_ATTACH_METHOD, static_cast<LONG>(NO_ATTACHMENT)));
        state->changed = true;
        *number = static_cast<ULONG>(m_state->body.attachments.size());
        auto* attach = new CAttachObject(std::move(state), kOp);
        CheckInterface(attach, iid);
        *out = attach;
        return S_OK;
    });
}

HRESULT CMessageObject::DeleteAttach(ULONG number, ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("DeleteAttach");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, ATTACH_DIALOG);
        RequireWrite();
        std::vector<Attachment>& list = m_state->body.attachments;
        if (number >= list.size())
        {
            return MAPI_E_NOT_FOUND;
        }
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(number));
        for (size_t i = 0; i < list.size(); ++i)
        {
            list[i].props.Set(CValue::Long(PR_ATTACH_NUM, static_cast<LONG>(i)));
        }
        m_state->attachmentsChanged = true;
        return S_OK;
    });
}

CPropertyBag CMessageObject::RecipientOf(const ADRENTRY& entry) const
{
    CPropertyBag bag;
    if (entry.cValues != 0)
    {
        RequireOut(entry.rgPropVals);
    }
    for (ULONG i = 0; i < entry.cValues; ++i)
    {
        const ULONG type = PROP_TYPE(entry.rgPropVals[i].ulPropTag);
        if (type != PT_ERROR && type != PT_NULL)
        {
            bag.Set(ReadValue(entry.rgPropVals[i]));
        }
    }
    if (bag.Find(PROP_ID(PR_RECIPIENT_TYPE)) == nullptr)
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a recipient without PR_RECIPIENT_TYPE");
    }
    return bag;
}

LONG CMessageObject::RowOf(const CPropertyBag& recipient) const
{
    const LONG row = recipient.LongOf(PROP_ID(PR_ROWID), -1);
    return row >= 0 && static_cast<size_t>(row) < m_state->body.recipients.size() ? row : -1;
}

void CMessageObject::NumberRecipients()
{
    LONG row = 0;
    for (CPropertyBag& recipient : m_state->body.recipients)
    {
        recipient.Set(CValue::Long(PR_ROWID, row++));
        const bool hasEntry = recipient.Find(PROP_ID(PR_ENTRYID)) != nullptr;
        const std::wstring type = recipient.TextOf(PROP_ID(PR_ADDRTYPE_W));
        const std::wstring address = recipient.TextOf(PROP_ID(PR_EMAIL_ADDRESS_W));
        if (!hasEntry && !type.empty() && !address.empty())
        {
            recipient.Set(CValue::Binary(
                PR_ENTRYID,
                MakeOneOff({recipient.TextOf(PROP_ID(PR_DISPLAY_NAME_W)), type, address})));
        }
    }
    m_state->recipientsChanged = true;
}

HRESULT CMessageObject::ModifyRecipients(ULONG flags, ADRLIST* list)
{
    constexpr Operation kOp = Op("ModifyRecipients");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, MODRECIP_ADD | MODRECIP_MODIFY | MODRECIP_REMOVE);
        RequireOut(list);
        RequireWrite();
        if ((flags & (flags - 1)) != 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "more than one way of changing recipients");
        }
        std::vector<CPropertyBag> given;
        for (ULONG i = 0; i < list->cEntries; ++i)
        {
            given.push_back(RecipientOf(list->aEntries[i]));
        }
        std::vector<CPropertyBag>& recipients = m_state->body.recipients;
        if (flags == 0)
        {
            recipients = std::move(given);
        }
        else if (flags == MODRECIP_ADD)
        {
            std::move(given.begin(), given.end(), std::back_inserter(recipients));
        }
        else
        {
            std::vector<LONG> rows;
            for (const CPropertyBag& one : given)
            {
                rows.push_back(RowOf(one));
                if (rows.back() < 0)
                {
                    Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a recipient that is not there");
                }
                if (flags == MODRECIP_MODIFY)
                {
                    recipients[static_cast<size_t>(rows.back())] = one;
                }
            }
            std::sort(rows.begin(), rows.end(), std::greater<>());
            for (const LONG row : rows)
            {
                if (flags == MODRECIP_REMOVE)
                {
                    recipients.erase(recipients.begin() + row);
                }
            }
        }
        NumberRecipients();
        return S_OK;
    });
}

HRESULT CMessageObject::SubmitMessage(ULONG flags)
{
    constexpr Operation kOp = Op("SubmitMessage");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, FORCE_SUBMIT);
        RequireWrite();
        MessageState& state = *m_state;
        if (state.embedded)
        {
            return MAPI_E_NO_SUPPORT;
        }
        if (state.submitted)
        {
            return MAPI_E_SUBMITTED;
        }
        if (state.body.recipients.empty())
        {
            return MAPI_E_NO_RECIPIENTS;
        }
        const auto before =
            static_cast<ULONG>(state.body.props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0));
        PropertyChange change;
        change.set.push_back(CValue::Long(
            PR_MESSAGE_FLAGS, static_cast<LONG>(before | MSGFLAG_SUBMIT | MSGFLAG_UNSENT)));
        change.set.push_back(CValue::Now(PR_CLIENT_SUBMIT_TIME));
        state.Change(change);
        Store();
        state.submitted = true;
        state.writable = false;
        state.store->folder->Send(state.id);
        return S_OK;
    });
}

HRESULT CMessageObject::SetReadFlag(ULONG flags)
{
    constexpr Operation kOp = Op("SetReadFlag");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        constexpr ULONG kKnown = CLEAR_READ_FLAG | SUPPRESS_RECEIPT | GENERATE_RECEIPT_ONLY |
                                 MAPI_DEFERRED_ERRORS | CLEAR_RN_PENDING | CLEAR_NRN_PENDING;
        CheckFlags(kOp, flags, kKnown);
        CValue scratch;
        const CValue* held = FindValue(PROP_ID(PR_MESSAGE_FLAGS), scratch);
        const auto before = static_cast<ULONG>(held != nullptr ? held->AsLong() : 0);
        const ULONG after =
            (flags & CLEAR_READ_FLAG) != 0 ? before & ~MSGFLAG_READ : before | MSGFLAG_READ;
        if (after != before && m_state->id != 0)
        {
            // This one is written at once, without SaveChanges.
            PropertyChange change;
            change.set.push_back(CValue::Long(PR_MESSAGE_FLAGS, static_cast<LONG>(after)));
            m_state->store->folder->ChangeMessage(m_state->id, m_state->body, change, false, false);
            m_state->body.props.Set(change.set.front());
        }
        return S_OK;
    });
}

void CMessageObject::CopyParts(IUnknown* target, const std::vector<ULONG>& excluded)
{
    void* own = nullptr;
    if (target->QueryInterface(kOwnMessage, &own) != S_OK)
    {
        return; // a message of somebody else's gets the properties alone
    }
    auto* message = static_cast<CMessageObject*>(static_cast<IMessage*>(own));
    message->Release(); // the caller's reference stands
    const auto wanted = [&](ULONG tag) {
        return std::find(excluded.begin(), excluded.end(), PROP_ID(tag)) == excluded.end();
    };
    if (wanted(PR_MESSAGE_RECIPIENTS))
    {
        message->m_state->body.recipients = m_state->body.recipients;
        message->NumberRecipients();
    }
    if (wanted(PR_MESSAGE_ATTACHMENTS))
    {
        message->m_state->body.attachments = m_state->body.attachments;
        message->m_state->attachmentsChanged = true;
    }
}

} // namespace mapistore
