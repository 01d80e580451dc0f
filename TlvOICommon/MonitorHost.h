#pragma once

#include <windows.h>

/// What the monitor needs of the process around it, which stands above this folder.
///
/// Thread: IsRegistrationRun and EndProcess from the monitor thread, the others from the main thread.
class IMonitorHost
{
public:
    IMonitorHost() = default;
    IMonitorHost(const IMonitorHost&) = delete;
    IMonitorHost& operator=(const IMonitorHost&) = delete;

    /// The thread whose message loop ends with WM_QUIT.
    [[nodiscard]] virtual DWORD MainThreadId() const noexcept = 0;
    /// True when the process only writes or removes its registration.
    [[nodiscard]] virtual bool IsRegistrationRun() const noexcept = 0;
    /// Releases the mail system for good, if there is a work thread. May take ten seconds.
    virtual void ReleaseMail() noexcept = 0;
    /// Ends the process at once with exit code 0.
    virtual void EndProcess() noexcept = 0;

protected:
    ~IMonitorHost() = default;
};
