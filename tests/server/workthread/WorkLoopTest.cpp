#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>

#include "EventMessages.h"
#include "ServerTrace.h"
#include "WorkFixture.h"

namespace
{

using WorkLoopTest = WorkThreadTest;

std::atomic<int> g_handled{0};
HANDLE g_handledEvent = nullptr;

LRESULT CALLBACK CountingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_APP)
    {
        g_handled++;
        SetEvent(g_handledEvent);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

TEST_F(WorkLoopTest, IdleThreadSendsTheHeartbeatLineToTheClientOnly)
{
    SetTraceRoute(nullptr);
    StartServerTrace();
    Start();

    const InboxMessage beat = m_inbox.Next();

    StopServerTrace();
    SetTraceRoute(&m_trace);
    EXPECT_EQ(beat.message, static_cast<UINT>(WM_EVENT_TRACE));
    EXPECT_EQ(beat.line.rfind("[WorkLoop.cpp:", 0), 0U);
    EXPECT_NE(beat.line.find("][WorkThreadFunc]:##dtOIEx##process##exist##"), std::string::npos);
}

TEST_F(WorkLoopTest, BusyThreadSendsNoHeartbeatUntilItIsFree)
{
    SetTraceRoute(nullptr);
    StartServerTrace();
    Start();
    const CSignal running;
    const CSignal goOn;
    m_script.getAppointment = [&](WString&) -> ULONG {
        running.Set();
        goOn.Wait();
        return 0;
    };
    Queue(TaskType::GetAppointment, 1);
    running.Wait();

    // Longer than an idle thread would stay silent, and nothing else runs meanwhile.
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, 6500, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(m_inbox.TakeAll().empty());

    goOn.Set();
    EXPECT_EQ(m_inbox.Next().message, static_cast<UINT>(WM_EVENT_GET_APPOINTMENT));
    EXPECT_EQ(m_inbox.Next().message, static_cast<UINT>(WM_EVENT_TRACE));
    StopServerTrace();
    SetTraceRoute(&m_trace);
}

TEST_F(WorkLoopTest, OneWindowMessageIsPumpedAPass)
{
    Start();
    g_handled = 0;
    g_handledEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HWND window = nullptr;
    m_script.getAppointment = [&window](WString&) -> ULONG {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = CountingProc;
        windowClass.lpszClassName = L"CountingWindow";
        RegisterClassW(&windowClass);
        window = CreateWindowExW(
            0, L"CountingWindow", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        for (int i = 0; i < 3; i++)
        {
            PostMessageW(window, WM_APP, 0, 0);
        }
        return 0;
    };
    int seen = 0;
    const CSignal looked;
    m_script.getMsgInfo = [&](WString&) -> ULONG {
        seen = g_handled;
        looked.Set();
        return 0;
    };

    // The pass after this task pumps the first message, whoever wakes it.
    Queue(TaskType::GetAppointment, 1);
    EXPECT_EQ(WaitForSingleObject(g_handledEvent, 60000), WAIT_OBJECT_0);
    // The pass that takes this task has pumped the second, and not the third.
    Queue(TaskType::AddAppt);
    looked.Wait();

    EXPECT_EQ(seen, 2);
    m_script.getAppointment = [&window](WString&) -> ULONG {
        DestroyWindow(window);
        return 0;
    };
    Queue(TaskType::GetAppointment, 2);
    Flush();
    CloseHandle(g_handledEvent);
}
