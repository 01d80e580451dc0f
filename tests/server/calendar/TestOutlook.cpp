#include "TestOutlook.h"

#include <cstring>

#include "AppointmentTags.h"
#include "CalendarTexts.h"
#include "PatternBlob.h"
#include "PlatformDates.h"

namespace
{

std::vector<BYTE> EntryId(BYTE id)
{
    return {0, 0, 0, id};
}

void SetTimes(CFakeMessage& message, const std::string& start, const std::string& end)
{
    message.props.SetTime(NamedTag(PSETID_Appointment, 0x820D, PT_SYSTIME), Moment(start));
    message.props.SetTime(NamedTag(PSETID_Appointment, 0x820E, PT_SYSTIME), Moment(end));
    message.props.SetText(PR_BODY_W, L"body");
    message.props.SetNarrow(PROP_TAG(PT_STRING8, 0x1013), "<p>body</p>");
}

} // namespace

CalendarTest::CalendarTest()
{
    for (ULONG* const tag : {&g_ulStartTagEx,
                             &g_ulEndTagEx,
                             &g_ulRecurringTag,
                             &g_ulAppointmentStartTag,
                             &g_ulAppointmentEndTag})
    {
        *tag = 0;
    }
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);
    m_outlook.m_hrInit = 0;
    m_outlook.m_bNeedRealEntryID = 0;
    m_outlook.m_strProfile = L"profile";
    m_outlook.m_strStoreName = L"store";
    m_outlook.m_StoreEid = {0x5E};
    m_outlook.m_strUserName = L"Own User";
    m_outlook.m_strUserEmail = L"own@example.org";
    m_outlook.lpMsgStore = CComRef<IMsgStore>::Share(m_store.Get());
    MAPI_TBLSinkInfo sink;
    sink.folder = CComRef<IMAPIFolder>::Share(m_folder.Get());
    sink.table = CComRef<IMAPITable>::Share(m_table.Get());
    m_outlook.m_CalendarSinks.push_back(std::move(sink));
}

CalendarTest::~CalendarTest()
{
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);
    m_outlook.m_CalendarSinks.clear();
    m_outlook.lpMsgStore.Reset();
    m_folder.Reset();
    m_table.Reset();
    m_store.Reset();
    EXPECT_EQ(LiveFakes(), 0);
}

CComRef<CFakeMessage> CalendarTest::AddAppointment(BYTE id,
                                                   const std::string& start,
                                                   const std::string& end)
{
    CComRef<CFakeMessage> message = MakeFake<CFakeMessage>();
    SetTimes(*message.Get(), start, end);
    message->props.SetText(PR_SUBJECT_W, L"subject " + std::to_wstring(id));
    message->props.SetBlock(PR_ENTRYID, EntryId(id));
    m_folder->messages[EntryId(id)] = message;
    m_store->messages[EntryId(id)] = message;
    CFakeProps row;
    row.SetBlock(PR_INSTANCE_KEY, {0xAA, id});
    row.SetBlock(PR_ENTRYID, EntryId(id));
    row.SetBlock(PR_PARENT_ENTRYID, {0xBB});
    row.SetLong(PR_OBJECT_TYPE, MAPI_MESSAGE);
    row.SetText(PR_MESSAGE_CLASS_W, L"IPM.Appointment");
    m_table->rows.push_back(row);
    return message;
}

CComRef<CFakeMessage> CalendarTest::AddSeries(BYTE id,
                                              const std::string& start,
                                              const std::string& end,
                                              const std::vector<BYTE>& pattern)
{
    CComRef<CFakeMessage> message = AddAppointment(id, start, end);
    CFakeProps& props = message->props;
    props.SetFlag(NamedTag(PSETID_Appointment, 0x8223, PT_BOOLEAN), true);
    props.SetText(NamedTag(PSETID_Appointment, 0x8232, PT_UNICODE), L"in words");
    props.SetBlock(NamedTag(PSETID_Appointment, 0x8216, PT_BINARY), pattern);
    props.SetLong(NamedTag(PSETID_Appointment, 0x8231, PT_LONG), 1);
    props.SetBlock(NamedTag(PSETID_Appointment, 0x8233, PT_BINARY),
                   pattern::Zone(TIME_ZONE_INFORMATION{}));
    return message;
}

CComRef<CFakeMessage> CalendarTest::MakeException(const std::string& start, const std::string& end)
{
    CComRef<CFakeMessage> message = MakeFake<CFakeMessage>();
    SetTimes(*message.Get(), start, end);
    return message;
}

MAPI_TBLSinkInfo& CalendarTest::AddFolder()
{
    CComRef<CFakeFolder> folder = MakeFake<CFakeFolder>();
    CComRef<CFakeTable> table = MakeFake<CFakeTable>();
    MAPI_TBLSinkInfo sink;
    sink.folder = CComRef<IMAPIFolder>::Adopt(folder.Detach());
    sink.table = CComRef<IMAPITable>::Adopt(table.Detach());
    m_outlook.m_CalendarSinks.push_back(std::move(sink));
    return m_outlook.m_CalendarSinks.back();
}

std::vector<std::wstring> CalendarTest::List(const std::string& start, const std::string& end)
{
    CEventText listing;
    m_listed = m_outlook.ListAppointment(MachineTimeOf(start), MachineTimeOf(end), listing);
    m_xml = listing.View();
    return Values(L"subject");
}

std::vector<std::wstring> CalendarTest::Values(const std::wstring& element) const
{
    return ValuesIn(m_xml, element);
}

std::vector<std::wstring> CalendarTest::ValuesIn(const WString& xml, const std::wstring& element)
{
    return ElementValues(xml, element);
}

std::vector<std::string> LinesWith(const CTraceCapture& trace, const std::string& beginning)
{
    std::vector<std::string> lines;
    for (const TraceLine& line : trace.Lines())
    {
        if (line.message.starts_with(beginning))
        {
            lines.push_back(line.message);
        }
    }
    return lines;
}

CFakeProps Recipient(const std::wstring& name, const std::wstring& email, LONG flags)
{
    CFakeProps row;
    row.SetText(PR_DISPLAY_NAME_W, name);
    row.SetText(PR_SMTP_ADDRESS_W, email);
    row.SetText(PR_EMAIL_ADDRESS_W, email);
    row.SetText(PR_ADDRTYPE_W, L"SMTP");
    row.SetLong(PR_RECIPIENT_TYPE, 1);
    row.SetLong(PR_RECIPIENT_FLAGS, flags);
    return row;
}

std::vector<BYTE> WideBytes(const std::wstring& text)
{
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}
