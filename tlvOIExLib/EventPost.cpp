#include "EventPost.h"

#include <cstring>

#include "AtMemory.h"
#include "EventWindow.h"
#include "Trace.h"

void PostEventText(UINT message, WPARAM wParam, WStringView text, const char* handler) noexcept
{
    auto* const block = static_cast<WCHAR*>(at_mem_alloc((text.size() + 1) * sizeof(WCHAR)));
    if (block == nullptr)
    {
        if (handler != nullptr)
        {
            SEND_TRACE(0, handler, "%s, lpszXML is NULL !!", handler);
        }
        return;
    }
    if (!text.empty())
    {
        std::memcpy(block, text.data(), text.size() * sizeof(WCHAR));
    }
    block[text.size()] = 0;

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
