#pragma once

#include <windows.h>

namespace dtclient
{
/// The window by which the server knows that a client lives.
///
/// The server looks every two seconds for a top-level window of this class in the session, and ends
/// itself as soon as there is none. A client without a window of its own therefore owns this hidden
/// one for as long as it uses the server.
///
/// Thread: made and destroyed on the thread that pumps messages.
class CClientFrame
{
public:
    CClientFrame() = default;
    CClientFrame(const CClientFrame&) = delete;
    CClientFrame& operator=(const CClientFrame&) = delete;
    ~CClientFrame();

    /// Errors: the code of Windows as HRESULT.
    [[nodiscard]] HRESULT Create();

private:
    HWND m_window = nullptr;
};
} // namespace dtclient
