#pragma once

#include <cstddef>
#include <optional>
#include <vector>

/// What it costs to bring a text to the client, whatever the server did to make it.
struct EventCost
{
    double wallMs = 0;
    double cpuMs = 0; ///< Of the sending process.
};

/// Has a bare COM server send one event with a text of `characters`: over the same road as the product's
/// event, to the same kind of sink. Each of the `runs` has a server of its own; the median of their times,
/// and the mean of their processor times.
/// Errors: empty, with a line on standard error.
/// Thread: one with a single-threaded apartment.
std::optional<EventCost> MeasureEventFloor(std::size_t characters, unsigned runs);

/// The working set of one bare COM server in KiB: behind its first event of that length, and behind each
/// `step` of as many as `events`.
/// Errors: empty, with a line on standard error.
/// Thread: one with a single-threaded apartment.
std::vector<double> MeasureEventMemory(std::size_t characters, unsigned events, unsigned step);
