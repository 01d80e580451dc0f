#include "LogonSystem.h"

#include <windows.h>

#include <psapi.h>
#include <shlwapi.h>
#include <userenv.h>

#include <memory>
#include <new>

#include "Handle.h"

namespace
{

constexpr DWORD kProcessAccess = PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_VM_READ;
constexpr DWORD kUserNameRoom = 260;

using ImpersonateFn = BOOL(WINAPI*)(HANDLE);
using RevertFn = BOOL(WINAPI*)();
using LoadUserProfileFn = BOOL(WINAPI*)(HANDLE, PROFILEINFOW*);
using UnloadUserProfileFn = BOOL(WINAPI*)(HANDLE, HANDLE);

struct SidFreer
{
    void operator()(void* sid) const noexcept { FreeSid(sid); }
};
using CSid = std::unique_ptr<void, SidFreer>;

CSid InteractiveGroup() noexcept
{
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    PSID sid = nullptr;
    if (!AllocateAndInitializeSid(
            &authority, 1, SECURITY_INTERACTIVE_RID, 0, 0, 0, 0, 0, 0, 0, &sid))
    {
        return nullptr;
    }
    return CSid(sid);
}

/// The groups of a token as one block, null when they cannot be read.
std::unique_ptr<BYTE[]> GroupsOf(HANDLE token) noexcept
{
    DWORD cb = 0;
    GetTokenInformation(token, TokenGroups, nullptr, 0, &cb);
    if (cb < sizeof(TOKEN_GROUPS))
    {
        return nullptr;
    }
    std::unique_ptr<BYTE[]> groups(new (std::nothrow) BYTE[cb]);
    if (groups != nullptr && !GetTokenInformation(token, TokenGroups, groups.get(), cb, &cb))
    {
        return nullptr;
    }
    return groups;
}

} // namespace

bool IsProcessInteractive() noexcept
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
    {
        return true;
    }
    const CHandle token(opened);
    const std::unique_ptr<BYTE[]> block = GroupsOf(token.Get());
    const CSid interactive = InteractiveGroup();
    if (block == nullptr || interactive == nullptr)
    {
        return true;
    }
    const auto* const groups = reinterpret_cast<const TOKEN_GROUPS*>(block.get());
    for (DWORD i = 0; i < groups->GroupCount; ++i)
    {
        if (EqualSid(groups->Groups[i].Sid, interactive.get()))
        {
            return true;
        }
    }
    return false;
}

bool CLogonSystem::IsInteractive() noexcept
{
    return IsProcessInteractive();
}

ILogonSystem::ConsoleSessionFn CLogonSystem::FindConsoleSession(bool& isModuleFound) noexcept
{
    const HMODULE kernel = GetModuleHandleW(L"Kernel32.dll");
    isModuleFound = kernel != nullptr;
    return isModuleFound ? ProcAddress<ConsoleSessionFn>(kernel, "WTSGetActiveConsoleSessionId")
                         : nullptr;
}

bool CLogonSystem::ListProcesses(DWORD* ids, DWORD cbIds, DWORD& cbListed) noexcept
{
    return EnumProcesses(ids, cbIds, &cbListed) != FALSE;
}

HANDLE CLogonSystem::OpenOne(DWORD processId) noexcept
{
    static_assert(kProcessAccess == 0x1010);
    return OpenProcess(kProcessAccess, FALSE, processId);
}

bool CLogonSystem::SessionOf(DWORD processId, DWORD& session) noexcept
{
    return ProcessIdToSessionId(processId, &session) != FALSE;
}

bool CLogonSystem::IsShell(HANDLE process) noexcept
{
    WCHAR path[MAX_PATH] = {};
    if (GetModuleFileNameExW(process, nullptr, path, MAX_PATH) == 0)
    {
        return false;
    }
    return lstrcmpiW(PathFindFileNameW(path), L"explorer.exe") == 0;
}

bool CLogonSystem::TokenOf(HANDLE process, HANDLE* token) noexcept
{
    static_assert(TOKEN_ALL_ACCESS == 0xF01FF);
    return OpenProcessToken(process, TOKEN_ALL_ACCESS, token) != FALSE;
}

bool CLogonSystem::CanLoadHives() noexcept
{
    return m_userenv.LoadSystemLibrary(L"userenv.dll") &&
           m_advapi.LoadSystemLibrary(L"advapi32.dll") &&
           m_userenv.Find<LoadUserProfileFn>("LoadUserProfileW") != nullptr &&
           m_advapi.Find<ImpersonateFn>("ImpersonateLoggedOnUser") != nullptr &&
           m_advapi.Find<RevertFn>("RevertToSelf") != nullptr;
}

HKEY CLogonSystem::LoadHive(HANDLE token) noexcept
{
    if (m_advapi.Find<ImpersonateFn>("ImpersonateLoggedOnUser")(token))
    {
        m_advapi.Find<RevertFn>("RevertToSelf")();
    }
    // Impersonation has ended here, so this is the account of the process itself. Settings have
    // always been read by that name, and readers depend on which hive it gives.
    WCHAR user[kUserNameRoom] = {};
    DWORD cchUser = kUserNameRoom;
    GetUserNameW(user, &cchUser);

    PROFILEINFOW profile{};
    static_assert(sizeof(profile) == 56);
    profile.dwSize = sizeof(profile);
    profile.dwFlags = PI_NOUI;
    profile.lpUserName = user;
    if (!m_userenv.Find<LoadUserProfileFn>("LoadUserProfileW")(token, &profile))
    {
        return nullptr;
    }
    return static_cast<HKEY>(profile.hProfile);
}

void CLogonSystem::UnloadHive(HANDLE token, HKEY hive) noexcept
{
    const auto unload = m_userenv.Find<UnloadUserProfileFn>("UnloadUserProfile");
    if (unload != nullptr)
    {
        unload(token, hive);
    }
}
