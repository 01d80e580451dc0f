#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ChildProcess.h"
#include "ServerProcesses.h"
#include "TestBehaviour.h"

namespace
{
constexpr DWORD kDone = 0;
constexpr DWORD kFailed = 1;
constexpr DWORD kWrongUsage = 2;

ProgramResult Dtclient(const std::wstring& arguments)
{
    return RunProgram(BuildPath(L"dtclient.exe"), arguments);
}

// Options of a window that makes the test host behave so.
std::wstring Window(TestBehaviour behaviour)
{
    return L"--from 2020-01-01T00:00:0" + std::to_wstring(static_cast<unsigned>(behaviour)) +
           L" --to 2020-01-02";
}

class DtclientTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_server.IsRegistered()); }

    CRegisteredServer m_server{BuildPath(L"tests\\dtOIEx64-testhost.exe")};
};
} // namespace

TEST_F(DtclientTest, AnEmptyListIsSaidForPeople)
{
    const ProgramResult result = Dtclient(L"list " + Window(TestBehaviour::EmptyListing));

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output, "No appointments between 2020-01-01 00:00 and 2020-01-02 00:00.\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(DtclientTest, AnEmptyListIsOneJsonDocument)
{
    const ProgramResult result = Dtclient(L"list --json " + Window(TestBehaviour::EmptyListing));

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output, "{\n  \"appointments\": []\n}\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(DtclientTest, XmlIsTheDocumentAsItCame)
{
    const ProgramResult result = Dtclient(L"list --xml " + Window(TestBehaviour::OneAppointment));

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output,
              "<appointments><appointment><subject><![CDATA[Test]]></subject></appointment>"
              "</appointments>\n");
}

TEST_F(DtclientTest, TheTableNamesItsColumns)
{
    const ProgramResult result = Dtclient(L"list " + Window(TestBehaviour::OneAppointment));

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output,
              "Start    Length  Subject  Place  Host  Answer  Marks\n"
              "-------  ------  -------  -----  ----  ------  -----\n"
              "no time  0 min   Test\n");
}

TEST_F(DtclientTest, ADocumentThatCannotBeReadIsAFailure)
{
    const ProgramResult result = Dtclient(L"list " + Window(TestBehaviour::LargeDocument));

    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find("Reading the appointments: the document does not begin with "
                                 "<appointments> or <appointment>, at byte 0 of the document.\n"
                                 "What to do: "),
              std::string::npos)
        << result.errors;
}

TEST_F(DtclientTest, InfoPrintsTheProfile)
{
    EXPECT_EQ(Dtclient(L"info").output, "ProfileName  Test\n");
    EXPECT_EQ(Dtclient(L"info --json").output,
              "{\n  \"CurrentOLProfile\": {\n    \"ProfileName\": \"Test\"\n  }\n}\n");
    EXPECT_EQ(Dtclient(L"info --xml").output,
              "<CurrentOLProfile><ProfileName><![CDATA[Test]]></ProfileName></CurrentOLProfile>\n");
}

TEST_F(DtclientTest, WatchPrintsEachChangeWithItsKind)
{
    const ProgramResult result =
        Dtclient(L"watch --json --for 1 " + Window(TestBehaviour::OneChangeEach));

    EXPECT_EQ(result.exitCode, kDone);
    // The test host's changes carry no documents.
    EXPECT_EQ(result.output,
              "{\n  \"appointments\": []\n}\n"
              "{\"event\":\"OnCalendarUpdated\",\"kind\":\"added\",\"appointments\":[]}\n"
              "{\"event\":\"OnContactUpdated\",\"kind\":\"added\",\"ContactInfo\":{}}\n"
              "{\"event\":\"OnCalendarUpdated\",\"kind\":\"deleted\",\"appointments\":[]}\n"
              "{\"event\":\"OnContactUpdated\",\"kind\":\"deleted\",\"ContactInfo\":{}}\n"
              "{\"event\":\"OnCalendarUpdated\",\"kind\":\"updated\",\"appointments\":[]}\n"
              "{\"event\":\"OnContactUpdated\",\"kind\":\"updated\",\"ContactInfo\":{}}\n");
    EXPECT_EQ(result.errors, "Watching. Ctrl+C ends.\n");
}

TEST_F(DtclientTest, TracePrintsHeartbeats)
{
    const ProgramResult result = Dtclient(L"trace --json --for 12");

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output.rfind("{\"event\":\"OnTrace\",\"line\":\"[", 0), 0U) << result.output;
    EXPECT_NE(result.output.find("##dtOIEx##process##exist##"), std::string::npos);
}

TEST_F(DtclientTest, PingCountsItsCalls)
{
    const ProgramResult fresh = Dtclient(L"ping --count 20");

    EXPECT_EQ(fresh.exitCode, kDone);
    EXPECT_NE(fresh.output.find("(a fresh server)"), std::string::npos) << fresh.output;
    EXPECT_NE(fresh.output.find("over 20 empty calls"), std::string::npos) << fresh.output;
}

TEST_F(DtclientTest, AServerThatDoesNotAnswerEndsTheWaiting)
{
    HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent);

    const ProgramResult result = Dtclient(L"list --timeout 2 " + Window(TestBehaviour::Hang));
    SetEvent(goOn);
    CloseHandle(goOn);

    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("Waiting for the event OnListAppointment: no answer within 2 "
                                  "seconds.\nWhat to do: ",
                                  0),
              0U)
        << result.errors;
}

TEST_F(DtclientTest, AServerThatDiesEndsTheWaitingWithItsCode)
{
    const ProgramResult result = Dtclient(L"list --json " + Window(TestBehaviour::AccessViolation));

    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("Waiting for the event OnListAppointment failed with 0x", 0), 0U)
        << result.errors;
    EXPECT_NE(result.errors.find("\nWhat to do: "), std::string::npos);
}

TEST_F(DtclientTest, TheWorkedClientOfTheInterfaceReferenceListsADay)
{
    const ProgramResult result = RunProgram(BuildPath(L"examples\\listing_client.exe"), L"");

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output, "0x00000000\n<appointments></appointments>\n");
}

TEST_F(DtclientTest, NoServerIsLeftBehind)
{
    ASSERT_EQ(Dtclient(L"list " + Window(TestBehaviour::EmptyListing)).exitCode, kDone);

    for (const DWORD id : m_server.Processes())
    {
        EXPECT_TRUE(CWatchedProcess(id).WaitForEnd());
    }
    EXPECT_TRUE(m_server.Processes().empty());
}

TEST(Dtclient, WithoutARegisteredServerTheWayOutIsTold)
{
    const ProgramResult result = Dtclient(L"list --json");

    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(
        result.errors,
        "Looking up the class \"dtOIEx64.MapiClient\" failed with 0x800401F3: the name of the "
        "class is not registered.\nWhat to do: register the server once: \"dtOIEx64.exe "
        "-RegServer\" as administrator for all users, or \"dtOIEx64.exe -RegServerPerUser\" "
        "for this one.\n");
}

TEST(Dtclient, WrongUsageGetsTheUsageAndTheExitCodeTwo)
{
    const ProgramResult result = Dtclient(L"list --from yesterday");

    EXPECT_EQ(result.exitCode, kWrongUsage);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("dtclient: --from takes a date such as", 0), 0U);
    EXPECT_NE(result.errors.find("usage: dtclient list"), std::string::npos);
}

TEST(Dtclient, HelpGoesToStandardOutput)
{
    const ProgramResult result = Dtclient(L"--help");

    EXPECT_EQ(result.exitCode, kDone);
    EXPECT_EQ(result.output.rfind("usage: dtclient COMMAND [OPTION ...]\n", 0), 0U);
    EXPECT_EQ(result.errors, "");
}
