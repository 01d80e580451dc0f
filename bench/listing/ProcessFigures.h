#pragma once

#include <windows.h>

#include <map>
#include <string>

/// Processor time and memory of a process, this one or another.
struct ProcessFigures
{
    double cpuMs = 0; ///< user and kernel together; the system counts in steps of 10 or 15 ms
    double workingSetKiB = 0;
    double privateKiB = 0;
};

ProcessFigures FiguresOf(HANDLE process);

/// The processor time of another process, in milliseconds. Wine gives every process its caller's own, so
/// there it is taken from the host system, by the path of the program.
double CpuMsOf(HANDLE process, const std::wstring& program);

/// Counts the processor time that one process, this or another, spends from the making of the meter on.
///
/// Under Wine the host system is asked, which counts each thread to the nanosecond; a thread that ends
/// meanwhile is not counted. Elsewhere the steps are those of ProcessFigures.
/// Owner: borrows the process.
class CCpuMeter
{
public:
    CCpuMeter(HANDLE process, const std::wstring& program);
    [[nodiscard]] double SpentMs() const;

private:
    HANDLE m_process;
    std::wstring m_folder; ///< Of the host's facts on the process; empty when there is none.
    std::map<std::wstring, double> m_threads; ///< Milliseconds of each at the start.
    double m_startMs;
};

/// Milliseconds of some steady clock.
double NowMs();
