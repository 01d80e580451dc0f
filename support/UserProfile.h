#pragma once

#include <windows.h>

#include "OsClass.h"

/// What CUserProfile asks of the system, so that a process that is not interactive can be stood in
/// for.
class ILogonSystem
{
public:
    constexpr ILogonSystem() noexcept = default;
    ILogonSystem(const ILogonSystem&) = delete;
    ILogonSystem& operator=(const ILogonSystem&) = delete;

    /// Whether the process belongs to the interactive group; true in doubt.
    virtual bool IsInteractive() noexcept = 0;
    virtual OsClass Class() noexcept = 0;
    /// The function of Kernel32.dll that names the console session. Sets `isModuleFound`.
    using ConsoleSessionFn = DWORD(WINAPI*)();
    virtual ConsoleSessionFn FindConsoleSession(bool& isModuleFound) noexcept = 0;
    virtual bool ListProcesses(DWORD* ids, DWORD cbIds, DWORD& cbListed) noexcept = 0;
    /// A null handle when the process may not be opened.
    virtual HANDLE OpenOne(DWORD processId) noexcept = 0;
    virtual bool SessionOf(DWORD processId, DWORD& session) noexcept = 0;
    /// Whether the process runs a program called explorer.exe, in any case.
    virtual bool IsShell(HANDLE process) noexcept = 0;
    virtual bool TokenOf(HANDLE process, HANDLE* token) noexcept = 0;
    /// Loads the libraries that the next two need; false when one of their functions is missing.
    virtual bool CanLoadHives() noexcept = 0;
    /// Loads the hive of the token's user, null when that fails.
    virtual HKEY LoadHive(HANDLE token) noexcept = 0;
    virtual void UnloadHive(HANDLE token, HKEY hive) noexcept = 0;

protected:
    ~ILogonSystem() = default;
};

/// The settings of the person at the console, for a process that may run under another account.
///
/// Owner:  the hive and the token, until the process ends.
/// Thread: the work thread asks first, while the mail system is brought up. There is no lock.
/// Errors: every failure leads back to HKEY_CURRENT_USER.
class CUserProfile final
{
public:
    explicit constexpr CUserProfile(ILogonSystem& system) noexcept : m_system(system) {}
    CUserProfile(const CUserProfile&) = delete;
    CUserProfile& operator=(const CUserProfile&) = delete;
    ~CUserProfile();

    /// The key of the one instance of the process.
    static HKEY RootKey() noexcept;

    /// HKEY_CURRENT_USER for an interactive process, else the hive of the logged-on user. Found out
    /// once.
    HKEY GetRootKey() noexcept;

private:
    friend class CDTCallProcess;

    ILogonSystem& m_system;
    HKEY m_hProfile = nullptr;
    HANDLE m_hToken = nullptr;
};

/// Finds processes of the logged-on user.
class CDTCallProcess final
{
public:
    /// Fills the profile's token, unless it has one, with that of the first process of the console
    /// session that lets its token be opened. (Systems without console sessions: of the first
    /// explorer.exe.) What fails is told to the debugger; the token then stays null.
    static void GetCurrentLogonUserToken(CUserProfile& profile) noexcept;
};
