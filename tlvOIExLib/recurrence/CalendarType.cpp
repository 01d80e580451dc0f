#include "CalendarType.h"

#include "Trace.h"

bool IsGregorian(std::uint16_t calendarType, const CalendarTexts& texts)
{
    constexpr std::uint16_t kGregorian = 0;
    constexpr std::uint16_t kLuniSolar = 15;
    if (calendarType != kGregorian)
    {
        SEND_TRACE(
            1, texts.function, "%s", calendarType == kLuniSolar ? texts.luniSolar : texts.other);
    }
    return calendarType == kGregorian;
}
