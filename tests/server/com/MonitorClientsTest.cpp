#include <thread>

#include "MonitorFixture.h"
#include "Trace.h"
#include "TraceCapture.h"

namespace
{

using MonitorClientsTest = MonitorTest;

TEST_F(MonitorClientsTest, TheFirstSequenceIdIs111AndTheNext112)
{
    EXPECT_EQ(m_monitor->NextSequence(), 111U);
    EXPECT_EQ(m_monitor->NextSequence(), 112U);
}

TEST_F(MonitorClientsTest, SequenceIdsFromSeveralThreadsAreAllDifferent)
{
    constexpr ULONG kEach = 5000;
    const auto take = [this] {
        for (ULONG i = 0; i < kEach; i++)
        {
            m_monitor->NextSequence();
        }
    };
    std::thread first(take);
    std::thread second(take);
    first.join();
    second.join();

    EXPECT_EQ(m_monitor->NextSequence(), 111 + 2 * kEach);
}

TEST_F(MonitorClientsTest, AMappedIdFindsItsClient)
{
    CFakeClient other;
    m_monitor->AddClient(&other);
    m_monitor->MapSequence(5, &m_client);
    m_monitor->MapSequence(6, &other);

    IMonitorClient* found = nullptr;
    EXPECT_TRUE(m_monitor->FindClientBySequence(5, found));
    EXPECT_EQ(found, &m_client);
    EXPECT_TRUE(m_monitor->FindClientBySequence(6, found));
    EXPECT_EQ(found, &other);
    EXPECT_FALSE(m_monitor->FindClientBySequence(7, found));
}

TEST_F(MonitorClientsTest, MappingAgainReplacesTheClient)
{
    CFakeClient other;
    m_monitor->AddClient(&other);
    m_monitor->MapSequence(5, &m_client);
    m_monitor->MapSequence(5, &other);

    IMonitorClient* found = nullptr;
    EXPECT_TRUE(m_monitor->FindClientBySequence(5, found));
    EXPECT_EQ(found, &other);
}

TEST_F(MonitorClientsTest, UnmappingForgetsTheIdAndAnUnknownIdIsPassedOver)
{
    m_monitor->MapSequence(5, &m_client);
    m_monitor->UnmapSequence(5);
    m_monitor->UnmapSequence(5);

    IMonitorClient* found = nullptr;
    EXPECT_FALSE(m_monitor->FindClientBySequence(5, found));
    EXPECT_EQ(found, nullptr);
}

TEST_F(MonitorClientsTest, NoIdIsMappedToNobodyOrToAStranger)
{
    CFakeClient stranger;
    m_monitor->MapSequence(5, &m_client);
    m_monitor->MapSequence(5, nullptr);
    m_monitor->MapSequence(5, &stranger);

    IMonitorClient* found = nullptr;
    EXPECT_TRUE(m_monitor->FindClientBySequence(5, found));
    EXPECT_EQ(found, &m_client);
}

TEST_F(MonitorClientsTest, AStaleIdFindsNothingUntilItsClientIsBack)
{
    m_monitor->MapSequence(5, &m_client);
    m_monitor->RemoveClient(&m_client);
    IMonitorClient* found = nullptr;
    EXPECT_FALSE(m_monitor->FindClientBySequence(5, found));

    // The id itself was not cleaned away.
    m_monitor->AddClient(&m_client);
    EXPECT_TRUE(m_monitor->FindClientBySequence(5, found));
}

TEST_F(MonitorClientsTest, AClientIsKeptOnceAndNullIsIgnored)
{
    m_monitor->AddClient(&m_client);
    m_monitor->AddClient(nullptr);
    m_monitor->RemoveClient(nullptr);
    EXPECT_TRUE(m_monitor->IsClient(&m_client));
    EXPECT_FALSE(m_monitor->IsClient(nullptr));

    m_monitor->RemoveClient(&m_client);
    EXPECT_FALSE(m_monitor->IsClient(&m_client));
    m_monitor->RemoveClient(&m_client);
    EXPECT_FALSE(m_monitor->IsClient(&m_client));
}

TEST_F(MonitorClientsTest, TheWindowHasItsClassItsNameAndIsNotShown)
{
    const HWND window = CClientMonitor::Window();
    wchar_t name[128]{};
    GetClassNameW(window, name, 128);
    EXPECT_STREQ(name, L"Tlv_OI_EXE_2EC77A10-29E1-4d80-B7F7-778072404185");
    GetWindowTextW(window, name, 128);
    EXPECT_STREQ(name, L"ClientMonitorWnd");
    EXPECT_EQ(GetWindowThreadProcessId(window, nullptr), GetCurrentThreadId());
    EXPECT_EQ(IsWindowVisible(window), FALSE);
    EXPECT_EQ(GetParent(window), nullptr);
    EXPECT_EQ(GetClassLongPtrW(window, GCL_STYLE), 0U);
    EXPECT_EQ(GetClassLongPtrW(window, GCLP_HICON), 0U);
    EXPECT_EQ(GetClassLongPtrW(window, GCLP_HCURSOR), 0U);
    EXPECT_EQ(GetWindowLongPtrW(window, -21), reinterpret_cast<LONG_PTR>(m_monitor));
}

TEST_F(MonitorClientsTest, ThereIsOneInstance)
{
    EXPECT_EQ(CClientMonitor::GetInstance(), m_monitor);
}

TEST_F(MonitorClientsTest, DeletionEndsTheWindowAndNoTraceBringsTheMonitorBack)
{
    const HWND window = CClientMonitor::Window();
    CTraceCapture trace;
    CClientMonitor::DeleteClientMonitorInstance();

    EXPECT_TRUE(trace.Has(2, " CClientMonitor::DeleteClientMonitorInstance"));
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_EQ(CClientMonitor::Window(), nullptr);
    SEND_TRACE(0, "Late", "a line behind the end");
    EXPECT_EQ(CClientMonitor::GetInstance(), nullptr);
}

TEST_F(MonitorClientsTest, DeletionWithoutAnInstanceOnlyTraces)
{
    CClientMonitor::DeleteClientMonitorInstance();
    CTraceCapture trace;
    CClientMonitor::DeleteClientMonitorInstance();

    EXPECT_EQ(trace.Count(" CClientMonitor::DeleteClientMonitorInstance"), 1U);
}

TEST(MonitorWithoutHost, IsNotMade)
{
    CClientMonitor::SetHost(nullptr);
    EXPECT_EQ(CClientMonitor::GetInstance(), nullptr);
    EXPECT_EQ(CClientMonitor::Window(), nullptr);
}

} // namespace
