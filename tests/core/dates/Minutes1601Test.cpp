#include "Minutes1601.h"

#include <gtest/gtest.h>

#include "DateTexts.h"

namespace
{

TEST(Minutes1601, CountsFromTheFirstMinuteOf1601)
{
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("1601-01-01T00:00:00")), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("1601-01-02T00:01:00")), 1441U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2007-03-26T00:00:00")), 213655680U);
}

TEST(Minutes1601, CutsSecondsOff)
{
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2007-03-26T00:00:59")), 213655680U);
}

TEST(Minutes1601, FillsTheWeekdayIn)
{
    EXPECT_EQ(TextWithWeekday(SystemTimeFromMinutes(213655680)), "2007-03-26T00:00:00 Mon");
    EXPECT_EQ(TextWithWeekday(SystemTimeFromMinutes(0)), "1601-01-01T00:00:00 Mon");
}

TEST(Minutes1601, ReachesTo9767)
{
    EXPECT_EQ(TextWithWeekday(SystemTimeFromMinutes(0xFFFFFFFF)), "9767-02-16T04:15:00 Mon");
}

TEST(Minutes1601, IsAnExactInverseOverTheWholeRange)
{
    std::uint32_t wrong = 0;
    // A step that is prime to a day meets every minute of the day.
    for (std::uint64_t minutes = 0; minutes <= 0xFFFFFFFF; minutes += 1009)
    {
        const auto expected = static_cast<std::uint32_t>(minutes);
        wrong += MinutesFromSystemTime(SystemTimeFromMinutes(expected)) != expected;
    }

    EXPECT_EQ(wrong, 0U);
}

TEST(Minutes1601, February29OfACommonYearGives0)
{
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2023-02-29T00:00:00")), 0U);
    EXPECT_NE(MinutesFromSystemTime(TimeOf("2024-02-29T00:00:00")), 0U);
}

TEST(Minutes1601, ARefusedDateGives0)
{
    EXPECT_EQ(MinutesFromSystemTime(SYSTEMTIME{}), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("1600-12-31T00:00:00")), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2024-13-01T00:00:00")), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2024-01-00T00:00:00")), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("2024-01-01T24:00:00")), 0U);
}

TEST(Minutes1601, WhatDoesNotFitInto32BitsIsCutOff)
{
    // 9767-02-16T04:16:00 is the first minute beyond.
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("9767-02-16T04:16:00")), 0U);
    EXPECT_EQ(MinutesFromSystemTime(TimeOf("9767-02-16T04:17:00")), 1U);
}

} // namespace
