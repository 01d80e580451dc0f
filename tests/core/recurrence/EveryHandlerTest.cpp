#include <gtest/gtest.h>

#include "RuleRun.h"
#include "TraceCapture.h"

// What all seven handlers do alike, each tried on a rule of its own.

namespace
{

struct Handler
{
    const char* name;
    pattern::Pattern pattern;
    std::vector<std::string> entries; ///< functions that name themselves in the trace
    Dates dates;                      ///< the first four instances
};

void PrintTo(const Handler& handler, std::ostream* out)
{
    *out << handler.name;
}

std::string NameOf(const testing::TestParamInfo<Handler>& info)
{
    return info.param.name;
}

class EveryHandlerTest : public testing::TestWithParam<Handler>
{
protected:
    static constexpr const char* kFrom = "2024-01-01T00:00:00";

    const Handler& m_handler = GetParam();
};

TEST_P(EveryHandlerTest, NamesItselfOnEntry)
{
    const CTraceCapture trace;

    ExpandRule(m_handler.pattern, kFrom, kFrom);

    std::vector<std::string> expected = {"3 CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=0 "
                                         "m_zInfo.DaylightDate.wMonth=0"};
    for (const std::string& entry : m_handler.entries)
    {
        expected.push_back("2 " + entry);
    }
    EXPECT_EQ(trace.Messages(), expected);
    EXPECT_EQ(trace.Lines().back().function, m_handler.entries.back());
}

TEST_P(EveryHandlerTest, ListsItsInstancesUpToTheEndOfTheWindow)
{
    EXPECT_EQ(DatesOf(m_handler.pattern, kFrom, m_handler.dates[3] + "T23:59:00"), m_handler.dates);
    // A step that leads behind the last day ends the loop, whatever day it leads to.
    EXPECT_EQ(DatesOf(m_handler.pattern, kFrom, m_handler.dates[1] + "T08:59:00"),
              (Dates{m_handler.dates[0]}));
}

TEST_P(EveryHandlerTest, LeavesDeletedAndMovedInstancesOut)
{
    pattern::Pattern rule = m_handler.pattern;
    rule.deleted = {pattern::Minutes(m_handler.dates[1])};
    rule.modified.push_back(pattern::Moved(
        m_handler.dates[2] + "T09:00:00", "2090-01-01T09:00:00", "2090-01-01T10:00:00"));

    EXPECT_EQ(DatesOf(rule, kFrom, m_handler.dates[3] + "T23:59:00"),
              (Dates{m_handler.dates[0], m_handler.dates[3]}));
}

INSTANTIATE_TEST_SUITE_P(
    Handlers,
    EveryHandlerTest,
    testing::Values(Handler{"EveryDay",
                            pattern::Daily("2024-01-01", 1),
                            {"CRecurrentRule::ParseDaily", "CRecurrentRule::ParseNonworkDaily"},
                            {"2024-01-01", "2024-01-02", "2024-01-03", "2024-01-04"}},
                    Handler{"WorkingDays",
                            pattern::WorkingDays("2024-01-01"),
                            {"CRecurrentRule::ParseDaily", "CRecurrentRule::ParseWorkDaily"},
                            {"2024-01-01", "2024-01-02", "2024-01-03", "2024-01-04"}},
                    Handler{"Weekly",
                            pattern::Weekly("2024-01-01", 2, 1),
                            {"CRecurrentRule::ParseWeekly"},
                            {"2024-01-01", "2024-01-08", "2024-01-15", "2024-01-22"}},
                    Handler{"MonthlyDay",
                            pattern::MonthlyDay("2024-01-10", 10, 1),
                            {"CRecurrentRule::ParseMonthly", "CRecurrentRule::ParseMonthly02"},
                            {"2024-01-10", "2024-02-10", "2024-03-10", "2024-04-10"}},
                    Handler{"MonthlyOrdinal",
                            pattern::MonthlyOrdinal("2024-01-01", 4, 3, 1),
                            {"CRecurrentRule::ParseMonthly", "CRecurrentRule::ParseMonthly03"},
                            {"2024-01-16", "2024-02-20", "2024-03-19", "2024-04-16"}},
                    Handler{"YearlyDay",
                            pattern::YearlyDay("2024-07-04", 4, 1),
                            {"CRecurrentRule::ParseYearly", "CRecurrentRule::ParseYearly02"},
                            {"2024-07-04", "2025-07-04", "2026-07-04", "2027-07-04"}},
                    Handler{"YearlyOrdinal",
                            pattern::YearlyOrdinal("2024-11-01", 16, 5, 1),
                            {"CRecurrentRule::ParseYearly", "CRecurrentRule::ParseYearly03"},
                            {"2024-11-28", "2025-11-27", "2026-11-26", "2027-11-25"}}),
    NameOf);

} // namespace
