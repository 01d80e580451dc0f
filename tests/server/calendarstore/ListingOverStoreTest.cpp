// Windows, rows and identifiers of a listing over the real library.

#include <thread>

#include "CalendarStoreTest.h"
#include "HangingCall.h"
#include "MapiDataStore.h"

namespace
{

class ListingOverStoreTest : public ListingStoreTest
{
protected:
    Texts ListDay() { return List("2026-11-02T00:00:00", "2026-11-03T00:00:00"); }
};

TEST_F(ListingOverStoreTest, ASingleAppointmentNeedsMoreThanATouchingEdgeInWinterAndSummer)
{
    for (const std::string day : {"2026-11-02T", "2026-07-02T"})
    {
        calendar.Add(day + "ends at the start", day + "09:00:00Z", day + "10:00:00Z");
        calendar.Add(day + "ends behind it", day + "09:00:00Z", day + "10:00:01Z");
        calendar.Add(day + "inside", day + "10:30:00Z", day + "10:40:00Z");
        calendar.Add(day + "fits exactly", day + "10:00:00Z", day + "12:00:00Z");
        calendar.Add(day + "around", day + "00:00:00Z", day + "23:00:00Z");
        calendar.Add(day + "begins before the end", day + "11:59:59Z", day + "13:00:00Z");
        calendar.Add(day + "begins at the end", day + "12:00:00Z", day + "13:00:00Z");
    }
    Start();

    for (const std::wstring day : {L"2026-11-02T", L"2026-07-02T"})
    {
        const std::string narrow(day.begin(), day.end());
        EXPECT_EQ(List(narrow + "10:00:00", narrow + "12:00:00"),
                  (Texts{day + L"ends behind it",
                         day + L"inside",
                         day + L"fits exactly",
                         day + L"around",
                         day + L"begins before the end"}));
    }
    EXPECT_EQ(listed, 0U);
}

TEST_F(ListingOverStoreTest, AnEmptyWindowListsWhatContainsTheMomentAndInstancesThatBeginAtIt)
{
    calendar.Add("around", "2026-11-02T08:59:59Z", "2026-11-02T09:00:01Z");
    calendar.Add("begins", "2026-11-02T09:00:00Z", "2026-11-02T10:00:00Z");
    calendar.Add("ends", "2026-11-02T08:00:00Z", "2026-11-02T09:00:00Z");
    calendar.Add("empty", "2026-11-02T09:00:00Z", "2026-11-02T09:00:00Z");
    calendar.AddDaily("series", "2026-11-01", "2026-11-30");
    Start();

    EXPECT_EQ(List("2026-11-02T09:00:00", "2026-11-02T09:00:00"), (Texts{L"around", L"series"}));
}

TEST_F(ListingOverStoreTest, AnInstanceCountsByItsStartAloneWithBothEndsOfTheWindow)
{
    calendar.AddDaily("series", "2026-11-01", "2026-11-30");
    Start();

    List("2026-11-02T09:00:00", "2026-11-04T09:00:00");
    EXPECT_EQ(Values(L"startTime"),
              (Texts{L"11/02/2026 09:00:00", L"11/03/2026 09:00:00", L"11/04/2026 09:00:00"}));
    List("2026-11-02T09:00:01", "2026-11-04T08:59:59");
    EXPECT_EQ(Values(L"startTime"), Texts{L"11/03/2026 09:00:00"});
}

TEST_F(ListingOverStoreTest, OnlyRowsWithinTheMarginsAreReadAndThoseOutsideTheWindowAreDropped)
{
    calendar.Add("ends 12 h before", "2026-11-01T10:00:00Z", "2026-11-01T22:00:00Z");
    calendar.Add("ends earlier", "2026-11-01T10:00:00Z", "2026-11-01T21:59:59Z");
    calendar.Add("ends 11 h before", "2026-11-01T10:00:00Z", "2026-11-01T23:00:00Z");
    calendar.Add("begins 13 h behind", "2026-11-03T01:00:00Z", "2026-11-03T02:00:00Z");
    calendar.Add("begins later", "2026-11-03T01:00:01Z", "2026-11-03T02:00:00Z");
    Start();

    // The seconds of the window go with the margins.
    EXPECT_TRUE(List("2026-11-02T10:00:40", "2026-11-02T12:00:40").empty());

    EXPECT_TRUE(WasRead("ends 12 h before"));
    EXPECT_FALSE(WasRead("ends earlier"));
    EXPECT_TRUE(WasRead("ends 11 h before"));
    EXPECT_TRUE(WasRead("begins 13 h behind"));
    EXPECT_FALSE(WasRead("begins later"));
}

TEST_F(ListingOverStoreTest, ASeriesIsFoundByItsClipRangeAndListedByItsInstances)
{
    calendar.AddDaily("over", "2026-01-01", "2026-01-31");
    StoreItem& weekly = calendar.AddDaily("not this day", "2026-11-02", "2026-11-30");
    weekly.Set("PidLidAppointmentRecur",
               R"({ "recurrence": { "frequency": "weekly", "days": ["MO"], "start": "2026-11-02",
                    "startMinute": 540, "endMinute": 600, "end": { "until": "2026-11-30" } } })");
    Start();

    EXPECT_TRUE(List("2026-11-04T00:00:00", "2026-11-05T00:00:00").empty());

    EXPECT_EQ(listed, 0U);
    EXPECT_EQ(xml, L"<appointments></appointments>");
    EXPECT_FALSE(WasRead("over"));
    EXPECT_TRUE(WasRead("not this day"));
}

TEST_F(ListingOverStoreTest, FoldersAndRowsKeepTheirOrderAndOtherClassesAreLeftOut)
{
    const auto add = [this](const char* subject, int folder) -> StoreItem& {
        return calendar.Add(subject, "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z", folder);
    };
    add("rooms", CStoreCalendar::kRooms);
    add("team", CStoreCalendar::kTeam);
    add("second", CStoreCalendar::kCalendar);
    add("note", CStoreCalendar::kCalendar).messageClass = "IPM.Note";
    add("special", CStoreCalendar::kCalendar).messageClass = "ipm.APPOINTMENT.Special";
    add("team", CStoreCalendar::kTeam);
    Start();

    EXPECT_EQ(ListDay(), (Texts{L"second", L"special", L"team", L"team", L"rooms"}));
}

TEST_F(ListingOverStoreTest, AFolderStopsBehindTheRowThatTakesItOverTwoThousandAndTheNextIsListed)
{
    for (int number = 1; number <= 2003; ++number)
    {
        calendar.Add(std::to_string(number), "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    }
    calendar.Add("team", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z", CStoreCalendar::kTeam);
    Start();

    const Texts subjects = ListDay();

    ASSERT_EQ(subjects.size(), 2002U);
    EXPECT_EQ(subjects[2000], L"2001");
    EXPECT_EQ(subjects[2001], L"team");
    EXPECT_FALSE(WasRead("2002"));
    EXPECT_TRUE(trace.Has(3, "CMyMAPICtrl::ListAppointment - Got [2002] appointment(s)"));
}

TEST_F(ListingOverStoreTest, ASeriesMayTakeAFolderFarOverTheLimit)
{
    for (int number = 1; number <= 2000; ++number)
    {
        calendar.Add(std::to_string(number), "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    }
    calendar.AddDaily("series", "2026-11-01", "2026-12-31");
    calendar.Add("left out", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    Start();

    const Texts subjects = List("2026-11-01T00:00:00", "2026-12-01T00:00:00");

    ASSERT_EQ(subjects.size(), 2030U);
    EXPECT_EQ(subjects[1999], L"2000");
    EXPECT_EQ(subjects[2000], L"series");
    EXPECT_EQ(subjects[2029], L"series");
}

TEST_F(ListingOverStoreTest, AReleaseInTheMiddleEndsTheListingWithWhatWasGathered)
{
    for (const char* const subject : {"one", "two", "three", "four"})
    {
        calendar.Add(subject, "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    }
    Start();
    const CHangingCall second(L"second");
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 2 hang second");
    std::thread releaser([&second] {
        EXPECT_TRUE(second.WaitUntilReached());
        MapiDataStore().SetReleasing(1);
        second.LetGo();
    });

    EXPECT_EQ(ListDay(), (Texts{L"one", L"two"}));

    releaser.join();
    EXPECT_EQ(listed, 0U);
    EXPECT_TRUE(trace.Has(2, "quit this task for release"));
    EXPECT_FALSE(WasRead("three"));
}

TEST_F(ListingOverStoreTest, OutsideAPersonalStoreTheLongTermIdentifierIsTheKey)
{
    calendar.isPersonal = false;
    calendar.tableIdentifiers = "table";
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    Start();

    EXPECT_EQ(ListDay(), Texts{L"plain"});

    const std::wstring entry = Values(L"entryID").at(0);
    EXPECT_EQ(entry.substr(0, 8), L"00000000");
    EXPECT_EQ(entry.size(), 64U);
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(entry, stored));
    EXPECT_TRUE(stored.attendees.at(0).entryId.empty());
}

TEST_F(ListingOverStoreTest, InAPersonalStoreTheRowsIdentifierStaysTheKey)
{
    calendar.tableIdentifiers = "table";
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    calendar.AddDaily("series", "2026-11-02", "2026-11-02");
    Start();

    EXPECT_EQ(ListDay(), (Texts{L"plain", L"series"}));

    for (const std::wstring& entry : Values(L"entryID"))
    {
        EXPECT_EQ(entry.substr(0, 8), L"80000000");
        MeetingInfo stored;
        EXPECT_TRUE(MapiDataStore().GetAppointment(entry, stored));
    }
}

TEST_F(ListingOverStoreTest, AReadAppointmentIsListedAgainWithoutTheMailSystem)
{
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    Start();
    ASSERT_EQ(ListDay(), Texts{L"plain"});
    const WString first = xml;
    trace.Clear();
    SetFaultsAtOnce(
        "IMAPIFolder::OpenEntry every fail E_FAIL; IMessage::GetProps every fail E_FAIL");

    EXPECT_EQ(ListDay(), Texts{L"plain"});

    EXPECT_EQ(xml, first);
    EXPECT_FALSE(WasRead("plain"));
}

TEST_F(ListingOverStoreTest, WithoutASessionTheAnswerIsAnEmptyText)
{
    SetFaults("MAPILogonEx call 1 fail MAPI_E_LOGON_FAILED");
    ASSERT_EQ(outlook.Init(InitTypeCalendar), 0x80080004U);

    EXPECT_TRUE(ListDay().empty());

    EXPECT_EQ(listed, 1U);
    EXPECT_EQ(xml, L"");
    EXPECT_TRUE(trace.Has(2, "CMyMAPICtrl::ListAppointment - hStatus [0x80080004]"));
    WString change;
    EXPECT_EQ(outlook.GetMsgInfoByTableSink(nullptr, L"00", L"00", change), 1U);
    EXPECT_EQ(change, L"");
}

TEST_F(ListingOverStoreTest, AnAppointmentIsAnsweredByItsKeyTheFirstTimeOnly)
{
    calendar.Add("plain", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
    Start();
    ListDay();
    const std::wstring key = Values(L"entryID").at(0);
    WString answer;
    EXPECT_EQ(outlook.GetAppointment(key, answer), 0U); // the listing holds it
    EXPECT_EQ(answer, L"");
    MapiDataStore().ClearDataStore();

    EXPECT_EQ(outlook.GetAppointment(key, answer), 1U);
    WString again;
    EXPECT_EQ(outlook.GetAppointment(key, again), 0U);

    EXPECT_EQ(ElementValues(answer, L"subject"), Texts{L"plain"});
    EXPECT_EQ(ElementValues(answer, L"store"), Texts{L"Mailbox - Ada"});
    EXPECT_EQ(ElementValues(answer, L"profile"), Texts{L""});
    EXPECT_EQ(again, L"");
}

} // namespace
