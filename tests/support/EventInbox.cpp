#include "EventInbox.h"

#include <gtest/gtest.h>

#include "AtMemory.h"
#include "EventMessages.h"
#include "EventWindow.h"

namespace
{

constexpr DWORD kPatienceMs = 60000;
constexpr const wchar_t* kClassName = L"TestEventInbox";

HWND g_inboxWindow = nullptr;

HWND ProvideInbox() noexcept
{
    return g_inboxWindow;
}

} // namespace

CEventInbox::CEventInbox()
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WndProc;
    windowClass.lpszClassName = kClassName;
    RegisterClassW(&windowClass);
    m_window =
        CreateWindowExW(0, kClassName, L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(m_window, nullptr);
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    g_inboxWindow = m_window;
    SetEventWindowProvider(ProvideInbox);
}

CEventInbox::~CEventInbox()
{
    SetEventWindowProvider(nullptr);
    Pump();
    g_inboxWindow = nullptr;
    DestroyWindow(m_window);
}

InboxMessage CEventInbox::Next()
{
    const DWORD start = GetTickCount();
    Pump();
    while (m_messages.empty())
    {
        const DWORD waited = GetTickCount() - start;
        if (waited >= kPatienceMs ||
            MsgWaitForMultipleObjects(0, nullptr, FALSE, kPatienceMs - waited, QS_ALLINPUT) ==
                WAIT_TIMEOUT)
        {
            ADD_FAILURE() << "no message came";
            return {};
        }
        Pump();
    }
    InboxMessage first = std::move(m_messages.front());
    m_messages.erase(m_messages.begin());
    return first;
}

std::vector<InboxMessage> CEventInbox::TakeAll()
{
    Pump();
    return std::exchange(m_messages, {});
}

void CEventInbox::Pump()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
    {
        DispatchMessageW(&message);
    }
}

LRESULT CALLBACK CEventInbox::WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message < WM_EVENT_CLIENT_NONEXIST || message > WM_EVENT_TRACE)
    {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    auto* const self = reinterpret_cast<CEventInbox*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    InboxMessage entry{message, wParam, lParam, {}, {}};
    if (message == WM_EVENT_TRACE)
    {
        entry.line = reinterpret_cast<const char*>(lParam);
        at_mem_free(reinterpret_cast<void*>(lParam));
    }
    else if (message != WM_EVENT_CLIENT_NONEXIST && message != WM_EVENT_INITIALIZE && lParam != 0)
    {
        entry.text = reinterpret_cast<const WCHAR*>(lParam);
        at_mem_free(reinterpret_cast<void*>(lParam));
    }
    self->m_messages.push_back(std::move(entry));
    return 0;
}
