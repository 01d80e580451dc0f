#include <gtest/gtest.h>

#include "DateTexts.h"
#include "RecurrentRule.h"
#include "RuleRun.h"
#include "TraceCapture.h"
#include "ZoneSamples.h"

namespace
{

using pattern::Minutes;

constexpr const char* kFrom = "2024-01-01T00:00:00";
constexpr const char* kTo = "2024-01-07T23:00:00";

TEST(SetInfo, AnEmptyPatternTouchesNothing)
{
    const CTraceCapture trace;
    CRecurrentRule rule(nullptr);
    const pattern::Bytes zone = pattern::Zone(zones::Berlin());
    InstanceList instances(1);
    std::uint32_t count = 7;

    rule.SetInfo(1, 0, nullptr, 48, zone.data(), {}, {}, {}, WTEXT("a"), WTEXT("b"));

    EXPECT_FALSE(rule.ParseRule(count, instances));
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(instances.empty());
    EXPECT_EQ(rule.Zone().Bias, 0);
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(SetInfo, TakesTheKindFromTheLowByteOfTheFrequency)
{
    const auto kindOf = [](std::uint16_t frequency) {
        pattern::Pattern pattern = pattern::Daily("2024-01-01", 1);
        pattern.frequency = frequency;
        const pattern::Bytes blob = pattern.Write();
        CRecurrentRule rule(nullptr);
        rule.SetInfo(0,
                     static_cast<std::uint32_t>(blob.size()),
                     blob.data(),
                     0,
                     nullptr,
                     {},
                     {},
                     {},
                     {},
                     {});
        return rule.Kind();
    };

    EXPECT_EQ(kindOf(0x200A), RuleKind::Daily);
    EXPECT_EQ(kindOf(0xFF0B), RuleKind::Weekly);
    EXPECT_EQ(kindOf(0x000C), RuleKind::Monthly);
    EXPECT_EQ(kindOf(0x200D), RuleKind::Yearly);
    EXPECT_EQ(kindOf(0x2009), RuleKind::Unknown);
    EXPECT_EQ(kindOf(0x0A20), RuleKind::Unknown);
}

TEST(SetInfo, TracesTheMonthsOfTheSwitches)
{
    const CTraceCapture trace;
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.zone = pattern::Zone(zones::Berlin());

    run.Expand();

    EXPECT_TRUE(trace.Has(3,
                          "CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=10 "
                          "m_zInfo.DaylightDate.wMonth=3"));
}

class OldZoneTest : public testing::Test
{
protected:
    // Bias 180, "standard" from February, "daylight" from October.
    static std::string July(const std::string& firstTime, LONG bias, WORD standardMonth)
    {
        RuleRun run;
        run.blob = pattern::Daily("2018-01-01", 1).Write();
        run.zone = pattern::Zone(zones::Make(bias, 0, -60, {standardMonth, 3, 0}, {10, 3, 0}));
        run.firstTime = firstTime;
        run.from = "2024-12-10T00:00:00";
        run.to = "2024-12-10T23:00:00";
        return run.Expand().Starts().at(0).substr(11);
    }
};

TEST_F(OldZoneTest, ASeriesFromBefore2020HasNoDaylightTime)
{
    EXPECT_EQ(July("2019-12-31T00:00:00", 180, 2), "12:00:00");
}

TEST_F(OldZoneTest, ASeriesFrom2020KeepsIt)
{
    EXPECT_EQ(July("2020-01-01T00:00:00", 180, 2), "11:00:00");
}

TEST_F(OldZoneTest, AnotherBiasOrMonthKeepsIt)
{
    EXPECT_EQ(July("2019-12-31T00:00:00", 240, 2), "12:00:00");
    EXPECT_EQ(July("2019-12-31T00:00:00", 180, 3), "11:00:00");
}

TEST(ParseRule, AHeadThatIsTooShortGivesNothingAndSaysSo)
{
    struct Kind
    {
        pattern::Pattern pattern;
        std::size_t shortest;
    };
    for (const Kind& kind : {Kind{pattern::Daily("2024-01-01", 1), 34},
                             Kind{pattern::WorkingDays("2024-01-01"), 38},
                             Kind{pattern::Weekly("2024-01-01", 2, 1), 38},
                             Kind{pattern::MonthlyDay("2024-01-01", 1, 1), 38},
                             Kind{pattern::MonthlyOrdinal("2024-01-01", 2, 1, 1), 42},
                             Kind{pattern::YearlyDay("2024-01-01", 1, 1), 38},
                             Kind{pattern::YearlyOrdinal("2024-01-01", 2, 1, 1), 42}})
    {
        const pattern::Bytes whole = kind.pattern.Write();
        for (std::size_t size = 1; size < kind.shortest; ++size)
        {
            const CTraceCapture trace;
            const RuleRun run = ExpandRule(
                pattern::Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)),
                kFrom,
                kTo);
            EXPECT_FALSE(run.result);
            const std::string last = trace.Messages().back();
            EXPECT_NE(last.find("pattern too short, size[" + std::to_string(size) + "]"),
                      std::string::npos)
                << last;
        }
    }
}

TEST(ParseRule, AnUnknownFrequencyGivesNothingInSilence)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.frequency = 0x200E;
    rule.modified.push_back(
        pattern::Moved("2024-01-03T09:00:00", "2024-01-03T16:00:00", "2024-01-03T17:30:00"));

    const RuleRun run = ExpandRule(rule, kFrom, kTo);

    EXPECT_FALSE(run.result);
    EXPECT_TRUE(run.instances.empty());
    EXPECT_EQ(trace.Lines().size(), 1U); // SetInfo
}

TEST(ParseRule, ClearsTheListAndTheCount)
{
    RuleRun run;
    run.blob = pattern::Daily("2030-01-01", 1).Write();
    run.instances.resize(3);
    run.count = 3;

    run.Expand();

    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.count, 0U);
    EXPECT_TRUE(run.instances.empty());
}

TEST(Frame, ARegularInstanceHasTheRulesTextsAndTheMidnightAsSubKey)
{
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.zone = pattern::Zone(zones::UsEastern());
    run.from = "2024-01-01T05:00:00";
    run.to = "2024-01-02T04:00:00";

    ASSERT_EQ(run.Expand().count, 1U);

    const RecurInstance& instance = run.instances.front();
    EXPECT_EQ(TextWithWeekday(instance.start), "2024-01-01T14:00:00 Mon");
    EXPECT_EQ(TextWithWeekday(instance.end), "2024-01-01T15:00:00 Mon");
    EXPECT_TRUE(instance.subject == WTEXT("Standup"));
    EXPECT_TRUE(instance.location == WTEXT("Room 1"));
    EXPECT_EQ(instance.subKey, Minutes("2024-01-01"));
    EXPECT_EQ(instance.hasMeetingType, 0U);
    EXPECT_EQ(instance.meetingType, 0U);
}

TEST(Frame, AModifiedInstanceHasItsOwnTextsAndItsOriginalStartAsSubKey)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    pattern::Modified modified =
        pattern::Moved("2024-01-03T09:00:00", "2024-01-03T16:00:00", "2024-01-03T17:30:00");
    modified.subject = "Retro";
    modified.meetingType = 7;
    rule.modified.push_back(modified);

    const RuleRun run = ExpandRule(rule, kFrom, "2024-01-04T23:00:00");

    const RecurInstance& instance = run.instances.front();
    EXPECT_EQ(TextOf(instance.start), "2024-01-03T16:00:00");
    EXPECT_EQ(TextOf(instance.end), "2024-01-03T17:30:00");
    EXPECT_TRUE(instance.subject == WTEXT("Retro"));
    EXPECT_TRUE(instance.location == WTEXT("Room 1"));
    EXPECT_EQ(instance.subKey, Minutes("2024-01-03T09:00:00"));
    EXPECT_EQ(instance.hasMeetingType, 1U);
    EXPECT_EQ(instance.meetingType, 7U);
}

TEST(Frame, AModifiedInstanceIsStoredInLocalTimeAndListedInUtc)
{
    // 16:00 in New York is 20:00 UTC in summer.
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-01-03T09:00:00", "2024-07-03T16:00:00", "2024-07-03T17:30:00"));
    RuleRun run;
    run.blob = rule.Write();
    run.zone = pattern::Zone(zones::UsEastern());
    run.from = "2024-07-03T20:00:00";
    run.to = "2024-07-03T20:00:00";

    ASSERT_EQ(run.Expand().count, 1U);

    EXPECT_EQ(TextWithWeekday(run.instances.front().start), "2024-07-03T20:00:00 Wed");
    EXPECT_EQ(TextWithWeekday(run.instances.front().end), "2024-07-03T21:30:00 Wed");
    EXPECT_EQ(run.instances.front().subKey, Minutes("2024-01-03T09:00:00"));
}

TEST(Frame, ModifiedInstancesStandAheadInTheOrderOfTheirOriginalDates)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-01-03T09:00:00", "2024-01-02T20:00:00", "2024-01-02T21:00:00"));
    rule.modified.push_back(
        pattern::Moved("2024-01-02T09:00:00", "2024-01-03T20:00:00", "2024-01-03T21:00:00"));

    EXPECT_EQ(ExpandRule(rule, kFrom, "2024-01-04T23:00:00").Starts(),
              (Dates{"2024-01-03T20:00:00",
                     "2024-01-02T20:00:00",
                     "2024-01-01T09:00:00",
                     "2024-01-04T09:00:00"}));
}

TEST(Frame, AnInstanceThatMovedIntoTheWindowAppearsOnce)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-01-20T09:00:00", "2024-01-02T20:00:00", "2024-01-02T21:00:00"));

    EXPECT_EQ(ExpandRule(rule, kFrom, "2024-01-02T23:00:00").Starts(),
              (Dates{"2024-01-02T20:00:00", "2024-01-01T09:00:00", "2024-01-02T09:00:00"}));
}

TEST(Frame, AnInstanceThatMovedOutOfTheWindowLeavesItsSlotEmpty)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-01-02T09:00:00", "2024-01-20T20:00:00", "2024-01-20T21:00:00"));

    EXPECT_EQ(DatesOf(rule, kFrom, "2024-01-03T23:00:00"), (Dates{"2024-01-01", "2024-01-03"}));
}

TEST(Frame, BothEndsOfTheWindowBelongToItForExceptions)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-02-01T09:00:00", "2024-01-02T00:00:00", "2024-01-02T01:00:00"));
    rule.modified.push_back(
        pattern::Moved("2024-02-02T09:00:00", "2024-01-02T08:00:00", "2024-01-02T09:00:00"));

    EXPECT_EQ(ExpandRule(rule, "2024-01-02T00:00:00", "2024-01-02T08:00:00").count, 2U);
    EXPECT_EQ(ExpandRule(rule, "2024-01-02T00:01:00", "2024-01-02T07:59:00").count, 0U);
}

TEST(Frame, TheEndDateIsTheLastDayForEndsByDateAndByCount)
{
    for (const std::uint32_t endType : {pattern::kEndByDate, pattern::kEndByCount})
    {
        pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
        rule.endType = endType;
        rule.endDate = Minutes("2024-01-03");
        rule.occurrenceCount = 1; // never looked at
        EXPECT_EQ(DatesOf(rule, kFrom, kTo), (Dates{"2024-01-01", "2024-01-02", "2024-01-03"}));
    }
}

TEST(Frame, TheEndDateIsNotLookedAtForARuleWithoutEndInsideTheWindow)
{
    for (const std::uint32_t endType : {pattern::kNoEnd, pattern::kNoEndOld, 0xAB23U})
    {
        pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
        rule.endType = endType;
        rule.endDate = Minutes("2024-01-03");
        EXPECT_EQ(ExpandRule(rule, kFrom, kTo).count, 7U);
    }
}

TEST(Frame, AWindowMoreThanADayBehindTheEndDateIsEmptyForEveryEndType)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.endDate = Minutes("2024-01-03");

    EXPECT_EQ(ExpandRule(rule, "2024-01-04T00:00:00", kTo).count, 4U);
    EXPECT_EQ(ExpandRule(rule, "2024-01-04T00:01:00", kTo).count, 0U);
}

TEST(Frame, TheDayBehindTheEndDateWrapsIn32Bits)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.endDate = 0xFFFFFFFF - 1440;
    EXPECT_EQ(ExpandRule(rule, kFrom, kTo).count, 7U);

    rule.endDate += 1;
    EXPECT_EQ(ExpandRule(rule, kFrom, kTo).count, 0U);
}

TEST(Frame, TheLastDayOfAWindowThatEndsAtMinute0Wraps)
{
    RuleRun run;
    run.blob = pattern::Daily("1601-01-01", 1).Write();
    run.to = "2024-13-01T00:00:00"; // cannot be converted

    EXPECT_EQ(run.Expand().count, 1001U);
}

TEST(Frame, AWindowBeforeTheStartDateIsEmpty)
{
    const pattern::Pattern rule = pattern::Daily("2024-01-05", 1);

    EXPECT_EQ(ExpandRule(rule, kFrom, "2024-01-04T23:59:00").count, 0U);
    EXPECT_EQ(ExpandRule(rule, kFrom, "2024-01-05T09:00:00").count, 1U);
}

TEST(Frame, ALastDayByEndDateComesEvenWhenItBeginsBehindTheWindow)
{
    // The window ends on the end date, but before the instance: only the window's own last day looks
    // at the time of day.
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.endType = pattern::kEndByDate;
    rule.endDate = Minutes("2024-01-03");

    EXPECT_EQ(DatesOf(rule, "2024-01-02T00:00:00", "2024-01-03T00:00:00"),
              (Dates{"2024-01-02", "2024-01-03"}));
    rule.deleted = {Minutes("2024-01-03")}; // behind the window: it does not count
    EXPECT_EQ(DatesOf(rule, "2024-01-02T00:00:00", "2024-01-03T00:00:00"),
              (Dates{"2024-01-02", "2024-01-03"}));
}

TEST(Frame, AnUnknownEndTypeIsTracedWithItsLowByteInTheWordsOfItsHandler)
{
    struct Kind
    {
        pattern::Pattern pattern;
        const char* text;
    };
    for (const Kind& kind :
         {Kind{pattern::Daily("2024-01-01", 1),
               "sCRecurrentRule::ParseNonworkDaily - m_uRecurrentType.byte_acc.b1[0x ab]"},
          Kind{pattern::WorkingDays("2024-01-01"),
               "CRecurrentRule::ParseWorkDaily-m_uRecurrentType.byte_acc.b1 [0xab]"},
          Kind{pattern::Weekly("2024-01-01", 2, 1),
               "CRecurrentRule::ParseWeekly - m_uRecurrentType.byte_acc.b1[0x ab]"},
          Kind{pattern::MonthlyDay("2024-01-01", 1, 1),
               "CRecurrentRule::ParseMonthly02 - m_uRecurrentType.byte_acc.b1[0x ab]"},
          Kind{pattern::MonthlyOrdinal("2024-01-01", 2, 1, 1),
               "CRecurrentRule::ParseMonthly03 - m_uRecurrentType.byte_acc.b1[0x ab]"},
          Kind{pattern::YearlyDay("2024-01-01", 1, 1),
               "CRecurrentRule::ParseYearly02-m_uRecurrentType.byte_acc.b1 [0xab]"},
          Kind{pattern::YearlyOrdinal("2024-01-01", 2, 1, 1),
               "CRecurrentRule::ParseYearly02 - m_uRecurrentType.byte_acc.b1[0x ab]"}})
    {
        const CTraceCapture trace;
        pattern::Pattern rule = kind.pattern;
        rule.endType = 0x21AB;
        rule.modified.push_back(
            pattern::Moved("2024-02-01T09:00:00", "2024-01-02T11:00:00", "2024-01-02T12:00:00"));
        const RuleRun run = ExpandRule(rule, kFrom, kTo);
        EXPECT_TRUE(run.result);
        EXPECT_EQ(run.Dates(), (Dates{"2024-01-02"}));
        EXPECT_TRUE(trace.Has(3, kind.text)) << trace.Messages().back();
    }
}

TEST(Frame, OtherCalendarsAreRefusedBeforeAnyInstanceInTheWordsOfTheirHandler)
{
    struct Kind
    {
        pattern::Pattern pattern;
        const char* luniSolar;
        const char* other;
    };
    for (const Kind& kind :
         {Kind{pattern::MonthlyDay("2024-01-01", 1, 1),
               "CRecurrentRule::ParseMonthly02-luni-solar not support!",
               "CRecurrentRule::ParseMonthly02-neither Gregorian calendar nor luni-solar "
               "calendar!"},
          Kind{pattern::MonthlyOrdinal("2024-01-01", 2, 1, 1),
               "CRecurrentRule::ParseMonthly03-luni-solar not support!",
               "CRecurrentRule::ParseMonthly03-neither Gregorian calendar nor luni-solar "
               "calendar!"},
          Kind{pattern::YearlyDay("2024-01-01", 1, 1),
               "CRecurrentRule::ParseYearly02-luni-solar not support!",
               "CRecurrentRule::ParseYearly02-neither Gregorian calendar nor luni-solar "
               "calendar!"},
          Kind{pattern::YearlyOrdinal("2024-01-01", 2, 1, 1),
               "CRecurrentRule::ParseYearly03-luni-solar not support!",
               "CRecurrentRule::ParseYearly02-neither Gregorian calendar nor luni-solar "
               "calendar!"}})
    {
        for (const unsigned type : {1U, 15U, 256U})
        {
            const CTraceCapture trace;
            pattern::Pattern rule = kind.pattern;
            rule.calendarType = static_cast<std::uint16_t>(type);
            rule.modified.push_back(pattern::Moved(
                "2024-02-01T09:00:00", "2024-01-02T11:00:00", "2024-01-02T12:00:00"));
            EXPECT_FALSE(ExpandRule(rule, kFrom, kTo).result);
            EXPECT_TRUE(trace.Has(1, type == 15 ? kind.luniSolar : kind.other));
        }
    }
}

TEST(Frame, TheWindowIsTakenInLocalTime)
{
    // 09:00 in New York is 14:00 UTC in winter.
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.zone = pattern::Zone(zones::UsEastern());
    run.from = "2024-01-02T14:00:00";
    run.to = "2024-01-03T14:00:00";
    EXPECT_EQ(run.Expand().count, 2U);
    run.from = "2024-01-02T14:01:00";
    run.to = "2024-01-03T13:59:00";
    EXPECT_EQ(run.Expand().count, 0U);
}

TEST(Frame, InstancesKeepTheirLocalTimeOverASwitch)
{
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.zone = pattern::Zone(zones::UsEastern());
    run.from = "2024-03-09T06:00:00";
    run.to = "2024-03-11T03:00:00";

    EXPECT_EQ(run.Expand().Starts(), (Dates{"2024-03-09T14:00:00", "2024-03-10T13:00:00"}));
}

TEST(Frame, AZoneOfAnotherSizeLeavesLocalTimeEqualToUtc)
{
    for (const std::size_t size : {0U, 47U, 49U})
    {
        RuleRun run;
        run.blob = pattern::Daily("2024-01-01", 1).Write();
        run.zone = pattern::Zone(zones::UsEastern());
        run.zone.resize(size);
        run.to = "2024-01-01T09:00:00";
        EXPECT_EQ(run.Expand().Starts(), (Dates{"2024-01-01T09:00:00"}));
    }
}

TEST(Frame, SwitchDatesThatDoNotExistLeaveThePlainBiasToTheWindow)
{
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.zone = pattern::Zone(zones::Make(300, 60, -60, {11, 6, 2}, {3, 2, 2}));
    run.from = "2024-01-02T14:00:00"; // 09:00 by the bias, 08:00 with the standard bias
    run.to = "2024-01-02T14:00:00";

    EXPECT_EQ(run.Expand().count, 1U);
}

TEST(Frame, AWindowEndThatCannotBeConvertedIsMinute0)
{
    RuleRun run;
    run.blob = pattern::Daily("2024-01-01", 1).Write();
    run.to = "";
    run.from = "2024-01-01T00:00:00";
    run.to = "2024-13-01T00:00:00"; // no such month
    EXPECT_FALSE(run.Expand().result);

    run.from = "2024-13-01T00:00:00";
    run.to = "2024-01-01T23:00:00";
    EXPECT_EQ(run.Expand().count, 1U);
}

TEST(Frame, AModifiedInstanceAtAnImpossibleTimeIsAllZero)
{
    RuleRun run;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.modified.push_back(
        pattern::Moved("2024-01-03T09:00:00", "2024-01-03T16:00:00", "2024-01-03T17:30:00"));
    rule.modified[0].end = 0xFFFFFFFF; // the year 9767
    run.blob = rule.Write();
    run.zone = pattern::Zone(zones::Make(0x20000000, 0, 0, {0, 0, 0}, {0, 0, 0}));
    run.from = "3044-10-01T00:00:00";
    run.to = "3045-10-01T00:00:00";

    run.Expand();

    ASSERT_FALSE(run.instances.empty());
    EXPECT_NE(TextOf(run.instances.front().start), "0000-00-00T00:00:00");
    EXPECT_EQ(TextOf(run.instances.front().end), "0000-00-00T00:00:00");
}

} // namespace
