#include "MessagePump.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace dtclient
{
namespace
{
constexpr ULONGLONG kProbeIntervalMs = 2000;
constexpr ULONGLONG kNoEnd = std::numeric_limits<ULONGLONG>::max();

// The handler of Ctrl+C runs on a thread of the system's and takes no argument.
HANDLE g_interrupt = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD kind)
{
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT)
    {
        return FALSE;
    }
    // A second press ends the process the hard way: the first one was not heard.
    const bool first = WaitForSingleObject(g_interrupt, 0) == WAIT_TIMEOUT;
    SetEvent(g_interrupt);
    return first ? TRUE : FALSE;
}

void DispatchAll()
{
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
} // namespace

CMessagePump::CMessagePump() : m_interrupt(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    g_interrupt = m_interrupt;
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

CMessagePump::~CMessagePump()
{
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    g_interrupt = nullptr;
    CloseHandle(m_interrupt);
}

void CMessagePump::SetProbe(Probe probe)
{
    m_probe = std::move(probe);
}

PumpEnd CMessagePump::Run(const std::function<bool()>& done, std::chrono::milliseconds timeout)
{
    return RunUntil(done, GetTickCount64() + static_cast<ULONGLONG>(timeout.count()));
}

PumpEnd CMessagePump::Run(const std::function<bool()>& done)
{
    return RunUntil(done, kNoEnd);
}

PumpEnd CMessagePump::RunUntil(const std::function<bool()>& done, ULONGLONG endTick)
{
    ULONGLONG nextProbe = GetTickCount64() + kProbeIntervalMs;
    for (;;)
    {
        DispatchAll();
        if (done())
        {
            return PumpEnd::Done;
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= endTick)
        {
            return PumpEnd::TimedOut;
        }
        if (m_probe && now >= nextProbe)
        {
            m_probeResult = m_probe();
            if (FAILED(m_probeResult))
            {
                return PumpEnd::ServerLost;
            }
            nextProbe = GetTickCount64() + kProbeIntervalMs;
            continue; // the call has pumped messages of its own
        }
        const ULONGLONG wake = std::min(endTick, m_probe ? nextProbe : kNoEnd);
        const auto waitMs = static_cast<DWORD>(std::min<ULONGLONG>(wake - now, 60000));
        const DWORD reason =
            MsgWaitForMultipleObjectsEx(1, &m_interrupt, waitMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (reason == WAIT_OBJECT_0)
        {
            return PumpEnd::Interrupted;
        }
    }
}
} // namespace dtclient
