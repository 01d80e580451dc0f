#pragma once

#include <windows.h>

/// Processor time and memory of a process, this one or another.
struct ProcessFigures
{
    double cpuMs = 0; ///< user and kernel together; the system counts in steps of 10 or 15 ms
    double workingSetKiB = 0;
    double privateKiB = 0;
};

ProcessFigures FiguresOf(HANDLE process);

/// Milliseconds of some steady clock.
double NowMs();
