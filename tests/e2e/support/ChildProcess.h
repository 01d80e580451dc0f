#pragma once

#include <windows.h>

#include <string>
#include <thread>

/// How long a test waits for what must come: long beyond any bound of the server's, so that only
/// something that never comes ends a wait.
constexpr DWORD kPatienceMs = 60000;

/// Path of a file in the build folder, such as L"dtOIEx64.exe" or L"tests\\e2e_client.exe".
std::wstring BuildPath(const std::wstring& relative);

/// A child process with its standard streams.
///
/// The end of the output is that of the process, not of the pipe: Wine's desktop process, which the
/// first window starts, may hold the pipe for as long as it likes.
class CChildProcess
{
public:
    CChildProcess() = default;
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;
    ~CChildProcess();

    /// `withInput` gives the child a pipe as standard input. Standard error goes where standard output
    /// goes, unless `errors`, an inheritable handle, is given.
    bool Start(const std::wstring& program,
               const std::wstring& arguments,
               bool withInput,
               HANDLE errors = nullptr);

    /// Reads one line of standard output without its end; false at the end of the output.
    bool ReadLine(std::string& line);

    /// The rest of standard output.
    std::string ReadRest();

    bool WriteLine(const std::string& line);
    void CloseInput();

    /// Waits for the end. 0xFFFFFFFF when it does not come.
    DWORD Wait();

    [[nodiscard]] HANDLE Handle() const { return m_process; }
    [[nodiscard]] DWORD Id() const { return GetProcessId(m_process); }

private:
    HANDLE m_process = nullptr;
    HANDLE m_output = nullptr;
    HANDLE m_outputEnd = nullptr; ///< Ours, of the child's side of the pipe.
    HANDLE m_input = nullptr;
    std::string m_buffer;
    bool m_ended = false;
    std::thread m_watcher; ///< Marks the end of the output when the process has ended.
};

/// What a program that ends by itself leaves behind.
struct ProgramResult
{
    DWORD exitCode = 0xFFFFFFFF;
    std::string output;
    std::string errors; ///< What went to standard error.
};

/// Runs a program to its end.
ProgramResult RunProgram(const std::wstring& program, const std::wstring& arguments);
