#include <gtest/gtest.h>

#include "RuleRun.h"
#include "TraceCapture.h"

namespace
{

constexpr const char* kYearStart = "2024-01-01T00:00:00";
constexpr const char* kYearEnd = "2024-12-31T23:00:00";

TEST(MonthlyDayRule, The31stIsTheLastDayOfShorterMonths)
{
    EXPECT_EQ(
        DatesOf(pattern::MonthlyDay("2024-01-31", 31, 1), kYearStart, "2024-06-30T23:00:00"),
        (Dates{
            "2024-01-31", "2024-02-29", "2024-03-31", "2024-04-30", "2024-05-31", "2024-06-30"}));
}

TEST(MonthlyDayRule, EverySecondMonth)
{
    EXPECT_EQ(
        DatesOf(pattern::MonthlyDay("2024-01-10", 10, 2), kYearStart, kYearEnd),
        (Dates{
            "2024-01-10", "2024-03-10", "2024-05-10", "2024-07-10", "2024-09-10", "2024-11-10"}));
}

TEST(MonthlyDayRule, AWindowThatOpensInAnOffMonthListsNothing)
{
    const pattern::Pattern rule = pattern::MonthlyDay("2024-01-10", 10, 2);

    EXPECT_TRUE(DatesOf(rule, "2024-02-01T00:00:00", kYearEnd).empty());
    EXPECT_EQ(DatesOf(rule, "2024-03-01T00:00:00", "2024-04-01T00:00:00"), (Dates{"2024-03-10"}));
}

TEST(MonthlyDayRule, AWindowBehindTheDayOfAnActiveMonthLandsInAnOffMonthAndEnds)
{
    EXPECT_TRUE(
        DatesOf(pattern::MonthlyDay("2024-01-10", 10, 2), "2024-03-11T00:00:00", kYearEnd).empty());
}

TEST(MonthlyDayRule, TheFirstTakesOneRoundAnyOtherDayTwo)
{
    EXPECT_EQ(
        ExpandRule(pattern::MonthlyDay("1900-01-01", 1, 1), "1900-01-01T00:00:00", kYearEnd).count,
        1001U);
    EXPECT_EQ(
        ExpandRule(pattern::MonthlyDay("1900-01-02", 2, 1), "1900-01-01T00:00:00", kYearEnd).count,
        501U);
}

TEST(MonthlyDayRule, Day0NeverComes)
{
    const CTraceCapture trace;

    EXPECT_TRUE(DatesOf(pattern::MonthlyDay("2024-01-01", 0, 1), kYearStart, kYearEnd).empty());
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 0U);
}

TEST(MonthlyDayRule, APeriodOf0ListsModifiedInstancesOnlyAndSaysSo)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::MonthlyDay("2024-01-10", 10, 0);
    rule.modified.push_back(
        pattern::Moved("2024-02-10T09:00:00", "2024-02-11T09:00:00", "2024-02-11T10:00:00"));

    EXPECT_EQ(DatesOf(rule, kYearStart, kYearEnd), (Dates{"2024-02-11"}));
    EXPECT_TRUE(
        trace.Has(1, "CRecurrentRule::ParseMonthly02-period too short, no regular instances"));
}

TEST(MonthlyDayRule, APeriodOfManyYearsIsFoundWithoutStepping)
{
    EXPECT_EQ(ExpandRule(pattern::MonthlyDay("2024-01-10", 10, 48000), kYearStart, kYearEnd).count,
              1U);
    EXPECT_EQ(
        ExpandRule(pattern::MonthlyDay("2024-01-10", 10, 0xFFFFFFFF), kYearStart, kYearEnd).count,
        1U);
}

struct OrdinalCase
{
    const char* name;
    std::uint32_t mask;
    std::uint32_t week;
    Dates dates; // of February to May 2024
};

void PrintTo(const OrdinalCase& ordinal, std::ostream* out)
{
    *out << ordinal.name;
}

class MonthlyOrdinalTest : public testing::TestWithParam<OrdinalCase>
{
};

std::string NameOfCase(const testing::TestParamInfo<OrdinalCase>& info)
{
    return info.param.name;
}

TEST_P(MonthlyOrdinalTest, FindsItsDays)
{
    const pattern::Pattern rule =
        pattern::MonthlyOrdinal("2024-02-01", GetParam().mask, GetParam().week, 1);

    EXPECT_EQ(DatesOf(rule, "2024-02-01T00:00:00", "2024-05-31T23:00:00"), GetParam().dates);
}

// 2024: February 1 is a Thursday, March 1 a Friday, April 1 a Monday, May 1 a Wednesday.
INSTANTIATE_TEST_SUITE_P(
    Masks,
    MonthlyOrdinalTest,
    testing::Values(
        OrdinalCase{"FirstSunday", 1, 1, {"2024-02-04", "2024-03-03", "2024-04-07", "2024-05-05"}},
        OrdinalCase{"ThirdTuesday", 4, 3, {"2024-02-20", "2024-03-19", "2024-04-16", "2024-05-21"}},
        OrdinalCase{
            "FourthTuesday", 4, 4, {"2024-02-27", "2024-03-26", "2024-04-23", "2024-05-28"}},
        OrdinalCase{"LastTuesday", 4, 5, {"2024-02-27", "2024-03-26", "2024-04-30", "2024-05-28"}},
        OrdinalCase{
            "LastThursday", 16, 5, {"2024-02-29", "2024-03-28", "2024-04-25", "2024-05-30"}},
        OrdinalCase{
            "FirstSaturday", 64, 1, {"2024-02-03", "2024-03-02", "2024-04-06", "2024-05-04"}},
        OrdinalCase{"FirstSaturdayByItsOtherMask",
                    78,
                    1,
                    {"2024-02-03", "2024-03-02", "2024-04-06", "2024-05-04"}},
        OrdinalCase{
            "FirstWorkingDay", 62, 1, {"2024-02-01", "2024-03-01", "2024-04-01", "2024-05-01"}},
        OrdinalCase{"SecondWorkingDaySkipsTheWeekend",
                    62,
                    2,
                    {"2024-02-02", "2024-03-04", "2024-04-02", "2024-05-02"}},
        OrdinalCase{
            "FourthWorkingDay", 62, 4, {"2024-02-06", "2024-03-06", "2024-04-04", "2024-05-06"}},
        OrdinalCase{
            "LastWorkingDay", 62, 5, {"2024-02-29", "2024-03-29", "2024-04-30", "2024-05-31"}},
        OrdinalCase{
            "FirstWeekendDay", 65, 1, {"2024-02-03", "2024-03-02", "2024-04-06", "2024-05-04"}},
        OrdinalCase{
            "SecondWeekendDay", 65, 2, {"2024-02-04", "2024-03-03", "2024-04-07", "2024-05-05"}},
        OrdinalCase{
            "ThirdWeekendDay", 65, 3, {"2024-02-10", "2024-03-09", "2024-04-13", "2024-05-11"}},
        OrdinalCase{
            "FourthWeekendDay", 65, 4, {"2024-02-11", "2024-03-10", "2024-04-14", "2024-05-12"}},
        OrdinalCase{
            "LastWeekendDay", 65, 5, {"2024-02-25", "2024-03-31", "2024-04-28", "2024-05-26"}},
        OrdinalCase{"FirstDay", 127, 1, {"2024-02-01", "2024-03-01", "2024-04-01", "2024-05-01"}},
        OrdinalCase{"FourthDay", 127, 4, {"2024-02-04", "2024-03-04", "2024-04-04", "2024-05-04"}},
        OrdinalCase{"LastDay", 127, 5, {"2024-02-29", "2024-03-31", "2024-04-30", "2024-05-31"}},
        OrdinalCase{"AnyDayOfWeek0", 127, 0, {}},
        OrdinalCase{"AnyDayOfWeek6IsTheLast",
                    127,
                    6,
                    {"2024-02-29", "2024-03-31", "2024-04-30", "2024-05-31"}},
        OrdinalCase{"WeekendDayOfWeek0", 65, 0, {}},
        OrdinalCase{"WorkingDayOfWeek9IsTheLast",
                    62,
                    9,
                    {"2024-02-29", "2024-03-29", "2024-04-30", "2024-05-31"}},
        OrdinalCase{"WorkingDayOfWeek0CountsOnUnsigned",
                    62,
                    0,
                    {"2024-02-07", "2024-03-07", "2024-04-05", "2024-05-07"}},
        OrdinalCase{"TuesdayOfWeek0LiesInTheMonthBefore", 4, 0, {}},
        OrdinalCase{"TuesdayOfWeek6GoesBackOneWeekOnly", 4, 6, {"2024-04-30"}},
        OrdinalCase{"UnknownMask", 3, 1, {}}),
    NameOfCase);

// September 2024 begins on a Sunday, June 2024 on a Saturday.
TEST(MonthlyOrdinalRule, WeekendDaysOfMonthsThatBeginOnAWeekend)
{
    const auto dates = [](std::uint32_t week) {
        Dates both;
        for (const char* month : {"2024-06", "2024-09"})
        {
            const std::string first = std::string(month) + "-01";
            for (const std::string& date : DatesOf(pattern::MonthlyOrdinal(first, 65, week, 1),
                                                   first + "T00:00:00",
                                                   std::string(month) + "-30T23:00:00"))
            {
                both.push_back(date);
            }
        }
        return both;
    };

    EXPECT_EQ(dates(1), (Dates{"2024-06-01", "2024-09-01"}));
    EXPECT_EQ(dates(2), (Dates{"2024-06-02", "2024-09-07"}));
    EXPECT_EQ(dates(3), (Dates{"2024-06-08", "2024-09-08"}));
    EXPECT_EQ(dates(4), (Dates{"2024-06-09", "2024-09-14"}));
    EXPECT_EQ(dates(5), (Dates{"2024-06-30", "2024-09-29"}));
}

TEST(MonthlyOrdinalRule, WorkingDaysOfMonthsThatBeginOnAWeekend)
{
    // The first working day is Monday June 3 and Monday September 2; June ends on a Sunday.
    EXPECT_EQ(DatesOf(pattern::MonthlyOrdinal("2024-06-01", 62, 1, 3), kYearStart, kYearEnd),
              (Dates{"2024-06-03", "2024-09-02", "2024-12-02"}));
    EXPECT_EQ(DatesOf(pattern::MonthlyOrdinal("2024-06-01", 62, 4, 3), kYearStart, kYearEnd),
              (Dates{"2024-06-06", "2024-09-05", "2024-12-05"}));
    EXPECT_EQ(DatesOf(pattern::MonthlyOrdinal("2024-06-01", 62, 5, 3), kYearStart, kYearEnd),
              (Dates{"2024-06-28", "2024-09-30", "2024-12-31"}));
}

TEST(MonthlyOrdinalRule, APeriodOf0ListsModifiedInstancesOnlyAndSaysSo)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::MonthlyOrdinal("2024-01-01", 2, 1, 0);
    rule.modified.push_back(
        pattern::Moved("2024-02-05T09:00:00", "2024-02-11T09:00:00", "2024-02-11T10:00:00"));

    EXPECT_EQ(DatesOf(rule, kYearStart, kYearEnd), (Dates{"2024-02-11"}));
    EXPECT_TRUE(
        trace.Has(1, "CRecurrentRule::ParseMonthly03-period too short, no regular instances"));
}

TEST(MonthlyOrdinalRule, AWindowThatOpensInAnOffMonthListsNothing)
{
    const pattern::Pattern rule = pattern::MonthlyOrdinal("2024-01-01", 2, 1, 2);

    EXPECT_TRUE(DatesOf(rule, "2024-02-01T00:00:00", kYearEnd).empty());
}

TEST(MonthlyOrdinalRule, DecemberDoesNotEndTheLoop)
{
    EXPECT_EQ(
        DatesOf(pattern::MonthlyOrdinal("2024-12-01", 2, 1, 1), kYearStart, "2025-02-28T00:00:00"),
        (Dates{"2024-12-02", "2025-01-06", "2025-02-03"}));
    EXPECT_EQ(
        DatesOf(pattern::MonthlyOrdinal("2024-12-01", 2, 1, 12), kYearStart, "2026-02-28T00:00:00"),
        (Dates{"2024-12-02", "2025-12-01"}));
}

TEST(MonthlyOrdinalRule, AnUnknownWeekOfWeekendDaysIsTracedTwiceInEachRound)
{
    const CTraceCapture trace;

    ExpandRule(pattern::MonthlyOrdinal("2024-01-01", 65, 6, 1), kYearStart, "2024-03-31T00:00:00");

    EXPECT_EQ(trace.Count("Unknown uWeekNumber type"), 6U);
    EXPECT_TRUE(trace.Has(1, "Unknown uWeekNumber type"));
}

TEST(MonthlyOrdinalRule, APeriodBeyondTheCalendarEndsTheLoopWithAFailureLine)
{
    const CTraceCapture trace;

    // 95000 months are 7916 years: the minutes of that month wrap round to before this one.
    EXPECT_TRUE(
        DatesOf(pattern::MonthlyOrdinal("2024-01-01", 2, 1, 95000), kYearStart, kYearEnd).empty());
    EXPECT_TRUE(
        trace.Has(0, "CRecurrentRule::ParseMonthly03- stNextMonth is the same as stMonthFst"));
}

TEST(MonthlyRule, AnUnknownPatternTypeListsNothingInSilence)
{
    for (const unsigned type : {0U, 1U, 4U, 10U, 0x102U})
    {
        const CTraceCapture trace;
        pattern::Pattern rule = pattern::MonthlyDay("2024-01-10", 10, 1);
        rule.patternType = static_cast<std::uint16_t>(type);
        EXPECT_FALSE(ExpandRule(rule, kYearStart, kYearEnd).result);
        EXPECT_EQ(trace.Lines().size(), 2U);
    }
}

} // namespace
