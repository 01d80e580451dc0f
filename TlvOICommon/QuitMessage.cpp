#include "QuitMessage.h"

#include "Trace.h"

void PostQuitTo(DWORD threadId, const char* function, bool withColon)
{
    constexpr DWORD kPauseMs = 1000;
    for (;;)
    {
        const BOOL posted = PostThreadMessageW(threadId, WM_QUIT, 0, 0);
        SEND_TRACE(
            3, function, "PostThreadMessage return value%s[%d]", withColon ? ":" : "", posted);
        if (posted != FALSE)
        {
            return;
        }
        Sleep(kPauseMs);
    }
}
