#include <gtest/gtest.h>

#include "FakeObjects.h"
#include "MapiDataStore.h"
#include "MapiUtil.h"
#include "TraceCapture.h"

namespace
{

using Calls = std::vector<std::string>;

class QueryAllRowsTest : public testing::Test
{
protected:
    ~QueryAllRowsTest() override { MapiDataStore().SetReleasing(0); }

    CFakeTable m_table;
    CMapiRows m_rows;
};

TEST_F(QueryAllRowsTest, ANullTableIsAFailure)
{
    EXPECT_EQ(CUtil::QueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, m_rows, 0), E_FAIL);
}

TEST_F(QueryAllRowsTest, ALimitOfZeroAsksForAllRowsThatCanBeAskedFor)
{
    m_table.batches = {{S_OK, {FakeRow::WithEntryId(1), FakeRow::WithEntryId(2)}}};

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), S_OK);

    EXPECT_EQ(m_table.calls, Calls{"QueryRows FFFFFFF flags 0"});
    EXPECT_EQ(m_rows.Count(), 2U);
}

TEST_F(QueryAllRowsTest, ColumnsRestrictionAndOrderAreSetFirstWhereGiven)
{
    SizedSPropTagArray(2, columns) = {2, {PR_ENTRYID, PR_OBJECT_TYPE}};
    SRestriction restriction{};
    SSortOrderSet order{};

    EXPECT_EQ(CUtil::QueryAllRows(&m_table,
                                  reinterpret_cast<SPropTagArray*>(&columns),
                                  &restriction,
                                  &order,
                                  7,
                                  m_rows,
                                  TBL_NOADVANCE),
              S_OK);

    EXPECT_EQ(m_table.calls,
              (Calls{"SetColumns FFF0102 FFE0003 flags 0",
                     "Restrict flags 2",
                     "SortTable flags 0",
                     "QueryRows 7 flags 1"}));
}

TEST_F(QueryAllRowsTest, FailuresOfTheSettersAreIgnored)
{
    SizedSPropTagArray(1, columns) = {1, {PR_ENTRYID}};
    SRestriction restriction{};
    SSortOrderSet order{};
    m_table.setColumns = E_FAIL;
    m_table.restrict = E_FAIL;
    m_table.sort = E_FAIL;

    EXPECT_EQ(CUtil::QueryAllRows(&m_table,
                                  reinterpret_cast<SPropTagArray*>(&columns),
                                  &restriction,
                                  &order,
                                  0,
                                  m_rows,
                                  0),
              S_OK);
    EXPECT_EQ(m_table.calls.size(), 4U);
}

TEST_F(QueryAllRowsTest, ABusyTableIsWaitedForAndAskedAgain)
{
    m_table.batches = {{MAPI_E_BUSY, {}}, {MAPI_E_BUSY, {}}, {S_OK, {FakeRow::WithEntryId(1)}}};
    const CTraceCapture trace;

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), S_OK);

    EXPECT_EQ(m_table.calls,
              (Calls{"QueryRows FFFFFFF flags 0",
                     "WaitForCompletion 0 1000 null",
                     "QueryRows FFFFFFF flags 0",
                     "WaitForCompletion 0 1000 null",
                     "QueryRows FFFFFFF flags 0"}));
    EXPECT_EQ(trace.Count("QueryAllRows hResult==MAPI_E_BUSY"), 2U);
    EXPECT_EQ(m_rows.Count(), 1U);
}

TEST_F(QueryAllRowsTest, ATableThatCannotWaitEndsTheLoopWithThatStatus)
{
    m_table.batches = {{MAPI_E_BUSY, {}}, {S_OK, {}}};
    m_table.onWait = [] { return MAPI_E_NO_SUPPORT; };

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0),
              MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_table.calls.size(), 2U);
}

TEST_F(QueryAllRowsTest, AnyOtherFailureOfTheWaitIsIgnored)
{
    m_table.batches = {{MAPI_E_BUSY, {}}, {S_OK, {}}};
    m_table.onWait = [] { return MAPI_E_TIMEOUT; };

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), S_OK);
}

TEST_F(QueryAllRowsTest, ThereIsNoLimitOfTries)
{
    m_table.batches.assign(500, {MAPI_E_BUSY, {}});

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), S_OK);
    EXPECT_EQ(m_table.calls.size(), 1001U);
}

TEST_F(QueryAllRowsTest, AReleaseEndsTheWaitForABusyTable)
{
    m_table.batches.assign(500, {MAPI_E_BUSY, {}});
    m_table.onWait = [] {
        MapiDataStore().SetReleasing(1);
        return S_OK;
    };

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), MAPI_E_BUSY);
    EXPECT_EQ(m_table.calls.size(), 2U);
}

TEST_F(QueryAllRowsTest, AReleaseLongPastEndsNoWait)
{
    // Behind a hibernate the server stays silenced, and is brought up again all the same.
    MapiDataStore().SetReleasing(1);
    m_table.batches = {{MAPI_E_BUSY, {}}, {MAPI_E_BUSY, {}}};

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0), S_OK);
    EXPECT_EQ(m_table.calls.size(), 5U);
}

TEST_F(QueryAllRowsTest, AnyOtherStatusComesBackAsItIs)
{
    m_table.batches = {{MAPI_E_NETWORK_ERROR, {}}};

    EXPECT_EQ(CUtil::QueryAllRows(&m_table, nullptr, nullptr, nullptr, 0, m_rows, 0),
              MAPI_E_NETWORK_ERROR);
    EXPECT_FALSE(m_rows);
}

} // namespace
