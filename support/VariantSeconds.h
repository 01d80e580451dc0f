#pragma once

#include <cstdint>

#include "CalendarDays.h"

/// The variant time as a whole number of seconds, exact where the double is not.
///
/// Units: seconds since 1899-12-30 00:00, with the platform's sign rule: before that day the time
/// of
///        day counts away from zero, so 06:00 on the day before is -(86400 + 21600). Adding an
///        offset there moves the time of day the other way, as it does with the double.
namespace variantseconds
{

constexpr std::int64_t kFirst = -657434 * calendar::kSecondsPerDay; // 0100-01-01
constexpr std::int64_t kEnd = 2958466 * calendar::kSecondsPerDay;   // 10000-01-01, exclusive

constexpr std::int64_t Of(std::int64_t day1601, std::int64_t secondOfDay) noexcept
{
    const std::int64_t day = day1601 - calendar::kVariantEpochDay1601;
    const std::int64_t midnight = day * calendar::kSecondsPerDay;
    return day < 0 ? midnight - secondOfDay : midnight + secondOfDay;
}

/// Cuts towards zero, which is what the sign rule asks for.
constexpr std::int64_t Day1601(std::int64_t seconds) noexcept
{
    return seconds / calendar::kSecondsPerDay + calendar::kVariantEpochDay1601;
}

constexpr std::int64_t SecondOfDay(std::int64_t seconds) noexcept
{
    const std::int64_t rest = seconds % calendar::kSecondsPerDay;
    return rest < 0 ? -rest : rest;
}

/// Whether VariantTimeToSystemTime takes it.
constexpr bool IsInRange(std::int64_t seconds) noexcept
{
    return seconds > kFirst - calendar::kSecondsPerDay && seconds < kEnd;
}

} // namespace variantseconds
