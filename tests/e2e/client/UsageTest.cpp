// What the command line alone decides, and what happens where no server or no mail system stands.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ChildProgram.h"
#include "DtclientProgram.h"
#include "Handle.h"
#include "ServerProcesses.h"

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

TEST(Dtclient, WithoutAMailClientTheResultOfTheBringUpIsTold)
{
    const CRegisteredServer server(BuildPath(L"dtOIEx64.exe"));
    ASSERT_TRUE(server.IsRegistered());
    for (const wchar_t* const command : {L"list", L"info", L"watch --for 1"})
    {
        const ProgramResult result = Dtclient(command);

        EXPECT_EQ(result.exitCode, kFailed);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(
            result.errors.rfind("Initializing the mail system failed with 0x80080002: no mail "
                                "client is installed, or its library cannot be "
                                "loaded.\nWhat to do: ",
                                0),
            0U)
            << result.errors;
    }
}

TEST(Dtclient, WrongUsageGetsTheUsageAndTheExitCodeTwo)
{
    struct Case
    {
        const wchar_t* arguments;
        const char* complaint;
        const char* usage;
    };
    const Case cases[] = {
        {L"", "dtclient: no command given\n\n", "usage: dtclient COMMAND"},
        {L"lst", "dtclient: \"lst\" is no command\n\n", "usage: dtclient COMMAND"},
        {L"list --from yesterday", "dtclient: --from takes a date such as", "usage: dtclient list"},
        {L"info --from 2026-01-01",
         "dtclient: \"--from\" is no option of \"info\"\n\n",
         "usage: dtclient info"},
        {L"watch --for", "dtclient: --for needs a value\n\n", "usage: dtclient watch"},
        {L"ping --count 0", "dtclient: --count takes a number from 1", "usage: dtclient ping"},
        {L"trace --xml", "dtclient: \"--xml\" is no option of \"trace\"", "usage: dtclient trace"},
    };
    for (const Case& each : cases)
    {
        const ProgramResult result = Dtclient(each.arguments);

        EXPECT_EQ(result.exitCode, kWrongUsage) << each.complaint;
        EXPECT_EQ(result.output, "") << each.complaint;
        EXPECT_EQ(result.errors.rfind(each.complaint, 0), 0U) << result.errors;
        EXPECT_NE(result.errors.find(each.usage), std::string::npos) << result.errors;
    }
}

TEST(Dtclient, AWindowThatEndsBeforeTodayIsRefusedBeforeAServerIsLookedFor)
{
    for (const wchar_t* const command : {L"list --to 2020-01-01", L"watch --to 2020-01-01"})
    {
        const ProgramResult result = Dtclient(command);

        EXPECT_EQ(result.exitCode, kWrongUsage);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "dtclient: --to lies before today; give --from as well\n");
    }
}

TEST(Dtclient, HelpGoesToStandardOutput)
{
    for (const wchar_t* const arguments : {L"--help", L"-h", L"help"})
    {
        const ProgramResult result = Dtclient(arguments);

        EXPECT_EQ(result.exitCode, kDone);
        EXPECT_EQ(result.output.rfind("usage: dtclient COMMAND [OPTION ...]\n", 0), 0U);
        EXPECT_NE(result.output.find("Exit code: 0 done, 1 failed, 2 wrong usage, 3 the list is "
                                     "incomplete.\n"),
                  std::string::npos);
        EXPECT_EQ(result.errors, "");
    }
    for (const char* const command : {"info", "list", "watch", "ping", "trace"})
    {
        const std::string name(command);
        const ProgramResult result = Dtclient(std::wstring(name.begin(), name.end()) + L" --help");

        EXPECT_EQ(result.exitCode, kDone);
        EXPECT_EQ(result.output.rfind("usage: dtclient " + name + " [OPTION ...]\n", 0), 0U);
        EXPECT_EQ(result.errors, "");
    }
}

TEST(Dtclient, OutputThatTakesNothingIsAFailureThatIsTold)
{
    const CTestFolder folder(L"DtclientOutput");
    // A file that is open for reading stands in the place of a reader that has gone.
    WriteFileBytes(folder.File(L"output.txt"), "");
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const auto open = [&](const wchar_t* name, DWORD access) {
        return CFileHandle(CreateFileW(folder.File(name).c_str(),
                                       access,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherited,
                                       OPEN_ALWAYS,
                                       0,
                                       nullptr));
    };
    DWORD exitCode = 0xFFFFFFFF;
    {
        const CFileHandle output = open(L"output.txt", GENERIC_READ);
        const CFileHandle errors = open(L"errors.txt", GENERIC_WRITE);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = output.Get();
        start.hStdError = errors.Get();
        std::wstring commandLine = L"dtclient --help";
        PROCESS_INFORMATION process{};
        ASSERT_NE(CreateProcessW(BuildPath(L"dtclient.exe").c_str(),
                                 commandLine.data(),
                                 nullptr,
                                 nullptr,
                                 TRUE,
                                 0,
                                 nullptr,
                                 nullptr,
                                 &start,
                                 &process),
                  FALSE);
        CloseHandle(process.hThread);
        const CHandle ended(process.hProcess);
        EXPECT_EQ(WaitForSingleObject(ended.Get(), kPatienceMs), WAIT_OBJECT_0);
        GetExitCodeProcess(ended.Get(), &exitCode);
    }
    EXPECT_EQ(exitCode, kFailed);
    EXPECT_EQ(FileBytes(folder.File(L"errors.txt")).rfind("Writing the result failed: ", 0), 0U);
}
