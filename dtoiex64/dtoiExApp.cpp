#include "dtoiExApp.h"

#include <objbase.h>

#include <new>

#include "ModulePath.h"
#include "QuitMessage.h"
#include "Registration.h"
#include "Resource.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr const wchar_t* kAppId = L"{D0418E03-DEDF-40BE-8DCD-9189B3197D23}";

} // namespace

CdtOIEx64Module::CdtOIEx64Module(std::wstring_view commandLine,
                                 std::span<const ObjectMapEntry> objects)
    : m_dwMainThreadID(GetCurrentThreadId()),
      m_verb(FindRegistrationVerb(SkipProgramPath(commandLine))), m_objects(objects),
      m_classObjects(objects.size())
{
}

LONG CdtOIEx64Module::Lock() noexcept
{
    const LONG count = ++m_nLockCnt;
    SEND_TRACE(3, "CdtOIEx64Module::Lock", "CtlvcOIExModule::Lock, m_nLockCnt:%ld", count);
    return count;
}

LONG CdtOIEx64Module::Unlock() noexcept
{
    const LONG count = --m_nLockCnt;
    SEND_TRACE(3, "CdtOIEx64Module::Unlock", "CtlvcOIExModule::Unlock, m_nLockCnt:[%ld]", count);
    if (count != 0)
    {
        return count;
    }
    ReleaseMail();
    if (m_bDelayShutdown)
    {
        m_bActivity = true;
        SetEvent(m_hEventShutdown.Get());
        return count;
    }
    SEND_TRACE(3,
               "CdtOIEx64Module::Unlock",
               "CtlvcOIExModule::Unlock, post WM_QUIT message to main thread");
    PostQuitTo(m_dwMainThreadID, "CdtOIEx64Module::Unlock", true);
    return count;
}

HRESULT CdtOIEx64Module::GetGITPtr(IGlobalInterfaceTable** table) noexcept
{
    if (table == nullptr)
    {
        return E_POINTER;
    }
    *table = nullptr;
    const std::scoped_lock hold(m_tableLock);
    if (!m_interfaceTable)
    {
        const HRESULT hr = CoCreateInstance(CLSID_StdGlobalInterfaceTable,
                                            nullptr,
                                            CLSCTX_INPROC_SERVER,
                                            IID_IGlobalInterfaceTable,
                                            m_interfaceTable.PutVoid());
        if (FAILED(hr))
        {
            return hr;
        }
    }
    *table = CComRef<IGlobalInterfaceTable>::Share(m_interfaceTable.Get()).Detach();
    return S_OK;
}

HRESULT CdtOIEx64Module::AddCommonRGSReplacements(ScriptReplacements& replacements) noexcept
try
{
    replacements[L"APPID"] = kAppId;
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

void CdtOIEx64Module::StartClasses() noexcept
{
    for (const ObjectMapEntry& entry : m_objects)
    {
        m_setupFailed = !entry.objectMain(true, *this) || m_setupFailed;
    }
}

void CdtOIEx64Module::StopClasses() noexcept
{
    for (const ObjectMapEntry& entry : m_objects)
    {
        entry.objectMain(false, *this);
    }
}

void CdtOIEx64Module::ReleaseMail() noexcept
{
    ReleaseWorkThread(false);
}

void CdtOIEx64Module::EndProcess() noexcept
{
    FlushTrace(kTraceFlushMs); // no library is told of this end
    TerminateProcess(GetCurrentProcess(), 0);
}

int CdtOIEx64Module::WinMain(int) noexcept
{
    if (m_setupFailed)
    {
        return -1;
    }
    bool entered = false;
    HRESULT hr = EnterApartment(entered);
    if (FAILED(hr))
    {
        return hr;
    }
    m_bComInitialized = entered;
    hr = IsRegistrationRun() ? RunVerb() : Serve();
    {
        // Not later: the table is COM's, and goes with it.
        const std::scoped_lock hold(m_tableLock);
        m_interfaceTable.Reset();
    }
    if (m_bComInitialized)
    {
        CoUninitialize();
    }
    return hr;
}

/// A single threaded apartment. One of the other kind is put up with only where the runtime of managed
/// code made it.
HRESULT CdtOIEx64Module::EnterApartment(bool& entered) noexcept
{
    const HRESULT hr = CoInitialize(nullptr);
    entered = SUCCEEDED(hr);
    if (hr == RPC_E_CHANGED_MODE && GetModuleHandleW(L"Mscoree.dll") != nullptr)
    {
        return S_OK;
    }
    return hr;
}

HRESULT CdtOIEx64Module::RunVerb() noexcept
try
{
    std::vector<UINT> scripts{IDR_APPID};
    for (const ObjectMapEntry& entry : m_objects)
    {
        scripts.push_back(entry.registryScript);
    }
    RegistrationData data{GetModuleHandleW(nullptr), ModulePath(nullptr), scripts, {}};
    const HRESULT hr = AddCommonRGSReplacements(data.replacements);
    if (FAILED(hr))
    {
        return hr;
    }
    switch (m_verb)
    {
    case RegistrationVerb::RegServer:
        return RegisterServer(data, false);
    case RegistrationVerb::RegServerPerUser:
        return RegisterServer(data, true);
    case RegistrationVerb::UnregServer:
        return UnregisterServer(data, false);
    case RegistrationVerb::UnregServerPerUser:
        return UnregisterServer(data, true);
    case RegistrationVerb::None:
        break;
    }
    return E_UNEXPECTED;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

HRESULT CdtOIEx64Module::Serve() noexcept
{
    HRESULT hr = RegisterClassObjects();
    if (SUCCEEDED(hr) && m_bDelayShutdown && !StartShutdownThread())
    {
        hr = E_FAIL;
    }
    if (SUCCEEDED(hr))
    {
        hr = CoResumeClassObjects();
    }
    if (SUCCEEDED(hr))
    {
        RunMessageLoop();
    }
    RevokeClassObjects();
    if (SUCCEEDED(hr) && m_bDelayShutdown)
    {
        Sleep(m_dwPause);
    }
    return hr;
}

HRESULT CdtOIEx64Module::RegisterClassObjects() noexcept
{
    for (std::size_t i = 0; i < m_objects.size(); i++)
    {
        ClassObject& object = m_classObjects[i];
        object.factory = CComRef<CSingletonFactory>::Adopt(
            new (std::nothrow) CSingletonFactory(*this, m_objects[i].create));
        if (!object.factory)
        {
            return E_OUTOFMEMORY;
        }
        const HRESULT hr = CoRegisterClassObject(*m_objects[i].clsid,
                                                 object.factory.Get(),
                                                 CLSCTX_LOCAL_SERVER,
                                                 REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED,
                                                 &object.registration);
        if (FAILED(hr))
        {
            return hr;
        }
    }
    return S_OK;
}

void CdtOIEx64Module::RevokeClassObjects() noexcept
{
    for (ClassObject& object : m_classObjects)
    {
        if (object.registration != 0)
        {
            CoRevokeClassObject(object.registration);
            object.registration = 0;
        }
        if (object.factory)
        {
            // The object goes now, while the monitor still stands.
            object.factory->DropObject();
            object.factory.Reset();
        }
    }
}

void CdtOIEx64Module::RunMessageLoop() noexcept
{
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool CdtOIEx64Module::StartShutdownThread() noexcept
{
    m_hEventShutdown.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!m_hEventShutdown)
    {
        return false;
    }
    const CHandle thread(CreateThread(nullptr, 0, ShutdownThreadProc, this, 0, nullptr));
    return static_cast<bool>(thread);
}

DWORD WINAPI CdtOIEx64Module::ShutdownThreadProc(void* module)
{
    auto* const self = static_cast<CdtOIEx64Module*>(module);
    WaitForSingleObject(self->m_hEventShutdown.Get(), INFINITE);
    self->m_hEventShutdown.Reset();
    PostThreadMessageW(self->m_dwMainThreadID, WM_QUIT, 0, 0);
    return 0;
}
