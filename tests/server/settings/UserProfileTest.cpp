#include "UserProfile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "DebuggerText.h"
#include "DllHandle.h"
#include "Handle.h"
#include "LogonSystem.h"

namespace
{

const HKEY kHive = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7777));

DWORD g_consoleSession = 1;

DWORD WINAPI ConsoleSession()
{
    return g_consoleSession;
}

/// A system in which the process is not interactive and three processes run, the second and third of
/// them in the console session.
class CPretendedSystem final : public ILogonSystem
{
public:
    CPretendedSystem() { g_consoleSession = 1; }

    bool IsInteractive() noexcept override { return Note("interactive", isInteractive); }
    OsClass Class() noexcept override { return osClass; }
    ConsoleSessionFn FindConsoleSession(bool& isModuleFound) noexcept override
    {
        calls.emplace_back("console session");
        isModuleFound = isKernelFound;
        return isConsoleSessionKnown ? &ConsoleSession : nullptr;
    }
    bool ListProcesses(DWORD* ids, DWORD cbIds, DWORD& cbListed) noexcept override
    {
        EXPECT_EQ(cbIds, 4096U);
        const std::vector<DWORD> listed = {10, 20, 30};
        std::copy(listed.begin(), listed.end(), ids);
        cbListed = 12;
        return Note("list", isListable);
    }
    HANDLE OpenOne(DWORD processId) noexcept override
    {
        calls.push_back("open " + std::to_string(processId));
        const bool isRefused = processId == refusedProcess;
        return isRefused ? nullptr : OpenProcess(SYNCHRONIZE, FALSE, GetCurrentProcessId());
    }
    bool SessionOf(DWORD processId, DWORD& session) noexcept override
    {
        session = processId == 10 ? 0 : 1;
        return true;
    }
    bool IsShell(HANDLE) noexcept override { return Note("shell", isShell); }
    bool TokenOf(HANDLE, HANDLE* token) noexcept override
    {
        const bool isOpened = Note("token", tokenRefusals == 0);
        if (isOpened)
        {
            *token = CreateEventW(nullptr, FALSE, FALSE, nullptr);
            lastToken = *token;
        }
        else
        {
            --tokenRefusals;
        }
        return isOpened;
    }
    bool CanLoadHives() noexcept override { return Note("libraries", hasLibraries); }
    HKEY LoadHive(HANDLE) noexcept override { return Note("load", isHiveLoaded) ? kHive : nullptr; }
    void UnloadHive(HANDLE token, HKEY hive) noexcept override
    {
        calls.emplace_back("unload");
        EXPECT_NE(token, nullptr);
        EXPECT_EQ(hive, kHive);
    }

    bool isInteractive = false;
    OsClass osClass = OsClass::VistaOrLater;
    bool isKernelFound = true;
    bool isConsoleSessionKnown = true;
    bool isListable = true;
    DWORD refusedProcess = 0;
    bool isShell = false;
    int tokenRefusals = 0;
    bool hasLibraries = true;
    bool isHiveLoaded = true;
    HANDLE lastToken = nullptr;
    std::vector<std::string> calls;

private:
    bool Note(const char* call, bool answer)
    {
        calls.emplace_back(call);
        return answer;
    }
};

std::size_t Count(const CPretendedSystem& system, const std::string& call)
{
    return static_cast<std::size_t>(std::count(system.calls.begin(), system.calls.end(), call));
}

using Calls = std::vector<std::string>;

TEST(UserProfile, AnInteractiveProcessUsesItsOwnHiveAndLoadsNothing)
{
    CPretendedSystem system;
    system.isInteractive = true;
    CUserProfile profile(system);

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);

    EXPECT_EQ(system.calls, Calls{"interactive"});
}

TEST(UserProfile, OtherwiseTheHiveOfTheConsoleSessionIsLoaded)
{
    CPretendedSystem system;
    CUserProfile profile(system);

    EXPECT_EQ(profile.GetRootKey(), kHive);

    EXPECT_EQ(system.calls,
              (Calls{"interactive",
                     "libraries",
                     "console session",
                     "list",
                     "open 10",
                     "open 20",
                     "token",
                     "load"}));
}

TEST(UserProfile, TheSecondRequestAsksTheSystemNothing)
{
    CPretendedSystem system;
    CUserProfile profile(system);
    const HKEY first = profile.GetRootKey();
    system.calls.clear();

    EXPECT_EQ(profile.GetRootKey(), first);
    EXPECT_TRUE(system.calls.empty());
}

/// Whether the handle is still open.
bool IsOpen(HANDLE handle)
{
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

TEST(UserProfile, ALoadedHiveIsUnloadedAtTheEndAndItsTokenClosed)
{
    CPretendedSystem system;
    {
        CUserProfile profile(system);
        EXPECT_EQ(profile.GetRootKey(), kHive);
        EXPECT_EQ(Count(system, "unload"), 0U);
        EXPECT_TRUE(IsOpen(system.lastToken));
    }

    EXPECT_EQ(Count(system, "unload"), 1U);
    EXPECT_FALSE(IsOpen(system.lastToken));
}

TEST(UserProfile, TheProcessesOwnHiveIsNeverUnloadedThoughTheTokenIsClosed)
{
    CPretendedSystem system;
    system.isHiveLoaded = false;
    {
        CUserProfile profile(system);
        EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    }

    EXPECT_EQ(Count(system, "unload"), 0U);
    EXPECT_FALSE(IsOpen(system.lastToken));
}

TEST(UserProfile, MissingLibrariesLeadBackToTheOwnHive)
{
    CPretendedSystem system;
    system.hasLibraries = false;
    CUserProfile profile(system);

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(system.calls, (Calls{"interactive", "libraries"}));
}

TEST(UserProfile, WithoutAConsoleSessionTheOwnHiveIsUsed)
{
    CPretendedSystem system;
    g_consoleSession = 0xFFFFFFFF;
    CUserProfile profile(system);
    const CDebuggerText debugger;

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(Count(system, "list"), 0U);
    EXPECT_EQ(debugger.Texts(),
              Calls{"CDTCallProcess::GetCurrentLogonUserToken: dwConsoleSessionId is "
                    "0xffffffff!\n"});
}

TEST(UserProfile, WithoutTheSystemsKernelLibraryTheSearchEnds)
{
    CPretendedSystem system;
    system.isKernelFound = false;
    CUserProfile profile(system);
    const CDebuggerText debugger;

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(Count(system, "list"), 0U);
    EXPECT_EQ(debugger.Texts(),
              Calls{"CDTCallProcess::GetCurrentLogonUserToken: LoadSystemLibrary Kernel32.dll "
                    "FAILED!\n"});
}

TEST(UserProfile, SystemThatKnowsNoConsoleSessionEndsTheSearchWithoutAWord)
{
    CPretendedSystem system;
    system.isConsoleSessionKnown = false;
    CUserProfile profile(system);
    const CDebuggerText debugger;

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(Count(system, "list"), 0U);
    EXPECT_TRUE(debugger.Texts().empty());
}

TEST(UserProfile, ProcessesThatCannotBeListedLeadBackToTheOwnHive)
{
    CPretendedSystem system;
    system.isListable = false;
    CUserProfile profile(system);
    const CDebuggerText debugger;

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(Count(system, "open 10"), 0U);
    EXPECT_EQ(debugger.Texts(),
              Calls{"CDTCallProcess::GetCurrentLogonUserToken: pfnEnumProcesses FAILED!\n"});
}

TEST(UserProfile, AProcessThatRefusesIsPassedOver)
{
    CPretendedSystem noProcess;
    noProcess.refusedProcess = 20;
    CPretendedSystem noToken;
    noToken.tokenRefusals = 1;

    for (CPretendedSystem* const system : {&noProcess, &noToken})
    {
        CUserProfile profile(*system);
        EXPECT_EQ(profile.GetRootKey(), kHive);
        EXPECT_EQ(Count(*system, "open 30"), 1U);
    }
}

TEST(UserProfile, NoTokenAtAllLeadsBackToTheOwnHive)
{
    CPretendedSystem system;
    system.tokenRefusals = 100;
    CUserProfile profile(system);

    EXPECT_EQ(profile.GetRootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(Count(system, "token"), 2U);
    EXPECT_EQ(Count(system, "load"), 0U);
}

TEST(UserProfile, AnOldSystemLooksForTheShellInstead)
{
    CPretendedSystem system;
    system.osClass = OsClass::Windows2000;
    system.isShell = true;
    CUserProfile profile(system);

    EXPECT_EQ(profile.GetRootKey(), kHive);
    EXPECT_EQ(Count(system, "console session"), 0U);
    EXPECT_EQ(Count(system, "shell"), 1U);
    EXPECT_EQ(Count(system, "open 20"), 0U);
}

TEST(UserProfile, ATokenThatIsThereIsNotLookedForAgain)
{
    CPretendedSystem system;
    CUserProfile profile(system);
    CDTCallProcess::GetCurrentLogonUserToken(profile);
    system.calls.clear();

    CDTCallProcess::GetCurrentLogonUserToken(profile);

    EXPECT_TRUE(system.calls.empty());
}

TEST(UserProfile, TheRealProcessIsInteractiveHereAndUserenvStaysUnloaded)
{
    EXPECT_TRUE(IsProcessInteractive());
    EXPECT_EQ(CUserProfile::RootKey(), HKEY_CURRENT_USER);
    EXPECT_EQ(GetModuleHandleW(L"userenv.dll"), nullptr);
}

TEST(UserProfile, TheRealSystemFindsATokenOfTheConsoleSession)
{
    CLogonSystem system;
    bool isModuleFound = false;
    const auto session = system.FindConsoleSession(isModuleFound);
    ASSERT_TRUE(isModuleFound);
    ASSERT_NE(session, nullptr);
    DWORD own = 0;
    ASSERT_TRUE(system.SessionOf(GetCurrentProcessId(), own));
    EXPECT_EQ(session(), own);

    std::vector<DWORD> ids(1024);
    DWORD cbListed = 0;
    ASSERT_TRUE(system.ListProcesses(ids.data(), 4096, cbListed));
    ids.resize(cbListed / sizeof(DWORD));
    EXPECT_NE(std::find(ids.begin(), ids.end(), GetCurrentProcessId()), ids.end());

    const CHandle process(system.OpenOne(GetCurrentProcessId()));
    ASSERT_TRUE(process);
    EXPECT_FALSE(system.IsShell(process.Get()));
    HANDLE token = nullptr;
    EXPECT_TRUE(system.TokenOf(process.Get(), &token));
    const CHandle owned(token);
}

TEST(DllHandle, ALibraryComesFromTheSystemDirectoryOrNotAtAll)
{
    CDLLHandle library;
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_FALSE(library.LoadSystemLibrary(L"dtOIEx64-no-such-library.dll"));
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_EQ(library.Find<FARPROC>("GetFileVersionInfoW"), nullptr);

    EXPECT_TRUE(library.LoadSystemLibrary(L"advapi32.dll"));
    EXPECT_TRUE(library.IsLoaded());
    EXPECT_NE(library.Find<FARPROC>("RegCloseKey"), nullptr);
    EXPECT_EQ(library.Find<FARPROC>("NoSuchFunction"), nullptr);
}

} // namespace
