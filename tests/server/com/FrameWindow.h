#pragma once

#include <windows.h>

#include "MonitorThread.h"

/// A window of the desktop client's frame class, owned by the thread that makes it.
class CFrameWindow final
{
public:
    CFrameWindow()
    {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.lpszClassName = kClientFrameClass;
        RegisterClassW(&windowClass);
        m_window = CreateWindowExW(
            0, kClientFrameClass, L"any title", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    }
    CFrameWindow(const CFrameWindow&) = delete;
    CFrameWindow& operator=(const CFrameWindow&) = delete;
    ~CFrameWindow() { Close(); }

    void Close()
    {
        if (m_window != nullptr)
        {
            DestroyWindow(m_window);
            m_window = nullptr;
        }
    }
    [[nodiscard]] bool Stands() const { return m_window != nullptr; }

private:
    HWND m_window;
};
