#pragma once

#include <windows.h>

#include "DllHandle.h"
#include "UserProfile.h"

/// The real system behind CUserProfile. Loads "userenv.dll" and "advapi32.dll" only when a hive has
/// to be loaded, and only from the system directory.
class CLogonSystem final : public ILogonSystem
{
public:
    constexpr CLogonSystem() noexcept = default;

    bool IsInteractive() noexcept override;
    OsClass Class() noexcept override { return CurrentOsClass(); }
    ConsoleSessionFn FindConsoleSession(bool& isModuleFound) noexcept override;
    bool ListProcesses(DWORD* ids, DWORD cbIds, DWORD& cbListed) noexcept override;
    HANDLE OpenOne(DWORD processId) noexcept override;
    bool SessionOf(DWORD processId, DWORD& session) noexcept override;
    bool IsShell(HANDLE process) noexcept override;
    bool TokenOf(HANDLE process, HANDLE* token) noexcept override;
    bool CanLoadHives() noexcept override;
    HKEY LoadHive(HANDLE token) noexcept override;
    void UnloadHive(HANDLE token, HKEY hive) noexcept override;

private:
    CDLLHandle m_userenv;
    CDLLHandle m_advapi;
};

/// Whether the token of the process holds the group of interactive logons, S-1-5-4. True when the
/// groups cannot be read.
[[nodiscard]] bool IsProcessInteractive() noexcept;
