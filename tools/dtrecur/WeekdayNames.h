#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// English names by wDayOfWeek; "?" for what is no weekday.
constexpr std::string_view LongWeekday(std::size_t weekday) noexcept
{
    constexpr std::array<std::string_view, 7> kNames = {
        "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    return weekday < kNames.size() ? kNames[weekday] : "?";
}

constexpr std::string_view ShortWeekday(std::size_t weekday) noexcept
{
    return LongWeekday(weekday).substr(0, 3);
}

/// English names of the months 1 to 12.
constexpr std::string_view MonthName(std::size_t month) noexcept
{
    constexpr std::array<std::string_view, 13> kNames = {"?",
                                                         "January",
                                                         "February",
                                                         "March",
                                                         "April",
                                                         "May",
                                                         "June",
                                                         "July",
                                                         "August",
                                                         "September",
                                                         "October",
                                                         "November",
                                                         "December"};
    return month < kNames.size() ? kNames[month] : "?";
}
