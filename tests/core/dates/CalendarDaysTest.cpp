#include "CalendarDays.h"

#include <gtest/gtest.h>

#include "Minutes1601.h"

namespace
{

// A calendar that counts on its fingers: one day at a time, month by month.
struct SlowCalendar
{
    std::int64_t year = 1601;
    std::uint32_t month = 1;
    std::uint32_t day = 1;
    std::uint32_t weekday = 1;

    void Advance()
    {
        weekday = (weekday + 1) % 7;
        static constexpr std::uint32_t kLengths[] = {
            31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        const bool isLeap = year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
        const std::uint32_t length = month == 2 && isLeap ? 29 : kLengths[month - 1];
        if (++day > length)
        {
            day = 1;
            if (++month > 12)
            {
                month = 1;
                ++year;
            }
        }
    }
};

TEST(CalendarDays, AgreesWithCountingDayByDayThroughTheYear9999)
{
    SlowCalendar slow;
    std::int64_t wrong = 0;

    for (std::int64_t day = 0; slow.year < 10000; ++day, slow.Advance())
    {
        const calendar::Date date = calendar::DateFromDay1601(day);
        wrong += date.year != slow.year || date.month != slow.month || date.day != slow.day ||
                 calendar::WeekdayOfDay1601(day) != slow.weekday ||
                 calendar::Day1601FromDate(slow.year, slow.month, slow.day) != day;
    }

    EXPECT_EQ(wrong, 0);
}

TEST(CalendarDays, GoesBackBeforeTheEpoch)
{
    const calendar::Date date = calendar::DateFromDay1601(-306 - 1);

    EXPECT_EQ(date.year, 1600);
    EXPECT_EQ(date.month, 2U);
    EXPECT_EQ(date.day, 29U);
    EXPECT_EQ(calendar::Day1601FromDate(1600, 2, 29), -307);
    EXPECT_EQ(calendar::WeekdayOfDay1601(-1), 0U);
    EXPECT_EQ(calendar::WeekdayOfDay1601(-2), 6U);
}

TEST(CalendarDays, CountsADayOutsideItsMonthOn)
{
    EXPECT_EQ(calendar::Day1601FromDate(2023, 2, 29), calendar::Day1601FromDate(2023, 3, 1));
    EXPECT_EQ(calendar::Day1601FromDate(2023, 3, 0), calendar::Day1601FromDate(2023, 2, 28));
}

TEST(DaysInMonth, FollowsTheGregorianRuleForFebruary)
{
    EXPECT_EQ(DaysInMonth(2, 2024), 29U);
    EXPECT_EQ(DaysInMonth(2, 2023), 28U);
    EXPECT_EQ(DaysInMonth(2, 2000), 29U);
    EXPECT_EQ(DaysInMonth(2, 1900), 28U);
    EXPECT_EQ(DaysInMonth(2, 2100), 28U);
}

TEST(DaysInMonth, KnowsTheOtherMonths)
{
    static constexpr std::uint32_t kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

    for (std::uint32_t month = 1; month <= 12; ++month)
    {
        EXPECT_EQ(DaysInMonth(month, 2023), kLengths[month - 1]) << month;
    }
}

} // namespace
