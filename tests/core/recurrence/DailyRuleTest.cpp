#include <gtest/gtest.h>

#include "RuleRun.h"
#include "TraceCapture.h"

namespace
{

// 2024-01-01 is a Monday; instances begin at 09:00 and local time is UTC.

TEST(DailyRule, EveryDayListsEveryDayOfTheWindow)
{
    EXPECT_EQ(
        DatesOf(pattern::Daily("2024-01-01", 1), "2024-01-30T00:00:00", "2024-02-02T23:00:00"),
        (Dates{"2024-01-30", "2024-01-31", "2024-02-01", "2024-02-02"}));
}

TEST(DailyRule, EverySecondDayFromAWindowOnTheGrid)
{
    const pattern::Pattern rule = pattern::Daily("2024-01-01", 2);

    EXPECT_EQ(DatesOf(rule, "2024-01-03T00:00:00", "2024-01-08T00:00:00"),
              (Dates{"2024-01-03", "2024-01-05", "2024-01-07"}));
}

TEST(DailyRule, EverySecondDayFromAWindowOffTheGridListsNothing)
{
    const RuleRun run =
        ExpandRule(pattern::Daily("2024-01-01", 2), "2024-01-02T00:00:00", "2024-01-08T00:00:00");

    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.count, 0U);
    EXPECT_TRUE(run.instances.empty());
}

TEST(DailyRule, AnInstanceThatHasBegunWhenTheWindowOpensIsLost)
{
    const pattern::Pattern rule = pattern::Daily("2024-01-01", 1); // 09:00 to 10:00

    EXPECT_EQ(DatesOf(rule, "2024-01-03T09:00:00", "2024-01-04T23:00:00"),
              (Dates{"2024-01-03", "2024-01-04"}));
    EXPECT_EQ(DatesOf(rule, "2024-01-03T09:01:00", "2024-01-04T23:00:00"), (Dates{"2024-01-04"}));
}

TEST(DailyRule, AnInstanceThatBeginsAfterTheWindowEndsIsNotListed)
{
    const pattern::Pattern rule = pattern::Daily("2024-01-01", 1);

    EXPECT_EQ(DatesOf(rule, "2024-01-03T00:00:00", "2024-01-04T09:00:00"),
              (Dates{"2024-01-03", "2024-01-04"}));
    EXPECT_EQ(DatesOf(rule, "2024-01-03T00:00:00", "2024-01-04T08:59:00"), (Dates{"2024-01-03"}));
}

TEST(DailyRule, APeriodThatIsNoWholeDayIsKept)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.period = 720;

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-02T20:00:00").Starts(),
              (Dates{"2024-01-01T09:00:00", "2024-01-01T21:00:00", "2024-01-02T09:00:00"}));
}

TEST(DailyRule, APeriodOfTheLargestNumberGoesBackAMinuteARound)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.period = 0xFFFFFFFF;

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-05T00:00:00").Starts(),
              (Dates{"2024-01-01T09:00:00", "2024-01-01T08:59:00"}));
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 1U);
}

TEST(DailyRule, APeriodOf0ListsModifiedInstancesOnlyAndSaysSo)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.period = 0;
    rule.modified.push_back(
        pattern::Moved("2024-01-02T09:00:00", "2024-01-02T11:00:00", "2024-01-02T12:00:00"));

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-05T00:00:00").Starts(),
              (Dates{"2024-01-02T11:00:00"}));
    EXPECT_TRUE(
        trace.Has(1, "CRecurrentRule::ParseNonworkDaily-period too short, no regular instances"));
}

TEST(DailyRule, StopsAfter1001RoundsAndSaysSo)
{
    const CTraceCapture trace;

    const RuleRun run =
        ExpandRule(pattern::Daily("2024-01-01", 1), "2024-01-01T00:00:00", "2034-01-01T00:00:00");

    EXPECT_EQ(run.count, 1001U);
    EXPECT_TRUE(trace.Has(2, "nTryTime++ >10"));
}

TEST(DailyRule, ARangeOfExactly1001RoundsEndsInSilence)
{
    const CTraceCapture trace;

    const RuleRun run =
        ExpandRule(pattern::Daily("2024-01-01", 1), "2024-01-01T00:00:00", "2026-09-27T23:00:00");

    EXPECT_EQ(run.count, 1001U);
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 0U);
}

TEST(DailyRule, RoundsThatListNothingCountAsWell)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.deleted.push_back(pattern::Minutes("2024-01-01"));

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2034-01-01T00:00:00").count, 1000U);
}

TEST(DailyRule, NamesItselfInTheTrace)
{
    const CTraceCapture trace;

    ExpandRule(pattern::Daily("2024-01-01", 1), "2024-01-01T00:00:00", "2024-01-02T00:00:00");

    EXPECT_EQ(trace.Messages(),
              (std::vector<std::string>{"3 CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=0 "
                                        "m_zInfo.DaylightDate.wMonth=0",
                                        "2 CRecurrentRule::ParseDaily",
                                        "2 CRecurrentRule::ParseNonworkDaily"}));
}

TEST(DailyRule, AnUnknownPatternTypeListsNothingInSilence)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.patternType = 2;

    EXPECT_FALSE(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-05T00:00:00").result);
    EXPECT_EQ(trace.Lines().size(), 2U); // SetInfo and the entry
}

TEST(DailyRule, OnlyTheLowByteOfThePatternTypeIsLookedAt)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.patternType = 0x0100;

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-02T00:00:00").count, 1U);
}

TEST(DailyRule, TheCalendarTypeIsNotLookedAt)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.calendarType = 15;

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-02T00:00:00").count, 1U);
}

TEST(WorkingDayRule, SkipsWeekends)
{
    EXPECT_EQ(
        DatesOf(pattern::WorkingDays("2024-01-01"), "2024-01-04T00:00:00", "2024-01-09T23:00:00"),
        (Dates{"2024-01-04", "2024-01-05", "2024-01-08", "2024-01-09"}));
}

TEST(WorkingDayRule, NeedsAFirstDateTimeOf8640)
{
    pattern::Pattern rule = pattern::WorkingDays("2024-01-01");
    rule.firstDateTime = 8641;

    EXPECT_FALSE(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-31T00:00:00").result);
}

TEST(WorkingDayRule, DoesNotReadPeriodOrMask)
{
    pattern::Pattern rule = pattern::WorkingDays("2024-01-01");
    rule.period = 0;
    rule.specific = {1};

    EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-07T23:00:00").count, 5U);
}

TEST(WorkingDayRule, WeekendsUseUpRounds)
{
    // 1001 days from a Monday are 143 whole weeks.
    EXPECT_EQ(
        ExpandRule(pattern::WorkingDays("2024-01-01"), "2024-01-01T00:00:00", "2034-01-01T00:00:00")
            .count,
        715U);
}

TEST(WorkingDayRule, LeavesDeletedDaysOut)
{
    pattern::Pattern rule = pattern::WorkingDays("2024-01-01");
    rule.deleted = {pattern::Minutes("2024-01-02")};

    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-01-03T23:00:00"),
              (Dates{"2024-01-01", "2024-01-03"}));
}

} // namespace
