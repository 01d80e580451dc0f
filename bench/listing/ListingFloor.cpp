// listing_floor FOLDER ROUNDS [pauses]: reads the first week of the sample store so often, with the server's
// pauses if they are asked for, and prints, in one line, messages, milliseconds and milliseconds of processor
// time a round.
#include <windows.h>

#include <cstdio>
#include <cwchar>

#include "FloorReader.h"
#include "ProcessFigures.h"

int wmain(int argc, wchar_t** argv)
{
    if (argc != 3 && argc != 4)
    {
        std::fputs("usage: listing_floor FOLDER ROUNDS [pauses]\n", stderr);
        return 2;
    }
    const unsigned long rounds = std::wcstoul(argv[2], nullptr, 10);
    CFloorReader reader(argv[1], argc == 4);
    unsigned messages = 0;
    const double start = NowMs();
    const double cpuStart = FiguresOf(GetCurrentProcess()).cpuMs;
    for (unsigned long round = 0; round < rounds; ++round)
    {
        messages = reader.Read();
    }
    const double cpu = FiguresOf(GetCurrentProcess()).cpuMs - cpuStart;
    std::printf("%u %.3f %.3f\n",
                messages,
                (NowMs() - start) / static_cast<double>(rounds),
                cpu / static_cast<double>(rounds));
    return 0;
}
