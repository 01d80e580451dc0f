// Which differences of an appointment clients hear of, by the library's own notifications.

#include <functional>

#include "CalendarStoreTest.h"

namespace
{

constexpr const char* kProperty = "PS_PUBLIC_STRINGS:tlvmeetingcalendarproperty:PT_UNICODE";
constexpr const char* kCalendarText = "PS_PUBLIC_STRINGS:TalvoOI:PT_UNICODE";

struct Step
{
    const char* what;
    std::function<void(StoreItem&)> change;
};

/// One listed series with a host and a guest. Being a series it has a pattern to differ in.
class ChangeRulesTest : public ChangeStoreTest
{
protected:
    void SetUp() override
    {
        ChangeStoreTest::SetUp();
        StoreItem& item = calendar.AddDaily("series", "2026-11-02", "2026-11-06");
        m_id = item.id;
        item.SetText("PidLidLocation", "room").SetText(kCalendarText, "text");
        item.recipients = {SmtpRecipient("Host", "host@nordlys.example", 3),
                           SmtpRecipient("Guest", "guest@nordlys.example")};
        Start();
        ASSERT_EQ(List("2026-11-02T00:00:00", "2026-11-03T00:00:00"), Texts{L"series"});
    }
    std::vector<CalendarEvent> After(const Step& step)
    {
        step.change(calendar.Item(m_id));
        return PublishAndHear();
    }

    int m_id = 0;
};

TEST_F(ChangeRulesTest, ADifferenceThatClientsSeeIsOneEventEach)
{
    const Step steps[] = {
        {"minute of the start",
         [](StoreItem& i) { i.SetTimes("2026-11-02T09:01:00Z", "2026-11-02T10:00:00Z"); }},
        {"hour of the end",
         [](StoreItem& i) { i.SetTimes("2026-11-02T09:01:00Z", "2026-11-02T11:00:00Z"); }},
        {"day of the start",
         [](StoreItem& i) { i.SetTimes("2026-11-01T09:01:00Z", "2026-11-02T11:00:00Z"); }},
        {"case of the subject", [](StoreItem& i) { i.SetText("PR_SUBJECT_W", "SERIES"); }},
        {"case of the place", [](StoreItem& i) { i.SetText("PidLidLocation", "Room"); }},
        {"case of the body", [](StoreItem& i) { i.SetText("PR_BODY_W", "Body"); }},
        {"HTML body", [](StoreItem& i) { i.SetText("PR_BODY_HTML_W", "<b>body</b>"); }},
        {"calendar text", [](StoreItem& i) { i.SetText(kCalendarText, "texts"); }},
        {"duration", [](StoreItem& i) { i.Set("PidLidAppointmentDuration", "61"); }},
        {"meeting status", [](StoreItem& i) { i.Set("PidLidAppointmentStateFlags", "1"); }},
        {"all day", [](StoreItem& i) { i.Set("PidLidAppointmentSubType", "true"); }},
        {"response", [](StoreItem& i) { i.Set("PidLidResponseStatus", "3"); }},
        {"busy status", [](StoreItem& i) { i.Set("PidLidBusyStatus", "1"); }},
        {"identifier",
         [](StoreItem& i) {
             i.Set("PidLidGlobalObjectId", R"({ "globalObjectId": "one@nordlys.example" })");
         }},
        {"bytes of the pattern",
         [](StoreItem& i) {
             i.Set("PidLidAppointmentRecur", DailyRecurrence("2026-11-02", "2026-11-05"));
         }},
        {"size of the pattern",
         [](StoreItem& i) {
             i.Set("PidLidAppointmentRecur",
                   DailyRecurrence("2026-11-02",
                                   "2026-11-05",
                                   R"({ "original": "2026-11-03T09:00",
                                        "start": "2026-11-03T11:00",
                                        "end": "2026-11-03T12:00" })"));
         }},
        {"another attendee",
         [](StoreItem& i) {
             i.recipients.push_back(SmtpRecipient("Third", "third@nordlys.example"));
         }},
        {"answer of one attendee",
         [](StoreItem& i) {
             i.recipients[1] = SmtpRecipient("Guest", "guest@nordlys.example", 1, 3);
         }},
        {"address of one attendee",
         [](StoreItem& i) { i.recipients[2] = SmtpRecipient("Third", "other@nordlys.example"); }},
        {"order of the attendees",
         [](StoreItem& i) { std::swap(i.recipients[1], i.recipients[2]); }},
        {"property", [](StoreItem& i) { i.SetText(kProperty, "joined"); }},
        {"single", [](StoreItem& i) { i.Set("PidLidRecurring", "false"); }},
        {"series again", [](StoreItem& i) { i.Set("PidLidRecurring", "true"); }},
    };
    for (const Step& step : steps)
    {
        SCOPED_TRACE(step.what);

        const std::vector<CalendarEvent> events = After(step);

        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].type, 3U);
    }
}

TEST_F(ChangeRulesTest, ADifferenceThatClientsDoNotSeeIsNoEvent)
{
    const Step steps[] = {
        {"seconds of both times",
         [](StoreItem& i) { i.SetTimes("2026-11-02T09:00:59Z", "2026-11-02T10:00:01Z"); }},
        {"case of the calendar text", [](StoreItem& i) { i.SetText(kCalendarText, "TEXT"); }},
        {"case of an address",
         [](StoreItem& i) { i.recipients[1] = SmtpRecipient("Guest", "GUEST@nordlys.example"); }},
        {"name of an attendee",
         [](StoreItem& i) { i.recipients[1] = SmtpRecipient("Other", "guest@nordlys.example"); }},
        {"host",
         [](StoreItem& i) {
             i.recipients = {SmtpRecipient("Host", "host@nordlys.example"),
                             SmtpRecipient("Other", "guest@nordlys.example", 3)};
         }},
        {"host's identifier",
         [](StoreItem& i) { i.Set("PR_SENT_REPRESENTING_ENTRYID", "\"0A0B\""); }},
        {"zone",
         [](StoreItem& i) { i.Set("PidLidTimeZoneStruct", R"({ "timeZone": { "bias": -60 } })"); }},
        {"kind of the series", [](StoreItem& i) { i.Set("PidLidRecurrenceType", "2"); }},
        {"pattern in words", [](StoreItem& i) { i.SetText("PidLidRecurrencePattern", "often"); }},
        {"space", [](StoreItem& i) { i.SetText("PS_PUBLIC_STRINGS:TalvoSpace:PT_UNICODE", "s"); }},
        {"key", [](StoreItem& i) { i.SetText("PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE", "k"); }},
        {"capabilities",
         [](StoreItem& i) { i.SetText("PS_PUBLIC_STRINGS:UCCapabilities:PT_UNICODE", "video"); }},
        {"what is not read at all", [](StoreItem& i) { i.Set("PR_IMPORTANCE", "2"); }},
    };
    for (const Step& step : steps)
    {
        SCOPED_TRACE(step.what);
        trace.Clear();

        EXPECT_EQ(KindsOf(After(step)), Texts{});

        // The row was told, read and compared.
        EXPECT_TRUE(trace.Has(2, "CMAPITableAdviseSink::OnNotify TABLE_ROW_MODIFIED"));
        EXPECT_TRUE(WasRead("series"));
    }
}

TEST_F(ChangeRulesTest, OfASeriesWithThePropertyEveryChangedRowIsToldByWhatWasHeld)
{
    ASSERT_EQ(After({"property", [](StoreItem& i) { i.SetText(kProperty, "joined"); }}).size(), 1U);

    const std::vector<CalendarEvent> events =
        After({"case of the property", [](StoreItem& i) { i.SetText(kProperty, "JOINED"); }});

    ASSERT_EQ(KindsOf(events), Texts{L"3 series"});
    EXPECT_EQ(events[0].Value(L"desktoolsproperty"), L"joined");
}

} // namespace
