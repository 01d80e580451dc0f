#include <gtest/gtest.h>

#include "DateTexts.h"
#include "PlatformDates.h"
#include "ZoneSamples.h"

namespace
{

std::string LocalOf(const TIME_ZONE_INFORMATION& zone, const std::string& utc)
{
    SYSTEMTIME local{};
    return dates::SystemTimeToTzSpecificLocalTime(zone, TimeOf(utc), local) ? TextOf(local)
                                                                            : "refused";
}

TEST(SpecificLocalTime, AZoneWithoutSwitchesTakesTheBiasAlone)
{
    TIME_ZONE_INFORMATION zone = zones::Kolkata();
    zone.StandardBias = 77;
    zone.DaylightBias = -60;

    EXPECT_EQ(LocalOf(zone, "2024-07-01T12:00:00"), "2024-07-01T17:30:00");
}

TEST(SpecificLocalTime, DaylightTimeBeginsAtItsMomentOfStandardTime)
{
    const TIME_ZONE_INFORMATION zone = zones::UsEastern();

    EXPECT_EQ(LocalOf(zone, "2024-03-10T06:59:59"), "2024-03-10T01:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-03-10T07:00:00"), "2024-03-10T03:00:00");
}

TEST(SpecificLocalTime, StandardTimeBeginsAtItsMomentOfDaylightTime)
{
    const TIME_ZONE_INFORMATION zone = zones::UsEastern();

    EXPECT_EQ(LocalOf(zone, "2024-11-03T05:59:59"), "2024-11-03T01:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-11-03T06:00:00"), "2024-11-03T01:00:00");
}

TEST(SpecificLocalTime, WeekFiveIsTheLastOfItsMonth)
{
    const TIME_ZONE_INFORMATION zone = zones::Berlin();

    EXPECT_EQ(LocalOf(zone, "2024-03-31T00:59:59"), "2024-03-31T01:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-03-31T01:00:00"), "2024-03-31T03:00:00");
    EXPECT_EQ(LocalOf(zone, "2024-10-27T00:59:59"), "2024-10-27T02:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-10-27T01:00:00"), "2024-10-27T02:00:00");
}

TEST(SpecificLocalTime, SouthernZonesHaveDaylightTimeOverTheNewYear)
{
    const TIME_ZONE_INFORMATION zone = zones::Sydney();

    EXPECT_EQ(LocalOf(zone, "2023-12-31T13:00:00"), "2024-01-01T00:00:00");
    EXPECT_EQ(LocalOf(zone, "2024-04-06T15:59:59"), "2024-04-07T02:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-04-06T16:00:00"), "2024-04-07T02:00:00");
    EXPECT_EQ(LocalOf(zone, "2024-10-05T16:00:00"), "2024-10-06T03:00:00");
}

TEST(SpecificLocalTime, TheStandardBiasCountsWhenThereAreSwitches)
{
    TIME_ZONE_INFORMATION zone = zones::UsEastern();
    zone.StandardBias = 30;

    EXPECT_EQ(LocalOf(zone, "2024-01-01T12:00:00"), "2024-01-01T06:30:00");
    EXPECT_EQ(LocalOf(zone, "2024-07-01T12:00:00"), "2024-07-01T08:00:00");
    EXPECT_EQ(LocalOf(zone, "2024-03-10T07:29:59"), "2024-03-10T01:59:59");
    EXPECT_EQ(LocalOf(zone, "2024-03-10T07:30:00"), "2024-03-10T03:30:00");
}

TEST(SpecificLocalTime, AMonthOf0OnEitherSideMeansNoSwitches)
{
    TIME_ZONE_INFORMATION zone = zones::UsEastern();
    zone.DaylightDate.wMonth = 0;
    EXPECT_EQ(LocalOf(zone, "2024-07-01T12:00:00"), "2024-07-01T07:00:00");

    zone = zones::UsEastern();
    zone.StandardDate.wMonth = 0;
    zone.StandardBias = 30;
    EXPECT_EQ(LocalOf(zone, "2024-07-01T12:00:00"), "2024-07-01T07:00:00");
}

TEST(SpecificLocalTime, RefusesSwitchDatesThatDoNotExist)
{
    const auto withStandard = [](zones::Switch standard) {
        return zones::Make(300, 0, -60, standard, {3, 2, 2});
    };
    EXPECT_EQ(LocalOf(withStandard({11, 0, 2}), "2024-07-01T12:00:00"), "refused");
    EXPECT_EQ(LocalOf(withStandard({11, 6, 2}), "2024-07-01T12:00:00"), "refused");
    EXPECT_EQ(LocalOf(withStandard({13, 1, 2}), "2024-07-01T12:00:00"), "refused");
    EXPECT_EQ(LocalOf(withStandard({11, 1, 24}), "2024-07-01T12:00:00"), "refused");
    EXPECT_EQ(LocalOf(withStandard({11, 1, 23}), "2024-07-01T12:00:00"), "2024-07-01T08:00:00");
}

TEST(SpecificLocalTime, RefusesAResultBefore1601AndLeavesItAlone)
{
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = 1;
    SYSTEMTIME local = TimeOf("2000-01-02T03:04:05");

    EXPECT_FALSE(
        dates::SystemTimeToTzSpecificLocalTime(zone, TimeOf("1601-01-01T00:00:00"), local));
    EXPECT_EQ(TextOf(local), "2000-01-02T03:04:05");
    EXPECT_EQ(LocalOf(zone, "1601-01-01T00:01:00"), "1601-01-01T00:00:00");
}

TEST(SpecificLocalTime, RefusesAUtcTimeThatDoesNotExist)
{
    EXPECT_EQ(LocalOf(zones::Berlin(), "2023-02-29T00:00:00"), "refused");
}

TEST(SpecificLocalTime, SurvivesBiasesAtTheEndOfTheRange)
{
    TIME_ZONE_INFORMATION zone = zones::UsEastern();
    zone.Bias = INT32_MIN;
    SYSTEMTIME utc = TimeOf("9999-12-31T00:00:00");
    utc.wYear = 30827;
    SYSTEMTIME local{};

    EXPECT_FALSE(dates::SystemTimeToTzSpecificLocalTime(zone, utc, local));
    zone.Bias = INT32_MAX;
    EXPECT_EQ(LocalOf(zone, "1700-01-01T00:00:00"), "refused");
}

} // namespace
