#include <gtest/gtest.h>

#include "Minutes1601.h"
#include "MonthArithmetic.h"
#include "RuleRun.h"
#include "TraceCapture.h"

namespace
{

constexpr const char* kStart = "2024-01-01T00:00:00";

TEST(MonthOfYearly, IsTheMonthThatBeginsAfterTheOffset)
{
    const SYSTEMTIME first = SystemTimeFromMinutes(pattern::Minutes("2023-07-04"));

    EXPECT_EQ(MonthOfYearly(31 * 1440, first), 2U);
    EXPECT_EQ(MonthOfYearly(59 * 1440, first), 3U);
    EXPECT_EQ(MonthOfYearly(334 * 1440, first), 12U);
}

TEST(MonthOfYearly, FallsBackOnTheMonthOfTheFirstInstance)
{
    const SYSTEMTIME first = SystemTimeFromMinutes(pattern::Minutes("2023-07-04"));

    EXPECT_EQ(MonthOfYearly(0, first), 7U);
    EXPECT_EQ(MonthOfYearly(1, first), 7U);
    EXPECT_EQ(MonthOfYearly(365 * 1440, first), 7U); // December is the last that is tried
}

TEST(MonthOfYearly, FitsTheLeapStateOfTheFirstYearOnly)
{
    const SYSTEMTIME first = SystemTimeFromMinutes(pattern::Minutes("2024-07-04"));

    EXPECT_EQ(MonthOfYearly(60 * 1440, first), 3U);
    EXPECT_EQ(MonthOfYearly(59 * 1440, first), 7U);
}

TEST(YearlyDayRule, TheFourthOfJuly)
{
    EXPECT_EQ(DatesOf(pattern::YearlyDay("2024-07-04", 4, 1), kStart, "2027-12-31T00:00:00"),
              (Dates{"2024-07-04", "2025-07-04", "2026-07-04", "2027-07-04"}));
}

TEST(YearlyDayRule, AnOffYearLeadsToTheNextActiveOne)
{
    const pattern::Pattern rule = pattern::YearlyDay("2024-07-04", 4, 2);

    EXPECT_EQ(DatesOf(rule, "2025-01-01T00:00:00", "2029-12-31T00:00:00"),
              (Dates{"2026-07-04", "2028-07-04"}));
}

TEST(YearlyDayRule, AWindowBehindTheDayOfAnActiveYearLeadsToTheNext)
{
    const pattern::Pattern rule = pattern::YearlyDay("2024-07-04", 4, 2);

    EXPECT_EQ(DatesOf(rule, "2024-07-05T00:00:00", "2029-12-31T00:00:00"),
              (Dates{"2026-07-04", "2028-07-04"}));
}

TEST(YearlyDayRule, TheFirstDateTimeChoosesTheMonth)
{
    pattern::Pattern rule = pattern::YearlyDay("2023-07-04", 4, 1);
    rule.firstDateTime = 59 * 1440;

    EXPECT_EQ(DatesOf(rule, "2023-07-01T00:00:00", "2025-12-31T00:00:00"),
              (Dates{"2024-03-04", "2025-03-04"}));
}

TEST(YearlyDayRule, AFirstDateTimeOf0FallsBackOnTheFirstInstance)
{
    pattern::Pattern rule = pattern::YearlyDay("2024-07-04", 4, 1);
    rule.firstDateTime = 0;

    EXPECT_EQ(DatesOf(rule, kStart, "2025-12-31T00:00:00"), (Dates{"2024-07-04", "2025-07-04"}));
}

TEST(YearlyDayRule, ALeapDayIsTheLastInstanceOfItsRule)
{
    const CTraceCapture trace;
    const pattern::Pattern rule = pattern::YearlyDay("2024-02-29", 29, 1);

    EXPECT_EQ(DatesOf(rule, kStart, "2034-12-31T00:00:00"), (Dates{"2024-02-29"}));
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 1U);
}

TEST(YearlyDayRule, ALeapDayEveryFourYearsGoesOn)
{
    EXPECT_EQ(DatesOf(pattern::YearlyDay("2024-02-29", 29, 4), kStart, "2034-12-31T00:00:00"),
              (Dates{"2024-02-29", "2028-02-29", "2032-02-29"}));
}

TEST(YearlyDayRule, ALeapDayEveryFiveYearsGoesOnIn1604)
{
    // The unsigned arithmetic behind the restart in 1601 meets a leap year; whoever asks for the
    // window drops what lies outside.
    const RuleRun run = ExpandRule(
        pattern::YearlyDay("2020-02-29", 29, 5), "2020-01-01T00:00:00", "2034-12-31T00:00:00");

    EXPECT_EQ(run.Dates().front(), "2020-02-29");
    EXPECT_EQ(run.instances.back().subKey, pattern::Minutes("1604-02-29"));
}

TEST(YearlyDayRule, TheDayOfTheNextActiveYearIsNotFittedToItsMonth)
{
    // The window opens behind the leap day of an active year. Five years on the day does not exist,
    // and the loop goes on in 1601; on February 28 it would spin without an instance.
    const RuleRun run = ExpandRule(
        pattern::YearlyDay("2020-02-29", 29, 5), "2020-03-01T00:00:00", "2034-12-31T00:00:00");

    ASSERT_FALSE(run.instances.empty());
    EXPECT_EQ(run.instances.front().subKey, pattern::Minutes("1604-02-29"));
}

TEST(YearlyDayRule, AYearThatLacksTheDaySpinsUntilTheLimit)
{
    const CTraceCapture trace;
    // The month of the first instance is April, the day is the 31st.
    const pattern::Pattern rule = pattern::YearlyDay("2024-04-30", 31, 1);

    EXPECT_TRUE(DatesOf(rule, kStart, "2034-12-31T00:00:00").empty());
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 1U);
}

TEST(YearlyDayRule, APeriodBelow12MonthsListsModifiedInstancesOnlyAndSaysSo)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::YearlyDay("2024-07-04", 4, 1);
    rule.period = 11;

    EXPECT_FALSE(ExpandRule(rule, kStart, "2034-12-31T00:00:00").result);
    EXPECT_TRUE(
        trace.Has(1, "CRecurrentRule::ParseYearly02-period too short, no regular instances"));
}

TEST(YearlyDayRule, MonthsBeyondWholeYearsAreCutOff)
{
    pattern::Pattern rule = pattern::YearlyDay("2024-07-04", 4, 1);
    rule.period = 23;

    EXPECT_EQ(ExpandRule(rule, kStart, "2026-12-31T00:00:00").count, 3U);
}

TEST(YearlyOrdinalRule, TheLastThursdayOfNovember)
{
    EXPECT_EQ(
        DatesOf(pattern::YearlyOrdinal("2024-11-01", 16, 5, 1), kStart, "2026-12-31T00:00:00"),
        (Dates{"2024-11-28", "2025-11-27", "2026-11-26"}));
}

TEST(YearlyOrdinalRule, WorkingDaysCountOnOverTheWeekend)
{
    // March 1, 2024 is a Friday: the second "working day" is the Saturday.
    EXPECT_EQ(
        DatesOf(pattern::YearlyOrdinal("2024-03-01", 62, 1, 1), kStart, "2024-12-31T00:00:00"),
        (Dates{"2024-03-01"}));
    EXPECT_EQ(
        DatesOf(pattern::YearlyOrdinal("2024-03-01", 62, 2, 1), kStart, "2024-12-31T00:00:00"),
        (Dates{"2024-03-02"}));
    // June 1, 2024 is a Saturday: the first working day is Monday the 3rd, the fourth the 6th.
    EXPECT_EQ(
        DatesOf(pattern::YearlyOrdinal("2024-06-01", 62, 4, 1), kStart, "2024-12-31T00:00:00"),
        (Dates{"2024-06-06"}));
}

TEST(YearlyOrdinalRule, TheLastWorkingDayIsThatOfTheMonth)
{
    EXPECT_EQ(
        DatesOf(pattern::YearlyOrdinal("2024-06-01", 62, 5, 1), kStart, "2024-12-31T00:00:00"),
        (Dates{"2024-06-28"}));
}

TEST(YearlyOrdinalRule, AnOffYearLeadsByJanuaryToTheNextActiveOne)
{
    const pattern::Pattern rule = pattern::YearlyOrdinal("2024-06-01", 4, 2, 2);

    EXPECT_EQ(DatesOf(rule, "2025-03-01T00:00:00", "2028-12-31T00:00:00"),
              (Dates{"2026-06-09", "2028-06-13"}));
}

TEST(YearlyOrdinalRule, LeavingTheMonthIsJudgedByTheMonthOfTheCursor)
{
    // The last Tuesday of June 2024 is the 25th. From a cursor in July, the fifth one, July 2, is in
    // the cursor's own month and stays.
    const pattern::Pattern rule = pattern::YearlyOrdinal("2024-06-01", 4, 5, 1);

    EXPECT_EQ(DatesOf(rule, "2024-06-01T00:00:00", "2024-12-31T00:00:00"), (Dates{"2024-06-25"}));
    EXPECT_EQ(DatesOf(rule, "2024-07-01T00:00:00", "2024-12-31T00:00:00"), (Dates{"2024-07-02"}));
    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-12-31T00:00:00"), (Dates{"2024-06-25"}));
}

// June 2024 begins on a Saturday and ends on a Sunday.
TEST(YearlyOrdinalRule, WeekendDaysAndAnyDaysAreThoseOfTheMonth)
{
    const auto dateOf = [](std::uint32_t mask, std::uint32_t week) {
        return DatesOf(
            pattern::YearlyOrdinal("2024-06-01", mask, week, 1), kStart, "2024-12-31T00:00:00");
    };

    EXPECT_EQ(dateOf(65, 1), (Dates{"2024-06-01"}));
    EXPECT_EQ(dateOf(65, 4), (Dates{"2024-06-09"}));
    EXPECT_EQ(dateOf(65, 5), (Dates{"2024-06-30"}));
    EXPECT_EQ(dateOf(127, 3), (Dates{"2024-06-03"}));
    EXPECT_EQ(dateOf(127, 5), (Dates{"2024-06-30"}));
    EXPECT_EQ(dateOf(127, 0), Dates{});
    EXPECT_EQ(dateOf(78, 2), (Dates{"2024-06-08"}));
    EXPECT_EQ(dateOf(3, 1), Dates{});
}

TEST(YearlyOrdinalRule, APeriodBelow12MonthsListsModifiedInstancesOnlyAndSaysSo)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::YearlyOrdinal("2024-06-01", 2, 1, 1);
    rule.period = 11;
    rule.modified.push_back(
        pattern::Moved("2024-06-03T09:00:00", "2024-06-04T09:00:00", "2024-06-04T10:00:00"));

    EXPECT_EQ(DatesOf(rule, kStart, "2034-12-31T00:00:00"), (Dates{"2024-06-04"}));
    EXPECT_TRUE(
        trace.Has(1, "CRecurrentRule::ParseYearly03-period too short, no regular instances"));
}

TEST(YearlyOrdinalRule, AnUnknownWeekOfWeekendDaysListsNothing)
{
    const CTraceCapture trace;

    EXPECT_TRUE(
        DatesOf(pattern::YearlyOrdinal("2024-06-01", 65, 9, 1), kStart, "2025-12-31T00:00:00")
            .empty());
    EXPECT_EQ(trace.Count("Unknown uWeekNumber type"), 4U);
}

TEST(YearlyOrdinalRule, TheFirstDateTimeChoosesTheMonth)
{
    pattern::Pattern rule = pattern::YearlyOrdinal("2024-06-01", 2, 1, 1);
    rule.firstDateTime = 31 * 1440;

    EXPECT_EQ(DatesOf(rule, kStart, "2026-12-31T00:00:00"), (Dates{"2025-02-03", "2026-02-02"}));
}

} // namespace
