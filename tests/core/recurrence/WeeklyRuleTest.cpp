#include <gtest/gtest.h>

#include "RuleRun.h"
#include "TraceCapture.h"
#include "WeeklyGaps.h"

namespace
{

constexpr std::uint32_t kMondayWednesdayFriday = 2 + 8 + 32;

TEST(WeeklyGaps, LeadFromEachDayToTheNextOfTheRule)
{
    EXPECT_EQ(MakeWeeklyGaps(kMondayWednesdayFriday, 2), (WeeklyGaps{0, 2, 0, 2, 0, 10, 0}));
}

TEST(WeeklyGaps, ASingleDayLeadsToItself)
{
    EXPECT_EQ(MakeWeeklyGaps(1, 1), (WeeklyGaps{7, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(MakeWeeklyGaps(64, 3), (WeeklyGaps{0, 0, 0, 0, 0, 0, 21}));
}

TEST(WeeklyGaps, AllDaysLeadToTomorrow)
{
    EXPECT_EQ(MakeWeeklyGaps(127, 1), (WeeklyGaps{1, 1, 1, 1, 1, 1, 1}));
}

TEST(WeeklyGaps, AreEmptyWithoutADayOrAPeriod)
{
    EXPECT_EQ(MakeWeeklyGaps(0, 1), WeeklyGaps{});
    EXPECT_EQ(MakeWeeklyGaps(0x80, 1), WeeklyGaps{});
    EXPECT_EQ(MakeWeeklyGaps(2, 0), WeeklyGaps{});
}

TEST(WeeklyGaps, WrapIn32Bits)
{
    // 0x24924925 * 7 is 3 modulo 2^32; three days on, less Friday, plus Monday.
    EXPECT_EQ(MakeWeeklyGaps(2 + 32, 0x24924925)[5], -1);
}

TEST(WeeklyRule, EverySecondWeekOnMondayWednesdayFridayFromAWednesday)
{
    const pattern::Pattern rule = pattern::Weekly("2024-01-03", kMondayWednesdayFriday, 2);

    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-01-31T23:00:00"),
              (Dates{"2024-01-03",
                     "2024-01-05",
                     "2024-01-15",
                     "2024-01-17",
                     "2024-01-19",
                     "2024-01-29",
                     "2024-01-31"}));
}

TEST(WeeklyRule, AWindowInAnInactiveWeekFindsTheNextActiveOne)
{
    const pattern::Pattern rule = pattern::Weekly("2024-01-03", kMondayWednesdayFriday, 2);

    EXPECT_EQ(DatesOf(rule, "2024-01-08T00:00:00", "2024-01-16T23:00:00"), (Dates{"2024-01-15"}));
}

TEST(WeeklyRule, AWeekEndsWithSaturday)
{
    const pattern::Pattern rule = pattern::Weekly("2024-01-02", 1 + 4, 2); // Sunday and Tuesday

    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-01-31T23:00:00"),
              (Dates{"2024-01-02", "2024-01-14", "2024-01-16", "2024-01-28", "2024-01-30"}));
}

TEST(WeeklyRule, OnlyTheLowByteOfTheMaskIsRead)
{
    pattern::Pattern rule = pattern::Weekly("2024-01-01", 0xFFFFFF02, 1);

    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-01-14T23:00:00"),
              (Dates{"2024-01-01", "2024-01-08"}));
}

TEST(WeeklyRule, TheCalendarTypeIsNotLookedAt)
{
    pattern::Pattern rule = pattern::Weekly("2024-01-01", 2, 1);
    rule.calendarType = 15;

    EXPECT_EQ(DatesOf(rule, "2024-01-01T00:00:00", "2024-01-14T23:00:00"),
              (Dates{"2024-01-01", "2024-01-08"}));
}

TEST(WeeklyRule, NoDaysOrNoPeriodListsModifiedInstancesOnly)
{
    for (pattern::Pattern rule :
         {pattern::Weekly("2024-01-01", 0, 1), pattern::Weekly("2024-01-01", 2, 0)})
    {
        rule.modified.push_back(
            pattern::Moved("2024-01-08T09:00:00", "2024-01-09T11:00:00", "2024-01-09T12:00:00"));
        EXPECT_EQ(ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-31T00:00:00").Starts(),
                  (Dates{"2024-01-09T11:00:00"}));
    }
}

TEST(WeeklyRule, NoDaysEndBeforeTheEndTypeIsLookedAt)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Weekly("2024-01-01", 0, 1);
    rule.endType = 0x2024;

    ExpandRule(rule, "2024-01-01T00:00:00", "2024-01-31T00:00:00");

    EXPECT_EQ(trace.Lines().size(), 2U); // SetInfo and the entry
}

TEST(WeeklyRule, DaysOfInactiveWeeksUseUpRounds)
{
    const CTraceCapture trace;

    // Ten weeks: one round for the instance, then 70 - 1 days are stepped over by the gap itself.
    EXPECT_EQ(ExpandRule(pattern::Weekly("2024-01-01", 2, 10),
                         "2024-01-01T00:00:00",
                         "2034-01-01T00:00:00")
                  .count,
              53U);
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 0U);

    // From an inactive week on, every day is a round until the active one is met.
    EXPECT_EQ(ExpandRule(pattern::Weekly("2000-01-03", 2, 1000),
                         "2000-01-04T00:00:00",
                         "2034-01-01T00:00:00")
                  .count,
              0U);
    EXPECT_EQ(trace.Count("nTryTime++ >10"), 1U);
}

class KeepAllTest : public testing::Test
{
protected:
    KeepAllTest()
    {
        m_rule = pattern::Weekly("2024-01-01", 2, 1);
        m_rule.deleted = {pattern::Minutes("2024-01-08")};
        m_rule.modified.push_back(
            pattern::Moved("2024-01-15T09:00:00", "2024-01-16T10:00:00", "2024-01-16T11:00:00"));
    }

    Dates Expand()
    {
        RuleRun run;
        run.blob = m_rule.Write();
        run.from = "2024-01-01T00:00:00";
        run.to = "2024-01-22T23:00:00";
        run.settings = &m_settings;
        return run.Expand().Dates();
    }

    pattern::Pattern m_rule;
    CPlainSettings m_settings;
    const Dates m_plain = {"2024-01-16", "2024-01-01", "2024-01-22"};
    const Dates m_kept = {"2024-01-16", "2024-01-01", "2024-01-08", "2024-01-15", "2024-01-22"};
};

TEST_F(KeepAllTest, TheConfiguredSiteListsDeletedAndMovedInstances)
{
    m_settings.site = WTEXT("site.example.org");
    m_settings.keepAll = WTEXT("site.example.org");

    EXPECT_EQ(Expand(), m_kept);
}

TEST_F(KeepAllTest, CaseDoesNotCount)
{
    m_settings.site = WTEXT("Site.EXAMPLE.org");
    m_settings.keepAll = WTEXT("SITE.example.ORG");

    EXPECT_EQ(Expand(), m_kept);
}

TEST_F(KeepAllTest, TheNameIsFoundAnywhereInTheSite)
{
    m_settings.site = WTEXT("https://site.example.org/mw");
    m_settings.keepAll = WTEXT("site.example.org");

    EXPECT_EQ(Expand(), m_kept);
}

TEST_F(KeepAllTest, AnotherSiteLeavesThemOut)
{
    m_settings.site = WTEXT("other.example.org");
    m_settings.keepAll = WTEXT("site.example.org");

    EXPECT_EQ(Expand(), m_plain);
}

TEST_F(KeepAllTest, AnEmptyConfigurationMatchesNoSite)
{
    m_settings.site = WTEXT("site.example.org");

    EXPECT_EQ(Expand(), m_plain);
    m_settings.site.clear();
    EXPECT_EQ(Expand(), m_plain);
}

TEST_F(KeepAllTest, TheSiteIsReadAnewOnEveryExpansionAlsoWithoutDays)
{
    Expand();
    m_rule.specific = {0};
    Expand();

    EXPECT_EQ(m_settings.reads, 2);
}

TEST_F(KeepAllTest, NoOtherKindAsksForTheSite)
{
    m_settings.site = WTEXT("site.example.org");
    m_settings.keepAll = m_settings.site;
    m_rule = pattern::Daily("2024-01-01", 1);
    m_rule.deleted = {pattern::Minutes("2024-01-02")};
    RuleRun run;
    run.blob = m_rule.Write();
    run.to = "2024-01-03T23:00:00";
    run.settings = &m_settings;

    EXPECT_EQ(run.Expand().Dates(), (Dates{"2024-01-01", "2024-01-03"}));
    EXPECT_EQ(m_settings.reads, 0);
}

} // namespace
