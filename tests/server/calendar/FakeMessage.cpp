#include <cstring>

#include "FakeCalendar.h"

namespace
{

/// An attachment that holds a message.
class CFakeAttach final : public CFakeObject<IAttachStub>
{
public:
    CFakeAttach(CComRef<CFakeMessage> embedded, std::vector<std::string>& calls)
        : m_embedded(std::move(embedded)), m_calls(calls)
    {
    }

    HRESULT STDMETHODCALLTYPE
    OpenProperty(ULONG tag, const IID* iid, ULONG, ULONG flags, IUnknown** object) override
    {
        m_calls.push_back(
            std::string("OpenProperty ") + (tag == PR_ATTACH_DATA_OBJ ? "data" : "other") +
            (*iid == IID_IMessage ? " IMessage" : " other") + " flags " + std::to_string(flags));
        *object = nullptr;
        if (!m_embedded)
        {
            return MAPI_E_NOT_FOUND;
        }
        m_embedded->AddRef();
        *object = m_embedded.Get();
        return S_OK;
    }

private:
    CComRef<CFakeMessage> m_embedded;
    std::vector<std::string>& m_calls;
};

IMAPITable* TableOf(std::vector<CFakeProps> rows)
{
    CComRef<CFakeTable> table = MakeFake<CFakeTable>();
    table->rows = std::move(rows);
    table->appliesRestrictions = true;
    return table.Detach();
}

} // namespace

HRESULT CFakeMessage::GetLastError(HRESULT, ULONG, MAPIERROR** error)
{
    *error = nullptr;
    return S_OK;
}

HRESULT CFakeMessage::GetProps(SPropTagArray* tags, ULONG, ULONG* count, SPropValue** values)
{
    for (ULONG i = 0; i < tags->cValues; ++i)
    {
        asked.push_back(SpeltTag(tags->aulPropTag[i]));
        if (const auto failure = failures.find(tags->aulPropTag[i]); failure != failures.end())
        {
            *count = 0;
            *values = nullptr;
            return failure->second;
        }
    }
    return props.Answer(tags, count, values);
}

HRESULT CFakeMessage::GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG, SPropTagArray** tags)
{
    calls.emplace_back("GetIDsFromNames");
    return AnswerNames(count, names, tags);
}

HRESULT CFakeMessage::OpenProperty(ULONG tag, const IID* iid, ULONG, ULONG, IUnknown** object)
{
    *object = nullptr;
    const auto found = streams.find(tag);
    if (*iid != IID_IStream || found == streams.end())
    {
        return MAPI_E_NOT_FOUND;
    }
    calls.emplace_back("stream opened");
    *object = new CFakeStream(found->second, streamReads);
    return S_OK;
}

HRESULT CFakeMessage::GetRecipientTable(ULONG flags, IMAPITable** table)
{
    calls.push_back(flags == MAPI_UNICODE ? "recipients" : "recipients without unicode");
    const HRESULT status = script.Next("GetRecipientTable");
    *table = nullptr;
    if (SUCCEEDED(status))
    {
        *table = recipientTable ? CComRef<IMAPITable>::Share(recipientTable.Get()).Detach()
                                : TableOf(recipients);
    }
    return status;
}

HRESULT CFakeMessage::GetAttachmentTable(ULONG flags, IMAPITable** table)
{
    calls.push_back(flags == MAPI_UNICODE ? "attachments" : "attachments without unicode");
    *table = nullptr;
    const HRESULT status = script.Next("GetAttachmentTable");
    if (FAILED(status))
    {
        return status;
    }
    if (attachmentTable)
    {
        *table = CComRef<IMAPITable>::Share(attachmentTable.Get()).Detach();
        return S_OK;
    }
    std::vector<CFakeProps> rows;
    for (const Attachment& attachment : m_attachments)
    {
        CFakeProps row;
        row.SetLong(PR_ATTACH_NUM, static_cast<LONG>(rows.size()));
        row.SetLong(PR_ATTACH_METHOD, attachment.method);
        rows.push_back(row);
    }
    *table = TableOf(std::move(rows));
    return S_OK;
}

HRESULT CFakeMessage::OpenAttach(ULONG number, const IID*, ULONG flags, IAttach** attach)
{
    calls.push_back("OpenAttach " + std::to_string(number) + " flags " + std::to_string(flags));
    *attach = nullptr;
    const HRESULT status = script.Next("OpenAttach");
    if (SUCCEEDED(status))
    {
        *attach = new CFakeAttach(m_attachments.at(number).embedded, calls);
    }
    return status;
}

void CFakeMessage::Attach(const CComRef<CFakeMessage>& embedded, LONG method)
{
    m_attachments.push_back({method, embedded});
}
