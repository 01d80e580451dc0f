#include "EventWindow.h"

#include <atomic>

namespace
{

std::atomic<EventWindowProvider> g_provider{nullptr};

} // namespace

EventWindowProvider SetEventWindowProvider(EventWindowProvider provider) noexcept
{
    return g_provider.exchange(provider);
}

HWND EventWindow() noexcept
{
    const EventWindowProvider provider = g_provider.load();
    return provider != nullptr ? provider() : nullptr;
}
