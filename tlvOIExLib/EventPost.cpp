#include "EventPost.h"

#include "AtMemory.h"
#include "EventWindow.h"
#include "Trace.h"

void PostEventText(UINT message, WPARAM wParam, WStringView text, const char* handler) noexcept
{
    PostEventText(message, wParam, CEventText(text), handler);
}

void PostEventText(UINT message, WPARAM wParam, CEventText text, const char* handler) noexcept
{
    if (text.Data() == nullptr && !text.IsLost())
    {
        text = CEventText(WStringView{}); // nothing was built, and nothing is sent, terminated
    }
    if (text.IsLost())
    {
        if (handler != nullptr)
        {
            SEND_TRACE(0, handler, "%s, lpszXML is NULL !!", handler);
        }
        return;
    }
    auto* const block = text.Release();
    auto* const window = EventWindow();
    if (window == nullptr ||
        PostMessageW(window, message, wParam, reinterpret_cast<LPARAM>(block)) == FALSE)
    {
        at_mem_free(block);
    }
}

void PostEventStatus(UINT message, WPARAM wParam, ULONG status) noexcept
{
    auto* const window = EventWindow();
    if (window != nullptr)
    {
        PostMessageW(window, message, wParam, static_cast<LPARAM>(status));
    }
}
