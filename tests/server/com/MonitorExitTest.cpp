#include <thread>

#include "Handle.h"
#include "MapiDataStore.h"
#include "MonitorFixture.h"
#include "QuitMessage.h"
#include "TraceCapture.h"

namespace
{

constexpr const char* kForceExit =
    "#######################CClientMonitor::ForceExit##########################";

using Lines = std::vector<std::string>;

class MonitorExitTest : public MonitorTest
{
protected:
    MonitorExitTest() { CoInitialize(nullptr); }
    ~MonitorExitTest() override { CoUninitialize(); }
};

TEST_F(MonitorExitTest, WhenTheClientIsGoneMailIsReleasedClientsAreCutAndTheLoopEnds)
{
    CTraceCapture trace;
    Send(WM_EVENT_CLIENT_NONEXIST, 0, 0);

    EXPECT_EQ(m_host.steps, (Lines{"release"}));
    EXPECT_EQ(trace.Messages(),
              (Lines{"3 call CoDisconnectObject",
                     std::string("2 ") + kForceExit,
                     "3 PostThreadMessage return value[1]"}));
    EXPECT_TRUE(TakeQuit());
    EXPECT_TRUE(m_client.fired.empty());
    EXPECT_EQ(m_client.references, 1);
}

TEST_F(MonitorExitTest, AReleaseUnderWayDoesNotHoldItBack)
{
    MapiDataStore().SetReleasing(1);
    Send(WM_EVENT_CLIENT_NONEXIST, 0, 0);

    EXPECT_EQ(m_host.steps, (Lines{"release"}));
    EXPECT_TRUE(TakeQuit());
}

TEST_F(MonitorExitTest, WithoutClientsItGoesStraightToTheExit)
{
    m_monitor->RemoveClient(&m_client);
    CTraceCapture trace;
    Send(WM_EVENT_CLIENT_NONEXIST, 0, 0);

    EXPECT_EQ(trace.Messages(),
              (Lines{std::string("2 ") + kForceExit, "3 PostThreadMessage return value[1]"}));
    EXPECT_TRUE(TakeQuit());
}

TEST_F(MonitorExitTest, AClientThatDoesNotAnswerIUnknownIsPassedOver)
{
    CFakeClient silent;
    silent.isUnknown = false;
    m_monitor->AddClient(&silent);
    CTraceCapture trace;
    Send(WM_EVENT_CLIENT_NONEXIST, 0, 0);

    EXPECT_EQ(trace.Count("call CoDisconnectObject"), 1U);
    EXPECT_TRUE(TakeQuit());
}

TEST(QuitMessage, IsPostedAgainUntilTheThreadHasAMessageQueue)
{
    // The thread makes its queue only after the first try has failed, which the trace tells.
    class CFirstFailure final : public ITraceRoute
    {
    public:
        bool IsOpen() noexcept override { return true; }
        void SendHeartbeat(std::string_view) noexcept override {}
        void Write(TL_SDK::TLLoggerLevel, std::string_view line) noexcept override
        {
            lines.emplace_back(line.substr(line.find("]:") + 2));
            SetEvent(failed.Get());
        }
        std::vector<std::string> lines;
        CHandle failed{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    } route;
    const CHandle started(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    DWORD threadId = 0;
    bool quit = false;
    std::thread target([&] {
        threadId = GetCurrentThreadId();
        SetEvent(started.Get());
        WaitForSingleObject(route.failed.Get(), INFINITE);
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        quit = GetMessageW(&message, nullptr, 0, 0) == 0;
    });
    WaitForSingleObject(started.Get(), INFINITE);

    ITraceRoute* const before = SetTraceRoute(&route);
    PostQuitTo(threadId, "Function", true);
    SetTraceRoute(before);
    target.join();

    EXPECT_TRUE(quit);
    ASSERT_GE(route.lines.size(), 2U);
    EXPECT_EQ(route.lines.front(), "PostThreadMessage return value:[0]");
    EXPECT_EQ(route.lines.back(), "PostThreadMessage return value:[1]");
}

} // namespace
