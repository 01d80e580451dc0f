#include "ZoneTime.h"

#include <gtest/gtest.h>

#include "DateTexts.h"
#include "Minutes1601.h"
#include "PlatformDates.h"
#include "ZoneSamples.h"

namespace
{

std::string UtcOf(const TIME_ZONE_INFORMATION& zone, const std::string& local)
{
    SYSTEMTIME utc = TimeOf("2000-01-02T03:04:05");
    LocalToUtcSystemTime(TimeOf(local), utc, zone);
    return TextOf(utc);
}

bool IsDaylight(const TIME_ZONE_INFORMATION& zone, const std::string& local)
{
    return IsDaylightTime(TimeOf(local), zone);
}

const std::uint8_t* DataOf(const std::string& bytes)
{
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

// Bias 300, standard bias 7, daylight bias -60, switches in November and March, and a seconds
// field, years and weekdays that nobody reads.
const char* const kBlob = "2C010000 07000000 C4FFFFFF 0000"
                          "E807 0B00 0600 0100 0200 3B00 3A00 0000"
                          "0000 E807 0300 0500 0200 0300 3B00 3A00 0000";

TEST(ZoneBlob, ReadsTheTzregLayout)
{
    const std::string bytes = BytesOf(kBlob);
    ASSERT_EQ(bytes.size(), 48U);
    TIME_ZONE_INFORMATION zone{};

    ASSERT_TRUE(ConvertBinToTimezoneInfo(48, DataOf(bytes), &zone));

    EXPECT_EQ(zone.Bias, 300);
    EXPECT_EQ(zone.DaylightBias, -60);
    EXPECT_EQ(zone.StandardDate.wMonth, 11);
    EXPECT_EQ(zone.StandardDate.wDay, 1);
    EXPECT_EQ(zone.StandardDate.wHour, 2);
    EXPECT_EQ(zone.DaylightDate.wMonth, 3);
    EXPECT_EQ(zone.DaylightDate.wDay, 2);
    EXPECT_EQ(zone.DaylightDate.wHour, 3);
}

TEST(ZoneBlob, LeavesYearsWeekdaysMinutesAndSecondsZero)
{
    const std::string bytes = BytesOf(kBlob);
    TIME_ZONE_INFORMATION zone{};
    zone.StandardDate.wSecond = 9;
    zone.DaylightName[0] = WTEXT('x');

    ASSERT_TRUE(ConvertBinToTimezoneInfo(48, DataOf(bytes), &zone));

    for (const SYSTEMTIME& date : {zone.StandardDate, zone.DaylightDate})
    {
        EXPECT_EQ(date.wYear, 0);
        EXPECT_EQ(date.wDayOfWeek, 0);
        EXPECT_EQ(date.wMinute, 0);
        EXPECT_EQ(date.wSecond, 0);
        EXPECT_EQ(date.wMilliseconds, 0);
    }
    EXPECT_EQ(zone.DaylightName[0], WTEXT('\0'));
}

TEST(ZoneBlob, TakesTheStandardBiasFromOffset26InsideTheStandardDate)
{
    std::string bytes(48, '\0');
    bytes[4] = 7; // where the layout has it
    bytes[26] = 30;
    TIME_ZONE_INFORMATION zone{};

    ASSERT_TRUE(ConvertBinToTimezoneInfo(48, DataOf(bytes), &zone));

    EXPECT_EQ(zone.StandardBias, 30);
}

TEST(ZoneBlob, TakesNothingButExactly48Bytes)
{
    const std::string bytes(49, '\x01');
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = 5;

    EXPECT_FALSE(ConvertBinToTimezoneInfo(47, DataOf(bytes), &zone));
    EXPECT_FALSE(ConvertBinToTimezoneInfo(49, DataOf(bytes), &zone));
    EXPECT_FALSE(ConvertBinToTimezoneInfo(0, DataOf(bytes), &zone));
    EXPECT_FALSE(ConvertBinToTimezoneInfo(48, nullptr, &zone));
    EXPECT_FALSE(ConvertBinToTimezoneInfo(48, DataOf(bytes), nullptr));
    EXPECT_EQ(zone.Bias, 5);
}

TEST(IsDaylightTime, NeitherSwitchMomentBelongsToDaylightTime)
{
    const TIME_ZONE_INFORMATION zone = zones::UsEastern();

    EXPECT_FALSE(IsDaylight(zone, "2024-03-10T02:00:00"));
    EXPECT_TRUE(IsDaylight(zone, "2024-03-10T02:00:01"));
    EXPECT_TRUE(IsDaylight(zone, "2024-11-03T01:59:59"));
    EXPECT_FALSE(IsDaylight(zone, "2024-11-03T02:00:00"));
}

TEST(IsDaylightTime, SouthernZonesHaveItOverTheNewYear)
{
    const TIME_ZONE_INFORMATION zone = zones::Sydney();

    EXPECT_TRUE(IsDaylight(zone, "2024-01-01T00:00:00"));
    EXPECT_FALSE(IsDaylight(zone, "2024-04-07T03:00:00"));
    EXPECT_FALSE(IsDaylight(zone, "2024-10-06T02:00:00"));
    EXPECT_TRUE(IsDaylight(zone, "2024-10-06T02:00:01"));
}

TEST(IsDaylightTime, TheSameMonthTwiceCountsAsSouthern)
{
    const TIME_ZONE_INFORMATION zone = zones::Make(0, 0, -60, {3, 3, 0}, {3, 1, 0});

    EXPECT_TRUE(IsDaylight(zone, "2024-01-01T00:00:00"));
    EXPECT_TRUE(IsDaylight(zone, "2024-12-01T00:00:00"));
    EXPECT_TRUE(IsDaylight(zone, "2024-03-10T00:00:00"));
}

TEST(IsDaylightTime, WithoutAStandardMonthThereIsNone)
{
    EXPECT_FALSE(IsDaylight(zones::Make(0, 0, -60, {0, 1, 2}, {3, 2, 2}), "2024-07-01T00:00:00"));
}

TEST(IsDaylightTime, WeekFiveFallsBackToTheFourth)
{
    // November 2024 has four Sundays, December 2024 has five.
    EXPECT_FALSE(IsDaylight(zones::Make(0, 0, -60, {11, 5, 0}, {3, 1, 0}), "2024-11-24T00:00:00"));
    EXPECT_TRUE(IsDaylight(zones::Make(0, 0, -60, {11, 5, 0}, {3, 1, 0}), "2024-11-23T23:59:00"));
    EXPECT_TRUE(IsDaylight(zones::Make(0, 0, -60, {12, 5, 0}, {3, 1, 0}), "2024-12-28T23:59:00"));
    EXPECT_TRUE(IsDaylight(zones::Make(0, 0, -60, {12, 999, 0}, {3, 1, 0}), "2024-12-28T23:59:00"));
}

TEST(IsDaylightTime, AStandardWeekOf0IsTheWeekBeforeTheMonth)
{
    // The first Sunday of November 2024 is the 3rd, the one before is October 27.
    const TIME_ZONE_INFORMATION zone = zones::Make(0, 0, -60, {11, 0, 2}, {3, 2, 2});

    EXPECT_TRUE(IsDaylight(zone, "2024-10-27T01:59:00"));
    EXPECT_FALSE(IsDaylight(zone, "2024-10-27T02:00:00"));
}

TEST(IsDaylightTime, ADaylightWeekOf0IsTheFirstWeek)
{
    const TIME_ZONE_INFORMATION zone = zones::Make(0, 0, -60, {11, 1, 2}, {3, 0, 2});

    EXPECT_FALSE(IsDaylight(zone, "2024-03-03T02:00:00"));
    EXPECT_TRUE(IsDaylight(zone, "2024-03-03T02:01:00"));
}

TEST(IsDaylightTime, AYearInTheStandardDateMakesTheDatesAbsolute)
{
    TIME_ZONE_INFORMATION zone = zones::UsEastern();
    zone.StandardDate.wYear = 2024;
    zone.DaylightDate = TimeOf("2024-06-01T00:00:00");

    EXPECT_TRUE(IsDaylight(zone, "2024-05-31T23:59:59"));
    EXPECT_FALSE(IsDaylight(zone, "2024-06-01T00:00:00"));
    EXPECT_FALSE(IsDaylight(zone, "1899-12-29T00:00:00"));
}

TEST(LocalToUtc, AddsTheBiasOfItsTime)
{
    const TIME_ZONE_INFORMATION zone = zones::UsEastern();

    EXPECT_EQ(UtcOf(zone, "2024-01-15T09:00:00"), "2024-01-15T14:00:00");
    EXPECT_EQ(UtcOf(zone, "2024-07-15T09:00:00"), "2024-07-15T13:00:00");
}

TEST(LocalToUtc, DoesNotCountTheStandardBias)
{
    TIME_ZONE_INFORMATION zone = zones::UsEastern();
    zone.StandardBias = 30;

    EXPECT_EQ(UtcOf(zone, "2024-01-15T09:00:00"), "2024-01-15T14:00:00");
}

TEST(LocalToUtc, AnEmptyZoneIsTheIdentity)
{
    EXPECT_EQ(UtcOf(TIME_ZONE_INFORMATION{}, "2024-01-15T09:10:11"), "2024-01-15T09:10:11");
}

TEST(LocalToUtc, MovesTheTimeOfDayTheOtherWayBeforeTheEpochOfTheVariantTime)
{
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = 60;

    EXPECT_EQ(UtcOf(zone, "1899-12-30T06:00:00"), "1899-12-30T07:00:00");
    EXPECT_EQ(UtcOf(zone, "1899-12-29T06:00:00"), "1899-12-29T05:00:00");
    EXPECT_EQ(UtcOf(zone, "1604-02-29T00:30:00"), "1604-03-01T23:30:00");
}

TEST(LocalToUtc, AResultOutsideTheRangeIsAllZero)
{
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = INT32_MAX;

    EXPECT_EQ(UtcOf(zone, "9000-01-01T00:00:00"), "0000-00-00T00:00:00");
    zone.Bias = INT32_MIN;
    EXPECT_EQ(UtcOf(zone, "2000-01-01T00:00:00"), "0000-00-00T00:00:00");
    zone.DaylightBias = INT32_MIN;
    EXPECT_EQ(UtcOf(zone, "2000-01-01T00:00:00"), "0000-00-00T00:00:00");
}

TEST(LocalToUtc, WorksOnFileTimesAsWell)
{
    FILETIME local{};
    FILETIME utc = dates::FileTimeOf(1);
    ASSERT_TRUE(dates::SystemTimeToFileTime(TimeOf("2024-07-15T09:00:00"), local));

    EXPECT_TRUE(LocalToUtcFileTime(local, utc, zones::UsEastern()));

    SYSTEMTIME time{};
    ASSERT_TRUE(dates::FileTimeToSystemTime(utc, time));
    EXPECT_EQ(TextOf(time), "2024-07-15T13:00:00");
}

TEST(LocalToUtc, AFileTimeThatCannotBeConvertedGives0)
{
    FILETIME utc = dates::FileTimeOf(1);

    EXPECT_FALSE(LocalToUtcFileTime(dates::FileTimeOf(1ULL << 63), utc, zones::UsEastern()));
    EXPECT_EQ(dates::TicksOf(utc), 0U);
}

// The told way, step by step with doubles: what the exact code has to equal.
class CDoubleClock
{
public:
    explicit CDoubleClock(const TIME_ZONE_INFORMATION& zone) : m_zone(zone) {}

    SYSTEMTIME UtcFromMinutes(std::uint32_t minutes) const
    {
        const SYSTEMTIME local = SystemTimeFromMinutes(minutes);
        const double now = VariantOf(local);
        LONG offset = m_zone.Bias;
        if (m_zone.StandardDate.wMonth != 0 && IsDaylight(now, local.wYear))
        {
            offset += m_zone.DaylightBias;
        }
        SYSTEMTIME utc{};
        if (!dates::VariantTimeToSystemTime(now + offset / 1440.0, utc))
        {
            utc = SYSTEMTIME{};
        }
        return utc;
    }

private:
    static double VariantOf(const SYSTEMTIME& time)
    {
        double variantTime = 0;
        return dates::SystemTimeToVariantTime(time, variantTime) ? variantTime : 0.0;
    }

    static SYSTEMTIME TimeOfVariant(double variantTime)
    {
        SYSTEMTIME time{};
        return dates::VariantTimeToSystemTime(variantTime, time) ? time : SYSTEMTIME{};
    }

    static double Moment(const SYSTEMTIME& date, WORD year)
    {
        SYSTEMTIME first = date;
        first.wYear = year;
        first.wDay = 1;
        const double start = VariantOf(first);
        const int weekday = TimeOfVariant(start).wDayOfWeek;
        const double target = start + (date.wDayOfWeek - weekday + 7) % 7;
        int week = date.wDay - 1;
        while (week > 1 && TimeOfVariant(target + 7 * week).wMonth != date.wMonth)
        {
            --week;
        }
        return target + 7 * week;
    }

    bool IsDaylight(double now, WORD year) const
    {
        const double toStandard = Moment(m_zone.StandardDate, year);
        const double toDaylight = Moment(m_zone.DaylightDate, year);
        return m_zone.StandardDate.wMonth <= m_zone.DaylightDate.wMonth
                   ? now > toDaylight || now < toStandard
                   : now > toDaylight && now < toStandard;
    }

    TIME_ZONE_INFORMATION m_zone;
};

class ZoneClockTest : public testing::TestWithParam<TIME_ZONE_INFORMATION>
{
};

TEST_P(ZoneClockTest, EqualsTheStepByStepWayOverTheWholeRange)
{
    const CDoubleClock slow(GetParam());
    CZoneClock fast(GetParam());
    std::uint32_t wrong = 0;

    // 4001 minutes are prime to a day and reach every hour of the week in time.
    for (std::uint64_t minutes = 0; minutes <= 0xFFFFFFFF; minutes += 4001)
    {
        const auto local = static_cast<std::uint32_t>(minutes);
        const SYSTEMTIME expected = slow.UtcFromMinutes(local);
        const SYSTEMTIME utc = fast.UtcFromMinutes(local);
        wrong += TextWithWeekday(utc) != TextWithWeekday(expected);
    }

    EXPECT_EQ(wrong, 0U);
}

TEST_P(ZoneClockTest, EqualsTheStepByStepWayAtEveryMinuteOfAYearInAnyOrder)
{
    const CDoubleClock slow(GetParam());
    CZoneClock fast(GetParam());
    const std::uint32_t first = MinutesFromSystemTime(TimeOf("2023-12-01T00:00:00"));
    std::uint32_t wrong = 0;

    for (std::uint32_t minute = 0; minute < 400 * 1440; ++minute)
    {
        const std::uint32_t local = first + minute * 7919 % (400 * 1440);
        SYSTEMTIME single{};
        LocalToUtcSystemTime(SystemTimeFromMinutes(local), single, GetParam());
        const SYSTEMTIME expected = slow.UtcFromMinutes(local);
        const std::string text = TextWithWeekday(fast.UtcFromMinutes(local));
        wrong += text != TextWithWeekday(expected) || text != TextWithWeekday(single);
    }

    EXPECT_EQ(wrong, 0U);
}

INSTANTIATE_TEST_SUITE_P(Zones,
                         ZoneClockTest,
                         testing::Values(zones::UsEastern(),
                                         zones::Berlin(),
                                         zones::Sydney(),
                                         zones::Kolkata(),
                                         zones::Make(1440, 15, -1441, {1, 1, 0}, {12, 5, 23}),
                                         zones::Make(-840, 0, 60, {6, 3, 12}, {6, 4, 12})));

} // namespace
