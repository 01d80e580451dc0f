#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "DtclientProgram.h"
#include "ServerProcesses.h"
#include "TestBehaviour.h"

namespace
{
// Options of a window that makes the test host behave so.
std::wstring Window(TestBehaviour behaviour)
{
    const unsigned second = static_cast<unsigned>(behaviour);
    return L"--from 2020-01-01T00:00:" + std::to_wstring(second / 10) +
           std::to_wstring(second % 10) + L" --to 2020-01-02";
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

TEST_F(DtclientTest, AnAnswerWithoutADocumentIsAFailure)
{
    for (const wchar_t* const form : {L"", L"--json ", L"--xml "})
    {
        const ProgramResult result =
            Dtclient(std::wstring(L"list ") + form + Window(TestBehaviour::EmptyText));

        EXPECT_EQ(result.exitCode, kFailed);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors.rfind("Listing the appointments between 2020-01-01 00:00 and "
                                      "2020-01-02 00:00: the server gave an empty answer",
                                      0),
                  0U)
            << result.errors;
        EXPECT_NE(result.errors.find("\nWhat to do: "), std::string::npos);
    }
}

TEST_F(DtclientTest, AFolderThatCouldNotBeReadMakesTheListIncomplete)
{
    const std::wstring window = Window(TestBehaviour::FolderFailure);
    const ProgramResult list = Dtclient(L"list " + window);
    const ProgramResult watch = Dtclient(L"watch --for 1 " + window);

    EXPECT_EQ(list.exitCode, kIncomplete);
    EXPECT_EQ(list.output, "No appointments between 2020-01-01 00:00 and 2020-01-02 00:00.\n");
    EXPECT_EQ(list.errors.rfind("Listing the appointments: the server could not read one of the "
                                "calendar folders",
                                0),
              0U)
        << list.errors;
    EXPECT_EQ(watch.exitCode, kIncomplete);
    EXPECT_EQ(watch.errors, list.errors + "Watching. Ctrl+C ends.\n");
}

TEST_F(DtclientTest, AnUnreadableDocumentIsPrintedRawAllTheSame)
{
    const ProgramResult result = Dtclient(L"list --xml " + Window(TestBehaviour::LargeDocument));

    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.output, std::string(kLargeUnits, 'x') + "\n");
    EXPECT_EQ(result.errors.rfind("Reading the appointments: ", 0), 0U) << result.errors;
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
