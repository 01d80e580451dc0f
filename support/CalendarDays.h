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

/// Day number of 1601-01-01, counted from 0000-03-01, where the formulas below begin their years.
constexpr std::int64_t kEpochDay = 584694;
constexpr std::int64_t kDaysPerEra = 146097; // 400 years

/// Days from 1601-01-01 to the given date. `day` may lie outside its month and is simply counted.
constexpr std::int64_t Day1601FromDate(std::int64_t year,
                                       std::uint32_t month,
                                       std::int64_t day) noexcept
{
    // Years begin in March here, so that the leap day is the last of its year.
    const std::int64_t marchYear = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = marchYear >= 0 ? 0 : FloorDiv(marchYear, 400);
    const auto y = static_cast<std::uint64_t>(marchYear - era * 400);
    const std::uint32_t monthFromMarch = month <= 2 ? month + 9 : month - 3;
    const std::uint32_t dayOfYear = (153 * monthFromMarch + 2) / 5;
    const auto days = static_cast<std::int64_t>(365 * y + y / 4 - y / 100 + y / 400 + dayOfYear);
    return days + era * kDaysPerEra - kEpochDay + day - 1;
}

/// The date of a day counted from 0000-03-01, below 2^30.
///
/// Multiplications stand for the divisions by the length of a year and of a month: C. Neri and
/// L. Schneider, "Euclidean affine functions and their application to calendar algorithms", 2022.
constexpr Date DateFromMarchDay(std::uint32_t day) noexcept
{
    const std::uint32_t quarterDays = 4 * day + 3;
    const std::uint32_t century = quarterDays / 146097;
    const std::uint32_t dayOfCentury = quarterDays % 146097 / 4;
    const std::uint64_t years = std::uint64_t{2939745} * (4 * dayOfCentury + 3);
    const auto yearOfCentury = static_cast<std::uint32_t>(years >> 32);
    const std::uint32_t dayOfYear = static_cast<std::uint32_t>(years & 0xFFFFFFFF) / 2939745 / 4;
    const std::uint32_t months = 2141 * dayOfYear + 197913;
    const bool isNextYear = dayOfYear >= 306; // January or February
    return {std::int64_t{100} * century + yearOfCentury + (isNextYear ? 1 : 0),
            (months >> 16) - (isNextYear ? 12 : 0),
            (months & 0xFFFF) / 2141 + 1};
}

constexpr Date DateFromDay1601(std::int64_t day1601) noexcept
{
    constexpr std::int64_t kEndOfRange = 1 << 30;
    const std::int64_t day = day1601 + kEpochDay;
    if (day >= 0 && day < kEndOfRange)
    {
        return DateFromMarchDay(static_cast<std::uint32_t>(day));
    }
    const std::int64_t era = FloorDiv(day, kDaysPerEra);
    Date date = DateFromMarchDay(static_cast<std::uint32_t>(day - era * kDaysPerEra));
    date.year += era * 400;
    return date;
}

/// 0 is Sunday. 1601-01-01 was a Monday.
constexpr std::uint32_t WeekdayOfDay1601(std::int64_t day1601) noexcept
{
    return static_cast<std::uint32_t>(day1601 + 1 - FloorDiv(day1601 + 1, 7) * 7);
}

static_assert(Day1601FromDate(1601, 1, 1) == 0);
static_assert(Day1601FromDate(1899, 12, 30) == kVariantEpochDay1601);
static_assert(WeekdayOfDay1601(0) == 1);
static_assert(Day1601FromDate(0, 3, 1) == -kEpochDay);
static_assert(DateFromDay1601(-1).year == 1600 && DateFromDay1601(-1).month == 12 &&
              DateFromDay1601(-1).day == 31);

} // namespace calendar
