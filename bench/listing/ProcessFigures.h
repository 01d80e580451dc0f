#pragma once

#include <windows.h>

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

/// Milliseconds of some steady clock.
double NowMs();
