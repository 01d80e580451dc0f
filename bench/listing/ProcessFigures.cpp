#include "ProcessFigures.h"

#include <psapi.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <sstream>

namespace
{

/// A small file of the host's; empty when it is not there.
std::string HostFile(const std::wstring& path)
{
    std::string text;
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return text;
    }
    std::array<char, 4096> block{};
    DWORD cb = 0;
    while (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &cb, nullptr) != 0 &&
           cb != 0)
    {
        text.append(block.data(), cb);
    }
    CloseHandle(file);
    return text;
}

/// The folder of the host's facts on the process that runs `program`; empty when there is none.
std::wstring HostFolderOf(const std::wstring& program)
{
    std::string wanted;
    std::transform(program.begin(), program.end(), std::back_inserter(wanted), [](wchar_t unit) {
        return static_cast<char>(unit);
    });
    std::wstring folder;
    WIN32_FIND_DATAW found{};
    HANDLE search = FindFirstFileW(L"Z:\\proc\\*", &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return folder;
    }
    do
    {
        const std::wstring path = std::wstring(L"Z:\\proc\\") + found.cFileName;
        const bool isProcess = found.cFileName[0] >= L'0' && found.cFileName[0] <= L'9';
        if (isProcess && HostFile(path + L"\\cmdline").find(wanted) != std::string::npos)
        {
            folder = path;
        }
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
    return folder;
}

/// The milliseconds that each thread has run, by its name in the host's folder of the process.
std::map<std::wstring, double> ThreadTimes(const std::wstring& folder)
{
    std::map<std::wstring, double> times;
    if (folder.empty())
    {
        return times;
    }
    WIN32_FIND_DATAW found{};
    HANDLE search = FindFirstFileW((folder + L"\\task\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return times;
    }
    do
    {
        // Nanoseconds on a processor, then what was waited for one. The folder above tells of its first
        // thread once more.
        std::istringstream values(
            found.cFileName[0] == L'.'
                ? std::string()
                : HostFile(folder + L"\\task\\" + found.cFileName + L"\\schedstat"));
        double nanoseconds = 0;
        if (values >> nanoseconds)
        {
            times[found.cFileName] = nanoseconds / 1e6;
        }
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
    return times;
}

bool IsWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace

double CpuMsOf(HANDLE process, const std::wstring& program)
{
    if (!IsWine())
    {
        return FiguresOf(process).cpuMs;
    }
    // User and kernel time are the 12th and 13th value behind the name, in hundredths of a second.
    const std::string facts = HostFile(HostFolderOf(program) + L"\\stat");
    std::istringstream values(facts.substr(std::min(facts.size(), facts.rfind(')') + 1)));
    std::string skipped;
    for (int value = 0; value < 11; ++value)
    {
        values >> skipped;
    }
    double user = 0;
    double kernel = 0;
    values >> user >> kernel;
    return (user + kernel) * 10;
}

CCpuMeter::CCpuMeter(HANDLE process, const std::wstring& program)
    : m_process(process), m_folder(IsWine() ? HostFolderOf(program) : std::wstring()),
      m_threads(ThreadTimes(m_folder)), m_startMs(FiguresOf(process).cpuMs)
{
}

double CCpuMeter::SpentMs() const
{
    if (m_threads.empty())
    {
        return FiguresOf(m_process).cpuMs - m_startMs;
    }
    double spent = 0;
    for (const auto& [thread, timeMs] : ThreadTimes(m_folder))
    {
        const auto before = m_threads.find(thread);
        spent += timeMs - (before != m_threads.end() ? before->second : 0.0);
    }
    return spent;
}

ProcessFigures FiguresOf(HANDLE process)
{
    ProcessFigures figures;
    FILETIME made{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(process, &made, &ended, &kernel, &user) != 0)
    {
        const auto ticks = [](const FILETIME& time) {
            return static_cast<double>((ULONG64{time.dwHighDateTime} << 32) | time.dwLowDateTime);
        };
        figures.cpuMs = (ticks(kernel) + ticks(user)) / 1e4;
    }
    PROCESS_MEMORY_COUNTERS counters{};
    if (GetProcessMemoryInfo(process, &counters, sizeof counters) != 0)
    {
        figures.workingSetKiB = static_cast<double>(counters.WorkingSetSize) / 1024;
        figures.privateKiB = static_cast<double>(counters.PagefileUsage) / 1024;
    }
    return figures;
}

double NowMs()
{
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
