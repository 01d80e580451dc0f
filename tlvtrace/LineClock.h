#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tlvtrace
{
/// A moment as it stands at the head of a line: "2026-11-02 14:30:15.007", local time.
using MomentText = std::array<char, 23>;

/// Writes moments. The lines of one second share all but the last three digits, which spares each of them
/// the conversion to local time.
///
/// Thread: any.
class CLineClock
{
public:
    CLineClock() = default;
    CLineClock(const CLineClock&) = delete;
    CLineClock& operator=(const CLineClock&) = delete;
    ~CLineClock() = default;

    MomentText Now() noexcept;

    /// `moment` is UTC. The system's present distance to local time counts, whatever the moment.
    MomentText TextOf(const FILETIME& moment) noexcept;

private:
    SRWLOCK m_lock{};           // guards all below
    std::uint64_t m_second = 0; // since 1601; no line is that old
    MomentText m_text{};        // of that second, milliseconds 000
};
} // namespace tlvtrace
