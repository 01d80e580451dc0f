#include <algorithm>
#include <vector>

#include "CalendarFixture.h"

namespace
{
// Type and subject of the next change of the calendar, such as "3 Tea".
std::string NextChange(CRemoteClient& client)
{
    const HeardEvent event = client.WaitForEvent(kOnCalendarUpdated);
    const std::string open = "<subject><![CDATA[";
    const std::size_t start = event.text.find(open);
    const std::size_t end = event.text.find("]]>", start);
    const std::string subject =
        start == std::string::npos
            ? std::string()
            : event.text.substr(start + open.size(), end - start - open.size());
    return std::to_string(event.number) + " " + subject;
}

// Three changes, in whatever order the mail library tells them.
std::vector<std::string> ThreeChanges(CRemoteClient& client)
{
    std::vector<std::string> changes;
    for (int change = 0; change < 3; ++change)
    {
        changes.push_back(NextChange(client));
    }
    std::sort(changes.begin(), changes.end());
    return changes;
}

const std::vector<std::string> kChanges = {"1 Supper", "2 Dinner", "3 Tea"};
} // namespace

TEST_F(CalendarTest, TheProductListsWhatTheStoreHolds)
{
    const ProgramResult result =
        RunProgram(BuildPath(L"dtclient.exe"), L"list --json --from 2020-01-01 --to 2020-01-02");

    EXPECT_EQ(result.exitCode, 0U) << result.errors;
    for (const char* const subject : {"Coffee", "Lunch", "Dinner"})
    {
        EXPECT_NE(result.output.find(std::string("\"subject\": \"") + subject + "\""),
                  std::string::npos)
            << result.output;
    }
    EXPECT_NE(result.output.find("\"startTime\": \"2020-01-01T10:00:00Z\""), std::string::npos);
    EXPECT_EQ(result.output.find("Tea"), std::string::npos);
}

TEST_F(CalendarTest, EveryClientHearsEachChangeOfTheStoreWithItsKind)
{
    CRemoteClient first;
    CRemoteClient second;
    Connect(first);
    Connect(second);
    ASSERT_EQ(first.Result(kListTheDay), kOk);
    ASSERT_EQ(first.WaitForEvent(kOnListAppointment).id, kOnListAppointment);

    ChangeStore();

    EXPECT_EQ(ThreeChanges(first), kChanges);
    EXPECT_EQ(ThreeChanges(second), kChanges);
}

TEST_F(CalendarTest, AListingDuringWhichTheStoreChangesIsAnsweredToAll)
{
    const CHangingCall listing(L"listing");
    SetFaults(L"IMAPITable::Restrict(contents) call 1 hang listing");
    CRemoteClient lister;
    CRemoteClient watcher;
    Connect(lister);
    Connect(watcher);
    ASSERT_EQ(lister.Result(kListTheDay), kOk);
    ASSERT_TRUE(listing.WaitUntilReached());

    ChangeStore();
    listing.LetGo();

    EXPECT_EQ(lister.WaitForEvent(kOnListAppointment).id, kOnListAppointment);
    EXPECT_EQ(watcher.WaitForEvent(kOnListAppointment).id, kOnListAppointment);
}

TEST_F(CalendarTest, NothingIsLeftInTheMailLibraryBehindAWholeSession)
{
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result(kListTheDay), kOk);
    ASSERT_EQ(client.WaitForEvent(kOnListAppointment).id, kOnListAppointment);
    ChangeStore();
    EXPECT_EQ(ThreeChanges(client), kChanges);
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    ASSERT_EQ(client.Result("release"), kOk);

    ASSERT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
    const std::string ledger = Ledger();
    EXPECT_NE(ledger.find(" left interfaces 0 buffers 0 connections 0 misuse 0\n"),
              std::string::npos)
        << ledger;
    EXPECT_EQ(ledger.find("summary"), ledger.rfind("summary")) << ledger;
}
