#include "MapiClient.h"

#include <memory>
#include <new>

#include "ModulePath.h"
#include "Monitor.h"
#include "MonitorThread.h"
#include "TimeRecordInvoke.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr const wchar_t* kConnectEventName = L"DTEVENT_CONNECT_MAPI_RUN";
constexpr DWORD kMonitorStopMs = 3000;

} // namespace

CMapiClient::CMapiClient(IModuleLock& module)
    : CProxy_IMapiDtClientEvents(static_cast<IConnectionPointContainer&>(*this)), m_refs(module),
      m_dispatch(ModulePath(nullptr), IID_IMapiDtClient)
{
}

HRESULT CMapiClient::Create(IModuleLock& module, IUnknown** object) noexcept
try
{
    *object = nullptr;
    // A failure below, or the want of memory, takes the object along.
    struct Destroy
    {
        void operator()(CMapiClient* client) const noexcept { delete client; }
    };
    std::unique_ptr<CMapiClient, Destroy> client(new CMapiClient(module));
    const HRESULT hr = client->FinalConstruct();
    if (FAILED(hr))
    {
        return hr;
    }
    *object = client.release()->MonitorUnknown();
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

bool CMapiClient::ObjectMain(bool starting, const IMonitorHost& host) noexcept
{
    if (host.IsRegistrationRun())
    {
        return true;
    }
    if (starting)
    {
        const bool made = CClientMonitor::GetInstance() != nullptr;
        StartClientMonitorThread();
        return made;
    }
    AskClientMonitorThreadToStop();
    CClientMonitor::DeleteClientMonitorInstance();
    DestroyWorkThreadAtExit();
    CloseClientMonitorThread(kMonitorStopMs);
    return true;
}

HRESULT CMapiClient::FinalConstruct()
{
    SEND_TRACE(2, "CMapiClient::FinalConstruct", "CMapiClient::FinalConstruct");
    if (!EnsureWorkThread())
    {
        SEND_TRACE(0,
                   "CMapiClient::FinalConstruct",
                   "CMapiClient::FinalConstruct, new CWorkThread failed");
        return E_FAIL;
    }
    if (CClientMonitor* const monitor = CClientMonitor::GetInstance(); monitor != nullptr)
    {
        monitor->AddClient(this);
    }
    // Nothing waits on this event: that it exists tells other programs that a client object lives.
    m_hConnectEvent.Reset(OpenEventW(EVENT_ALL_ACCESS, FALSE, kConnectEventName));
    if (!m_hConnectEvent)
    {
        m_hConnectEvent.Reset(CreateEventW(nullptr, FALSE, FALSE, kConnectEventName));
    }
    return S_OK;
}

void CMapiClient::FinalRelease() noexcept
{
    SEND_TRACE(2, "CMapiClient::FinalRelease", "CMapiClient::FinalRelease");
    if (CClientMonitor* const monitor = CClientMonitor::GetInstance(); monitor != nullptr)
    {
        monitor->RemoveClient(this);
    }
    m_hConnectEvent.Reset();
}

HRESULT CMapiClient::QueryInterface(REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
        IsEqualIID(iid, IID_IMapiDtClient))
    {
        *object = static_cast<IMapiDtClient*>(this);
    }
    else if (IsEqualIID(iid, IID_ISupportErrorInfo))
    {
        *object = static_cast<ISupportErrorInfo*>(this);
    }
    else if (IsEqualIID(iid, IID_IConnectionPointContainer))
    {
        *object = static_cast<IConnectionPointContainer*>(this);
    }
    else
    {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG CMapiClient::AddRef() noexcept
{
    return m_refs.AddRef();
}

ULONG CMapiClient::Release() noexcept
{
    const ULONG count = m_refs.Release();
    if (count == 0)
    {
        FinalRelease();
        delete this;
    }
    return count;
}

HRESULT CMapiClient::InterfaceSupportsErrorInfo(REFIID iid) noexcept
{
    return IsEqualIID(iid, IID_IMapiDtClient) ? S_OK : S_FALSE;
}

HRESULT CMapiClient::EnumConnectionPoints(IEnumConnectionPoints** enumerator) noexcept
{
    return EnumerateConnectionPoints({&m_point}, enumerator);
}

HRESULT CMapiClient::FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept
{
    if (point == nullptr)
    {
        return E_POINTER;
    }
    *point = nullptr;
    if (!IsEqualIID(iid, DIID__IMapiDtClientEvents))
    {
        return CONNECT_E_NOCONNECTION;
    }
    *point = CComRef<IConnectionPoint>::Share(&m_point).Detach();
    return S_OK;
}

HRESULT CMapiClient::GetTypeInfoCount(UINT* count) noexcept
{
    return m_dispatch.GetTypeInfoCount(count);
}

HRESULT CMapiClient::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept
{
    return m_dispatch.GetTypeInfo(index, info);
}

HRESULT CMapiClient::GetIDsOfNames(
    REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept
{
    return m_dispatch.GetIDsOfNames(reserved, names, count, ids);
}

HRESULT CMapiClient::Invoke(DISPID id,
                            REFIID reserved,
                            LCID,
                            WORD flags,
                            DISPPARAMS* parameters,
                            VARIANT* result,
                            EXCEPINFO* exception,
                            UINT* wrongArgument) noexcept
{
    const HRESULT hr = m_dispatch.Invoke(static_cast<IMapiDtClient*>(this),
                                         id,
                                         reserved,
                                         flags,
                                         parameters,
                                         result,
                                         exception,
                                         wrongArgument);
    return hr == E_NOTIMPL && parameters != nullptr
               ? InvokeWithTimeRecords(*this, id, *parameters, result, exception)
               : hr;
}
