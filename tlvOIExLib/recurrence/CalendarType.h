#pragma once

#include <cstdint>

/// What a monthly or yearly handler says about a calendar it does not know.
struct CalendarTexts
{
    const char* function; ///< full name of the handler
    const char* luniSolar;
    const char* other;
};

/// Whether the stored calendar type is the Gregorian one; any other is traced.
bool IsGregorian(std::uint16_t calendarType, const CalendarTexts& texts);
