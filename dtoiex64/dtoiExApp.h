#pragma once

#include <windows.h>

#include <objidl.h>

#include <atomic>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include "ComRef.h"
#include "Handle.h"
#include "ModuleLock.h"
#include "MonitorHost.h"
#include "ObjectMap.h"
#include "RegistrarScript.h"
#include "RegistrationVerb.h"

/// The executable as a COM module: its lock count, its class objects, its message loop, its
/// registration.
///
/// Owner:  one per process (StaticStart.cpp); everything else borrows it.
/// Thread: made and run by the main thread. Lock, Unlock and GetLockCount: any thread.
class CdtOIEx64Module final : public IModuleLock, public IMonitorHost
{
public:
    /// Takes the calling thread as the main thread. `commandLine` is the whole one, as
    /// GetCommandLineW gives it. `objects` outlives the module.
    explicit CdtOIEx64Module(std::wstring_view commandLine,
                             std::span<const ObjectMapEntry> objects = g_objectMap);
    CdtOIEx64Module(const CdtOIEx64Module&) = delete;
    CdtOIEx64Module& operator=(const CdtOIEx64Module&) = delete;
    virtual ~CdtOIEx64Module() = default;

    /// Counts an outside reference or a lock of the class factory.
    LONG Lock() noexcept override;
    /// At 0 releases the mail system, which may take ten seconds, and ends the message loop.
    LONG Unlock() noexcept override;
    virtual LONG GetLockCount() const noexcept { return m_nLockCnt.load(); }

    /// The process's standard global interface table, made on first use.
    /// Owner: `table` gets a reference of its own.
    virtual HRESULT GetGITPtr(IGlobalInterfaceTable** table) noexcept;
    /// Adds what every registration script of this module may name: "APPID".
    virtual HRESULT AddCommonRGSReplacements(ScriptReplacements& replacements) noexcept;

    /// Before wWinMain: starts what the classes need around them.
    void StartClasses() noexcept;
    /// Behind wWinMain: stops it again, and gives up what the module holds.
    void StopClasses() noexcept;

    /// In a registration run writes or removes the registration, else serves until the quit message.
    /// Returns the exit code of the process.
    int WinMain(int showCommand) noexcept;

    /// False: the last Unlock ends the message loop itself.
    void SetDelayShutdown(bool delay) noexcept { m_bDelayShutdown = delay; }

    // IMonitorHost
    DWORD MainThreadId() const noexcept override { return m_dwMainThreadID; }
    bool IsRegistrationRun() const noexcept override { return m_verb != RegistrationVerb::None; }
    void ReleaseMail() noexcept override;
    void EndProcess() noexcept override;

private:
    HRESULT EnterApartment(bool& entered) noexcept;
    HRESULT RunVerb() noexcept;
    HRESULT Serve() noexcept;
    HRESULT RegisterClassObjects() noexcept;
    void RevokeClassObjects() noexcept;
    bool StartShutdownThread() noexcept;
    static DWORD WINAPI ShutdownThreadProc(void* module);
    static void RunMessageLoop() noexcept;

    struct ClassObject
    {
        CComRef<CSingletonFactory> factory;
        DWORD registration = 0;
    };

    std::atomic<LONG> m_nLockCnt{0};
    const DWORD m_dwMainThreadID;
    const DWORD m_dwTimeOut =
        5000;                     ///< ms; how long a delayed shutdown would watch for new activity
    const DWORD m_dwPause = 1000; ///< ms between the last class object and the end of a delayed one
    bool m_bDelayShutdown = true;
    std::atomic<bool> m_bActivity{false};
    CHandle m_hEventShutdown;
    bool m_bComInitialized = false;
    bool m_setupFailed = false;
    const RegistrationVerb m_verb;
    const std::span<const ObjectMapEntry> m_objects;
    std::vector<ClassObject> m_classObjects;
    std::mutex m_tableLock; // guards m_interfaceTable
    CComRef<IGlobalInterfaceTable> m_interfaceTable;
};
