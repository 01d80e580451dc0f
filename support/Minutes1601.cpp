#include "Minutes1601.h"

#include "CalendarDays.h"
#include "PlatformDates.h"

std::uint32_t MinutesFromSystemTime(const SYSTEMTIME& time) noexcept
{
    if (!dates::IsFileTime(time))
    {
        return 0;
    }
    const std::int64_t day = calendar::Day1601FromDate(time.wYear, time.wMonth, time.wDay);
    return static_cast<std::uint32_t>(day * calendar::kMinutesPerDay +
                                      std::int64_t{time.wHour} * 60 + time.wMinute);
}

SYSTEMTIME SystemTimeFromMinutes(std::uint32_t minutes1601) noexcept
{
    constexpr auto kMinutesPerDay = static_cast<std::uint32_t>(calendar::kMinutesPerDay);
    const std::uint32_t day = minutes1601 / kMinutesPerDay;
    const std::uint32_t minute = minutes1601 % kMinutesPerDay;
    const calendar::Date date = calendar::DateFromDay1601(day);
    return {static_cast<WORD>(date.year),
            static_cast<WORD>(date.month),
            static_cast<WORD>(calendar::WeekdayOfDay1601(day)),
            static_cast<WORD>(date.day),
            static_cast<WORD>(minute / 60),
            static_cast<WORD>(minute % 60),
            0,
            0};
}
