#include "MonitorThread.h"

#include "EventMessages.h"
#include "Monitor.h"
#include "Trace.h"

namespace
{

constexpr DWORD kPollMs = 2000;
constexpr DWORD kGraceMs = 2000;
constexpr const char* kProcName = "ClientMonitorProc";

// An auto-reset event that lives as long as the process: made once, used by each thread in turn.
std::atomic<HANDLE> g_wake{nullptr};

HANDLE WakeEvent() noexcept
{
    HANDLE wake = g_wake.load();
    if (wake == nullptr)
    {
        wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        g_wake = wake;
    }
    return wake;
}

/// The client's frame window is gone: the orderly way out, and two seconds later the hard one.
void EndWithClient(IMonitorHost& host, DWORD disconnectCount)
{
    SEND_TRACE(3,
               kProcName,
               "######################connect process is not existed, Quit self process, "
               "dwDisconnectCount:[%d]",
               static_cast<int>(disconnectCount));
    const BOOL posted = PostMessageW(CClientMonitor::Window(), WM_EVENT_CLIENT_NONEXIST, 0, 0);
    SEND_TRACE(3, kProcName, "PostMessage WM_EVENT_CLIENT_NONEXIST return value:[%d]", posted);
    Sleep(kGraceMs);
    host.EndProcess();
}

} // namespace

std::atomic<LONG> g_bMonitorRun{0};
std::atomic<HANDLE> g_hMonitorThread{nullptr};

void StartClientMonitorThread() noexcept
{
    if (g_hMonitorThread.load() != nullptr)
    {
        return;
    }
    g_bMonitorRun = 1;
    WakeEvent();
    g_hMonitorThread = CreateThread(nullptr, 0, ClientMonitorProc, nullptr, 0, nullptr);
}

void AskClientMonitorThreadToStop() noexcept
{
    g_bMonitorRun = 0;
    if (HANDLE wake = g_wake.load(); wake != nullptr)
    {
        SetEvent(wake);
    }
}

void CloseClientMonitorThread(DWORD timeoutMs) noexcept
{
    HANDLE thread = g_hMonitorThread.exchange(nullptr);
    if (thread != nullptr)
    {
        WaitForSingleObject(thread, timeoutMs);
        CloseHandle(thread);
    }
}

DWORD WINAPI ClientMonitorProc(void*)
{
    SEND_TRACE(2, kProcName, "ClientMonitorProc");
    IMonitorHost* const host = CClientMonitor::Host();
    HANDLE wake = WakeEvent();
    if (host == nullptr || host->IsRegistrationRun() || wake == nullptr)
    {
        return 0;
    }
    DWORD disconnectCount = 0;
    while (g_bMonitorRun != 0)
    {
        if (WaitForSingleObject(wake, kPollMs) != WAIT_TIMEOUT)
        {
            continue;
        }
        if (FindWindowW(kClientFrameClass, nullptr) != nullptr)
        {
            continue;
        }
        if (g_bMonitorRun == 0)
        {
            break;
        }
        EndWithClient(*host, disconnectCount);
        disconnectCount++; // reached in tests only: the process is gone by now
    }
    return 0;
}
