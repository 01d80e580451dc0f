// listing_floor FOLDER ROUNDS [pauses]: reads the first week of the sample store so often, with the server's
// pauses if they are asked for, and prints, in one line, messages, milliseconds and milliseconds of processor
// time a round.
// listing_floor pauses COUNT: as many pauses and nothing else; prints the same of one round.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <functional>

#include "FloorReader.h"
#include "ProcessFigures.h"

namespace
{

/// Runs `round` so often, and prints what one took.
void Measure(unsigned long rounds, const std::function<unsigned()>& round)
{
    unsigned done = 0;
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    // A process that looks at itself pays for the look: what that takes is seen first.
    const double look = CCpuMeter(GetCurrentProcess(), program).SpentMs();
    const CCpuMeter meter(GetCurrentProcess(), program);
    const double start = NowMs();
    for (unsigned long number = 0; number < rounds; ++number)
    {
        done = round();
    }
    const double spent = NowMs() - start;
    const double cpu = meter.SpentMs() - look;
    std::printf("%u %.3f %.3f\n",
                done,
                spent / static_cast<double>(rounds),
                cpu / static_cast<double>(rounds));
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc == 3 && std::wcscmp(argv[1], L"pauses") == 0)
    {
        const unsigned long pauses = std::wcstoul(argv[2], nullptr, 10);
        Measure(1, [pauses] {
            for (unsigned long pause = 0; pause < pauses; ++pause)
            {
                Sleep(1);
            }
            return static_cast<unsigned>(pauses);
        });
        return 0;
    }
    if (argc != 3 && argc != 4)
    {
        std::fputs("usage: listing_floor FOLDER ROUNDS [pauses]\n"
                   "       listing_floor pauses COUNT\n",
                   stderr);
        return 2;
    }
    CFloorReader reader(argv[1], argc == 4);
    Measure(std::wcstoul(argv[2], nullptr, 10), [&reader] { return reader.Read(); });
    return 0;
}
