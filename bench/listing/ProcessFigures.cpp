#include "ProcessFigures.h"

#include <psapi.h>

#include <chrono>

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
