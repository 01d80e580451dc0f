#include <algorithm>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "Message.h"
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

constexpr ULONG kTableFlags = MAPI_UNICODE | MAPI_DEFERRED_ERRORS;

/// The columns that every row of a table might have.
std::vector<ULONG> UnionOf(std::vector<ULONG> columns, const std::vector<const CPropertyBag*>& bags)
{
    for (const CPropertyBag* bag : bags)
    {
        for (const CValue& value : *bag)
        {
            const bool known = std::any_of(columns.begin(), columns.end(), [&](ULONG tag) {
                return PROP_ID(tag) == value.Id();
            });
            if (!known && value.Type() != PT_ERROR)
            {
                columns.push_back(value.Tag());
            }
        }
    }
    return columns;
}

} // namespace

::IMAPITable* CMessageObject::AttachmentTable(bool unicode, Operation operation) const
{
    std::vector<RowPtr> rows;
    std::vector<const CPropertyBag*> bags;
    for (const Attachment& attachment : m_state->body.attachments)
    {
        CPropertyBag bag = attachment.props;
        bag.Remove(PROP_ID(PR_ATTACH_DATA_BIN)); // data is no column of the table
        bag.Set(CValue::Long(PR_ATTACH_NUM, static_cast<LONG>(rows.size())));
        bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_ATTACH));
        bag.Set(MakeInstanceKey(rows.size() + 1));
        rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
        bags.push_back(&attachment.props);
    }
    std::vector<ULONG> columns =
        UnionOf({PR_ATTACH_NUM, PR_INSTANCE_KEY, PR_OBJECT_TYPE, PR_ATTACH_METHOD}, bags);
    columns.erase(std::remove(columns.begin(), columns.end(), PR_ATTACH_DATA_BIN), columns.end());
    return reinterpret_cast<::IMAPITable*>(MakeStaticTable(
        "attachments", std::move(rows), std::move(columns), unicode, operation, Life()));
}

::IMAPITable* CMessageObject::RecipientTable(bool unicode, Operation operation) const
{
    std::vector<RowPtr> rows;
    std::vector<const CPropertyBag*> bags;
    for (const CPropertyBag& recipient : m_state->body.recipients)
    {
        CPropertyBag bag = recipient;
        bag.Set(CValue::Long(PR_ROWID, static_cast<LONG>(rows.size())));
        bag.Set(MakeInstanceKey(rows.size() + 1));
        if (bag.Find(PROP_ID(PR_OBJECT_TYPE)) == nullptr)
        {
            bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_MAILUSER));
        }
        rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
        bags.push_back(&recipient);
    }
    std::vector<ULONG> columns = UnionOf({PR_ROWID,
                                          PR_INSTANCE_KEY,
                                          PR_OBJECT_TYPE,
                                          PR_RECIPIENT_TYPE,
                                          PR_DISPLAY_NAME_W,
                                          PR_ADDRTYPE_W,
                                          PR_EMAIL_ADDRESS_W,
                                          kTagSmtpAddressW,
                                          PR_ENTRYID,
                                          kTagRecipientTrackStatus,
                                          kTagRecipientFlags},
                                         bags);
    return reinterpret_cast<::IMAPITable*>(MakeStaticTable(
        "recipients", std::move(rows), std::move(columns), unicode, operation, Life()));
}

IUnknown* CMessageObject::OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG)
{
    const bool unicode = (interfaceFlags & MAPI_UNICODE) != 0;
    if (tag == PR_MESSAGE_ATTACHMENTS && iid == IID_IMAPITable)
    {
        return AttachmentTable(unicode, Op("OpenProperty"));
    }
    if (tag == PR_MESSAGE_RECIPIENTS && iid == IID_IMAPITable)
    {
        return RecipientTable(unicode, Op("OpenProperty"));
    }
    if (PROP_TYPE(tag) != PT_OBJECT)
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
    throw CMapiError(MAPI_E_NOT_FOUND);
}

HRESULT CMessageObject::GetAttachmentTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetAttachmentTable");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, kTableFlags);
        RequireOut(out);
        *out = AttachmentTable((flags & MAPI_UNICODE) != 0, kOp);
        return S_OK;
    });
}

HRESULT CMessageObject::GetRecipientTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetRecipientTable");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_state->store->folder->Lock());
        CheckFlags(kOp, flags, kTableFlags);
        RequireOut(out);
        *out = RecipientTable((flags & MAPI_UNICODE) != 0, kOp);
        return S_OK;
    });
}

} // namespace mapistore
