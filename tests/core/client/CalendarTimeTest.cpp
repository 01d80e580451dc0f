#include "CalendarTime.h"

#include <gtest/gtest.h>

using dtclient::CalendarTime;

TEST(CalendarTime, SecondsCountFromTheEpochOfFileTimes)
{
    EXPECT_EQ(dtclient::SecondsSince1601({1601, 1, 1, 0, 0, 0}), 0);
    EXPECT_EQ(dtclient::SecondsSince1601({1970, 1, 1, 0, 0, 0}), 11644473600);
    EXPECT_EQ(dtclient::SecondsSince1601({2026, 11, 2, 14, 30, 15}), 13438103415);
}

TEST(CalendarTime, EveryDayOfEightHundredYearsGoesThereAndBack)
{
    CalendarTime day{1601, 1, 1, 23, 59, 58};
    const std::int64_t first = dtclient::SecondsSince1601(day);
    for (std::int64_t index = 0; index < 292194; ++index)
    {
        const std::int64_t seconds = first + index * 86400;
        const CalendarTime found = dtclient::TimeFromSeconds1601(seconds);
        ASSERT_TRUE(dtclient::IsRealTime(found)) << index;
        ASSERT_EQ(dtclient::SecondsSince1601(found), seconds);
    }
    EXPECT_EQ(dtclient::TimeFromSeconds1601(first + 292193LL * 86400),
              (CalendarTime{2400, 12, 31, 23, 59, 58}));
}

TEST(CalendarTime, LeapDaysFollowTheGregorianRule)
{
    EXPECT_TRUE(dtclient::IsRealTime({2024, 2, 29, 0, 0, 0}));
    EXPECT_TRUE(dtclient::IsRealTime({2000, 2, 29, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2023, 2, 29, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({1900, 2, 29, 0, 0, 0}));
}

TEST(CalendarTime, WhatTheClockDoesNotHaveIsNoTime)
{
    EXPECT_FALSE(dtclient::IsRealTime({0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({1600, 12, 31, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2026, 13, 1, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2026, 1, 0, 0, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2026, 1, 1, 24, 0, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2026, 1, 1, 0, 60, 0}));
    EXPECT_FALSE(dtclient::IsRealTime({2026, 1, 1, 0, 0, 60}));
}

TEST(CalendarTime, WeekdaysAreKnown)
{
    EXPECT_STREQ(dtclient::WeekdayName({1601, 1, 1, 0, 0, 0}), "Mon");
    EXPECT_STREQ(dtclient::WeekdayName({2026, 11, 1, 0, 0, 0}), "Sun");
    EXPECT_STREQ(dtclient::WeekdayName({2024, 2, 29, 12, 0, 0}), "Thu");
}

TEST(CalendarTime, DaysAreAddedAcrossMonthsAndYears)
{
    EXPECT_EQ(dtclient::AddDays({2026, 12, 31, 8, 0, 0}, 1), (CalendarTime{2027, 1, 1, 8, 0, 0}));
    EXPECT_EQ(dtclient::AddDays({2024, 2, 28, 0, 0, 0}, 1), (CalendarTime{2024, 2, 29, 0, 0, 0}));
}

TEST(CalendarTime, CommandLineTimesHaveThreeForms)
{
    EXPECT_EQ(dtclient::ParseDayTime("2026-11-02"), (CalendarTime{2026, 11, 2, 0, 0, 0}));
    EXPECT_EQ(dtclient::ParseDayTime("2026-11-02 14:30"), (CalendarTime{2026, 11, 2, 14, 30, 0}));
    EXPECT_EQ(dtclient::ParseDayTime("2026-11-02T14:30:15"),
              (CalendarTime{2026, 11, 2, 14, 30, 15}));
}

TEST(CalendarTime, OtherFormsAreRefused)
{
    for (const char* const text : {"",
                                   "2026",
                                   "2026-11",
                                   "2026-11-2",
                                   "02.11.2026",
                                   "2026-11-02T",
                                   "2026-11-02T14",
                                   "2026-11-02T14:30:",
                                   "2026-11-02T14:30:15Z",
                                   "2026-11-02x14:30",
                                   "-026-11-02",
                                   "2026-02-29",
                                   "2026-11-02T24:00"})
    {
        EXPECT_FALSE(dtclient::ParseDayTime(text).has_value()) << text;
    }
}

TEST(CalendarTime, DocumentTimesStandMonthFirst)
{
    EXPECT_EQ(dtclient::ParseDocumentTime("03/05/2024 14:07:09"),
              (CalendarTime{2024, 3, 5, 14, 7, 9}));
    EXPECT_EQ(dtclient::ParseDocumentTime("00/00/0000 00:00:00"), CalendarTime{});
    EXPECT_FALSE(dtclient::ParseDocumentTime("3/5/2024 14:07:09").has_value());
    EXPECT_FALSE(dtclient::ParseDocumentTime("03/05/2024 14:07:09 ").has_value());
}

TEST(CalendarTime, TextsArePaddedWithZeros)
{
    EXPECT_EQ(dtclient::IsoUtcText({2024, 3, 5, 4, 7, 9}), "2024-03-05T04:07:09Z");
    EXPECT_EQ(dtclient::MinuteText({2024, 3, 5, 4, 7, 9}), "2024-03-05 04:07");
}
