// Changed instances, bodies and hosts over the real library.

#include "CalendarStoreTest.h"
#include "MapiDataStore.h"

namespace
{

constexpr const char* kBerlin = R"({ "timeZone": { "bias": -60, "daylightBias": -60,
  "standardDate": { "month": 10, "week": 5, "day": "SU", "time": "03:00" },
  "daylightDate": { "month": 3, "week": 5, "day": "SU", "time": "02:00" } } })";

constexpr const wchar_t* kNotRead = L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI";

class ExceptionsOverStoreTest : public ListingStoreTest
{
protected:
    /// Each day at 9:00 in Berlin, which is 8:00 in UTC; on 3 November at 13:00 with a message of its own.
    StoreItem& AddSeries()
    {
        StoreItem& series =
            calendar.AddDaily("stand-up",
                              "2026-11-02",
                              "2026-11-06",
                              R"({ "original": "2026-11-03T09:00", "start": "2026-11-03T13:00",
                 "end": "2026-11-03T13:45", "subject": "later", "location": "hall" })");
        series.SetTimes("2026-11-02T08:00:00Z", "2026-11-02T09:00:00Z");
        series.Set("PidLidTimeZoneStruct", kBerlin);
        series.recipients = {SmtpRecipient("Host", "host@nordlys.example", 3)};
        return series;
    }
    static StoreItem ChangedMessage()
    {
        StoreItem message;
        message.SetTimes("2026-11-03T12:00:00Z", "2026-11-03T12:45:00Z");
        message.SetText("PR_BODY_W", "changed").SetText("PR_BODY_HTML_W", "<p>changed</p>");
        message.recipients = {SmtpRecipient("Host", "host@nordlys.example", 3),
                              SmtpRecipient("Guest", "guest@nordlys.example")};
        return message;
    }
    Texts ListThreeDays() { return List("2026-11-02T00:00:00", "2026-11-05T00:00:00"); }
    Texts ListDay() { return List("2026-11-02T00:00:00", "2026-11-03T00:00:00"); }
    StoreItem& AddMeeting(int status)
    {
        StoreItem& meeting =
            calendar.Add("meeting", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
        return meeting.Set("PidLidAppointmentStateFlags", std::to_string(status));
    }
};

TEST_F(ExceptionsOverStoreTest, AChangedInstanceHasItsOwnTimesTextsBodiesAndAttendees)
{
    AddSeries().attachments = {EmbeddedMessage(ChangedMessage())};
    Start();

    EXPECT_EQ(ListThreeDays(), (Texts{L"later", L"stand-up", L"stand-up"}));

    EXPECT_EQ(Values(L"startTime"),
              (Texts{L"11/03/2026 12:00:00", L"11/02/2026 08:00:00", L"11/04/2026 08:00:00"}));
    EXPECT_EQ(Values(L"duration"), (Texts{L"45", L"60", L"60"}));
    EXPECT_EQ(Values(L"location"), (Texts{L"hall", L"", L""}));
    EXPECT_EQ(Values(L"description"), (Texts{L"changed", L"body", L"body"}));
    EXPECT_EQ(Values(L"xaltdescription"),
              (Texts{L"&lt;p&gt;changed&lt;/p&gt;",
                     L"&lt;p&gt;body&lt;/p&gt;",
                     L"&lt;p&gt;body&lt;/p&gt;"}));
    EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Guest", L"Host", L"Host"}));
}

TEST_F(ExceptionsOverStoreTest, BodiesThatCannotBeReadAreThoseOfTheSeries)
{
    StoreItem changed = ChangedMessage();
    changed.Set("PR_BODY_W", R"({ "error": "0x80004005" })");
    changed.properties.erase("PR_BODY_HTML_W");
    AddSeries().attachments = {EmbeddedMessage(changed)};
    Start();

    ListThreeDays();

    EXPECT_EQ(Values(L"description"), (Texts{L"body", L"body", L"body"}));
    EXPECT_EQ(Values(L"xaltdescription").at(0), L"&lt;p&gt;body&lt;/p&gt;");
}

TEST_F(ExceptionsOverStoreTest, AnAppointmentWhoseBodiesCannotBeReadShowsTheMarks)
{
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    Start();
    SetFaultsAtOnce("IMessage::GetProps(0x1000001F) every error 0x1000001F E_FAIL\n"
                    "IMessage::GetProps(0x1013001E) every error 0x1013001E E_FAIL");

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{kNotRead});
    EXPECT_EQ(Values(L"xaltdescription"), Texts{kNotRead});
}

TEST_F(ExceptionsOverStoreTest, ABodyTooLargeForOneAnswerComesWhole)
{
    const std::string body(20000, 'x');
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z")
        .SetText("PR_BODY_W", "  " + body);
    Start();

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{std::wstring(body.begin(), body.end())});
}

TEST_F(ExceptionsOverStoreTest, ASeriesThatCannotBeOpenedAgainIsListedWithoutItsChanges)
{
    AddSeries().attachments = {EmbeddedMessage(ChangedMessage())};
    Start();
    SetFaultsAtOnce("IMsgStore::OpenEntry(message) every fail E_FAIL");

    EXPECT_EQ(ListThreeDays(), (Texts{L"later", L"stand-up", L"stand-up"}));
    EXPECT_EQ(Values(L"description"), (Texts{L"body", L"body", L"body"}));
    EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Host", L"Host"}));

    SetFaultsAtOnce("");
    ListThreeDays();
    EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Guest", L"Host", L"Host"}));
}

TEST_F(ExceptionsOverStoreTest, AttendeesThatCouldNotBeReadForOneInstanceAreReadForTheNext)
{
    const char* const plans[] = {"IMessage::GetAttachmentTable calls 1-2 fail E_FAIL",
                                 "IMAPITable::QueryRows(attachments) calls 1-2 fail E_FAIL",
                                 "IMessage::OpenAttach calls 1-2 fail E_FAIL",
                                 "IAttach::OpenProperty calls 1-2 fail E_FAIL"};
    AddSeries().attachments = {EmbeddedMessage(ChangedMessage())};
    Start();
    for (const char* const plan : plans)
    {
        SCOPED_TRACE(plan);
        MapiDataStore().ClearDataStore();
        SetFaultsAtOnce(plan);

        // The changed instance comes first: its two looks at the attachments fail.
        ListThreeDays();
        EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Host", L"Host"}));
        ListThreeDays();
        EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Guest", L"Host", L"Host"}));
    }
}

TEST_F(ExceptionsOverStoreTest, ASeriesWithoutChangesIsAskedForAttendeesOnce)
{
    AddSeries();
    Start();
    SetFaultsAtOnce("IMessage::GetAttachmentTable call 1000 fail E_FAIL");

    ListThreeDays();

    // Each of the three instances looks for its message, and the first one for all attendees.
    EXPECT_NE(Report().find("fault applied 0 of 4 calls"), std::string::npos) << Report();
}

TEST_F(ExceptionsOverStoreTest, ACancelledInstanceHasItsOwnStatus)
{
    calendar
        .AddDaily("stand-up",
                  "2026-11-02",
                  "2026-11-06",
                  R"({ "original": "2026-11-03T09:00", "start": "2026-11-03T09:00",
                       "end": "2026-11-03T10:00", "meetingType": 7 },
                     { "original": "2026-11-04T09:00", "start": "2026-11-04T09:00",
                       "end": "2026-11-04T10:00", "meetingType": 5 })")
        .Set("PidLidAppointmentStateFlags", "3");
    Start();

    ListThreeDays();

    EXPECT_EQ(Values(L"meetStatus"), (Texts{L"7", L"3", L"3"}));
}

TEST_F(ExceptionsOverStoreTest, APlainAppointmentIsHostedByTheUserAndAMeetingByNobody)
{
    AddMeeting(0);
    AddMeeting(1).recipients = {SmtpRecipient("Guest", "guest@nordlys.example")};
    Start();

    ListDay();

    EXPECT_EQ(Values(L"hostName"), (Texts{L"Ada Quist", L""}));
    EXPECT_EQ(Values(L"hostEmail"), (Texts{L"ada.quist@nordlys.example", L""}));
    EXPECT_EQ(Values(L"name"), (Texts{L"Ada Quist", L"Guest", L""}));
    EXPECT_EQ(Values(L"attendType"), (Texts{L"3", L"1", L"3"}));
    EXPECT_EQ(Values(L"recipType"), (Texts{L"1", L"1", L"1"}));
    EXPECT_EQ(Values(L"responseType"), (Texts{L"0", L"0", L"0"}));
    EXPECT_EQ(trace.Count("Find no host in attendee list!!"), 1U);
}

TEST_F(ExceptionsOverStoreTest, AHostOfTheOwnMailboxGetsTheStoresNameAsAddress)
{
    calendar.storeName = "ada@nordlys.example";
    AddMeeting(1).recipients = {DirectoryRecipient("Ada", "/o=Nordlys/cn=ada", 3)};
    AddMeeting(1).recipients = {DirectoryRecipient("Bo", "/o=Nordlys/cn=bo", 3)};
    AddMeeting(1).recipients = {SmtpRecipient("Cid", "not-ada@nordlys.example", 3)};
    Start();

    ListDay();

    EXPECT_EQ(Values(L"hostName"), (Texts{L"Ada", L"Bo", L"Cid"}));
    EXPECT_EQ(Values(L"hostEmail"),
              (Texts{L"ada@nordlys.example", L"", L"not-ada@nordlys.example"}));
    EXPECT_TRUE(trace.Has(0,
                          "Appointment's recipient[Bo] with invalid SmtpAddress[],"
                          "strExAddress[/o=Nordlys/cn=bo], emailType[EX], AttdType[3]"));
}

TEST_F(ExceptionsOverStoreTest, EveryPropertyOfAMessageReachesTheDocument)
{
    StoreItem& item = AddMeeting(1);
    item.SetText("PidLidLocation", "Room 4").Set("PidLidAppointmentDuration", "25");
    item.Set("PidLidAppointmentSubType", "true").Set("PidLidResponseStatus", "3");
    item.Set("PidLidBusyStatus", "2");
    item.Set("PidLidGlobalObjectId", R"({ "globalObjectId": "meeting-1@nordlys.example" })");
    item.SetText("PS_PUBLIC_STRINGS:tlvmeetingcalendarproperty:PT_UNICODE", "joined");
    item.SetText("PS_PUBLIC_STRINGS:UCCapabilities:PT_UNICODE", "video");
    item.SetText("PS_PUBLIC_STRINGS:TalvoOI:PT_UNICODE", "first ");
    item.SetText("PS_PUBLIC_STRINGS:TalvoOI1:PT_UNICODE", "second ");
    item.SetText("PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE", "key");
    item.SetText("PS_PUBLIC_STRINGS:TalvoSpace:PT_UNICODE", "space");
    item.Set("PR_SENT_REPRESENTING_ENTRYID", "\"0A0B\"");
    item.recipients = {SmtpRecipient("Host", "host@nordlys.example", 3, 1)};
    Start();

    ListDay();

    const std::pair<const wchar_t*, const wchar_t*> expected[] = {
        {L"subject", L"meeting"},
        {L"location", L"Room 4"},
        {L"description", L"body"},
        {L"hostName", L"Host"},
        {L"hostEmail", L"host@nordlys.example"},
        {L"duration", L"25"},
        {L"meetStatus", L"1"},
        {L"isRecurrent", L"FALSE"},
        {L"profile", L"Demo"},
        {L"store", L"Mailbox - Ada"},
        {L"isAllDayEvent", L"TRUE"},
        {L"responseStatus", L"3"},
        {L"busyStatus", L"2"},
        {L"tlvcOIEx", L"firstsecond"},
        {L"desktoolsproperty", L"joined"},
        {L"UCCapabilities", L"video"},
        {L"startTime", L"11/02/2026 10:00:00"},
        {L"endTime", L"11/02/2026 11:00:00"},
        {L"UId", L"meeting-1@nordlys.example"},
        {L"xaltdescription", L"&lt;p&gt;body&lt;/p&gt;"},
        {L"responseType", L"1"},
    };
    for (const auto& [element, value] : expected)
    {
        EXPECT_EQ(Values(element), Texts{value}) << std::string(element, element + wcslen(element));
    }
    MeetingInfo stored;
    ASSERT_TRUE(MapiDataStore().GetAppointment(Values(L"entryID").at(0), stored));
    EXPECT_EQ(stored.key, L"key");
    EXPECT_EQ(stored.space, L"space");
    EXPECT_EQ(stored.hostEntryId, (BinaryBlock{0x0A, 0x0B}));
}

} // namespace
