// What clients hear when rows come, change and go, by the library's own notifications.

#include "CalendarStoreTest.h"
#include "MapiDataStore.h"

namespace
{

constexpr const char* kProperty = "PS_PUBLIC_STRINGS:tlvmeetingcalendarproperty:PT_UNICODE";

class ChangeOverStoreTest : public ChangeStoreTest
{
protected:
    StoreItem& AddTea()
    {
        StoreItem& tea = calendar.Add("Tea", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
        m_tea = tea.id;
        return tea;
    }
    StoreItem& AddSeries()
    {
        StoreItem& series = calendar.AddDaily("series", "2026-11-02", "2026-11-06");
        m_series = series.id;
        return series;
    }
    StoreItem& Tea() { return calendar.Item(m_tea); }
    StoreItem& Series() { return calendar.Item(m_series); }
    Texts ListDay() { return List("2026-11-02T00:00:00", "2026-11-03T00:00:00"); }
    static std::string EmbeddedOf(const std::string& body, const std::string& guest)
    {
        StoreItem message;
        message.SetTimes("2026-11-02T09:00:00Z", "2026-11-02T10:00:00Z");
        message.SetText("PR_BODY_W", body);
        message.recipients = {SmtpRecipient("Host", "host@nordlys.example", 3),
                              SmtpRecipient(guest, guest + "@nordlys.example")};
        return EmbeddedMessage(message);
    }

    int m_tea = 0;
    int m_series = 0;
};

TEST_F(ChangeOverStoreTest, AnAddedAppointmentIsToldAsRead)
{
    Start();
    AddTea();

    const std::vector<CalendarEvent> events = PublishAndHear();

    ASSERT_EQ(KindsOf(events), Texts{L"1 Tea"});
    EXPECT_TRUE(events[0].xml.starts_with(L"<appointment><subKey>"));
    EXPECT_EQ(events[0].Value(L"startTime"), L"11/02/2026 10:00:00");
    EXPECT_EQ(events[0].Value(L"hostName"), L"Ada Quist");
    ListDay();
    EXPECT_EQ(xml, L"<appointments>" + events[0].xml + L"</appointments>");
}

TEST_F(ChangeOverStoreTest, ARowOfAnyClassIsToldOnThisRoad)
{
    Start();
    AddTea().messageClass = "IPM.Note";

    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{L"1 Tea"});
}

TEST_F(ChangeOverStoreTest, AChangedAppointmentIsToldAsReadAndADeletedOneAsLastHeld)
{
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    Tea().SetText("PR_SUBJECT_W", "Coffee");

    const std::vector<CalendarEvent> changed = PublishAndHear();
    calendar.Remove(m_tea);
    const std::vector<CalendarEvent> deleted = PublishAndHear();

    ASSERT_EQ(KindsOf(changed), Texts{L"3 Coffee"});
    ASSERT_EQ(KindsOf(deleted), Texts{L"2 Coffee"});
    EXPECT_EQ(deleted[0].xml, changed[0].xml);
    EXPECT_TRUE(ListDay().empty());
}

TEST_F(ChangeOverStoreTest, ARowThatWasNeverListedGoesInSilence)
{
    AddTea();
    Start();
    calendar.Remove(m_tea);

    EXPECT_TRUE(PublishAndHear().empty());
}

TEST_F(ChangeOverStoreTest, InACalendarThatWasNotListedEveryChangedRowCountsAsChanged)
{
    AddTea();
    Start();
    Tea().SetTimes("2026-11-02T10:00:20Z", "2026-11-02T11:00:20Z");

    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{L"3 Tea"});
}

TEST_F(ChangeOverStoreTest, ASeriesIsToldAsItsMaster)
{
    Start();
    AddSeries();

    const std::vector<CalendarEvent> events = PublishAndHear();

    ASSERT_EQ(KindsOf(events), Texts{L"1 series"});
    EXPECT_EQ(events[0].Value(L"isRecurrent"), L"TRUE");
    EXPECT_EQ(events[0].Value(L"subKey"), L"0");
    EXPECT_EQ(events[0].Value(L"startTime"), L"11/02/2026 09:00:00");
}

TEST_F(ChangeOverStoreTest, AChangedInstanceOfASeriesWithThePropertyIsToldAsTheHeldMaster)
{
    AddSeries().SetText(kProperty, "joined").attachments = {EmbeddedOf("one", "guest")};
    Start();
    ASSERT_EQ(ListDay(), Texts{L"series"});
    Series().attachments = {EmbeddedOf("two", "guest")};

    const std::vector<CalendarEvent> events = PublishAndHear();

    ASSERT_EQ(KindsOf(events), Texts{L"3 series"});
    EXPECT_EQ(events[0].Value(L"description"), L"body");
    EXPECT_EQ(events[0].Value(L"subKey"), L"0");
    EXPECT_TRUE(trace.Has(0, "Notify modifications for DT Recurrence meeting."));
}

TEST_F(ChangeOverStoreTest, AChangedInstanceOfAnotherSeriesIsNotToldButReadAfresh)
{
    AddSeries().attachments = {EmbeddedOf("one", "guest")};
    Start();
    ASSERT_EQ(ListDay(), Texts{L"series"});
    Series().attachments = {EmbeddedOf("two", "visitor")};

    EXPECT_TRUE(PublishAndHear().empty());

    ListDay();
    EXPECT_EQ(ElementValues(xml, L"description"), Texts{L"two"});
    EXPECT_EQ(ElementValues(xml, L"name"), (Texts{L"Host", L"visitor"}));
}

TEST_F(ChangeOverStoreTest, ADeletedSeriesForgetsTheAttendeesOfItsInstances)
{
    AddSeries().attachments = {EmbeddedOf("one", "guest")};
    Start();
    ASSERT_EQ(ListDay(), Texts{L"series"});
    const WString key = ElementValues(xml, L"entryID").at(0);
    EXPECT_TRUE(MapiDataStore().HasSeries(key));
    calendar.Remove(m_series);

    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{L"2 series"});

    EXPECT_FALSE(MapiDataStore().HasSeries(key));
}

TEST_F(ChangeOverStoreTest, ARowThatCannotBeReadIsForgottenAndToldWithItsNextChange)
{
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    const WString key = ElementValues(xml, L"entryID").at(0);
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 1 fail MAPI_E_NETWORK_ERROR");
    Tea().SetText("PR_SUBJECT_W", "Coffee");

    EXPECT_TRUE(PublishAndHear().empty());

    MeetingInfo stored;
    EXPECT_FALSE(MapiDataStore().GetAppointment(key, stored));
    Tea().SetTimes("2026-11-02T10:00:20Z", "2026-11-02T11:00:20Z");
    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{L"3 Coffee"});
}

TEST_F(ChangeOverStoreTest, ASeriesWithThePropertyThatCannotBeReadIsToldAsHeld)
{
    AddSeries().SetText(kProperty, "joined");
    Start();
    ASSERT_EQ(ListDay(), Texts{L"series"});
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 1 fail MAPI_E_NETWORK_ERROR");
    Series().SetText("PR_SUBJECT_W", "renamed");

    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{L"3 series"});
}

TEST_F(ChangeOverStoreTest, AChangeBehindAFailedListingIsTold)
{
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    for (const char* const plan : {"IMAPITable::SeekRow(contents) call 1 fail E_FAIL",
                                   "IMAPITable::GetRowCount(contents) call 1 fail E_FAIL",
                                   "IMAPITable::QueryRows(contents) call 1 fail E_FAIL"})
    {
        SCOPED_TRACE(plan);
        SetFaultsAtOnce(plan);
        List("2001-01-01T00:00:00", "2001-01-02T00:00:00");
        Tea().SetText("PR_SUBJECT_W", plan);

        EXPECT_EQ(PublishAndHear().size(), 1U);
    }
}

TEST_F(ChangeOverStoreTest, ARowWithAnotherIdentifierIsToldAsChangedAndThenItsOldRecordAsDeleted)
{
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    calendar.tableIdentifiers = "table";

    Publish();
    std::vector<CalendarEvent> events = Events();
    const std::vector<CalendarEvent> later =
        Events(); // the deletion may have been queued behind the first fence
    events.insert(events.end(), later.begin(), later.end());

    // Both records have the row's key; the long-term identifier, 00..., comes before the table's, 80....
    ASSERT_EQ(KindsOf(events), (Texts{L"3 Tea", L"2 Tea"}));
    EXPECT_EQ(events[0].Value(L"entryID").substr(0, 2), L"80");
    EXPECT_EQ(events[1].Value(L"entryID").substr(0, 2), L"00");
    EXPECT_EQ(events[0].Value(L"instanceEntryID"), events[1].Value(L"instanceEntryID"));
    EXPECT_TRUE(trace.Has(3, "PushPendingWork tasktype[10]"));
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(events[0].Value(L"entryID"), stored));
}

TEST_F(ChangeOverStoreTest, TheDeletionTakesTheNewRecordWhenItsKeyComesFirst)
{
    calendar.tableIdentifiers = "table";
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    const WString oldKey = ElementValues(xml, L"entryID").at(0);
    calendar.tableIdentifiers = "longTerm";

    Publish();
    std::vector<CalendarEvent> events = Events();
    const std::vector<CalendarEvent> later = Events();
    events.insert(events.end(), later.begin(), later.end());

    ASSERT_EQ(KindsOf(events), (Texts{L"3 Tea", L"2 Tea"}));
    EXPECT_EQ(events[1].xml, events[0].xml);
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(oldKey, stored));
}

TEST_F(ChangeOverStoreTest, OutsideAPersonalStoreTheLongTermIdentifierIsTheKeyOfAChange)
{
    calendar.isPersonal = false;
    calendar.tableIdentifiers = "table";
    AddTea();
    Start();
    ASSERT_EQ(ListDay(), Texts{L"Tea"});
    Tea().SetTimes("2026-11-02T10:00:20Z", "2026-11-02T11:00:20Z");
    EXPECT_TRUE(PublishAndHear().empty()); // the key of the listing was found again
    Tea().SetText("PR_SUBJECT_W", "Coffee");

    const std::vector<CalendarEvent> events = PublishAndHear();

    ASSERT_EQ(KindsOf(events), Texts{L"3 Coffee"});
    EXPECT_EQ(events[0].Value(L"entryID"), ElementValues(xml, L"entryID").at(0));
    EXPECT_EQ(events[0].Value(L"entryID").substr(0, 2), L"00");
}

} // namespace
