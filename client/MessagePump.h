#pragma once

#include <windows.h>

#include <chrono>
#include <functional>

namespace dtclient
{
enum class PumpEnd
{
    Done,        ///< The condition holds.
    TimedOut,    ///< The time is over.
    Interrupted, ///< The user pressed Ctrl+C.
    ServerLost,  ///< The probe failed.
};

/// Runs the message loop of this thread, in which the server's events arrive, until a condition
/// holds.
class CMessagePump
{
public:
    /// Asks the server for a sign of life; the result is that of the call.
    using Probe = std::function<HRESULT()>;

    /// From here on Ctrl+C ends the pumping instead of the process.
    CMessagePump();
    CMessagePump(const CMessagePump&) = delete;
    CMessagePump& operator=(const CMessagePump&) = delete;
    ~CMessagePump();

    /// Asked every two seconds while pumping. COM says nothing when a server's process dies between
    /// calls; without the probe a dead server would look like a silent one.
    void SetProbe(Probe probe);

    /// Result of the probe that failed.
    [[nodiscard]] HRESULT ProbeResult() const { return m_probeResult; }

    PumpEnd Run(const std::function<bool()>& done, std::chrono::milliseconds timeout);

    /// The same without a limit of time.
    PumpEnd Run(const std::function<bool()>& done);

private:
    PumpEnd RunUntil(const std::function<bool()>& done, ULONGLONG endTick);

    HANDLE m_interrupt;
    Probe m_probe;
    HRESULT m_probeResult = S_OK;
};
} // namespace dtclient
