#include "MonthArithmetic.h"

#include "CalendarDays.h"
#include "Minutes1601.h"

std::uint32_t MonthsBetween(const SYSTEMTIME& first, const SYSTEMTIME& time) noexcept
{
    const std::uint32_t years = std::uint32_t{time.wYear} - std::uint32_t{first.wYear};
    return years * 12 - first.wMonth + time.wMonth;
}

std::uint32_t FirstMinuteOfMonthAfter(const SYSTEMTIME& time, std::uint32_t months) noexcept
{
    const std::uint64_t month = std::uint64_t{months} + time.wMonth - 1U; // from January of wYear
    const std::int64_t day =
        calendar::Day1601FromDate(std::int64_t{time.wYear} + static_cast<std::int64_t>(month / 12),
                                  static_cast<std::uint32_t>(month % 12) + 1,
                                  1);
    return static_cast<std::uint32_t>(day * calendar::kMinutesPerDay);
}

std::uint32_t MinutesOfDate(std::uint32_t year, std::uint32_t month, std::uint32_t day) noexcept
{
    SYSTEMTIME date{};
    date.wYear = static_cast<WORD>(year);
    date.wMonth = static_cast<WORD>(month);
    date.wDay = static_cast<WORD>(day);
    return MinutesFromSystemTime(date);
}

std::uint32_t MonthOfYearly(std::uint32_t firstDateTime, const SYSTEMTIME& first) noexcept
{
    std::uint32_t minutes = 0;
    for (std::uint32_t month = 1; month <= 11; ++month)
    {
        minutes += DaysInMonth(month, first.wYear) * 1440;
        if (minutes == firstDateTime)
        {
            return month + 1;
        }
    }
    return first.wMonth;
}
