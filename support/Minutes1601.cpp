#include "Minutes1601.h"

#include "CalendarDays.h"
#include "PlatformDates.h"

std::uint32_t MinutesFromSystemTime(const SYSTEMTIME& time) noexcept
{
    FILETIME fileTime{};
    if (!dates::SystemTimeToFileTime(time, fileTime))
    {
        return 0;
    }
    const auto ticksPerMinute = static_cast<std::uint64_t>(calendar::kTicksPerMinute);
    return static_cast<std::uint32_t>(dates::TicksOf(fileTime) / ticksPerMinute);
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
