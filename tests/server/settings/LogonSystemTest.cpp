// What the logged-on user's hive is loaded with. Tests do not run as a service, and a hive is not theirs to
// load: functions of the test stand in the place of the system's.

#include "LogonSystem.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <userenv.h>

#include <cstring>
#include <string>
#include <vector>

#include "PatchedImport.h"
#include "ProcAddress.h"

namespace
{

const HANDLE kToken = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(0x5550));
const HANDLE kProcess = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(0x5554));
const HKEY kHive = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x7777));

/// The system as the process sees it while one of these lives.
class CStandIn final
{
public:
    CStandIn();
    CStandIn(const CStandIn&) = delete;
    CStandIn& operator=(const CStandIn&) = delete;
    ~CStandIn() { s_instance = nullptr; }

    static CStandIn* s_instance;

    bool isTokenOpened = true;
    bool areGroupsRead = true;
    bool isSidMade = true;
    std::vector<PSID> groups; ///< of the process's token
    bool canImpersonate = true;
    bool canLoadProfile = true;
    std::string missingFunction;
    std::wstring processPath;
    std::vector<std::string> calls;

private:
    CPatchedImport m_openToken;
    CPatchedImport m_tokenInformation;
    CPatchedImport m_allocateSid;
    CPatchedImport m_userName;
    CPatchedImport m_procAddress;
    CPatchedImport m_moduleFileName;
};

CStandIn* CStandIn::s_instance = nullptr;

/// The function of the system itself; by its plain name the program reaches what is patched in.
template <typename Fn>
Fn Real(const wchar_t* library, const char* name)
{
    return ProcAddress<Fn>(GetModuleHandleW(library), name);
}

const auto g_realOpenProcessToken =
    Real<decltype(&OpenProcessToken)>(L"advapi32.dll", "OpenProcessToken");
const auto g_realAllocateSid =
    Real<decltype(&AllocateAndInitializeSid)>(L"advapi32.dll", "AllocateAndInitializeSid");
const auto g_realGetProcAddress =
    Real<decltype(&GetProcAddress)>(L"kernel32.dll", "GetProcAddress");

std::string Narrow(const WCHAR* text)
{
    std::string narrow;
    for (; *text != L'\0'; ++text)
    {
        narrow += static_cast<char>(*text);
    }
    return narrow;
}

BOOL WINAPI StandInOpenToken(HANDLE process, DWORD access, HANDLE* token)
{
    return CStandIn::s_instance->isTokenOpened && g_realOpenProcessToken(process, access, token);
}

BOOL WINAPI StandInTokenInformation(
    HANDLE /*token*/, TOKEN_INFORMATION_CLASS kind, void* block, DWORD cbBlock, DWORD* cbNeeded)
{
    EXPECT_EQ(kind, TokenGroups);
    const CStandIn& system = *CStandIn::s_instance;
    if (!system.areGroupsRead)
    {
        return FALSE;
    }
    *cbNeeded = static_cast<DWORD>(sizeof(TOKEN_GROUPS) +
                                   system.groups.size() * sizeof(SID_AND_ATTRIBUTES));
    if (block == nullptr || cbBlock < *cbNeeded)
    {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    auto* const list = static_cast<TOKEN_GROUPS*>(block);
    list->GroupCount = static_cast<DWORD>(system.groups.size());
    for (std::size_t i = 0; i < system.groups.size(); ++i)
    {
        list->Groups[i] = {system.groups[i], SE_GROUP_ENABLED};
    }
    return TRUE;
}

BOOL WINAPI StandInAllocateSid(SID_IDENTIFIER_AUTHORITY* authority,
                               BYTE count,
                               DWORD part0,
                               DWORD part1,
                               DWORD part2,
                               DWORD part3,
                               DWORD part4,
                               DWORD part5,
                               DWORD part6,
                               DWORD part7,
                               PSID* sid)
{
    return CStandIn::s_instance->isSidMade &&
           g_realAllocateSid(
               authority, count, part0, part1, part2, part3, part4, part5, part6, part7, sid);
}

BOOL WINAPI StandInUserName(WCHAR* name, DWORD* cchName)
{
    CStandIn::s_instance->calls.push_back("user name of " + std::to_string(*cchName));
    lstrcpyW(name, L"service");
    *cchName = 8;
    return TRUE;
}

DWORD WINAPI StandInModuleFileName(HANDLE process, HMODULE /*module*/, WCHAR* path, DWORD cchPath)
{
    EXPECT_EQ(process, kProcess);
    const std::wstring& wanted = CStandIn::s_instance->processPath;
    lstrcpynW(path, wanted.c_str(), static_cast<int>(cchPath));
    return static_cast<DWORD>(wanted.size());
}

BOOL WINAPI FakeImpersonate(HANDLE token)
{
    EXPECT_EQ(token, kToken);
    CStandIn::s_instance->calls.emplace_back("impersonate");
    return CStandIn::s_instance->canImpersonate;
}

BOOL WINAPI FakeRevert()
{
    CStandIn::s_instance->calls.emplace_back("revert");
    return TRUE;
}

BOOL WINAPI FakeLoadUserProfile(HANDLE token, PROFILEINFOW* profile)
{
    EXPECT_EQ(token, kToken);
    CStandIn::s_instance->calls.push_back("load " + std::to_string(profile->dwSize) + " " +
                                          std::to_string(profile->dwFlags) + " " +
                                          Narrow(profile->lpUserName));
    profile->hProfile = CStandIn::s_instance->canLoadProfile ? kHive : nullptr;
    return CStandIn::s_instance->canLoadProfile;
}

BOOL WINAPI FakeUnloadUserProfile(HANDLE token, HANDLE profile)
{
    EXPECT_EQ(token, kToken);
    EXPECT_EQ(profile, kHive);
    CStandIn::s_instance->calls.emplace_back("unload");
    return TRUE;
}

template <typename Function>
FARPROC AsProc(Function function)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

FARPROC WINAPI StandInProcAddress(HMODULE module, const char* name)
{
    if (CStandIn::s_instance->missingFunction == name)
    {
        return nullptr;
    }
    if (std::strcmp(name, "ImpersonateLoggedOnUser") == 0)
    {
        return AsProc(&FakeImpersonate);
    }
    if (std::strcmp(name, "RevertToSelf") == 0)
    {
        return AsProc(&FakeRevert);
    }
    if (std::strcmp(name, "LoadUserProfileW") == 0)
    {
        return AsProc(&FakeLoadUserProfile);
    }
    if (std::strcmp(name, "UnloadUserProfile") == 0)
    {
        return AsProc(&FakeUnloadUserProfile);
    }
    return g_realGetProcAddress(module, name);
}

CStandIn::CStandIn()
    : m_openToken("OpenProcessToken", &StandInOpenToken),
      m_tokenInformation("GetTokenInformation", &StandInTokenInformation),
      m_allocateSid("AllocateAndInitializeSid", &StandInAllocateSid),
      m_userName("GetUserNameW", &StandInUserName),
      m_procAddress("GetProcAddress", &StandInProcAddress),
      m_moduleFileName("K32GetModuleFileNameExW", &StandInModuleFileName)
{
    s_instance = this;
}

/// S-1-5-`number`, or S-1-5-32-`alias`.
class CTestSid final
{
public:
    explicit CTestSid(DWORD number) { Make(1, number, 0); }
    CTestSid(DWORD number, DWORD alias) { Make(2, number, alias); }
    CTestSid(const CTestSid&) = delete;
    CTestSid& operator=(const CTestSid&) = delete;
    ~CTestSid() { FreeSid(m_sid); }

    [[nodiscard]] PSID Get() const { return m_sid; }

private:
    void Make(BYTE count, DWORD first, DWORD second)
    {
        SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
        EXPECT_NE(g_realAllocateSid(&authority, count, first, second, 0, 0, 0, 0, 0, 0, &m_sid),
                  FALSE);
    }

    PSID m_sid = nullptr;
};

using Calls = std::vector<std::string>;

} // namespace

TEST(IsProcessInteractive, IsWhetherTheGroupsHoldTheInteractiveOne)
{
    const CTestSid service(6);
    const CTestSid interactive(4);
    const CTestSid users(32, 545);
    CStandIn system;

    system.groups = {service.Get(), users.Get()};
    EXPECT_FALSE(IsProcessInteractive());

    system.groups = {service.Get(), users.Get(), interactive.Get()};
    EXPECT_TRUE(IsProcessInteractive());
}

TEST(IsProcessInteractive, LongerIdentifierThatBeginsLikeTheGroupIsAnotherOne)
{
    const CTestSid longer(4, 0);
    CStandIn system;
    system.groups = {longer.Get()};

    EXPECT_FALSE(IsProcessInteractive());
}

TEST(IsProcessInteractive, InDoubtTheProcessCountsAsInteractive)
{
    const CTestSid service(6);
    CStandIn system;
    system.groups = {service.Get()};
    ASSERT_FALSE(IsProcessInteractive());

    system.isTokenOpened = false;
    EXPECT_TRUE(IsProcessInteractive());
    system.isTokenOpened = true;
    system.areGroupsRead = false;
    EXPECT_TRUE(IsProcessInteractive());
    system.areGroupsRead = true;
    system.isSidMade = false;
    EXPECT_TRUE(IsProcessInteractive());
}

TEST(LogonSystem, ProfileIsLoadedUnderTheNameThatTheProcessHasAfterTheImpersonation)
{
    CStandIn stand;
    CLogonSystem system;
    ASSERT_TRUE(system.CanLoadHives());

    EXPECT_EQ(system.LoadHive(kToken), kHive);

    EXPECT_EQ(stand.calls,
              (Calls{"impersonate", "revert", "user name of 260", "load 56 1 service"}));
}

TEST(LogonSystem, WithoutAnImpersonationNothingIsRevertedAndTheProfileIsLoadedAllTheSame)
{
    CStandIn stand;
    stand.canImpersonate = false;
    CLogonSystem system;
    ASSERT_TRUE(system.CanLoadHives());

    EXPECT_EQ(system.LoadHive(kToken), kHive);

    EXPECT_EQ(stand.calls, (Calls{"impersonate", "user name of 260", "load 56 1 service"}));
}

TEST(LogonSystem, ProfileThatCannotBeLoadedGivesNoHive)
{
    CStandIn stand;
    stand.canLoadProfile = false;
    CLogonSystem system;
    ASSERT_TRUE(system.CanLoadHives());

    EXPECT_EQ(system.LoadHive(kToken), nullptr);
}

TEST(LogonSystem, ProfileIsUnloadedWithItsToken)
{
    CStandIn stand;
    CLogonSystem system;
    ASSERT_TRUE(system.CanLoadHives());

    system.UnloadHive(kToken, kHive);

    EXPECT_EQ(stand.calls, Calls{"unload"});
}

TEST(LogonSystem, EachOfTheThreeFunctionsIsNeeded)
{
    for (const char* const name : {"LoadUserProfileW", "ImpersonateLoggedOnUser", "RevertToSelf"})
    {
        CStandIn stand;
        stand.missingFunction = name;
        CLogonSystem system;

        EXPECT_FALSE(system.CanLoadHives()) << name;
    }
}

TEST(LogonSystem, ShellIsTheProgramExplorerExeInAnyCase)
{
    CStandIn stand;
    CLogonSystem system;
    const auto isShell = [&](const WCHAR* path) {
        stand.processPath = path;
        return system.IsShell(kProcess);
    };

    EXPECT_TRUE(isShell(L"C:\\Windows\\explorer.exe"));
    EXPECT_TRUE(isShell(L"C:\\WINDOWS\\Explorer.EXE"));
    EXPECT_FALSE(isShell(L"C:\\Windows\\iexplorer.exe"));
    EXPECT_FALSE(isShell(L"C:\\Windows\\explorer.com"));
    EXPECT_FALSE(isShell(L"C:\\Windows\\explorer"));
    EXPECT_FALSE(isShell(L"C:\\explorer.exe\\other.exe"));
    EXPECT_FALSE(isShell(L"")) << "a path that cannot be read";
}
