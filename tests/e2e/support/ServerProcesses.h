#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// Ids of the running processes of a program, by the name of its file.
std::vector<DWORD> ProcessesOf(const std::wstring& fileName);

/// A process of its own that is watched until its end.
class CWatchedProcess
{
public:
    explicit CWatchedProcess(DWORD id);
    CWatchedProcess(const CWatchedProcess&) = delete;
    CWatchedProcess& operator=(const CWatchedProcess&) = delete;
    ~CWatchedProcess();

    [[nodiscard]] bool IsRunning() const;

    /// Waits for the end by itself; false when it does not come.
    [[nodiscard]] bool WaitForEnd() const;

    [[nodiscard]] DWORD ExitCode() const;

    /// For a test that is over.
    void End() const;

private:
    HANDLE m_process;
};

/// Registers a server for the time of one test, and ends its processes when the test is over.
class CRegisteredServer
{
public:
    /// `path` is that of the executable, which takes the registration verbs.
    explicit CRegisteredServer(const std::wstring& path);
    CRegisteredServer(const CRegisteredServer&) = delete;
    CRegisteredServer& operator=(const CRegisteredServer&) = delete;
    ~CRegisteredServer();

    [[nodiscard]] bool IsRegistered() const { return m_registered; }

    /// Ids of its running processes.
    [[nodiscard]] std::vector<DWORD> Processes() const;

private:
    std::wstring m_path;
    std::wstring m_fileName;
    bool m_registered;
};
