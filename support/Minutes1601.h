#pragma once

#include <cstdint>

#include "PlatformTypes.h"

/// Dates of a recurrence pattern: whole minutes since 1601-01-01 00:00 in an unsigned 32-bit value,
/// which reaches to 9767-02-16.

/// Seconds and milliseconds are cut off, and what does not fit into 32 bits is.
/// Errors: a date that the platform's SystemTimeToFileTime refuses gives 0.
[[nodiscard]] std::uint32_t MinutesFromSystemTime(const SYSTEMTIME& time) noexcept;

/// The weekday is filled in.
[[nodiscard]] SYSTEMTIME SystemTimeFromMinutes(std::uint32_t minutes1601) noexcept;

/// 0 is Sunday: the weekday of SystemTimeFromMinutes alone.
[[nodiscard]] constexpr std::uint32_t WeekdayOfMinutes(std::uint32_t minutes1601) noexcept
{
    return (minutes1601 / 1440 + 1) % 7; // 1601-01-01 was a Monday
}

/// Months outside 1 to 12 are taken as the rule for the months falls: 30 or 31.
[[nodiscard]] constexpr std::uint32_t DaysInMonth(std::uint32_t month, std::uint32_t year) noexcept
{
    if (month == 2)
    {
        const bool isLeap = year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
        return isLeap ? 29 : 28;
    }
    const bool isOdd = month % 2 != 0;
    return isOdd == (month <= 7) ? 31 : 30;
}
