#pragma once

#include "PlatformTypes.h"

/// The platform's date functions, as exact code of our own that runs everywhere.
///
/// Each does what the system's function of the same name does and refuses what that one refuses;
/// `docs/dates.md` lists where they differ and why. On a refusal the result is left alone.
///
/// Thread: any; nothing is kept between calls.
namespace dates
{

/// Refuses a count with its highest bit set.
[[nodiscard]] bool FileTimeToSystemTime(const FILETIME& fileTime, SYSTEMTIME& time) noexcept;

/// Whether SystemTimeToFileTime takes the time.
[[nodiscard]] bool IsFileTime(const SYSTEMTIME& time) noexcept;

/// Refuses a date that does not exist (29 February of a common year included), a time of day that
/// does not exist, and years before 1601 or after 30827. The weekday is not looked at.
[[nodiscard]] bool SystemTimeToFileTime(const SYSTEMTIME& time, FILETIME& fileTime) noexcept;

/// -1, 0 or 1 as `first` is earlier than, the same as or later than `second`.
[[nodiscard]] LONG CompareFileTime(const FILETIME& first, const FILETIME& second) noexcept;

/// The count of 100 ns steps as one number, and back.
[[nodiscard]] std::uint64_t TicksOf(const FILETIME& fileTime) noexcept;
[[nodiscard]] FILETIME FileTimeOf(std::uint64_t ticks) noexcept;

/// A date as a count of days since 1899-12-30; the fraction is the time of day, and before that
/// day it counts away from zero: -1.25 is 06:00 on 1899-12-29. Milliseconds are dropped.
///
/// Refuses months outside 1 to 12, days above 31 and years outside 100 to 9999. Day 0 is the last
/// of the month before, a day that its month lacks runs on into the next, and so do hours, minutes
/// and seconds beyond their range.
[[nodiscard]] bool SystemTimeToVariantTime(const SYSTEMTIME& time, double& variantTime) noexcept;

/// Whether SystemTimeToVariantTime takes the time.
[[nodiscard]] constexpr bool IsVariantTime(const SYSTEMTIME& time) noexcept
{
    return time.wMonth >= 1 && time.wMonth <= 12 && time.wDay <= 31 && time.wYear >= 100 &&
           time.wYear <= 9999;
}

/// The way back, rounded to whole seconds, weekday filled in. Refuses what lies outside the years
/// 100 to 9999.
[[nodiscard]] bool VariantTimeToSystemTime(double variantTime, SYSTEMTIME& time) noexcept;

/// Whether the switch dates of `zone` can be resolved: both exist, or one of the months is 0 and
/// there are no switches.
[[nodiscard]] bool HasValidSwitches(const TIME_ZONE_INFORMATION& zone) noexcept;

/// UTC to the local time of `zone`.
///
/// The switch to daylight time is judged at local standard time, the switch back at local daylight
/// time; each moment belongs to the new state. With either month 0 there are no switches, and
/// neither of the two extra biases counts.
///
/// Errors: false for a UTC time that SystemTimeToFileTime refuses, for switch dates that do not
///         exist (week outside 1 to 5, month above 12, hour above 23), and for a result before
///         1601.
[[nodiscard]] bool SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION& zone,
                                                   const SYSTEMTIME& utc,
                                                   SYSTEMTIME& local) noexcept;

} // namespace dates
