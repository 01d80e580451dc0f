#include <windows.h>

#include <algorithm>
#include <array>
#include <optional>

#include "Handle.h"
#include "UserProfile.h"

namespace
{

constexpr DWORD kNoConsoleSession = 0xFFFFFFFF;
constexpr std::size_t kMostProcesses = 1024;

/// The console session as far as the system knows sessions; `isUsable` falls when the search has to
/// end here.
std::optional<DWORD> ConsoleSession(ILogonSystem& system, bool& isUsable) noexcept
{
    isUsable = true;
    if (static_cast<int>(system.Class()) <= static_cast<int>(OsClass::Windows2000))
    {
        return std::nullopt;
    }
    isUsable = false;
    bool isModuleFound = false;
    const ILogonSystem::ConsoleSessionFn find = system.FindConsoleSession(isModuleFound);
    if (!isModuleFound)
    {
        OutputDebugStringW(L"CDTCallProcess::GetCurrentLogonUserToken: "
                           L"LoadSystemLibrary Kernel32.dll FAILED!\n");
        return std::nullopt;
    }
    if (find == nullptr)
    {
        return std::nullopt;
    }
    const DWORD session = find();
    if (session == kNoConsoleSession)
    {
        OutputDebugStringW(
            L"CDTCallProcess::GetCurrentLogonUserToken: dwConsoleSessionId is 0xffffffff!\n");
        return std::nullopt;
    }
    isUsable = true;
    return session;
}

bool IsOfLogonUser(ILogonSystem& system,
                   const std::optional<DWORD>& session,
                   DWORD processId,
                   HANDLE process) noexcept
{
    if (!session)
    {
        return system.IsShell(process);
    }
    DWORD found = 0;
    return system.SessionOf(processId, found) && found == *session;
}

} // namespace

void CDTCallProcess::GetCurrentLogonUserToken(CUserProfile& profile) noexcept
{
    if (profile.m_hToken != nullptr)
    {
        return;
    }
    ILogonSystem& system = profile.m_system;
    bool isUsable = false;
    const std::optional<DWORD> session = ConsoleSession(system, isUsable);
    if (!isUsable)
    {
        return;
    }
    std::array<DWORD, kMostProcesses> ids{};
    DWORD cbListed = 0;
    if (!system.ListProcesses(ids.data(), sizeof(ids), cbListed))
    {
        OutputDebugStringW(L"CDTCallProcess::GetCurrentLogonUserToken: pfnEnumProcesses FAILED!\n");
        return;
    }
    const std::size_t count = std::min(ids.size(), cbListed / sizeof(DWORD));
    for (std::size_t i = 0; i < count && profile.m_hToken == nullptr; ++i)
    {
        const CHandle process(system.OpenOne(ids[i]));
        if (process && IsOfLogonUser(system, session, ids[i], process.Get()) &&
            !system.TokenOf(process.Get(), &profile.m_hToken))
        {
            profile.m_hToken = nullptr;
        }
    }
}
