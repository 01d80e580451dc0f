#include "MapiDataStore.h"
#include "ServerFixture.h"
#include "WorkThread.h"

namespace
{

class MapiClientReleaseTest : public ServerTest
{
protected:
    MapiClientReleaseTest() { CreateClient(); }
};

TEST_F(MapiClientReleaseTest, BeforeAnyInitializeItSilencesAndQueuesNothing)
{
    EXPECT_EQ(ReleaseApp(0), S_OK);

    EXPECT_TRUE(MapiDataStore().IsReleasing());
    EXPECT_EQ(m_trace.Count("ClearPendingWork"), 0U);
    EXPECT_FALSE(Traced(3, "PushPendingWork tasktype[9]"));
    EXPECT_NE(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientReleaseTest, OneReleaseOfTwoInitializesSilencesAllButReleasesNothing)
{
    BringUp();
    BringUp();
    EXPECT_EQ(ReleaseApp(0), S_OK);
    EXPECT_TRUE(MapiDataStore().IsReleasing());
    EXPECT_FALSE(Traced(3, "PushPendingWork tasktype[9]"));

    oiexMapiFileTime time{0, 0};
    ULONG id = 0;
    EXPECT_EQ(m_client->ListAppointment(&time, &time, &id), S_OK);
    DrainWork();
    PumpWaiting();
    EXPECT_EQ(m_sink.calls.size(), 2U); // the two OnInitialize alone
}

TEST_F(MapiClientReleaseTest, TheLastReleaseEndsTheWorkThread)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(0), S_OK);

    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[9]"));
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_EQ(TheFakeMail().freeLibCalls, 1);
    EXPECT_EQ(TheFakeMail().clearCalls, 1);
}

TEST_F(MapiClientReleaseTest, OnlyMinusOneHibernates)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(-1), S_OK);
    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[8]"));
    EXPECT_FALSE(Traced(3, "PushPendingWork tasktype[9]"));
    EXPECT_NE(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientReleaseTest, ATrueOfOneEndsTheThread)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(1), S_OK);
    EXPECT_TRUE(Traced(3, "PushPendingWork tasktype[9]"));
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientReleaseTest, AReleaseTooManyIsHarmless)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(0), S_OK);
    m_trace.Clear();
    EXPECT_EQ(ReleaseApp(0), S_OK);
    EXPECT_EQ(ReleaseApp(-1), S_OK);
    EXPECT_TRUE(m_trace.Messages().empty());
}

TEST_F(MapiClientReleaseTest, AfterAFullReleaseANewInitializeIsHeardAgain)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(0), S_OK);
    BringUp();

    EXPECT_EQ(m_sink.calls.size(), 2U);
    EXPECT_FALSE(MapiDataStore().IsReleasing());
    EXPECT_NE(g_pWorkThread.load(), nullptr);
}

TEST_F(MapiClientReleaseTest, AfterAHibernateTheServerWorksButStaysSilent)
{
    BringUp();
    EXPECT_EQ(ReleaseApp(-1), S_OK);
    EXPECT_EQ(Initialize(1, L"CALENDARING"), S_OK);
    DrainWork();
    PumpWaiting();

    EXPECT_EQ(TheFakeMail().initCalls, 3); // the second of them asked by the client
    EXPECT_TRUE(MapiDataStore().IsReleasing());
    EXPECT_EQ(m_sink.calls.size(), 1U);
}

} // namespace
