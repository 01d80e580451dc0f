#include "PlatformDates.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <oleauto.h>

#include <random>

#include "DateTexts.h"
#include "Minutes1601.h"
#include "PlatformDateChecks.h"
#include "ZoneSamples.h"

namespace
{

constexpr int kRounds = 10'000'000;

/// A fixed stream of numbers: a failure is seen again in the next run.
class CNumbers
{
public:
    explicit CNumbers(std::uint64_t seed) : m_engine(seed) {}

    std::uint64_t Any() { return m_engine(); }
    WORD Word(unsigned low, unsigned high)
    {
        return static_cast<WORD>(low + m_engine() % (high - low + 1));
    }

private:
    std::mt19937_64 m_engine;
};

SYSTEMTIME RandomTime(CNumbers& numbers, unsigned firstYear, unsigned lastYear)
{
    SYSTEMTIME time{};
    time.wYear = numbers.Word(firstYear, lastYear);
    time.wMonth = numbers.Word(1, 12);
    time.wDay = numbers.Word(1, DaysInMonth(time.wMonth, time.wYear));
    time.wHour = numbers.Word(0, 23);
    time.wMinute = numbers.Word(0, 59);
    time.wSecond = numbers.Word(0, 59);
    time.wMilliseconds = numbers.Word(0, 999);
    return time;
}

/// Sometimes one field just outside its range.
void Spoil(SYSTEMTIME& time, CNumbers& numbers)
{
    switch (numbers.Any() % 16)
    {
    case 0:
        time.wMonth = numbers.Word(0, 14);
        break;
    case 1:
        time.wDay = numbers.Word(0, 33);
        break;
    case 2:
        time.wHour = numbers.Word(22, 26);
        break;
    case 3:
        time.wMinute = numbers.Word(58, 62);
        break;
    case 4:
        time.wSecond = numbers.Word(58, 62);
        break;
    case 5:
        time.wMilliseconds = numbers.Word(998, 1002);
        break;
    case 6:
        time.wYear = numbers.Word(1598, 1604);
        break;
    default:
        break;
    }
}

bool IsLeapDayOfACommonYear(const SYSTEMTIME& time)
{
    return time.wMonth == 2 && time.wDay == 29 && DaysInMonth(2, time.wYear) == 28;
}

TEST(PlatformDates, RandomFileTimesAgree)
{
    CNumbers numbers(1);
    CPlatformDateChecks checks;

    for (int round = 0; round < kRounds; ++round)
    {
        // Every size of number, the refused half included.
        checks.FileTime(numbers.Any() >> (numbers.Any() % 8));
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

TEST(PlatformDates, RandomSystemTimesAgreeAlsoWhereTheyAreRefused)
{
    CNumbers numbers(2);
    CPlatformDateChecks checks;

    for (int round = 0; round < kRounds; ++round)
    {
        SYSTEMTIME time = RandomTime(numbers, 1601, 30827);
        Spoil(time, numbers);
        if (!IsLeapDayOfACommonYear(time))
        {
            checks.SystemTime(time);
        }
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

TEST(PlatformDates, RandomVariantTimesAgree)
{
    CNumbers numbers(3);
    CPlatformDateChecks checks;

    for (int round = 0; round < kRounds; ++round)
    {
        SYSTEMTIME time = RandomTime(numbers, 100, 9999);
        if (numbers.Any() % 8 == 0)
        {
            time.wDay = numbers.Word(1, 31); // runs on into the next month
        }
        // November 31 is a known difference.
        if (time.wMonth != 11 || time.wDay != 31)
        {
            checks.Variant(time);
        }
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

TEST(PlatformDates, RandomNumbersReadAsVariantTimesAgree)
{
    CNumbers numbers(4);
    CPlatformDateChecks checks;

    for (int round = 0; round < kRounds; ++round)
    {
        const double unit = static_cast<double>(numbers.Any() >> 11) / 9007199254740992.0;
        const double value = unit * 3700000.0 - 700000.0;
        const double fraction = value - static_cast<double>(static_cast<long long>(value));
        // The last half second of a day is a known difference: the system rolls the date on and
        // leaves the weekday behind.
        if ((fraction < 0 ? -fraction : fraction) < 86399.4 / 86400.0)
        {
            checks.VariantValue(value);
        }
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

TEST(PlatformDates, RandomZonesAgree)
{
    CNumbers numbers(5);
    CPlatformDateChecks checks;

    for (int round = 0; round < kRounds; ++round)
    {
        const auto bias = static_cast<LONG>(numbers.Word(0, 2880)) - 1440;
        const auto standardBias = static_cast<LONG>(numbers.Word(0, 4)) * 15 - 30;
        const auto daylightBias = static_cast<LONG>(numbers.Word(0, 8)) * 30 - 120;
        TIME_ZONE_INFORMATION zone =
            zones::Make(bias,
                        standardBias,
                        daylightBias,
                        {numbers.Word(0, 12), numbers.Word(0, 6), numbers.Word(0, 23)},
                        {numbers.Word(0, 12), numbers.Word(0, 6), numbers.Word(0, 23)});
        zone.StandardDate.wDayOfWeek = numbers.Word(0, 6);
        zone.DaylightDate.wDayOfWeek = numbers.Word(0, 6);
        const bool hasSwitches = zone.StandardDate.wMonth != 0 && zone.DaylightDate.wMonth != 0;
        // Known differences: a standard month of 0 alone, and both switches in one month.
        if (zone.StandardDate.wMonth != zone.DaylightDate.wMonth &&
            (hasSwitches || zone.StandardDate.wMonth != 0))
        {
            checks.LocalTime(zone, RandomTime(numbers, 1602, 30820));
        }
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

// The known differences of this system. A test that fails here means that the system has changed
// and that docs/dates.md has to follow.

TEST(PlatformDates, ThisSystemTakesFebruary29OfACommonYear)
{
    const SYSTEMTIME time = TimeOf("2023-02-29T00:00:00");
    FILETIME theirs{};
    FILETIME ours{};

    EXPECT_TRUE(::SystemTimeToFileTime(&time, &theirs));
    EXPECT_FALSE(dates::SystemTimeToFileTime(time, ours));
}

TEST(PlatformDates, ThisSystemLeavesTheWeekdayBehindWhenADayIsRoundedUp)
{
    SYSTEMTIME theirs{};

    ASSERT_TRUE(::VariantTimeToSystemTime(45292.0 + 86399.7 / 86400, &theirs));

    EXPECT_EQ(TextWithWeekday(theirs), "2024-01-02T00:00:00 Mon");
}

TEST(PlatformDates, ThisSystemTurnsNovember31IntoJanuary1)
{
    SYSTEMTIME time = TimeOf("2023-11-31T00:00:00");
    double theirs = 0;
    double ours = 0;

    ASSERT_TRUE(::SystemTimeToVariantTime(&time, &theirs));
    ASSERT_TRUE(dates::SystemTimeToVariantTime(time, ours));

    EXPECT_EQ(theirs, 45292.0);
    EXPECT_EQ(ours, 45261.0);
}

TEST(PlatformDates, ThisSystemTakesSwitchesInOneMonthAsSouthern)
{
    const TIME_ZONE_INFORMATION zone = zones::Make(0, 0, -60, {3, 3, 0}, {3, 1, 0});
    SYSTEMTIME utc = TimeOf("2024-07-01T00:00:00");
    SYSTEMTIME theirs{};
    SYSTEMTIME ours{};

    ASSERT_TRUE(::SystemTimeToTzSpecificLocalTime(&zone, &utc, &theirs));
    ASSERT_TRUE(dates::SystemTimeToTzSpecificLocalTime(zone, utc, ours));

    EXPECT_EQ(TextOf(theirs), "2024-07-01T01:00:00");
    EXPECT_EQ(TextOf(ours), "2024-07-01T00:00:00");
}

TEST(PlatformDates, ThisSystemRefusesAZoneWithADaylightMonthAlone)
{
    const TIME_ZONE_INFORMATION zone = zones::Make(300, 0, -60, {0, 0, 0}, {3, 1, 0});
    SYSTEMTIME utc = TimeOf("2024-07-01T00:00:00");
    SYSTEMTIME theirs{};
    SYSTEMTIME ours{};

    EXPECT_FALSE(::SystemTimeToTzSpecificLocalTime(&zone, &utc, &theirs));
    EXPECT_TRUE(dates::SystemTimeToTzSpecificLocalTime(zone, utc, ours));
}

TEST(PlatformDates, ThisSystemTakesSwitchHoursAndMonthsBeyondTheirRange)
{
    SYSTEMTIME utc = TimeOf("2024-07-01T00:00:00");
    for (const zones::Switch standard : {zones::Switch{11, 1, 24}, zones::Switch{13, 1, 2}})
    {
        const TIME_ZONE_INFORMATION zone = zones::Make(0, 0, -60, standard, {3, 1, 0});
        SYSTEMTIME theirs{};
        SYSTEMTIME ours{};

        EXPECT_TRUE(::SystemTimeToTzSpecificLocalTime(&zone, &utc, &theirs));
        EXPECT_FALSE(dates::SystemTimeToTzSpecificLocalTime(zone, utc, ours));
    }
}

TEST(PlatformDates, ThisSystemTakesYearsBelow100AsAVariantTime)
{
    SYSTEMTIME time = TimeOf("0050-01-01T00:00:00");
    double theirs = 0;
    double ours = 0;

    EXPECT_TRUE(::SystemTimeToVariantTime(&time, &theirs));
    EXPECT_FALSE(dates::SystemTimeToVariantTime(time, ours));
}

TEST(PlatformDates, ThisSystemTakesAMonthOf0AsAVariantTime)
{
    SYSTEMTIME time{};
    double theirs = 0;
    double ours = 0;

    EXPECT_TRUE(::SystemTimeToVariantTime(&time, &theirs));
    EXPECT_FALSE(dates::SystemTimeToVariantTime(time, ours));
}

} // namespace
