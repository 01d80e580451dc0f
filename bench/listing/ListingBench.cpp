// One listing of 100, 1,000 and 2,000 appointments, a tenth of them series and five attendees each, from
// the call to the event over COM: with a fresh server, and again from what it holds by then. Beside it the
// floor, a bare reading of the same messages through the same calls; and apart, the pauses that the server
// makes for the mail client's sake, one behind each attendee, and an event with as long a text from a bare
// COM server. Then a thousand listings in a row.
//
// listing_bench [APPOINTMENTS | row]: that size alone, or only the listings in a row.
#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>
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

/// What one size is measured by: more runs where one is short, since the system counts processor time in
/// long steps.
struct Size
{
    std::uint32_t appointments;
    unsigned runs;
    unsigned floorRounds;
};

constexpr std::array<Size, 3> kSizes = {{{100, 10, 100}, {1000, 5, 20}, {2000, 5, 10}}};

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

double MeanOf(const std::vector<double>& values)
{
    double sum = 0;
    for (const double value : values)
    {
        sum += value;
    }
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

bool MeasureFloor(const CBenchMachine& machine,
                  const Size& size,
                  unsigned rounds,
                  const wchar_t* how,
                  Cost& floor)
{
    std::vector<double> walls;
    std::vector<double> cpus;
    for (unsigned run = 0; run < 3; ++run)
    {
        const ProgramResult result =
            RunProgram(BuildPath(L"bench\\listing_floor.exe"),
                       L"\"" + machine.Folder() + L"\" " + std::to_wstring(rounds) + how);
        unsigned messages = 0;
        double wall = 0;
        double cpu = 0;
        if (std::sscanf(result.output.c_str(), "%u %lf %lf", &messages, &wall, &cpu) != 3 ||
            messages != size.appointments)
        {
            std::fprintf(
                stderr, "The floor reads %u messages. %s\n", messages, result.errors.c_str());
            return false;
        }
        walls.push_back(wall);
        cpus.push_back(cpu);
    }
    floor = {MedianOf(walls), MedianOf(cpus)};
    return true;
}

struct Listings
{
    std::vector<double> walls;
    std::vector<double> cpus;
    [[nodiscard]] Cost Figures() const { return {MedianOf(walls), MeanOf(cpus)}; }
};

/// Lists once and counts the server's processor time.
bool ListOnce(CBenchSession& session, std::uint32_t wanted, Listings& listings)
{
    const double before = session.Server().cpuMs;
    const double wall = session.List();
    listings.walls.push_back(wall);
    listings.cpus.push_back(session.Server().cpuMs - before);
    if (session.Appointments() != wanted)
    {
        std::fprintf(
            stderr, "The listing has %zu appointments, not %u.\n", session.Appointments(), wanted);
        return false;
    }
    return true;
}

bool MeasureSize(const CBenchMachine& machine, const Size& size)
{
    SampleShape shape;
    shape.messages = size.appointments;
    shape.recurringEvery = 10;
    shape.attendees = kAttendees;
    machine.PutStore(shape);
    // What the pauses cost is what they add to the floor: behind each of them the processor has forgotten
    // much of what it had at hand.
    Cost floor;
    Cost paused;
    if (!MeasureFloor(machine, size, size.floorRounds, L"", floor) ||
        !MeasureFloor(machine, size, 1 + 1000 / size.appointments, L" pauses", paused))
    {
        return false;
    }
    Listings first;
    Listings again;
    std::array<ProcessFigures, 3> memory;
    std::size_t characters = 0;
    for (unsigned run = 0; run < size.runs; ++run)
    {
        CBenchSession session;
        if (!session.Start())
        {
            return false;
        }
        memory[0] = session.Server();
        if (!ListOnce(session, size.appointments, first))
        {
            return false;
        }
        memory[1] = session.Server();
        if (!ListOnce(session, size.appointments, again))
        {
            return false;
        }
        memory[2] = session.Server();
        characters = session.Document().size();
    }
    const unsigned pauses = size.appointments * kAttendees;
    const double pauseCpu = paused.cpuMs - floor.cpuMs;
    const std::optional<EventCost> event = MeasureEventFloor(characters, size.runs);
    if (!event)
    {
        return false;
    }
    const double beyond = first.Figures().cpuMs - pauseCpu - event->cpuMs - floor.cpuMs;
    std::printf("%u appointments, %u series among them, %zu characters; medians of %u servers:\n",
                size.appointments,
                size.appointments / 10,
                characters,
                size.runs);
    std::printf("  first listing    %9.1f ms, of which %9.1f ms are %u pauses\n",
                first.Figures().wallMs,
                paused.wallMs - floor.wallMs,
                pauses);
    std::printf(
        "  a bare event     %9.1f ms: as long a text from a server that does nothing else\n",
        event->wallMs);
    std::printf("  processor time   %9.1f ms, of which %9.1f ms are the pauses' and %9.1f ms a "
                "bare event's; "
                "floor %9.1f ms; beyond these %9.1f ms, %.2f of the floor\n",
                first.Figures().cpuMs,
                pauseCpu,
                event->cpuMs,
                floor.cpuMs,
                beyond,
                floor.cpuMs > 0 ? beyond / floor.cpuMs : 0.0);
    std::printf("  again            %9.1f ms, processor time %9.1f ms\n",
                again.Figures().wallMs,
                again.Figures().cpuMs);
    std::printf(
        "  working set      %9.0f KiB before, %9.0f KiB behind the first, %9.0f KiB behind the "
        "second\n",
        memory[0].workingSetKiB,
        memory[1].workingSetKiB,
        memory[2].workingSetKiB);
    std::fflush(stdout);
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
    const unsigned long wanted = argc == 2 ? std::wcstoul(argv[1], nullptr, 10) : 0;
    const CBenchMachine machine;
    if (argc == 2 && std::wcscmp(argv[1], L"row") == 0)
    {
        return MeasureRow(machine) ? 0 : 1;
    }
    for (const Size& size : kSizes)
    {
        if (wanted != 0 && wanted != size.appointments)
        {
            continue;
        }
        if (!MeasureSize(machine, size))
        {
            return 1;
        }
    }
    return wanted != 0 || MeasureRow(machine) ? 0 : 1;
}
