#include <gtest/gtest.h>

#include <cmath>

#include "DateTexts.h"
#include "PlatformDates.h"

namespace
{

double VariantOf(const std::string& text)
{
    double variantTime = NAN;
    EXPECT_TRUE(dates::SystemTimeToVariantTime(TimeOf(text), variantTime)) << text;
    return variantTime;
}

std::string TextOfVariant(double variantTime)
{
    SYSTEMTIME time{};
    return dates::VariantTimeToSystemTime(variantTime, time) ? TextWithWeekday(time) : "refused";
}

bool IsTaken(const std::string& text)
{
    double variantTime = 0;
    return dates::SystemTimeToVariantTime(TimeOf(text), variantTime);
}

TEST(SystemTimeToVariantTime, CountsDaysSince1899)
{
    EXPECT_EQ(VariantOf("1899-12-30T00:00:00"), 0.0);
    EXPECT_EQ(VariantOf("1900-01-01T06:00:00"), 2.25);
    EXPECT_EQ(VariantOf("2024-01-01T12:00:00"), 45292.5);
}

TEST(SystemTimeToVariantTime, CountsTheTimeOfDayAwayFromZeroBeforeTheEpoch)
{
    EXPECT_EQ(VariantOf("1899-12-29T00:00:00"), -1.0);
    EXPECT_EQ(VariantOf("1899-12-29T06:00:00"), -1.25);
}

TEST(SystemTimeToVariantTime, DropsMilliseconds)
{
    SYSTEMTIME time = TimeOf("2024-01-01T12:00:00");
    time.wMilliseconds = 999;
    double variantTime = 0;

    ASSERT_TRUE(dates::SystemTimeToVariantTime(time, variantTime));

    EXPECT_EQ(variantTime, 45292.5);
}

TEST(SystemTimeToVariantTime, LetsDaysRunOn)
{
    EXPECT_EQ(VariantOf("2001-02-29T00:00:00"), VariantOf("2001-03-01T00:00:00"));
    EXPECT_EQ(VariantOf("2001-02-00T00:00:00"), VariantOf("2001-01-31T00:00:00"));
    EXPECT_EQ(VariantOf("2001-01-01T25:00:00"), VariantOf("2001-01-02T01:00:00"));
}

TEST(SystemTimeToVariantTime, RefusesMonthsDaysAndYearsOutOfRange)
{
    EXPECT_FALSE(IsTaken("2001-00-01T00:00:00"));
    EXPECT_FALSE(IsTaken("2001-13-01T00:00:00"));
    EXPECT_FALSE(IsTaken("2001-01-32T00:00:00"));
    EXPECT_FALSE(IsTaken("0099-01-01T00:00:00"));
    EXPECT_TRUE(IsTaken("0100-01-01T00:00:00"));
    EXPECT_TRUE(IsTaken("9999-12-31T23:59:59"));
}

TEST(VariantTimeToSystemTime, FillsTheWeekdayIn)
{
    EXPECT_EQ(TextOfVariant(0.0), "1899-12-30T00:00:00 Sat");
    EXPECT_EQ(TextOfVariant(45292.5), "2024-01-01T12:00:00 Mon");
    EXPECT_EQ(TextOfVariant(-1.25), "1899-12-29T06:00:00 Fri");
}

TEST(VariantTimeToSystemTime, ReadsAFractionBetweenMinus1And0AsTheEpochDay)
{
    EXPECT_EQ(TextOfVariant(-0.75), "1899-12-30T18:00:00 Sat");
}

TEST(VariantTimeToSystemTime, RoundsToWholeSeconds)
{
    EXPECT_EQ(TextOfVariant(45292.0 + 1.4 / 86400), "2024-01-01T00:00:01 Mon");
    EXPECT_EQ(TextOfVariant(45292.0 + 1.6 / 86400), "2024-01-01T00:00:02 Mon");
}

TEST(VariantTimeToSystemTime, RoundsTheLastHalfSecondOfADayIntoTheNextWithItsWeekday)
{
    EXPECT_EQ(TextOfVariant(45292.0 + 86399.7 / 86400), "2024-01-02T00:00:00 Tue");
    EXPECT_EQ(TextOfVariant(45322.0 + 86399.7 / 86400), "2024-02-01T00:00:00 Thu");
}

TEST(VariantTimeToSystemTime, TakesTheYears100To9999)
{
    EXPECT_EQ(TextOfVariant(-657434.0), "0100-01-01T00:00:00 Fri");
    EXPECT_EQ(TextOfVariant(-657435.0), "refused");
    EXPECT_EQ(TextOfVariant(2958465.5), "9999-12-31T12:00:00 Fri");
    EXPECT_EQ(TextOfVariant(2958466.0), "refused");
    EXPECT_EQ(TextOfVariant(std::nan("")), "refused");
    EXPECT_EQ(TextOfVariant(1e300), "refused");
}

TEST(VariantTimeToSystemTime, LeavesTheResultAloneOnARefusal)
{
    SYSTEMTIME time = TimeOf("2000-01-02T03:04:05");

    EXPECT_FALSE(dates::VariantTimeToSystemTime(1e9, time));
    EXPECT_EQ(TextOf(time), "2000-01-02T03:04:05");
}

TEST(VariantTime, ComesBackForEverySecondOfADayOnBothSidesOfTheEpoch)
{
    for (const char* day : {"1601-01-01", "1899-12-29", "1899-12-30", "2024-02-29", "9766-01-01"})
    {
        SYSTEMTIME time = TimeOf(std::string(day) + "T00:00:00");
        int wrong = 0;
        for (int second = 0; second < 86400; ++second)
        {
            time.wHour = static_cast<WORD>(second / 3600);
            time.wMinute = static_cast<WORD>(second / 60 % 60);
            time.wSecond = static_cast<WORD>(second % 60);
            double variantTime = 0;
            SYSTEMTIME back{};
            wrong += !dates::SystemTimeToVariantTime(time, variantTime) ||
                     !dates::VariantTimeToSystemTime(variantTime, back) ||
                     TextOf(back) != TextOf(time);
        }
        EXPECT_EQ(wrong, 0) << day;
    }
}

} // namespace
