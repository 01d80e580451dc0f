// Letting the watched folders go.

#include <algorithm>

#include "RecordingSwitch.h"
#include "RowEvent.h"
#include "SubscriptionTest.h"
#include "WorkThread.h"

TEST_F(SubscriptionTest, EndingGivesBackEverySinkBeforeFoldersAndTables)
{
    outlook.InitAppTbl();
    trace.Clear();
    mapi.calls.clear();

    outlook.UnAdviceTableSink();

    EXPECT_EQ(mapi.calls,
              (Strings{"ContentsTable::Unadvise",
                       "ContentsTable::Unadvise",
                       "IMAPIFolder::Release",
                       "ContentsTable::Release",
                       "IMAPIFolder::Release",
                       "ContentsTable::Release"}));
    EXPECT_EQ(Lines(),
              (Strings{"2 UnAdviceTableSink",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 1.",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 1."}));
    EXPECT_TRUE(outlook.m_CalendarSinks.empty());
}

TEST_F(SubscriptionTest, EndingOneListLeavesTheOther)
{
    outlook.InitAppTbl();
    outlook.InitContactTbl();

    outlook.UnAdviceContactTableSink();

    EXPECT_TRUE(outlook.m_ContactSinks.empty());
    EXPECT_EQ(outlook.m_CalendarSinks.size(), 2U);
}

TEST_F(SubscriptionTest, FailedEndOfASubscriptionIsTriedOnceMoreAndEndsTheSinkInAnyCase)
{
    outlook.InitAppTbl();
    IMAPIAdviseSink* const kept = mapi.sinks[0];
    kept->AddRef();
    mapi.answers["ContentsTable::Unadvise"] = {E_FAIL, E_FAIL};
    mapi.calls.clear();

    outlook.UnAdviceTableSink();

    EXPECT_EQ(mapi.CountCalls("ContentsTable::Unadvise"), 3U);
    CRowEvent late(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    EXPECT_EQ(kept->OnNotify(1, &late.Get()), 0U);
    EXPECT_EQ(g_pWorkThread.load(), nullptr) << "a sink that ended queues nothing";
    EXPECT_EQ(kept->Release(), 0U);
}

TEST_F(SubscriptionTest, NotificationsThatWaitGoWithTheirSubscription)
{
    Asked asked;
    g_asked = &asked;
    SetMailSwitchFactory(&MakeRecordingSwitch);
    ASSERT_TRUE(EnsureWorkThread());
    outlook.InitAppTbl();
    outlook.InitContactTbl();
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    {
        // The work thread comes no further than to the first.
        const std::scoped_lock hold(asked.lock);
        for (int event = 0; event < 3; ++event)
        {
            mapi.sinks[0]->OnNotify(1, &added.Get());
            mapi.sinks[1]->OnNotify(1, &added.Get());
        }
        outlook.UnAdviceTableSink();
        mapi.sinks[2]->OnNotify(1, &added.Get());
    }
    const auto count = [&](const char* operation) {
        return std::count(asked.operations.begin(), asked.operations.end(), operation);
    };

    std::unique_lock hold(asked.lock);
    asked.changed.wait(hold, [&] { return count("contact E1 1A") == 1; });
    EXPECT_LE(count("appointment E1 1A"), 1);
    hold.unlock();

    ReleaseWorkThread(false);
    SetMailSwitchFactory(nullptr);
    g_asked = nullptr;
}
