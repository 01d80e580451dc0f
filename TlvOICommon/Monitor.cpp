#include "Monitor.h"

#include <algorithm>
#include <atomic>
#include <new>

#include "EventWindow.h"
#include "Trace.h"

namespace
{

constexpr const wchar_t* kWindowClass = L"Tlv_OI_EXE_2EC77A10-29E1-4d80-B7F7-778072404185";
constexpr const wchar_t* kWindowName = L"ClientMonitorWnd";

std::atomic<IMonitorHost*> g_host{nullptr};
std::atomic<CClientMonitor*> g_pClientMonitor{nullptr};
// Beside the object, so that a thread that is late never reads the deleted monitor.
std::atomic<HWND> g_eventWindow{nullptr};

HWND ProvideEventWindow() noexcept
{
    CClientMonitor::GetInstance();
    return g_eventWindow.load();
}

} // namespace

void CClientMonitor::SetHost(IMonitorHost* host) noexcept
{
    g_host = host;
    SetEventWindowProvider(host != nullptr ? ProvideEventWindow : nullptr);
}

IMonitorHost* CClientMonitor::Host() noexcept
{
    return g_host.load();
}

CClientMonitor* CClientMonitor::GetInstance() noexcept
{
    CClientMonitor* monitor = g_pClientMonitor.load();
    if (monitor == nullptr && g_host.load() != nullptr)
    {
        monitor = new (std::nothrow) CClientMonitor;
        g_pClientMonitor = monitor;
        if (monitor != nullptr)
        {
            monitor
                ->CreateEventWindow(); // behind the store: what traces from here finds the monitor
        }
    }
    return monitor;
}

void CClientMonitor::DeleteClientMonitorInstance() noexcept
{
    SEND_TRACE(2,
               "CClientMonitor::DeleteClientMonitorInstance",
               " CClientMonitor::DeleteClientMonitorInstance");
    SetHost(nullptr);
    delete g_pClientMonitor.exchange(nullptr);
}

HWND CClientMonitor::Window() noexcept
{
    return g_eventWindow.load();
}

CClientMonitor::CClientMonitor() = default;

CClientMonitor::~CClientMonitor()
{
    {
        const std::scoped_lock hold(m_Lock);
        m_Clients.clear();
        m_SeqMap.clear();
    }
    g_eventWindow = nullptr;
    if (IsWindow(m_hWnd) != FALSE)
    {
        SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, 0);
        DestroyWindow(m_hWnd);
    }
}

void CClientMonitor::CreateEventWindow()
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WndProc;
    windowClass.lpszClassName = kWindowClass;
    RegisterClassW(&windowClass); // fails when it is registered already, which is as good
    m_hWnd = CreateWindowExW(0,
                             kWindowClass,
                             kWindowName,
                             0,
                             CW_USEDEFAULT,
                             CW_USEDEFAULT,
                             CW_USEDEFAULT,
                             CW_USEDEFAULT,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr);
    if (m_hWnd != nullptr)
    {
        SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    g_eventWindow = m_hWnd;
}

ULONG CClientMonitor::NextSequence()
{
    const std::scoped_lock hold(m_Lock);
    return m_nNextSequence++;
}

void CClientMonitor::AddClient(IMonitorClient* client)
{
    const std::scoped_lock hold(m_Lock);
    if (client != nullptr && !IsClient(client))
    {
        m_Clients.push_back(client);
    }
}

void CClientMonitor::RemoveClient(IMonitorClient* client)
{
    const std::scoped_lock hold(m_Lock);
    const auto found = std::find(m_Clients.begin(), m_Clients.end(), client);
    if (client != nullptr && found != m_Clients.end())
    {
        m_Clients.erase(found);
    }
}

bool CClientMonitor::IsClient(const IMonitorClient* client) const
{
    const std::scoped_lock hold(m_Lock);
    return std::find(m_Clients.begin(), m_Clients.end(), client) != m_Clients.end();
}

void CClientMonitor::MapSequence(ULONG sequence, IMonitorClient* client)
{
    const std::scoped_lock hold(m_Lock);
    if (client != nullptr && IsClient(client))
    {
        m_SeqMap.insert_or_assign(sequence, client);
    }
}

void CClientMonitor::UnmapSequence(ULONG sequence)
{
    const std::scoped_lock hold(m_Lock);
    m_SeqMap.erase(sequence);
}

bool CClientMonitor::FindClientBySequence(ULONG sequence, IMonitorClient*& client) const
{
    const std::scoped_lock hold(m_Lock);
    const auto found = m_SeqMap.find(sequence);
    if (found == m_SeqMap.end() || found->second == nullptr || !IsClient(found->second))
    {
        return false;
    }
    client = found->second;
    return true;
}
