#include <gtest/gtest.h>

#include "FakeObjects.h"
#include "MapiUtil.h"
#include "TickClock.h"
#include "TraceCapture.h"

namespace
{

using Calls = std::vector<std::string>;

const GUID kSet = {0x00062002, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr LONG kId = 0x8235;

class InformalTagTest : public testing::Test
{
protected:
    InformalTagTest()
    {
        g_tickClock = {};
        m_container.open = [this](BYTE) { return &m_message; };
    }

    ~InformalTagTest() override
    {
        EXPECT_EQ(m_message.references.held, 0);
        EXPECT_EQ(m_container.references.held, 0);
        EXPECT_EQ(m_table.references.held, 0);
    }

    bool Find(ULONG type = PT_SYSTIME)
    {
        return CUtil::GetInformalTag(kSet, &m_container, &m_table, kId, type, m_tag);
    }

    /// Batches of messages, as many as are asked for.
    void FillTable(std::size_t batches, std::size_t rowsEach)
    {
        m_table.batches.assign(batches,
                               {S_OK, std::vector<FakeRow>(rowsEach, FakeRow::WithEntryId(1))});
    }

    CFakeTable m_table;
    CFakeContainer m_container;
    CFakeMessage m_message;
    ULONG m_tag = 0xEEEEEEEE;
    CTraceCapture m_trace;
};

TEST_F(InformalTagTest, TheFirstMessageThatKnowsTheNameAnswers)
{
    FillTable(1, 3);
    m_message.props.namedTag = PROP_TAG(PT_UNSPECIFIED, 0x8123);

    EXPECT_TRUE(Find());

    EXPECT_EQ(m_tag, 0x81230040U);
    EXPECT_EQ(m_table.calls, (Calls{"SetColumns FFF0102 FFE0003 flags 0", "QueryRows A flags 0"}));
    EXPECT_EQ(m_container.calls, Calls{"OpenEntry 1 null flags 10"});
    EXPECT_EQ(m_message.props.calls, Calls{"GetIDsFromNames 1 id 8235 set 62002 flags 0"});
    EXPECT_EQ(m_trace.Messages(), Calls{"3 GetApptInformalTag"});
    EXPECT_EQ(m_trace.Lines()[0].function, "CUtil::GetInformalTag");
}

TEST_F(InformalTagTest, TheTypeReplacesWhateverTypeTheStoreGives)
{
    FillTable(1, 1);
    m_message.props.namedTag = PROP_TAG(PT_LONG, 0x8123);

    EXPECT_TRUE(Find(PT_BOOLEAN));
    EXPECT_EQ(m_tag, 0x8123000BU);
}

TEST_F(InformalTagTest, ANullContainerOrTableIsRefused)
{
    EXPECT_FALSE(CUtil::GetInformalTag(kSet, nullptr, &m_table, kId, PT_SYSTIME, m_tag));
    EXPECT_EQ(m_tag, 0U);
    EXPECT_FALSE(CUtil::GetInformalTag(kSet, &m_container, nullptr, kId, PT_SYSTIME, m_tag));

    EXPECT_EQ(m_trace.Count("Input param error"), 2U);
    EXPECT_TRUE(m_table.calls.empty());
}

TEST_F(InformalTagTest, ColumnsThatCannotBeSetEndTheSearch)
{
    m_table.setColumns = E_FAIL;

    EXPECT_FALSE(Find());

    EXPECT_EQ(m_trace.Messages(), (Calls{"3 GetApptInformalTag", "3 table SetColumns failed"}));
    EXPECT_EQ(m_table.calls.size(), 1U);
}

TEST_F(InformalTagTest, AnEmptyTableGivesNothing)
{
    EXPECT_FALSE(Find());

    EXPECT_EQ(m_tag, 0U);
    EXPECT_EQ(m_trace.Messages(),
              (Calls{"3 GetApptInformalTag", "3 lpsRowSet->cRows <= 0 || lpsRowSet->cRows > 10"}));
}

TEST_F(InformalTagTest, ABatchOfMoreThanTenRowsIsRefused)
{
    FillTable(1, 11);

    EXPECT_FALSE(Find());

    EXPECT_TRUE(m_container.calls.empty());
    EXPECT_EQ(m_trace.Count("lpsRowSet->cRows <= 0 || lpsRowSet->cRows > 10"), 1U);
}

TEST_F(InformalTagTest, ARowSetThatIsMissingIsAnEmptyBatch)
{
    m_table.batches = {{S_OK, {}, true}};

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_trace.Count("lpsRowSet->cRows <= 0 || lpsRowSet->cRows > 10"), 1U);
}

TEST_F(InformalTagTest, ATableThatCannotBeReadEndsTheSearch)
{
    m_table.batches = {{MAPI_E_CALL_FAILED, {}}, {S_OK, {FakeRow::WithEntryId(1)}}};

    EXPECT_FALSE(Find());

    EXPECT_EQ(m_trace.Messages(), (Calls{"3 GetApptInformalTag", "3 table QueryRows failed"}));
    EXPECT_EQ(m_table.calls.size(), 2U);
}

TEST_F(InformalTagTest, RowsThatFailAreMovedPastWithinTheBatch)
{
    m_table.batches = {{S_OK,
                        {FakeRow::WithoutEntryId(),
                         FakeRow::WithEntryId(1),
                         FakeRow::WithEntryId(2),
                         FakeRow::WithEntryId(3)}}};
    CFakeMessage stranger;
    stranger.props.idStatus = MAPI_E_CALL_FAILED;
    m_container.open = [&](BYTE id) -> CFakeMessage* {
        return id == 1 ? nullptr : id == 2 ? &stranger : &m_message;
    };

    EXPECT_TRUE(Find());

    EXPECT_EQ(m_tag, 0x80050040U);
    EXPECT_EQ(m_container.calls.size(), 3U);
    EXPECT_EQ(stranger.references.held, 0);
}

TEST_F(InformalTagTest, AFailureOfTheLastRowEndsTheSearchWithItsBatch)
{
    FillTable(2, 10);
    m_container.open = [this](BYTE) -> CFakeMessage* {
        return m_container.calls.size() <= 10 ? nullptr : &m_message;
    };

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_container.calls.size(), 10U);
}

TEST_F(InformalTagTest, ASearchGoesOnToTheNextBatchAsLongAsTheLastRowCouldBeOpened)
{
    FillTable(3, 10);
    m_container.objectType = MAPI_FOLDER;
    m_container.open = [this](BYTE) {
        if (m_container.calls.size() == 25)
        {
            m_container.objectType = MAPI_MESSAGE;
        }
        return &m_message;
    };

    EXPECT_TRUE(Find());
    EXPECT_EQ(m_container.calls.size(), 25U);
}

TEST_F(InformalTagTest, AnUnknownNameIsNoTagAlthoughTheStoreCallsItASuccess)
{
    FillTable(1, 1);
    m_message.props.idStatus = MAPI_W_ERRORS_RETURNED;
    m_message.props.namedTag = PROP_TAG(PT_ERROR, 0);

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_tag, 0U);
}

TEST_F(InformalTagTest, AWarningIsNoAnswerWhateverComesWithIt)
{
    FillTable(1, 1);
    m_message.props.idStatus = MAPI_W_ERRORS_RETURNED;
    m_message.props.namedTag = PROP_TAG(PT_SYSTIME, 0x8123);

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_tag, 0U);
}

TEST_F(InformalTagTest, AnIdentifierBelowTheNamedRangeIsNoTag)
{
    FillTable(1, 1);
    m_message.props.namedTag = PROP_TAG(PT_UNSPECIFIED, 0x7FFF);

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_tag, 0U);
}

TEST_F(InformalTagTest, AfterAMinuteTheSearchEndsAndSaysSo)
{
    FillTable(20, 10);
    m_container.objectType = MAPI_FOLDER;
    g_tickClock.stepMs = 4001;

    EXPECT_FALSE(Find());

    // The fifteenth row is past the minute; its batch is finished all the same.
    EXPECT_EQ(m_container.calls.size(), 20U);
    EXPECT_EQ(m_trace.Messages(), (Calls{"3 GetApptInformalTag", "3 Time out"}));
}

TEST_F(InformalTagTest, ExactlyAMinuteEndsTheSearchInSilence)
{
    FillTable(20, 10);
    m_container.objectType = MAPI_FOLDER;
    g_tickClock.stepMs = 6000;

    EXPECT_FALSE(Find());

    EXPECT_EQ(m_container.calls.size(), 10U);
    EXPECT_EQ(m_trace.Count("Time out"), 0U);
}

TEST_F(InformalTagTest, ATagFoundLateStillCounts)
{
    FillTable(1, 10);
    g_tickClock.stepMs = 70000;

    EXPECT_TRUE(Find());
    EXPECT_EQ(m_trace.Count("Time out"), 1U);
}

TEST_F(InformalTagTest, TheClockMayWrapMeanwhile)
{
    FillTable(3, 10);
    m_container.objectType = MAPI_FOLDER;
    g_tickClock.nowMs = 0xFFFFFFF0;
    g_tickClock.stepMs = 1;

    EXPECT_FALSE(Find());
    EXPECT_EQ(m_container.calls.size(), 30U);
    EXPECT_EQ(m_trace.Count("Time out"), 0U);
}

} // namespace
