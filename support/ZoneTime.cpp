#include "ZoneTime.h"

#include <algorithm>

#include "CalendarDays.h"
#include "PlatformDates.h"
#include "VariantSeconds.h"

namespace
{

using calendar::kSecondsPerDay;

/// 0 for what the platform's SystemTimeToVariantTime refuses.
std::int64_t VariantSecondsOf(const SYSTEMTIME& time) noexcept
{
    if (!dates::IsVariantTime(time))
    {
        return 0;
    }
    const std::int64_t seconds = time.wHour * 3600 + time.wMinute * 60 + time.wSecond;
    const std::int64_t day =
        calendar::Day1601FromDate(time.wYear, time.wMonth, time.wDay) + seconds / kSecondsPerDay;
    return variantseconds::Of(day, seconds % kSecondsPerDay);
}

SYSTEMTIME SystemTimeOf(std::int64_t variantSeconds) noexcept
{
    const std::int64_t day = variantseconds::Day1601(variantSeconds);
    const auto second = static_cast<std::uint32_t>(variantseconds::SecondOfDay(variantSeconds));
    const calendar::Date date = calendar::DateFromDay1601(day);
    return {static_cast<WORD>(date.year),
            static_cast<WORD>(date.month),
            static_cast<WORD>(calendar::WeekdayOfDay1601(day)),
            static_cast<WORD>(date.day),
            static_cast<WORD>(second / 3600),
            static_cast<WORD>(second / 60 % 60),
            static_cast<WORD>(second % 60),
            0};
}

bool IsInMonth(std::int64_t variantSeconds, const SYSTEMTIME& first) noexcept
{
    const calendar::Date date = calendar::DateFromDay1601(variantseconds::Day1601(variantSeconds));
    return date.month == first.wMonth && date.year == first.wYear;
}

/// The moment of a switch in `year`. `week` is the week of the month counted from 0; it goes down
/// while the date leaves the month, but not below 0, and starts below 0 for a switch whose day is
/// 0.
std::int64_t SwitchMoment(const SYSTEMTIME& date, std::int64_t year, std::int64_t week) noexcept
{
    SYSTEMTIME first = date;
    first.wYear = static_cast<WORD>(year);
    first.wDay = 1;
    const std::int64_t start = VariantSecondsOf(first);
    const std::uint32_t weekday = calendar::WeekdayOfDay1601(variantseconds::Day1601(start));
    const std::int64_t forward = (date.wDayOfWeek % 7U + 7U - weekday) % 7U;
    const std::int64_t target = start + forward * kSecondsPerDay;
    constexpr std::int64_t kLastWeek = 4; // later ones have left any month
    week = std::min(week, kLastWeek);
    while (week > 0 && !IsInMonth(target + week * 7 * kSecondsPerDay, first))
    {
        --week;
    }
    return target + week * 7 * kSecondsPerDay;
}

std::int64_t ToStandard(const TIME_ZONE_INFORMATION& zone, std::int64_t year) noexcept
{
    return SwitchMoment(zone.StandardDate, year, zone.StandardDate.wDay - 1);
}

std::int64_t ToDaylight(const TIME_ZONE_INFORMATION& zone, std::int64_t year) noexcept
{
    return SwitchMoment(zone.DaylightDate, year, std::max(zone.DaylightDate.wDay - 1, 0));
}

bool IsBetweenSwitches(const TIME_ZONE_INFORMATION& zone,
                       std::int64_t now,
                       std::int64_t toStandard,
                       std::int64_t toDaylight) noexcept
{
    const bool isSouthern = zone.StandardDate.wMonth <= zone.DaylightDate.wMonth;
    return isSouthern ? now > toDaylight || now < toStandard : now > toDaylight && now < toStandard;
}

/// With a year in the standard date the two dates are absolute.
bool IsBeforeAbsoluteDaylight(const TIME_ZONE_INFORMATION& zone, std::int64_t now) noexcept
{
    return now > 0 && VariantSecondsOf(zone.DaylightDate) > now;
}

std::int64_t OffsetSeconds(const TIME_ZONE_INFORMATION& zone, bool isDaylight) noexcept
{
    return (std::int64_t{zone.Bias} + (isDaylight ? zone.DaylightBias : 0)) * 60;
}

std::uint32_t ReadLittleEndian(const std::uint8_t* from, std::size_t bytes) noexcept
{
    std::uint32_t value = 0;
    for (std::size_t i = bytes; i > 0; --i)
    {
        value = (value << 8) | from[i - 1];
    }
    return value;
}

} // namespace

bool ConvertBinToTimezoneInfo(std::uint32_t size,
                              const std::uint8_t* blob,
                              TIME_ZONE_INFORMATION* zone) noexcept
{
    constexpr std::uint32_t kBlobBytes = 48;
    if (size != kBlobBytes || blob == nullptr || zone == nullptr)
    {
        return false;
    }
    const auto number = [blob](std::size_t at) {
        return static_cast<LONG>(ReadLittleEndian(blob + at, 4));
    };
    const auto word = [blob](std::size_t at) {
        return static_cast<WORD>(ReadLittleEndian(blob + at, 2));
    };
    *zone = TIME_ZONE_INFORMATION{};
    zone->Bias = number(0);
    zone->DaylightBias = number(8);
    zone->StandardDate.wMonth = word(16);
    zone->StandardDate.wDay = word(20);
    zone->StandardDate.wHour = word(22);
    zone->StandardBias = number(26);
    zone->DaylightDate.wMonth = word(34);
    zone->DaylightDate.wDay = word(38);
    zone->DaylightDate.wHour = word(40);
    return true;
}

bool IsDaylightTime(const SYSTEMTIME& local, const TIME_ZONE_INFORMATION& zone) noexcept
{
    if (zone.StandardDate.wMonth == 0)
    {
        return false;
    }
    const std::int64_t now = VariantSecondsOf(local);
    if (zone.StandardDate.wYear != 0)
    {
        return IsBeforeAbsoluteDaylight(zone, now);
    }
    return IsBetweenSwitches(
        zone, now, ToStandard(zone, local.wYear), ToDaylight(zone, local.wYear));
}

bool LocalToUtcSystemTime(const SYSTEMTIME& local,
                          SYSTEMTIME& utc,
                          const TIME_ZONE_INFORMATION& zone) noexcept
{
    utc = SYSTEMTIME{};
    if (!dates::IsVariantTime(local))
    {
        return false;
    }
    const std::int64_t moved =
        VariantSecondsOf(local) + OffsetSeconds(zone, IsDaylightTime(local, zone));
    if (!variantseconds::IsInRange(moved))
    {
        return false;
    }
    utc = SystemTimeOf(moved);
    return true;
}

bool LocalToUtcFileTime(const FILETIME& local,
                        FILETIME& utc,
                        const TIME_ZONE_INFORMATION& zone) noexcept
{
    utc = FILETIME{};
    SYSTEMTIME localTime{};
    SYSTEMTIME utcTime{};
    return dates::FileTimeToSystemTime(local, localTime) &&
           LocalToUtcSystemTime(localTime, utcTime, zone) &&
           dates::SystemTimeToFileTime(utcTime, utc);
}

const CZoneClock::YearSwitches& CZoneClock::SwitchesOfDay(std::int64_t day1601) noexcept
{
    const YearSwitches& last = m_years[m_lastYear];
    if (day1601 >= last.firstDay && day1601 < last.endDay)
    {
        return last;
    }
    const std::int64_t year = calendar::DateFromDay1601(day1601).year;
    m_lastYear = static_cast<std::size_t>(year) % kYears;
    YearSwitches& entry = m_years[m_lastYear];
    if (day1601 < entry.firstDay || day1601 >= entry.endDay)
    {
        entry.firstDay = calendar::Day1601FromDate(year, 1, 1);
        entry.endDay = calendar::Day1601FromDate(year + 1, 1, 1);
        entry.toStandard = ToStandard(m_zone, year);
        entry.toDaylight = ToDaylight(m_zone, year);
    }
    return entry;
}

bool CZoneClock::IsDaylight(std::int64_t day1601, std::int64_t variantSeconds) noexcept
{
    if (m_zone.StandardDate.wMonth == 0)
    {
        return false;
    }
    if (m_zone.StandardDate.wYear != 0)
    {
        return IsBeforeAbsoluteDaylight(m_zone, variantSeconds);
    }
    const YearSwitches& switches = SwitchesOfDay(day1601);
    return IsBetweenSwitches(m_zone, variantSeconds, switches.toStandard, switches.toDaylight);
}

SYSTEMTIME CZoneClock::UtcFromMinutes(std::uint32_t localMinutes1601) noexcept
{
    constexpr auto kMinutesPerDay = static_cast<std::uint32_t>(calendar::kMinutesPerDay);
    const std::int64_t day = localMinutes1601 / kMinutesPerDay;
    const std::int64_t local =
        variantseconds::Of(day, std::int64_t{localMinutes1601 % kMinutesPerDay} * 60);
    const std::int64_t moved = local + OffsetSeconds(m_zone, IsDaylight(day, local));
    return variantseconds::IsInRange(moved) ? SystemTimeOf(moved) : SYSTEMTIME{};
}
