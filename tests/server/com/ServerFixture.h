#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ComRef.h"
#include "dtOIEx64_i.h"
#include "FakeMailSwitch.h"
#include "FrameWindow.h"
#include "ModuleLock.h"
#include "MonitorHost.h"
#include "RecordingSink.h"
#include "TraceCapture.h"

/// A module that only counts, around a monitor that cannot end the process.
class CCountingModule final : public IModuleLock, public IMonitorHost
{
public:
    LONG Lock() noexcept override { return ++locks; }
    LONG Unlock() noexcept override { return --locks; }
    DWORD MainThreadId() const noexcept override { return m_threadId; }
    bool IsRegistrationRun() const noexcept override { return false; }
    void ReleaseMail() noexcept override {}
    void EndProcess() noexcept override {}

    LONG locks = 0;

private:
    const DWORD m_threadId = GetCurrentThreadId();
};

/// Makes EnsureWorkThread fail while it lives, as it does without memory.
class CNoWorkThread final
{
public:
    CNoWorkThread() noexcept;
    CNoWorkThread(const CNoWorkThread&) = delete;
    CNoWorkThread& operator=(const CNoWorkThread&) = delete;
    ~CNoWorkThread();
};

/// The client object with its work thread and monitor, in front of a mail system that answers at once.
class ServerTest : public testing::Test
{
protected:
    ServerTest();
    ~ServerTest() override;

    /// Makes the client object, as the class factory would, and a sink on it.
    void CreateClient();
    void ReleaseClient();
    /// Dispatches window messages until the sink has had `count` events.
    void PumpUntilEvents(std::size_t count);
    /// Dispatches what waits in the queue now.
    static void PumpWaiting();
    /// Waits until the work thread has run all that was queued before.
    static void DrainWork();
    /// Brings the fake mail system up and takes its OnInitialize.
    void BringUp();
    HRESULT Initialize(int mailType, const wchar_t* initType, const wchar_t* traceLocation = L"");
    HRESULT ReleaseApp(int hibernate);
    [[nodiscard]] bool Traced(int level, const std::string& message) const
    {
        return m_trace.Has(level, message);
    }

    CTraceCapture m_trace;
    CFrameWindow m_frame;
    CCountingModule m_module;
    CRecordingSink m_sink{DIID__IMapiDtClientEvents};
    CComRef<IMapiDtClient> m_client;
};
