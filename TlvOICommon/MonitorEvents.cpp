// The event half of the client monitor: the window procedure, the firing, and the way out when the
// client is gone. All of it runs on the main thread.

#include <memory>
#include <new>
#include <string>

#include "AtMemory.h"
#include "Bstr.h"
#include "EventMessages.h"
#include "MapiDataStore.h"
#include "Monitor.h"
#include "NarrowText.h"
#include "QuitMessage.h"
#include "Trace.h"

namespace
{

struct AtMemoryFree
{
    void operator()(void* block) const noexcept { at_mem_free(block); }
};

CBstr MakeBstr(const wchar_t* text)
{
    CBstr made = CBstr::Adopt(SysAllocString(text));
    if (made.IsNull())
    {
        throw std::bad_alloc();
    }
    return made;
}

} // namespace

LRESULT CALLBACK CClientMonitor::WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* const monitor =
        reinterpret_cast<CClientMonitor*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (IsWindow(window) == FALSE || message < WM_EVENT_CLIENT_NONEXIST ||
        message > WM_EVENT_TRACE || monitor == nullptr)
    {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try
    {
        monitor->HandleWindowMessage(message, wParam, lParam);
    }
    catch (...)
    {
        // The event is lost, for want of memory as a rule; nothing may be thrown through the system's
        // frames.
    }
    return 0;
}

void CClientMonitor::HandleWindowMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_EVENT_CLIENT_NONEXIST)
    {
        HandleEventMessage();
        return;
    }
    const auto word = static_cast<ULONG>(wParam);
    const bool silent = MapiDataStore().IsReleasing();
    if (message == WM_EVENT_INITIALIZE)
    {
        if (!silent)
        {
            FireInitialize(word, static_cast<LONG>(lParam));
        }
        return;
    }
    const std::unique_ptr<void, AtMemoryFree> text(reinterpret_cast<void*>(lParam));
    if (text == nullptr || silent)
    {
        return;
    }
    if (message == WM_EVENT_TRACE)
    {
        FireTrace(static_cast<const char*>(text.get()));
    }
    else
    {
        FireText(message, word, static_cast<const wchar_t*>(text.get()));
    }
}

void CClientMonitor::FireText(UINT message, ULONG word, const wchar_t* text)
{
    const CBstr owner = MakeBstr(text);
    wchar_t* const info = owner.Get();
    // The id stays mapped behind the events of listings, single items and recent mail; behind
    // OnListAppointment and the events that carry no id it is unmapped.
    switch (message)
    {
    case WM_EVENT_CALENDAR_UPDATED:
        FireToAll([=](IMonitorClient& client) { client.Fire_OnCalendarUpdated(word, info); });
        break;
    case WM_EVENT_CONTACT_UPDATED:
        FireToAll([=](IMonitorClient& client) { client.Fire_OnContactUpdated(word, info); });
        break;
    case WM_EVENT_RECENT_EMAILS:
        FireToOwner(word, false, [=](IMonitorClient& client) {
            client.Fire_OnGetRecentEmails(word, info);
        });
        break;
    case WM_EVENT_LIST_APPOINTMENT:
        FireToOwner(
            word, true, [=](IMonitorClient& client) { client.Fire_OnListAppointment(word, info); });
        break;
    case WM_EVENT_LIST_RECURRENT:
        FireToOwner(word, false, [=](IMonitorClient& client) {
            client.Fire_OnListRecurrentInstance(word, info);
        });
        break;
    case WM_EVENT_GET_APPOINTMENT:
        FireToOwner(
            word, false, [=](IMonitorClient& client) { client.Fire_OnGetAppointment(word, info); });
        break;
    case WM_EVENT_CONTACT_DETAIL:
        FireToOwner(word, false, [=](IMonitorClient& client) {
            client.Fire_OnGetContactDetail(word, info);
        });
        break;
    case WM_EVENT_RESOLVE_NAME:
        FireToOwner(word, true, [=](IMonitorClient& client) { client.Fire_OnResolveName(info); });
        break;
    case WM_EVENT_PERSONAL_CONTACT:
        FireToOwner(
            word, true, [=](IMonitorClient& client) { client.Fire_OnGetPersonalContact(info); });
        break;
    case WM_EVENT_SEARCH_CONTACTS:
        FireToOwner(
            word, true, [=](IMonitorClient& client) { client.Fire_OnSearchForContacts(info); });
        break;
    case WM_EVENT_RESOLVE_BY_URI:
        FireToOwner(word, true, [=](IMonitorClient& client) { client.Fire_OnResolveByUri(info); });
        break;
    case WM_EVENT_RESOLVE_BY_PHONE:
        FireToOwner(
            word, true, [=](IMonitorClient& client) { client.Fire_OnResolveByPhoneNumber(info); });
        break;
    default:
        break;
    }
}

void CClientMonitor::FireInitialize(ULONG sequence, LONG result)
{
    FireToOwner(sequence, true, [=](IMonitorClient& client) {
        SEND_TRACE(3, "CClientMonitor::Fire_OnInitialize", "pMapiClient->Fire_OnInitialize");
        client.Fire_OnInitialize(result);
    });
}

void CClientMonitor::FireTrace(const char* text)
{
    const CBstr owner = MakeBstr(WidenText(text).c_str());
    wchar_t* const line = owner.Get();
    FireToAll([=](IMonitorClient& client) { client.Fire_OnTrace(line); });
}

template <typename Fire>
void CClientMonitor::FireToOwner(ULONG sequence, bool unmap, Fire fire)
{
    PinnedClient target{};
    {
        const std::scoped_lock hold(m_Lock);
        if (!FindClientBySequence(sequence, target.client))
        {
            return;
        }
        target.reference = CComRef<IUnknown>::Share(target.client->MonitorUnknown());
    }
    fire(*target.client);
    if (unmap)
    {
        UnmapSequence(sequence);
    }
}

template <typename Fire>
void CClientMonitor::FireToAll(Fire fire)
{
    // While a sink in another process runs, calls come in on this thread: a client may release its
    // last reference, or a new one come up. Hence a copy, with a second look at each client.
    const std::scoped_lock hold(m_Lock);
    for (const PinnedClient& target : PinClients())
    {
        if (IsClient(target.client))
        {
            fire(*target.client);
        }
    }
}

std::vector<CClientMonitor::PinnedClient> CClientMonitor::PinClients() const
{
    std::vector<PinnedClient> pinned;
    const std::scoped_lock hold(m_Lock);
    pinned.reserve(m_Clients.size());
    for (IMonitorClient* const client : m_Clients)
    {
        pinned.push_back({client, CComRef<IUnknown>::Share(client->MonitorUnknown())});
    }
    return pinned;
}

void CClientMonitor::HandleEventMessage()
{
    if (IMonitorHost* const host = Host(); host != nullptr)
    {
        host->ReleaseMail();
    }
    {
        const std::scoped_lock hold(m_Lock);
        for (const PinnedClient& target : PinClients())
        {
            const auto unknown = CComRef<IUnknown>::Query(target.reference.Get());
            if (unknown)
            {
                SEND_TRACE(3, "CClientMonitor::HandleEventMessage", "call CoDisconnectObject");
                CoDisconnectObject(unknown.Get(), 0);
            }
        }
    }
    ForceExit();
}

void CClientMonitor::ForceExit()
{
    SEND_TRACE(2,
               "CClientMonitor::ForceExit",
               "#######################CClientMonitor::ForceExit##########################");
    if (const IMonitorHost* const host = Host(); host != nullptr)
    {
        PostQuitTo(host->MainThreadId(), "CClientMonitor::ForceExit", false);
    }
}
