#include "ClientFrame.h"

namespace dtclient
{
namespace
{
constexpr const wchar_t* kFrameClass = L"Tlv_FrameWnd_OneStep_4AB81DDB_3EA4_4920_819F_AF9B4613D075";

HRESULT LastFailure()
{
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}
} // namespace

CClientFrame::~CClientFrame()
{
    if (m_window != nullptr)
    {
        DestroyWindow(m_window);
    }
}

HRESULT CClientFrame::Create()
{
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.hInstance = instance;
    description.lpszClassName = kFrameClass;
    if (RegisterClassW(&description) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
    {
        return LastFailure();
    }
    // Top level, never shown: a message-only window would not be found.
    m_window = CreateWindowExW(
        0, kFrameClass, L"dtclient", 0, 0, 0, 0, 0, nullptr, nullptr, instance, nullptr);
    return m_window != nullptr ? S_OK : LastFailure();
}
} // namespace dtclient
