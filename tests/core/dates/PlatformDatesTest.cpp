#include "PlatformDates.h"

#include <gtest/gtest.h>

#include "DateTexts.h"

namespace
{

SYSTEMTIME WithMilliseconds(const char* text, WORD milliseconds)
{
    SYSTEMTIME time = TimeOf(text);
    time.wMilliseconds = milliseconds;
    return time;
}

bool IsTaken(const SYSTEMTIME& time)
{
    FILETIME fileTime{};
    return dates::SystemTimeToFileTime(time, fileTime);
}

TEST(FileTimeToSystemTime, GivesMillisecondsAndWeekday)
{
    SYSTEMTIME time{};

    ASSERT_TRUE(dates::FileTimeToSystemTime(dates::FileTimeOf(128166372003589999ULL), time));

    EXPECT_EQ(TextWithWeekday(time), "2007-02-22T17:00:00.358 Thu");
}

TEST(FileTimeToSystemTime, TakesTheLargestPositiveCount)
{
    SYSTEMTIME time{};

    ASSERT_TRUE(dates::FileTimeToSystemTime(dates::FileTimeOf(0x7FFFFFFFFFFFFFFFULL), time));

    EXPECT_EQ(TextOf(time), "30828-09-14T02:48:05.477");
}

TEST(FileTimeToSystemTime, RefusesACountWithItsHighestBitAndLeavesTheResultAlone)
{
    SYSTEMTIME time = TimeOf("2000-01-02T03:04:05");

    EXPECT_FALSE(dates::FileTimeToSystemTime(dates::FileTimeOf(0x8000000000000000ULL), time));
    EXPECT_EQ(TextOf(time), "2000-01-02T03:04:05");
}

TEST(SystemTimeToFileTime, KeepsMillisecondsAndIgnoresTheWeekday)
{
    SYSTEMTIME time = WithMilliseconds("2007-02-22T17:00:00", 358);
    time.wDayOfWeek = 6;
    FILETIME fileTime{};

    ASSERT_TRUE(dates::SystemTimeToFileTime(time, fileTime));

    EXPECT_EQ(dates::TicksOf(fileTime), 128166372003580000ULL);
}

TEST(SystemTimeToFileTime, RefusesDatesThatDoNotExist)
{
    EXPECT_FALSE(IsTaken(TimeOf("2023-02-29T00:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("1900-02-29T00:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-04-31T00:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-00-10T00:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-13-10T00:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-01-00T00:00:00")));
    EXPECT_TRUE(IsTaken(TimeOf("2000-02-29T00:00:00")));
}

TEST(SystemTimeToFileTime, RefusesTimesThatDoNotExist)
{
    EXPECT_FALSE(IsTaken(TimeOf("2023-01-01T24:00:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-01-01T00:60:00")));
    EXPECT_FALSE(IsTaken(TimeOf("2023-01-01T00:00:60")));
    EXPECT_FALSE(IsTaken(WithMilliseconds("2023-01-01T00:00:00", 1000)));
    EXPECT_TRUE(IsTaken(WithMilliseconds("2023-01-01T23:59:59", 999)));
}

TEST(SystemTimeToFileTime, TakesTheYears1601To30827)
{
    SYSTEMTIME time = TimeOf("1601-01-01T00:00:00");
    EXPECT_TRUE(IsTaken(time));
    time.wYear = 1600;
    EXPECT_FALSE(IsTaken(time));
    time.wYear = 30827;
    EXPECT_TRUE(IsTaken(time));
    time.wYear = 30828;
    EXPECT_FALSE(IsTaken(time));
}

TEST(SystemTimeToFileTime, LeavesTheResultAloneOnARefusal)
{
    FILETIME fileTime = dates::FileTimeOf(77);

    EXPECT_FALSE(dates::SystemTimeToFileTime(SYSTEMTIME{}, fileTime));
    EXPECT_EQ(dates::TicksOf(fileTime), 77U);
}

TEST(CompareFileTime, OrdersByTheWholeUnsignedCount)
{
    const FILETIME low = dates::FileTimeOf(0x00000001FFFFFFFFULL);
    const FILETIME high = dates::FileTimeOf(0x0000000200000000ULL);
    const FILETIME negative = dates::FileTimeOf(0xFFFFFFFF00000000ULL);

    EXPECT_EQ(dates::CompareFileTime(low, high), -1);
    EXPECT_EQ(dates::CompareFileTime(high, low), 1);
    EXPECT_EQ(dates::CompareFileTime(high, high), 0);
    EXPECT_EQ(dates::CompareFileTime(negative, high), 1);
}

} // namespace
