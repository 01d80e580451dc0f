// One listing of 100, 1,000 and 2,000 appointments, a tenth of them series and five attendees each, from
// the call to the event over COM: with a fresh server, and again from what it holds by then. Beside it the
// floor, a bare program's first reading of the same messages through the same calls, which makes the pauses
// that the server makes for the mail client's sake, one behind each attendee: between them the processor
// forgets much of what it had at hand. Apart from it the pauses alone, an event with as long a text from a
// bare COM server, and a later reading without pauses. Then a thousand listings in a row.
//
// listing_bench [APPOINTMENTS [RUNS] | row]: that size alone, or only the listings in a row.
#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>
#include <numeric>
#include <optional>
#include <vector>

#include "BenchSession.h"
#include "ChildProcess.h"
#include "EventFloor.h"

namespace
{

constexpr std::uint32_t kAttendees = 5;
constexpr unsigned kInARow = 1000;
constexpr unsigned kRowStep = 100;

/// What one size is measured by: more runs where one is short.
struct Size
{
    std::uint32_t appointments;
    unsigned runs;
    unsigned floorRounds;
};

constexpr std::array<Size, 3> kSizes = {{{100, 20, 100}, {1000, 9, 20}, {2000, 5, 10}}};

struct Cost
{
    double wallMs = 0;
    double cpuMs = 0;
};

double MedianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

/// One run of the floor's program, which is to do something so often.
bool RunFloor(const std::wstring& arguments, unsigned wanted, std::vector<Cost>& costs)
{
    const ProgramResult result = RunProgram(BuildPath(L"bench\\listing_floor.exe"), arguments);
    unsigned done = 0;
    Cost cost;
    if (std::sscanf(result.output.c_str(), "%u %lf %lf", &done, &cost.wallMs, &cost.cpuMs) != 3 ||
        done != wanted)
    {
        std::fprintf(
            stderr, "The floor counts %u, not %u. %s\n", done, wanted, result.errors.c_str());
        return false;
    }
    costs.push_back(cost);
    return true;
}

/// The middle of each.
Cost FiguresOf(const std::vector<Cost>& costs)
{
    std::vector<double> walls;
    std::vector<double> cpus;
    for (const Cost& cost : costs)
    {
        walls.push_back(cost.wallMs);
        cpus.push_back(cost.cpuMs);
    }
    return {MedianOf(walls), MedianOf(cpus)};
}

/// Lists once and counts the server's processor time.
bool ListOnce(CBenchSession& session, std::uint32_t wanted, std::vector<Cost>& listings)
{
    const CCpuMeter meter = session.Meter();
    Cost cost;
    cost.wallMs = session.List();
    cost.cpuMs = meter.SpentMs();
    listings.push_back(cost);
    if (session.Appointments() != wanted)
    {
        std::fprintf(
            stderr, "The listing has %zu appointments, not %u.\n", session.Appointments(), wanted);
        return false;
    }
    return true;
}

/// What is measured side by side, run by run, so that a slower minute of the machine slows all of it.
struct Measured
{
    std::vector<Cost> first;  ///< The first listing of a new server.
    std::vector<Cost> again;  ///< Its second.
    std::vector<Cost> paused; ///< A new bare program's first reading, with the pauses.
    std::vector<Cost> pauses; ///< The pauses alone.
    std::vector<Cost> warm;   ///< A later reading of a bare program, without pauses.
    std::vector<Cost> event;  ///< An event of a bare server.
    std::array<ProcessFigures, 3> memory;
    std::size_t characters = 0;
};

bool MeasureServer(const Size& size, Measured& measured)
{
    CBenchSession session;
    if (!session.Start())
    {
        return false;
    }
    measured.memory[0] = session.Server();
    if (!ListOnce(session, size.appointments, measured.first))
    {
        return false;
    }
    measured.memory[1] = session.Server();
    if (!ListOnce(session, size.appointments, measured.again))
    {
        return false;
    }
    measured.memory[2] = session.Server();
    measured.characters = session.Document().size();
    return true;
}

bool MeasureRun(const CBenchMachine& machine, const Size& size, Measured& measured)
{
    const std::wstring folder = L"\"" + machine.Folder() + L"\" ";
    const unsigned pauses = size.appointments * kAttendees;
    if (!MeasureServer(size, measured) ||
        !RunFloor(folder + L"1 pauses", size.appointments, measured.paused) ||
        !RunFloor(L"pauses " + std::to_wstring(pauses), pauses, measured.pauses) ||
        !RunFloor(folder + std::to_wstring(size.floorRounds), size.appointments, measured.warm))
    {
        return false;
    }
    const std::optional<EventCost> event = MeasureEventFloor(measured.characters, 1);
    if (event)
    {
        measured.event.push_back({event->wallMs, event->cpuMs});
    }
    return event.has_value();
}

void Print(const Size& size, const Measured& measured)
{
    const Cost first = FiguresOf(measured.first);
    const Cost again = FiguresOf(measured.again);
    const Cost pauses = FiguresOf(measured.pauses);
    const Cost event = FiguresOf(measured.event);
    const Cost warm = FiguresOf(measured.warm);
    const double floor = FiguresOf(measured.paused).cpuMs - pauses.cpuMs;
    std::vector<double> beyond;
    for (std::size_t run = 0; run < measured.first.size(); ++run)
    {
        beyond.push_back(measured.first[run].cpuMs - measured.paused[run].cpuMs -
                         measured.event[run].cpuMs);
    }
    const double middle = MedianOf(beyond);
    std::printf("%u appointments, %u series among them, %zu characters; middle of %u servers:\n",
                size.appointments,
                size.appointments / 10,
                measured.characters,
                size.runs);
    std::printf("  first listing    %9.1f ms, of which %9.1f ms are %u pauses\n",
                first.wallMs,
                pauses.wallMs,
                size.appointments * kAttendees);
    std::printf(
        "  a bare event     %9.1f ms: as long a text from a server that does nothing else\n",
        event.wallMs);
    std::printf("  processor time   %9.1f ms: %.1f the pauses, %.1f the floor, %.1f a bare event, "
                "%.1f beyond these (mean %.1f)\n",
                first.cpuMs,
                pauses.cpuMs,
                floor,
                event.cpuMs,
                middle,
                std::accumulate(beyond.begin(), beyond.end(), 0.0) /
                    static_cast<double>(beyond.size()));
    std::printf("  beyond is        %9.2f of the floor between pauses; %.2f of the %.1f ms of a "
                "reading without them\n",
                middle / floor,
                middle / warm.cpuMs,
                warm.cpuMs);
    std::printf(
        "  again            %9.1f ms, processor time %9.1f ms\n", again.wallMs, again.cpuMs);
    std::printf(
        "  working set      %9.0f KiB before, %9.0f KiB behind the first, %9.0f KiB behind the "
        "second\n",
        measured.memory[0].workingSetKiB,
        measured.memory[1].workingSetKiB,
        measured.memory[2].workingSetKiB);
    std::fflush(stdout);
}

bool MeasureSize(const CBenchMachine& machine, const Size& size)
{
    SampleShape shape;
    shape.messages = size.appointments;
    shape.recurringEvery = 10;
    shape.attendees = kAttendees;
    machine.PutStore(shape);
    Measured measured;
    for (unsigned run = 0; run < size.runs; ++run)
    {
        std::fprintf(
            stderr, "\r%u appointments: run %u of %u ", size.appointments, run + 1, size.runs);
        if (!MeasureRun(machine, size, measured))
        {
            return false;
        }
    }
    std::fputc('\n', stderr);
    Print(size, measured);
    return true;
}

/// A leak shows as a series that climbs to its end; the first listings fill the store and the heaps, and the
/// 10,000 released objects that the mail library keeps. The floor are as many events of a bare COM server.
bool MeasureRow(const CBenchMachine& machine)
{
    SampleShape shape;
    shape.messages = 100;
    shape.recurringEvery = 10;
    shape.attendees = kAttendees;
    machine.PutStore(shape);
    std::vector<ProcessFigures> ours;
    std::size_t characters = 0;
    {
        CBenchSession session;
        if (!session.Start())
        {
            return false;
        }
        for (unsigned listing = 1; listing <= kInARow; ++listing)
        {
            session.List();
            if (listing == 1 || listing % kRowStep == 0)
            {
                ours.push_back(session.Server());
            }
        }
        characters = session.Document().size();
    }
    const std::vector<double> bare = MeasureEventMemory(characters, kInARow, kRowStep);
    if (bare.size() != ours.size())
    {
        return false;
    }
    std::printf(
        "%u listings of 100 appointments in a row, in KiB; floor: as many events as long from "
        "a bare COM server:\n",
        kInARow);
    std::printf("  %5s %12s %12s %12s\n", "", "working set", "private", "floor");
    for (std::size_t row = 0; row < ours.size(); ++row)
    {
        std::printf("  %5zu %12.0f %12.0f %12.0f\n",
                    row == 0 ? 1 : row * kRowStep,
                    ours[row].workingSetKiB,
                    ours[row].privateKiB,
                    bare[row]);
    }
    const std::size_t middle = ours.size() / 2;
    const double since = kInARow - static_cast<double>(middle * kRowStep);
    std::printf("  grows from the %zuth on by %.2f KiB a listing, floor %.2f KiB an event\n",
                middle * kRowStep,
                (ours.back().workingSetKiB - ours[middle].workingSetKiB) / since,
                (bare.back() - bare[middle]) / since);
    return true;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    // Keeps the desktop, and is the frame window that the server looks for between two sessions.
    dtclient::CClientFrame frame;
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) || FAILED(frame.Create()))
    {
        return 1;
    }
    const unsigned long wanted = argc >= 2 ? std::wcstoul(argv[1], nullptr, 10) : 0;
    const unsigned long runs = argc >= 3 ? std::wcstoul(argv[2], nullptr, 10) : 0;
    const CBenchMachine machine;
    if (argc == 2 && std::wcscmp(argv[1], L"row") == 0)
    {
        return MeasureRow(machine) ? 0 : 1;
    }
    for (Size size : kSizes)
    {
        if (wanted != 0 && wanted != size.appointments)
        {
            continue;
        }
        size.runs = runs != 0 ? static_cast<unsigned>(runs) : size.runs;
        if (!MeasureSize(machine, size))
        {
            return 1;
        }
    }
    return wanted != 0 || MeasureRow(machine) ? 0 : 1;
}
