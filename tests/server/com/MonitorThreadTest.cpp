#include "MonitorThread.h"

#include "FrameWindow.h"
#include "Handle.h"
#include "MonitorFixture.h"
#include "TraceCapture.h"

namespace
{

class MonitorThreadTest : public MonitorTest
{
protected:
    ~MonitorThreadTest() override
    {
        AskClientMonitorThreadToStop();
        CloseClientMonitorThread(INFINITE);
    }

    static bool HasEnded(HANDLE thread) { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; }

    /// Pumps this thread's messages until `handle` is signalled.
    static void PumpUntil(HANDLE handle)
    {
        while (MsgWaitForMultipleObjects(1, &handle, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0)
        {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, WM_QUIT - 1, PM_REMOVE) != FALSE ||
                   PeekMessageW(&message, nullptr, WM_QUIT + 1, 0xFFFF, PM_REMOVE) != FALSE)
            {
                DispatchMessageW(&message);
            }
        }
    }
};

TEST_F(MonitorThreadTest, TheFirstLookThatFindsNoFrameWindowEndsTheProcess)
{
    CTraceCapture trace;
    StartClientMonitorThread();
    PumpUntil(m_host.processEnded);
    AskClientMonitorThreadToStop();

    const std::vector<std::string> messages = trace.Messages();
    const auto count = [&](const char* text) { return trace.Count(text); };
    EXPECT_EQ(messages.front(), "2 ClientMonitorProc");
    EXPECT_GE(count("######################connect process is not existed, Quit self process, "
                    "dwDisconnectCount:[0]"),
              1U);
    EXPECT_TRUE(trace.Has(3, "PostMessage WM_EVENT_CLIENT_NONEXIST return value:[1]"));
    // The orderly way out was taken first, on the main thread.
    EXPECT_EQ(m_host.steps.front(), "release");
    EXPECT_TRUE(TakeQuit());
}

TEST_F(MonitorThreadTest, AFrameWindowKeepsTheProcess)
{
    const CFrameWindow frame;
    ASSERT_TRUE(frame.Stands());
    CTraceCapture trace;
    StartClientMonitorThread();
    const HANDLE thread = g_hMonitorThread;
    // Longer than one poll: what is shown is that nothing happened, so time has to pass.
    EXPECT_EQ(WaitForSingleObject(m_host.processEnded, 3000), static_cast<DWORD>(WAIT_TIMEOUT));

    EXPECT_FALSE(HasEnded(thread));
    EXPECT_EQ(trace.Messages(), (std::vector<std::string>{"2 ClientMonitorProc"}));
    EXPECT_TRUE(m_host.steps.empty());
}

TEST_F(MonitorThreadTest, ClosingTheFrameWindowIsSeen)
{
    CFrameWindow frame;
    StartClientMonitorThread();
    frame.Close();
    PumpUntil(m_host.processEnded);

    EXPECT_EQ(m_host.steps.front(), "release");
}

TEST_F(MonitorThreadTest, ARegistrationRunHasNoWatch)
{
    m_host.registrationRun = true;
    CTraceCapture trace;
    StartClientMonitorThread();
    const HANDLE thread = g_hMonitorThread;

    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(trace.Messages(), (std::vector<std::string>{"2 ClientMonitorProc"}));
}

TEST_F(MonitorThreadTest, AStopWakesTheThreadAndEndsIt)
{
    const CFrameWindow frame;
    StartClientMonitorThread();
    EXPECT_EQ(g_bMonitorRun.load(), 1);
    CHandle thread;
    HANDLE duplicate = nullptr;
    DuplicateHandle(GetCurrentProcess(),
                    g_hMonitorThread,
                    GetCurrentProcess(),
                    &duplicate,
                    0,
                    FALSE,
                    DUPLICATE_SAME_ACCESS);
    thread.Reset(duplicate);
    AskClientMonitorThreadToStop();
    CloseClientMonitorThread(INFINITE);

    EXPECT_TRUE(HasEnded(thread.Get()));
    EXPECT_EQ(g_hMonitorThread.load(), nullptr);
    EXPECT_EQ(g_bMonitorRun.load(), 0);
}

TEST_F(MonitorThreadTest, AStopBeforeTheThreadIsUpIsNotUndone)
{
    const CFrameWindow frame;
    StartClientMonitorThread();
    AskClientMonitorThreadToStop(); // the thread may not have run a line yet
    const HANDLE thread = g_hMonitorThread;

    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
}

TEST_F(MonitorThreadTest, ItIsStartedOnce)
{
    const CFrameWindow frame;
    StartClientMonitorThread();
    const HANDLE thread = g_hMonitorThread;
    StartClientMonitorThread();
    EXPECT_EQ(g_hMonitorThread.load(), thread);
}

TEST(MonitorThread, ClosingWithoutAThreadDoesNothing)
{
    AskClientMonitorThreadToStop();
    CloseClientMonitorThread(INFINITE);
    EXPECT_EQ(g_hMonitorThread.load(), nullptr);
}

} // namespace
