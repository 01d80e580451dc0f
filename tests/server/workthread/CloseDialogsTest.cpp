#include "CloseDialogs.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "EventInbox.h"
#include "EventWindow.h"
#include "TraceCapture.h"

namespace
{

std::atomic<int> g_closed{0};

LRESULT CALLBACK NotingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CLOSE)
    {
        g_closed++;
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND MakeWindow()
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = NotingProc;
    windowClass.lpszClassName = L"NotingWindow";
    RegisterClassW(&windowClass);
    return CreateWindowExW(
        0, L"NotingWindow", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
}

/// Handles everything that has been posted to this thread by now.
void PumpAll()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
    {
        DispatchMessageW(&message);
    }
}

std::unique_ptr<std::list<DWORD>> Spared(DWORD threadId)
{
    return std::make_unique<std::list<DWORD>>(1, threadId);
}

class CloseDialogsTest : public testing::Test
{
protected:
    void SetUp() override { g_closed = 0; }

    CTraceCapture m_trace;
};

} // namespace

TEST_F(CloseDialogsTest, WindowsOfOtherThreadsAreAskedToClose)
{
    const HWND window = MakeWindow();

    std::thread([] {
        CloseDlgInProcess(GetCurrentProcessId(), Spared(GetCurrentThreadId()));
    }).join();
    PumpAll();

    EXPECT_EQ(g_closed, 1);
    DestroyWindow(window);
}

TEST_F(CloseDialogsTest, WindowsOfSparedThreadsAreLeftAlone)
{
    const HWND window = MakeWindow();

    CloseDlgInProcess(GetCurrentProcessId(), Spared(GetCurrentThreadId()));
    PumpAll();

    EXPECT_EQ(g_closed, 0);
    DestroyWindow(window);
}

TEST_F(CloseDialogsTest, EventWindowIsLeftAloneOnWhateverThread)
{
    static HWND s_window = nullptr;
    s_window = MakeWindow();
    SetEventWindowProvider([]() noexcept -> HWND { return s_window; });

    CloseDlgInProcess(GetCurrentProcessId(), nullptr);
    PumpAll();

    EXPECT_EQ(g_closed, 0);
    SetEventWindowProvider(nullptr);
    DestroyWindow(s_window);
}

TEST_F(CloseDialogsTest, ProcessZeroIsRefused)
{
    CloseDlgInProcess(0, Spared(1));

    EXPECT_EQ(m_trace.Messages(),
              (std::vector<std::string>{"3 CloseDlgInProcess, dwCurProcessID == 0"}));
}

TEST_F(CloseDialogsTest, ProcessThatCannotBeOpenedIsTraced)
{
    CloseDlgInProcess(0xFFFFFFF0, Spared(1));

    EXPECT_EQ(
        m_trace.Messages(),
        (std::vector<std::string>{"3 CloseDlgInProcess, hProcess == NULL, can't OpenProcess"}));
}
