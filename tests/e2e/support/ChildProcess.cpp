#include "ChildProcess.h"

#include <array>
#include <string_view>
#include <utility>

namespace
{
void CloseIfOpen(HANDLE& handle)
{
    if (handle != nullptr)
    {
        CloseHandle(std::exchange(handle, nullptr));
    }
}

// What the watcher writes behind all that the process has written.
constexpr std::string_view kEndMark = "\x04-end-of-output-\x04\n";
} // namespace

std::wstring BuildPath(const std::wstring& relative)
{
    // The tests stand in BUILD\tests.
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    std::wstring folder(path.data());
    folder.resize(folder.rfind(L'\\'));
    folder.resize(folder.rfind(L'\\'));
    return folder + L"\\" + relative;
}

CChildProcess::~CChildProcess()
{
    CloseInput();
    if (m_process != nullptr)
    {
        // A child that does not end with its input is of no use to anybody any more.
        if (WaitForSingleObject(m_process, kPatienceMs) != WAIT_OBJECT_0)
        {
            TerminateProcess(m_process, 98);
        }
        CloseIfOpen(m_output); // frees a watcher that finds the pipe full
        m_watcher.join();
        CloseIfOpen(m_process);
    }
    CloseIfOpen(m_output);
    CloseIfOpen(m_outputEnd);
}

bool CChildProcess::Start(const std::wstring& program,
                          const std::wstring& arguments,
                          bool withInput,
                          HANDLE errors)
{
    SECURITY_ATTRIBUTES inherited{};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    HANDLE childOutput = nullptr;
    HANDLE childInput = nullptr;
    if (CreatePipe(&m_output, &childOutput, &inherited, 0) == 0)
    {
        return false;
    }
    SetHandleInformation(m_output, HANDLE_FLAG_INHERIT, 0);
    if (withInput && CreatePipe(&childInput, &m_input, &inherited, 0) != 0)
    {
        SetHandleInformation(m_input, HANDLE_FLAG_INHERIT, 0);
    }

    std::wstring commandLine = L"\"" + program + L"\" " + arguments;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = childInput;
    start.hStdOutput = childOutput;
    start.hStdError = errors != nullptr ? errors : childOutput;
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessW(program.c_str(),
                                        commandLine.data(),
                                        nullptr,
                                        nullptr,
                                        TRUE,
                                        0,
                                        nullptr,
                                        nullptr,
                                        &start,
                                        &process);
    CloseIfOpen(childInput);
    SetHandleInformation(childOutput, HANDLE_FLAG_INHERIT, 0);
    m_outputEnd = childOutput;
    if (started == 0)
    {
        return false;
    }
    CloseHandle(process.hThread);
    m_process = process.hProcess;
    m_watcher = std::thread([this] {
        WaitForSingleObject(m_process, INFINITE);
        DWORD cbWritten = 0;
        WriteFile(
            m_outputEnd, kEndMark.data(), static_cast<DWORD>(kEndMark.size()), &cbWritten, nullptr);
    });
    return true;
}

bool CChildProcess::ReadLine(std::string& line)
{
    for (;;)
    {
        const std::size_t end = m_buffer.find('\n');
        if (m_ended)
        {
            return false;
        }
        if (end != std::string::npos)
        {
            line = m_buffer.substr(0, end);
            m_buffer.erase(0, end + 1);
            if (line.ends_with(kEndMark.substr(0, kEndMark.size() - 1)))
            {
                m_ended = true;
                line.resize(line.size() - (kEndMark.size() - 1));
                m_buffer = line;
                return false;
            }
            if (!line.empty() && line.back() == '\r')
            {
                line.pop_back();
            }
            return true;
        }
        std::array<char, 4096> block{};
        DWORD cbRead = 0;
        if (ReadFile(m_output, block.data(), static_cast<DWORD>(block.size()), &cbRead, nullptr) ==
                0 ||
            cbRead == 0)
        {
            return false;
        }
        m_buffer.append(block.data(), cbRead);
    }
}

std::string CChildProcess::ReadRest()
{
    std::string text;
    for (std::string line; ReadLine(line);)
    {
        text += line + "\n";
    }
    return text + std::exchange(m_buffer, std::string());
}

bool CChildProcess::WriteLine(const std::string& line)
{
    const std::string text = line + "\n";
    DWORD cbWritten = 0;
    return WriteFile(m_input, text.data(), static_cast<DWORD>(text.size()), &cbWritten, nullptr) !=
           0;
}

void CChildProcess::CloseInput()
{
    CloseIfOpen(m_input);
}

DWORD CChildProcess::Wait()
{
    DWORD code = 0xFFFFFFFF;
    if (WaitForSingleObject(m_process, kPatienceMs) == WAIT_OBJECT_0)
    {
        GetExitCodeProcess(m_process, &code);
    }
    return code;
}

namespace
{
// An inheritable file that goes with its last handle.
HANDLE MakeErrorFile()
{
    std::array<wchar_t, MAX_PATH> folder{};
    std::array<wchar_t, MAX_PATH> path{};
    GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    GetTempFileNameW(folder.data(), L"e2e", 0, path.data());
    SECURITY_ATTRIBUTES inherited{};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    return CreateFileW(path.data(),
                       GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       &inherited,
                       CREATE_ALWAYS,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                       nullptr);
}

std::string ReadFromStart(HANDLE file)
{
    std::string text;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::array<char, 4096> block{};
    DWORD cbRead = 0;
    while (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &cbRead, nullptr) != 0 &&
           cbRead != 0)
    {
        text.append(block.data(), cbRead);
    }
    return text;
}
} // namespace

ProgramResult RunProgram(const std::wstring& program, const std::wstring& arguments)
{
    ProgramResult result;
    std::string notStarted;
    HANDLE errors = MakeErrorFile();
    {
        CChildProcess child;
        if (child.Start(program, arguments, false, errors))
        {
            result.output = child.ReadRest();
            result.exitCode = child.Wait();
        }
        else
        {
            notStarted = "the program did not start, error " + std::to_string(GetLastError());
        }
    }
    result.errors = notStarted + ReadFromStart(errors);
    CloseHandle(errors);
    return result;
}
