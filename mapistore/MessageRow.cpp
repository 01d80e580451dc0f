#include "MessageRow.h"

#include <cstring>

#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr ULONG kIdNormalizedSubject = PROP_ID(PR_NORMALIZED_SUBJECT_W);
constexpr ULONG kIdSubjectPrefix = PROP_ID(PR_SUBJECT_PREFIX_W);

/// "RE: " and its kind: up to three letters, a colon and a blank ([MS-OXCMSG] 2.2.1.9).
size_t PrefixLength(std::wstring_view subject)
{
    size_t letters = 0;
    while (letters < subject.size() && letters < 4 && iswalpha(subject[letters]) != 0)
    {
        ++letters;
    }
    const bool isPrefix = letters >= 1 && letters <= 3 && letters + 1 < subject.size() &&
                          subject[letters] == L':' && subject[letters + 1] == L' ';
    return isPrefix ? letters + 2 : 0;
}

std::wstring JoinNames(const MessageBody& body, LONG recipientType)
{
    std::wstring names;
    for (const CPropertyBag& recipient : body.recipients)
    {
        if ((recipient.LongOf(PROP_ID(PR_RECIPIENT_TYPE), 0) & 0xFF) == recipientType)
        {
            names += names.empty() ? L"" : L"; ";
            names += recipient.TextOf(PROP_ID(PR_DISPLAY_NAME_W));
        }
    }
    return names;
}

std::uint64_t BagSize(const CPropertyBag& bag)
{
    std::uint64_t cb = 0;
    for (const CValue& value : bag)
    {
        cb += value.SizeInBytes();
    }
    return cb;
}

LONG BodySize(const MessageBody& body)
{
    std::uint64_t cb = BagSize(body.props);
    for (const CPropertyBag& recipient : body.recipients)
    {
        cb += BagSize(recipient);
    }
    for (const Attachment& attachment : body.attachments)
    {
        cb += BagSize(attachment.props);
        cb += attachment.message ? static_cast<std::uint64_t>(BodySize(*attachment.message)) : 0;
    }
    return static_cast<LONG>(std::min<std::uint64_t>(cb, INT32_MAX));
}

/// 16 bytes that stay the same while the message does, for PR_SEARCH_KEY.
std::string SearchKeyOf(const MessageBody& body)
{
    std::uint64_t halves[2] = {0xCBF29CE484222325ULL, 0x84222325CBF29CE4ULL};
    const std::string text = ToUtf8(body.props.TextOf(PROP_ID(PR_SUBJECT_W)));
    for (const char c : text)
    {
        for (std::uint64_t& half : halves)
        {
            half = (half ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
        }
    }
    return std::string(reinterpret_cast<const char*>(halves), sizeof(halves));
}

LONG FlagsOf(const MessageBody& body)
{
    return static_cast<LONG>(MSGFLAG_READ | (body.attachments.empty() ? 0 : MSGFLAG_HASATTACH));
}

struct ComputedTag
{
    ULONG tag;
    CValue (*make)(const MessageBody& body);
};

constexpr ComputedTag kComputed[] = {
    {PR_HASATTACH,
     [](const MessageBody& body) {
         return CValue::Boolean(PR_HASATTACH, !body.attachments.empty());
     }},
    {PR_MESSAGE_SIZE,
     [](const MessageBody& body) { return CValue::Long(PR_MESSAGE_SIZE, BodySize(body)); }},
    {PR_DISPLAY_TO_W,
     [](const MessageBody& body) {
         return CValue::Text(PR_DISPLAY_TO_W, JoinNames(body, MAPI_TO));
     }},
    {PR_DISPLAY_CC_W,
     [](const MessageBody& body) {
         return CValue::Text(PR_DISPLAY_CC_W, JoinNames(body, MAPI_CC));
     }},
    {PR_DISPLAY_BCC_W,
     [](const MessageBody& body) {
         return CValue::Text(PR_DISPLAY_BCC_W, JoinNames(body, MAPI_BCC));
     }},
    {PR_NORMALIZED_SUBJECT_W,
     [](const MessageBody& body) {
         const std::wstring subject = body.props.TextOf(PROP_ID(PR_SUBJECT_W));
         return CValue::Text(PR_NORMALIZED_SUBJECT_W,
                             std::wstring_view(subject).substr(PrefixLength(subject)));
     }},
    {PR_SUBJECT_PREFIX_W,
     [](const MessageBody& body) {
         const std::wstring subject = body.props.TextOf(PROP_ID(PR_SUBJECT_W));
         return CValue::Text(PR_SUBJECT_PREFIX_W,
                             std::wstring_view(subject).substr(0, PrefixLength(subject)));
     }},
    {PR_SEARCH_KEY,
     [](const MessageBody& body) { return CValue::Binary(PR_SEARCH_KEY, SearchKeyOf(body)); }},
    {PR_ACCESS,
     [](const MessageBody&) {
         return CValue::Long(PR_ACCESS, MAPI_ACCESS_MODIFY | MAPI_ACCESS_READ | MAPI_ACCESS_DELETE);
     }},
    {PR_ACCESS_LEVEL,
     [](const MessageBody&) { return CValue::Long(PR_ACCESS_LEVEL, MAPI_MODIFY); }},
    {PR_MESSAGE_FLAGS,
     [](const MessageBody& body) { return CValue::Long(PR_MESSAGE_FLAGS, FlagsOf(body)); }},
    {PR_CREATION_TIME, [](const MessageBody&) { return CValue::Time(PR_CREATION_TIME, 0); }},
    {PR_LAST_MODIFICATION_TIME,
     [](const MessageBody&) { return CValue::Time(PR_LAST_MODIFICATION_TIME, 0); }},
    {PR_OBJECT_TYPE, [](const MessageBody&) { return CValue::Long(PR_OBJECT_TYPE, MAPI_MESSAGE); }},
};

CValue EntryIdValue(ULONG tag, const Uid& uid, ULONG type, std::uint64_t id, bool tableForm)
{
    return CValue::Binary(tag, MakeEntryId({uid, type, id, tableForm}));
}

} // namespace

CMessageRow::CMessageRow(std::shared_ptr<const StoreIdentity> store,
                         std::uint64_t id,
                         std::uint64_t folder,
                         bool associated,
                         std::uint64_t order,
                         std::shared_ptr<const MessageBody> body)
    : m_store(std::move(store)), m_id(id), m_folder(folder), m_order(order),
      m_associated(associated), m_body(std::move(body))
{
    for (const Attachment& attachment : m_body->attachments)
    {
        m_attachmentRows.push_back(attachment.props);
    }
}

const CValue* CMessageRow::Find(ULONG id, CValue& scratch) const
{
    switch (id)
    {
    case PROP_ID(PR_ENTRYID):
        scratch = EntryIdValue(PR_ENTRYID, m_store->uid, MAPI_MESSAGE, m_id, m_store->tableForm);
        return &scratch;
    case PROP_ID(PR_PARENT_ENTRYID):
        scratch = EntryIdValue(PR_PARENT_ENTRYID, m_store->uid, MAPI_FOLDER, m_folder, false);
        return &scratch;
    case PROP_ID(PR_STORE_ENTRYID):
        scratch = EntryIdValue(PR_STORE_ENTRYID, m_store->uid, MAPI_STORE, m_store->id, false);
        return &scratch;
    case PROP_ID(PR_RECORD_KEY):
        scratch = EntryIdValue(PR_RECORD_KEY, m_store->uid, MAPI_MESSAGE, m_id, false);
        return &scratch;
    case PROP_ID(PR_STORE_RECORD_KEY):
        scratch = MakeStoreRecordKey(m_store->uid);
        return &scratch;
    case PROP_ID(PR_MAPPING_SIGNATURE):
        scratch = MakeStoreRecordKey(m_store->uid).WithTag(PR_MAPPING_SIGNATURE);
        return &scratch;
    case PROP_ID(PR_INSTANCE_KEY):
        scratch = MakeInstanceKey(m_id);
        return &scratch;
    case PROP_ID(PR_ROW_TYPE):
        scratch = CValue::Long(PR_ROW_TYPE, TBL_LEAF_ROW);
        return &scratch;
    default:
        return FindMessageValue(*m_body, id, scratch);
    }
}

const std::vector<CPropertyBag>* CMessageRow::SubRows(ULONG tag) const
{
    if (tag == PR_MESSAGE_RECIPIENTS)
    {
        return &m_body->recipients;
    }
    return tag == PR_MESSAGE_ATTACHMENTS ? &m_attachmentRows : nullptr;
}

void CMessageRow::AddTags(std::vector<ULONG>& tags) const
{
    for (const ULONG tag : {PR_ENTRYID,
                            PR_PARENT_ENTRYID,
                            PR_STORE_ENTRYID,
                            PR_RECORD_KEY,
                            PR_STORE_RECORD_KEY,
                            PR_MAPPING_SIGNATURE,
                            PR_INSTANCE_KEY,
                            PR_ROW_TYPE})
    {
        tags.push_back(tag);
    }
    for (const CValue& value : m_body->props)
    {
        tags.push_back(value.Tag());
    }
    AddComputedMessageTags(*m_body, tags);
}

bool CMessageRow::SameContent(const CMessageRow& other) const
{
    return m_id == other.m_id && m_folder == other.m_folder && m_associated == other.m_associated &&
           SameBody(*m_body, *other.m_body);
}

bool SameBody(const MessageBody& left, const MessageBody& right)
{
    if (!(left.props == right.props) || !(left.recipients == right.recipients) ||
        left.attachments.size() != right.attachments.size())
    {
        return false;
    }
    for (size_t i = 0; i < left.attachments.size(); ++i)
    {
        const Attachment& a = left.attachments[i];
        const Attachment& b = right.attachments[i];
        if (!(a.props == b.props) || (a.message == nullptr) != (b.message == nullptr) ||
            (a.message && !SameBody(*a.message, *b.message)))
        {
            return false;
        }
    }
    return true;
}

const CValue* FindMessageValue(const MessageBody& body, ULONG id, CValue& scratch)
{
    const CValue* stored = body.props.Find(id);
    if (stored != nullptr)
    {
        return stored;
    }
    for (const ComputedTag& computed : kComputed)
    {
        if (PROP_ID(computed.tag) == id)
        {
            const bool ofSubject = id == kIdNormalizedSubject || id == kIdSubjectPrefix;
            if (ofSubject && body.props.Find(PROP_ID(PR_SUBJECT_W)) == nullptr)
            {
                return nullptr;
            }
            scratch = computed.make(body);
            return &scratch;
        }
    }
    return nullptr;
}

void AddComputedMessageTags(const MessageBody& body, std::vector<ULONG>& tags)
{
    for (const ComputedTag& computed : kComputed)
    {
        CValue scratch;
        if (body.props.Find(PROP_ID(computed.tag)) == nullptr &&
            FindMessageValue(body, PROP_ID(computed.tag), scratch) != nullptr)
        {
            tags.push_back(computed.tag);
        }
    }
}

CValue MakeInstanceKey(std::uint64_t id)
{
    char bytes[12] = {'r', 'o', 'w', 0};
    std::memcpy(bytes + 4, &id, sizeof(id));
    return CValue::Binary(PR_INSTANCE_KEY, bytes, sizeof(bytes));
}

CValue MakeStoreRecordKey(const Uid& uid)
{
    return CValue::Binary(PR_STORE_RECORD_KEY, uid.data(), uid.size());
}

} // namespace mapistore
