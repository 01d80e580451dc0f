#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "PlatformTypes.h"

/// One message that reached the inbox, with its text taken out of the block.
struct InboxMessage
{
    UINT message;
    WPARAM wParam;
    LPARAM lParam;    ///< as it came; the block behind it is freed already
    WString text;     ///< of the messages with wide text
    std::string line; ///< of the trace message
};

/// An event window of the test's own, in place of the server's: collects what is posted to it and
/// frees the blocks.
///
/// Thread: made, read and destroyed on one thread; messages come from any.
class CEventInbox final
{
public:
    CEventInbox();
    CEventInbox(const CEventInbox&) = delete;
    CEventInbox& operator=(const CEventInbox&) = delete;
    ~CEventInbox();

    [[nodiscard]] HWND Window() const noexcept { return m_window; }

    /// Waits for the next message from 1524 to 1538. Fails the test and gives message 0 after a
    /// minute without one.
    InboxMessage Next();
    /// What has been posted by now.
    std::vector<InboxMessage> TakeAll();

private:
    static LRESULT CALLBACK WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void Pump();

    HWND m_window = nullptr;
    std::vector<InboxMessage> m_messages;
};
