#include "PlatformDates.h"

#include <cmath>

#include "CalendarDays.h"
#include "Minutes1601.h"

namespace
{

using calendar::kSecondsPerDay;
using calendar::kTicksPerDay;
using calendar::kTicksPerMinute;
using calendar::kTicksPerSecond;

constexpr WORD kFirstFileTimeYear = 1601;
constexpr WORD kLastFileTimeYear = 30827;
constexpr double kFirstVariantDay = -657434.0; // 0100-01-01
constexpr double kLastVariantDay = 2958465.0;  // 9999-12-31

void SetDate(SYSTEMTIME& time, std::int64_t day1601) noexcept
{
    const calendar::Date date = calendar::DateFromDay1601(day1601);
    time.wYear = static_cast<WORD>(date.year);
    time.wMonth = static_cast<WORD>(date.month);
    time.wDay = static_cast<WORD>(date.day);
    time.wDayOfWeek = static_cast<WORD>(calendar::WeekdayOfDay1601(day1601));
}

void SetTimeOfDay(SYSTEMTIME& time, std::int64_t seconds) noexcept
{
    time.wHour = static_cast<WORD>(seconds / 3600);
    time.wMinute = static_cast<WORD>(seconds / 60 % 60);
    time.wSecond = static_cast<WORD>(seconds % 60);
}

SYSTEMTIME SystemTimeOfTicks(std::int64_t ticks) noexcept
{
    SYSTEMTIME time{};
    const std::int64_t day = ticks / kTicksPerDay;
    const std::int64_t rest = ticks % kTicksPerDay;
    SetDate(time, day);
    SetTimeOfDay(time, rest / kTicksPerSecond);
    time.wMilliseconds = static_cast<WORD>(rest % kTicksPerSecond / 10000);
    return time;
}

bool IsSwitchDate(const SYSTEMTIME& date) noexcept
{
    if (date.wYear != 0)
    {
        return date.wMonth <= 12 && date.wDay >= 1 &&
               date.wDay <= DaysInMonth(date.wMonth, date.wYear) && date.wHour < 24;
    }
    return date.wMonth <= 12 && date.wDay >= 1 && date.wDay <= 5 && date.wHour < 24;
}

bool HasSwitches(const TIME_ZONE_INFORMATION& zone) noexcept
{
    return zone.StandardDate.wMonth != 0 && zone.DaylightDate.wMonth != 0;
}

/// The moment of a switch in `year`, in ticks of the local time that it is told in.
std::int64_t SwitchTicks(const SYSTEMTIME& date, std::int64_t year) noexcept
{
    std::int64_t day = 0;
    if (date.wYear != 0)
    {
        day = calendar::Day1601FromDate(date.wYear, date.wMonth, date.wDay);
    }
    else
    {
        const std::int64_t first = calendar::Day1601FromDate(year, date.wMonth, 1);
        const std::uint32_t forward =
            (date.wDayOfWeek % 7U + 7U - calendar::WeekdayOfDay1601(first)) % 7U;
        const std::int64_t last = first + DaysInMonth(date.wMonth, static_cast<WORD>(year)) - 1;
        day = first + forward + std::int64_t{7} * (date.wDay - 1);
        if (day > last)
        {
            day -= 7; // week 5 is the last one
        }
    }
    const std::int64_t seconds = date.wHour * 3600 + date.wMinute * 60 + date.wSecond;
    return day * kTicksPerDay + seconds * kTicksPerSecond;
}

/// Wraps like the platform's own sum where a bias of thousands of years meets the end of the
/// range; the conversion that follows refuses the result.
std::int64_t LessBias(std::int64_t ticks, std::int64_t biasMinutes) noexcept
{
    const auto taken = static_cast<std::uint64_t>(biasMinutes * kTicksPerMinute);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(ticks) - taken);
}

/// Minutes to take from `utcTicks` for local time; the zone has two valid switch dates.
std::int64_t LocalBias(const TIME_ZONE_INFORMATION& zone, std::int64_t utcTicks) noexcept
{
    const std::int64_t standardBias = std::int64_t{zone.Bias} + zone.StandardBias;
    const std::int64_t daylightBias = std::int64_t{zone.Bias} + zone.DaylightBias;
    const std::int64_t aboutLocal = LessBias(utcTicks, zone.Bias);
    const std::int64_t year =
        calendar::DateFromDay1601(calendar::FloorDiv(aboutLocal, kTicksPerDay)).year;
    const std::int64_t toStandard = SwitchTicks(zone.StandardDate, year);
    const std::int64_t toDaylight = SwitchTicks(zone.DaylightDate, year);
    const bool beforeStandard = LessBias(utcTicks, daylightBias) < toStandard;
    const bool afterDaylight = LessBias(utcTicks, standardBias) >= toDaylight;
    const bool isDaylight =
        toDaylight < toStandard ? beforeStandard && afterDaylight : beforeStandard || afterDaylight;
    return isDaylight ? daylightBias : standardBias;
}

} // namespace

namespace dates
{

std::uint64_t TicksOf(const FILETIME& fileTime) noexcept
{
    return (std::uint64_t{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
}

FILETIME FileTimeOf(std::uint64_t ticks) noexcept
{
    return {static_cast<DWORD>(ticks & 0xFFFFFFFFU), static_cast<DWORD>(ticks >> 32)};
}

bool FileTimeToSystemTime(const FILETIME& fileTime, SYSTEMTIME& time) noexcept
{
    const std::uint64_t ticks = TicksOf(fileTime);
    if ((ticks >> 63) != 0)
    {
        return false;
    }
    time = SystemTimeOfTicks(static_cast<std::int64_t>(ticks));
    return true;
}

bool IsFileTime(const SYSTEMTIME& time) noexcept
{
    return time.wYear >= kFirstFileTimeYear && time.wYear <= kLastFileTimeYear &&
           time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 &&
           time.wDay <= DaysInMonth(time.wMonth, time.wYear) && time.wHour <= 23 &&
           time.wMinute <= 59 && time.wSecond <= 59 && time.wMilliseconds <= 999;
}

bool SystemTimeToFileTime(const SYSTEMTIME& time, FILETIME& fileTime) noexcept
{
    if (!IsFileTime(time))
    {
        return false;
    }
    const std::int64_t day = calendar::Day1601FromDate(time.wYear, time.wMonth, time.wDay);
    const std::int64_t seconds = time.wHour * 3600 + time.wMinute * 60 + time.wSecond;
    const std::int64_t ticks =
        day * kTicksPerDay + seconds * kTicksPerSecond + std::int64_t{time.wMilliseconds} * 10000;
    fileTime = FileTimeOf(static_cast<std::uint64_t>(ticks));
    return true;
}

LONG CompareFileTime(const FILETIME& first, const FILETIME& second) noexcept
{
    const std::uint64_t a = TicksOf(first);
    const std::uint64_t b = TicksOf(second);
    return a < b ? -1 : (a > b ? 1 : 0);
}

bool SystemTimeToVariantTime(const SYSTEMTIME& time, double& variantTime) noexcept
{
    if (!IsVariantTime(time))
    {
        return false;
    }
    const unsigned minutes = time.wMinute + time.wSecond / 60U;
    const unsigned hours = time.wHour + minutes / 60U;
    const std::int64_t day1601 =
        calendar::Day1601FromDate(time.wYear, time.wMonth, time.wDay) + hours / 24U;
    const auto days = static_cast<double>(day1601 - calendar::kVariantEpochDay1601);
    const double sign = days < 0 ? -1.0 : 1.0;
    // Three sums in this order: the system's own result differs in the last bit otherwise.
    double result = days + hours % 24U / 24.0 * sign;
    result += minutes % 60U / 1440.0 * sign;
    result += time.wSecond % 60U / 86400.0 * sign;
    variantTime = result;
    return true;
}

bool VariantTimeToSystemTime(double variantTime, SYSTEMTIME& time) noexcept
{
    if (!(variantTime > kFirstVariantDay - 1.0 && variantTime < kLastVariantDay + 1.0))
    {
        return false;
    }
    const double dayPart = variantTime < 0 ? std::ceil(variantTime) : std::floor(variantTime);
    // A hair above the fraction: 3/24 as a double is a little less than three hours.
    constexpr double kHair = 0.00000000001;
    double timePart = std::fabs(variantTime - dayPart) + kHair;
    if (timePart >= 1.0)
    {
        timePart -= kHair;
    }
    std::int64_t day = static_cast<std::int64_t>(dayPart) + calendar::kVariantEpochDay1601;
    const auto take = [&timePart](double parts) {
        timePart *= parts;
        const auto whole = static_cast<std::int64_t>(timePart);
        timePart -= static_cast<double>(whole);
        return whole;
    };
    const std::int64_t hours = take(24.0);
    const std::int64_t minutes = take(60.0);
    std::int64_t seconds = take(60.0) + hours * 3600 + minutes * 60;
    if (timePart > 0.5)
    {
        ++seconds;
    }
    if (seconds >= kSecondsPerDay)
    {
        seconds -= kSecondsPerDay;
        ++day;
    }
    time = SYSTEMTIME{};
    SetDate(time, day);
    SetTimeOfDay(time, seconds);
    return true;
}

bool HasValidSwitches(const TIME_ZONE_INFORMATION& zone) noexcept
{
    return !HasSwitches(zone) ||
           (IsSwitchDate(zone.StandardDate) && IsSwitchDate(zone.DaylightDate));
}

bool SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION& zone,
                                     const SYSTEMTIME& utc,
                                     SYSTEMTIME& local) noexcept
{
    FILETIME fileTime{};
    if (!SystemTimeToFileTime(utc, fileTime))
    {
        return false;
    }
    const auto utcTicks = static_cast<std::int64_t>(TicksOf(fileTime));
    std::int64_t bias = zone.Bias;
    if (!HasValidSwitches(zone))
    {
        return false;
    }
    if (HasSwitches(zone))
    {
        bias = LocalBias(zone, utcTicks);
    }
    const auto localTicks = static_cast<std::uint64_t>(LessBias(utcTicks, bias));
    return FileTimeToSystemTime(FileTimeOf(localTicks), local);
}

} // namespace dates
