#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

/// The best of several runs of `work`, in operations a second. The best run is the one that the rest of
/// the machine disturbed least.
template <typename Work>
double BestRate(int runs, int operations, Work work)
{
    double best = 0;
    for (int run = 0; run < runs; run++)
    {
        const auto start = std::chrono::steady_clock::now();
        work(operations);
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        best = std::max(best, operations / spent.count());
    }
    return best;
}

/// Prints one figure beside the floor that it is held against.
inline void PrintFigure(const char* what, double rate, const char* floorName, double floorRate)
{
    std::printf("%-52s %12.0f /s   %-28s %12.0f /s   %5.2f of it\n",
                what,
                rate,
                floorName,
                floorRate,
                rate / floorRate);
    std::fflush(stdout);
}
