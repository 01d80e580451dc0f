#include "CalendarTime.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace dtclient
{
namespace
{
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 9999;

bool IsLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int year, int month)
{
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

// Days from 1601-01-01 to the first of January of `year`.
std::int64_t DaysToYear(int year)
{
    const std::int64_t past = year - kFirstYear;
    return past * 365 + past / 4 - past / 100 + past / 400;
}

std::int64_t DaysSince1601(const CalendarTime& time)
{
    std::int64_t days = DaysToYear(time.year);
    for (int month = 1; month < time.month; ++month)
    {
        days += DaysInMonth(time.year, month);
    }
    return days + time.day - 1;
}

// Takes exactly `digits` decimal digits off the front of `text`.
bool TakeNumber(std::string_view& text, std::size_t digits, int& value)
{
    if (text.size() < digits)
    {
        return false;
    }
    value = 0;
    for (const char letter : text.substr(0, digits))
    {
        if (letter < '0' || letter > '9')
        {
            return false;
        }
        value = value * 10 + (letter - '0');
    }
    text.remove_prefix(digits);
    return true;
}

bool TakeLetter(std::string_view& text, char letter)
{
    if (text.empty() || text.front() != letter)
    {
        return false;
    }
    text.remove_prefix(1);
    return true;
}
} // namespace

bool IsRealTime(const CalendarTime& time)
{
    return time.year >= kFirstYear && time.year <= kLastYear && time.month >= 1 &&
           time.month <= 12 && time.day >= 1 && time.day <= DaysInMonth(time.year, time.month) &&
           time.hour >= 0 && time.hour <= 23 && time.minute >= 0 && time.minute <= 59 &&
           time.second >= 0 && time.second <= 59;
}

std::int64_t SecondsSince1601(const CalendarTime& time)
{
    return DaysSince1601(time) * kSecondsPerDay + std::int64_t{time.hour} * 3600 +
           std::int64_t{time.minute} * 60 + time.second;
}

CalendarTime TimeFromSeconds1601(std::int64_t seconds)
{
    std::int64_t days = seconds / kSecondsPerDay;
    int rest = static_cast<int>(seconds % kSecondsPerDay);

    CalendarTime time;
    time.year = kFirstYear + static_cast<int>(days / 366);
    while (DaysToYear(time.year + 1) <= days)
    {
        ++time.year;
    }
    days -= DaysToYear(time.year);
    time.month = 1;
    while (days >= DaysInMonth(time.year, time.month))
    {
        days -= DaysInMonth(time.year, time.month);
        ++time.month;
    }
    time.day = static_cast<int>(days) + 1;
    time.hour = rest / 3600;
    rest %= 3600;
    time.minute = rest / 60;
    time.second = rest % 60;
    return time;
}

CalendarTime AddDays(const CalendarTime& time, int days)
{
    return TimeFromSeconds1601(SecondsSince1601(time) + days * kSecondsPerDay);
}

const char* WeekdayName(const CalendarTime& time)
{
    // 1601-01-01 was a Monday.
    constexpr std::array<const char*, 7> kNames = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    return kNames[static_cast<std::size_t>(DaysSince1601(time) % 7)];
}

std::optional<CalendarTime> ParseDayTime(std::string_view text)
{
    CalendarTime time;
    if (!TakeNumber(text, 4, time.year) || !TakeLetter(text, '-') ||
        !TakeNumber(text, 2, time.month) || !TakeLetter(text, '-') ||
        !TakeNumber(text, 2, time.day))
    {
        return std::nullopt;
    }
    if (!text.empty())
    {
        if ((!TakeLetter(text, 'T') && !TakeLetter(text, ' ')) || !TakeNumber(text, 2, time.hour) ||
            !TakeLetter(text, ':') || !TakeNumber(text, 2, time.minute))
        {
            return std::nullopt;
        }
        if (!text.empty() && (!TakeLetter(text, ':') || !TakeNumber(text, 2, time.second)))
        {
            return std::nullopt;
        }
    }
    if (!text.empty() || !IsRealTime(time))
    {
        return std::nullopt;
    }
    return time;
}

std::optional<CalendarTime> ParseDocumentTime(std::string_view text)
{
    CalendarTime time;
    if (!TakeNumber(text, 2, time.month) || !TakeLetter(text, '/') ||
        !TakeNumber(text, 2, time.day) || !TakeLetter(text, '/') ||
        !TakeNumber(text, 4, time.year) || !TakeLetter(text, ' ') ||
        !TakeNumber(text, 2, time.hour) || !TakeLetter(text, ':') ||
        !TakeNumber(text, 2, time.minute) || !TakeLetter(text, ':') ||
        !TakeNumber(text, 2, time.second) || !text.empty())
    {
        return std::nullopt;
    }
    return time;
}

std::string IsoUtcText(const CalendarTime& time)
{
    std::array<char, 80> buffer{};
    const int length = std::snprintf(buffer.data(),
                                     buffer.size(),
                                     "%04d-%02d-%02dT%02d:%02d:%02dZ",
                                     time.year,
                                     time.month,
                                     time.day,
                                     time.hour,
                                     time.minute,
                                     time.second);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string MinuteText(const CalendarTime& time)
{
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(),
                                     buffer.size(),
                                     "%04d-%02d-%02d %02d:%02d",
                                     time.year,
                                     time.month,
                                     time.day,
                                     time.hour,
                                     time.minute);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}
} // namespace dtclient
