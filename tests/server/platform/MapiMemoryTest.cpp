#include "MapiMemory.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

/// Whatever mail client is registered where the tests run: its allocator may want to be started.
/// Without one the system's own serves, and the start is refused.
class CStartedMapi final : public testing::Environment
{
public:
    void SetUp() override
    {
        MAPIINIT_0 start{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
        m_isStarted = MAPIInitialize(&start) == S_OK;
    }
    void TearDown() override
    {
        if (m_isStarted)
        {
            MAPIUninitialize();
        }
    }

private:
    bool m_isStarted = false;
};

[[maybe_unused]] const testing::Environment* const g_startedMapi =
    testing::AddGlobalTestEnvironment(new CStartedMapi());

LPSRowSet RowsOf(ULONG count)
{
    LPSRowSet rows = nullptr;
    EXPECT_EQ(MAPIAllocateBuffer(static_cast<ULONG>(CbNewSRowSet(count)),
                                 reinterpret_cast<void**>(&rows)),
              S_OK);
    rows->cRows = count;
    for (ULONG row = 0; row < count; ++row)
    {
        rows->aRow[row].cValues = 1;
        EXPECT_EQ(MAPIAllocateBuffer(sizeof(SPropValue),
                                     reinterpret_cast<void**>(&rows->aRow[row].lpProps)),
                  S_OK);
        rows->aRow[row].lpProps[0].ulPropTag = PR_ROWID;
        rows->aRow[row].lpProps[0].Value.l = static_cast<LONG>(row);
    }
    return rows;
}

} // namespace

TEST(MapiBuffer, OutSlotEmptiesBeforeItLends)
{
    CMapiBuffer<SPropValue> values;
    ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue), values.PutVoid()), S_OK);
    ASSERT_TRUE(values);

    SPropValue** const slot = values.Put();

    EXPECT_EQ(*slot, nullptr);
    EXPECT_FALSE(values);
}

TEST(MapiBuffer, MovingLeavesTheSourceEmpty)
{
    CMapiBuffer<SPropValue> first;
    ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue), first.PutVoid()), S_OK);
    const SPropValue* const block = first.Get();

    CMapiBuffer<SPropValue> second(std::move(first));
    CMapiBuffer<SPropValue> third;
    third = std::move(second);

    EXPECT_EQ(third.Get(), block);
}

TEST(MapiBuffer, DetachGivesTheBlockAway)
{
    CMapiBuffer<BYTE> owner;
    ASSERT_EQ(MAPIAllocateBuffer(16, owner.PutVoid()), S_OK);

    BYTE* const block = owner.Detach();

    EXPECT_FALSE(owner);
    EXPECT_EQ(MAPIFreeBuffer(block), 0U);
}

TEST(MapiBuffer, FreeingKeepsTheLastError)
{
    CMapiBuffer<BYTE> owner;
    ASSERT_EQ(MAPIAllocateBuffer(16, owner.PutVoid()), S_OK);
    SetLastError(0x1234);

    owner.Reset();

    EXPECT_EQ(GetLastError(), 0x1234U);
}

TEST(MapiRows, WalkingVisitsEachRowInOrder)
{
    CMapiRows rows;
    *rows.Put() = RowsOf(3);
    LONG expected = 0;

    for (const SRow& row : rows)
    {
        EXPECT_EQ(row.lpProps[0].Value.l, expected++);
    }

    EXPECT_EQ(expected, 3);
    EXPECT_EQ(rows.Count(), 3U);
    EXPECT_EQ(rows[2].lpProps[0].Value.l, 2);
}

TEST(MapiRows, WithoutASetThereIsNothingToWalk)
{
    const CMapiRows rows;

    EXPECT_EQ(rows.Count(), 0U);
    EXPECT_EQ(rows.begin(), rows.end());
}

TEST(MapiRows, MovingLeavesTheSourceEmpty)
{
    CMapiRows first;
    *first.Put() = RowsOf(1);
    const SRowSet* const set = first.Get();

    CMapiRows second;
    second = std::move(first);

    EXPECT_EQ(second.Get(), set);
}

TEST(MapiAddrList, EntriesWithAndWithoutPropertiesAreFreed)
{
    CMapiAddrList list;
    ASSERT_EQ(MAPIAllocateBuffer(CbNewADRLIST(2), list.PutVoid()), S_OK);
    list->cEntries = 2;
    list->aEntries[0] = {};
    list->aEntries[1] = {};
    ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue),
                                 reinterpret_cast<void**>(&list->aEntries[1].rgPropVals)),
              S_OK);

    list.Reset();

    EXPECT_FALSE(list);
}
