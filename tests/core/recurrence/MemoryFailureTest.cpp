#include <gtest/gtest.h>

#include <new>

#include "HexText.h"
#include "NarrowText.h"
#include "NewHook.h"
#include "PatternTail.h"
#include "RuleRun.h"
#include "TraceCapture.h"

namespace
{

/// The block that one exception takes in the map. No trace line takes one of that size.
std::size_t SizeOfMapNode()
{
    ExceptionMap exceptions;
    std::vector<std::size_t> sizes;
    const CNewHook noting([&](std::size_t size) { sizes.push_back(size); });
    exceptions.emplace(1U, RecurExceptionInfo());
    return sizes.at(0);
}

TEST(PatternMemory, AnExtendedTextForWhichThereIsNoMemoryIsLeftOutInSilence)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = std::string(3000, 's');
    modified.location = "Room 2";
    rule.modified.push_back(modified);
    const pattern::Bytes blob = rule.Write();
    const CPatternTailReader reader(blob, WTEXT("Standup"), WTEXT("Room 1"));
    PatternTail tail;
    ExceptionMap exceptions;
    TailResult result;
    const CTraceCapture trace;

    {
        const CNewHook refusing([](std::size_t size) {
            if (size > 3000)
            {
                throw std::bad_alloc();
            }
        });
        result = reader.Read(rule.TailOffset(), tail, exceptions);
    }

    EXPECT_TRUE(result.isComplete);
    const RecurExceptionInfo& info = exceptions.at(pattern::Minutes("2024-01-05"));
    EXPECT_TRUE(info.subject.empty());
    EXPECT_TRUE(info.location == WTEXT("Room 2"));
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(PatternMemory, AnyOtherFailureIsTracedWithTheWholePatternAndTheExpansionGoesOn)
{
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    rule.deleted = {pattern::Minutes("2024-01-02")};
    RuleRun run;
    run.blob = rule.Write();
    const std::size_t nodeSize = SizeOfMapNode();
    const CTraceCapture trace;

    {
        const CNewHook refusing([nodeSize](std::size_t size) {
            if (size == nodeSize)
            {
                throw std::bad_alloc();
            }
        });
        run.Expand();
    }

    // Neither start nor end date was read, so there is nothing in the window.
    EXPECT_FALSE(run.result);
    EXPECT_EQ(run.count, 0U);
    EXPECT_EQ(trace.Messages(),
              (std::vector<std::string>{"3 CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=0 "
                                        "m_zInfo.DaylightDate.wMonth=0",
                                        "2 CRecurrentRule::ParseDaily",
                                        "2 CRecurrentRule::ParseNonworkDaily",
                                        "1 Rec rule parse warning",
                                        "1 Size[" + std::to_string(run.blob.size()) + "] Info[" +
                                            NarrowText(HexTextOf(run.blob)) + "]"}));
}

} // namespace
