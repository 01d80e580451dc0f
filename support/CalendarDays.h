#pragma once

#include <cstdint>

/// The Gregorian calendar as plain numbers, extended to both sides without end.
///
/// A day number counts whole days; each epoch has its own name. Everything here is exact and cannot
/// fail; the limits of the platform's functions are drawn in PlatformDates.
namespace calendar
{

/// Day number of 1899-12-30, day 0 of the variant time, counted from 1601-01-01.
constexpr std::int64_t kVariantEpochDay1601 = 109205;

constexpr std::int64_t kMinutesPerDay = 1440;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kTicksPerSecond = 10'000'000; // ticks of 100 ns
constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr std::int64_t kTicksPerDay = kSecondsPerDay * kTicksPerSecond;

struct Date
{
    std::int64_t year;
    std::uint32_t month; ///< 1 to 12
    std::uint32_t day;   ///< 1 to 31
};

constexpr bool IsLeapYear(std::int64_t year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Rounds towards minus infinity; `by` is above 0.
constexpr std::int64_t FloorDiv(std::int64_t value, std::int64_t by) noexcept
{
    return value / by - (value % by < 0 ? 1 : 0);
}

/// Days from 1601-01-01 to the given date. `day` may lie outside its month and is simply counted.
constexpr std::int64_t Day1601FromDate(std::int64_t year,
                                       std::uint32_t month,
                                       std::int64_t day) noexcept
{
    // Years begin in March here, so that the leap day is the last of its year.
    const std::int64_t y = year - (month <= 2 ? 1 : 0) - 1600;
    const std::int64_t era = FloorDiv(y, 400);
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t monthFromMarch = (month + 9) % 12;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    constexpr std::int64_t kMarch1Of1600ToEpoch = 306;
    return era * 146097 + dayOfEra - kMarch1Of1600ToEpoch + day - 1;
}

constexpr Date DateFromDay1601(std::int64_t day1601) noexcept
{
    const std::int64_t z = day1601 + 306;
    const std::int64_t era = FloorDiv(z, 146097);
    const auto dayOfEra = static_cast<std::uint32_t>(z - era * 146097);
    const std::uint32_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::uint32_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::uint32_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const std::uint32_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {1600 + era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, day};
}

/// 0 is Sunday. 1601-01-01 was a Monday.
constexpr std::uint32_t WeekdayOfDay1601(std::int64_t day1601) noexcept
{
    return static_cast<std::uint32_t>(day1601 + 1 - FloorDiv(day1601 + 1, 7) * 7);
}

static_assert(Day1601FromDate(1601, 1, 1) == 0);
static_assert(Day1601FromDate(1899, 12, 30) == kVariantEpochDay1601);
static_assert(WeekdayOfDay1601(0) == 1);
static_assert(DateFromDay1601(-1).year == 1600 && DateFromDay1601(-1).month == 12 &&
              DateFromDay1601(-1).day == 31);

} // namespace calendar
