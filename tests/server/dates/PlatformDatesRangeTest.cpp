#include <gtest/gtest.h>

#include "CalendarDays.h"
#include "DateTexts.h"
#include "Minutes1601.h"
#include "PlatformDateChecks.h"
#include "PlatformDates.h"
#include "ZoneSamples.h"

// Every minute of the years in which a calendar rule changes its mind.

namespace
{

constexpr std::uint64_t kTicksPerMinute = 600'000'000;

std::uint64_t MinuteOfYear(std::int64_t year)
{
    return static_cast<std::uint64_t>(calendar::Day1601FromDate(year, 1, 1)) * 1440;
}

SYSTEMTIME TimeOfMinute(std::uint64_t minute)
{
    SYSTEMTIME time{};
    EXPECT_TRUE(dates::FileTimeToSystemTime(dates::FileTimeOf(minute * kTicksPerMinute), time));
    return time;
}

class CenturyEdgeTest : public testing::TestWithParam<int>
{
};

TEST_P(CenturyEdgeTest, FileTimesAgreeAtEveryMinuteOfTenYears)
{
    CPlatformDateChecks checks;

    for (std::uint64_t minute = MinuteOfYear(GetParam() - 5); minute < MinuteOfYear(GetParam() + 5);
         ++minute)
    {
        checks.FileTime(minute * kTicksPerMinute);
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
    EXPECT_GT(checks.Compared(), 3 * 10 * 365 * 1440U);
}

// The variant time ends with the year 9999.
class VariantCenturyEdgeTest : public testing::TestWithParam<int>
{
};

TEST_P(VariantCenturyEdgeTest, VariantTimesAgreeAtEveryMinuteOfTenYears)
{
    CPlatformDateChecks checks;

    for (std::uint64_t minute = MinuteOfYear(GetParam() - 5); minute < MinuteOfYear(GetParam() + 5);
         ++minute)
    {
        checks.Variant(TimeOfMinute(minute));
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
    EXPECT_GT(checks.Compared(), 2 * 10 * 365 * 1440U);
}

INSTANTIATE_TEST_SUITE_P(Centuries,
                         CenturyEdgeTest,
                         testing::Values(1700, 1800, 1900, 2000, 2100, 2400, 9900, 30800));

INSTANTIATE_TEST_SUITE_P(Centuries,
                         VariantCenturyEdgeTest,
                         testing::Values(1700, 1800, 1900, 2000, 2100, 2400, 9900));

class SwitchYearsTest : public testing::TestWithParam<TIME_ZONE_INFORMATION>
{
};

TEST_P(SwitchYearsTest, LocalTimesAgreeAtEveryMinuteOfTenYears)
{
    CPlatformDateChecks checks;

    for (std::uint64_t minute = MinuteOfYear(2019); minute < MinuteOfYear(2029); ++minute)
    {
        checks.LocalTime(GetParam(), TimeOfMinute(minute));
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
    EXPECT_GT(checks.Compared(), 10 * 365 * 1440U);
}

TEST_P(SwitchYearsTest, LocalTimesAgreeAroundEverySwitchOfTheCentury)
{
    CPlatformDateChecks checks;

    for (int year = 1995; year < 2105; ++year)
    {
        for (const SYSTEMTIME& date : {GetParam().StandardDate, GetParam().DaylightDate})
        {
            const std::uint32_t month = date.wMonth == 0 ? 1 : date.wMonth;
            const std::int64_t first = calendar::Day1601FromDate(year, month, 1);
            const std::uint32_t toSunday = (7 - calendar::WeekdayOfDay1601(first)) % 7;
            for (std::int64_t week = 0; week < 5; ++week)
            {
                const auto midnight = static_cast<std::uint64_t>(first + toSunday + 7 * week) *
                                      1440 * kTicksPerMinute;
                // Each quarter of an hour of two UTC days, and the second before it.
                for (std::uint64_t minute = 0; minute < 1440 * 2; minute += 15)
                {
                    const std::uint64_t ticks = midnight + minute * kTicksPerMinute;
                    SYSTEMTIME time{};
                    ASSERT_TRUE(dates::FileTimeToSystemTime(dates::FileTimeOf(ticks), time));
                    checks.LocalTime(GetParam(), time);
                    ASSERT_TRUE(
                        dates::FileTimeToSystemTime(dates::FileTimeOf(ticks - 10'000'000), time));
                    checks.LocalTime(GetParam(), time);
                }
            }
        }
    }

    EXPECT_EQ(checks.Differences(), 0U) << checks.First();
}

INSTANTIATE_TEST_SUITE_P(Zones,
                         SwitchYearsTest,
                         testing::Values(zones::UsEastern(),
                                         zones::Berlin(),
                                         zones::Sydney(),
                                         zones::Kolkata(),
                                         zones::Make(-330, 15, -30, {2, 3, 23}, {1, 2, 0})));

} // namespace
