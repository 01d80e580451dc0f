#pragma once

#include <windows.h>

#include <ocidl.h>

#include "CachedRefCount.h"
#include "dtOIEx64_i.h"
#include "Handle.h"
#include "MapiClientEvents.h"
#include "ModuleLock.h"
#include "MonitorHost.h"
#include "TypeLibDispatch.h"

/// The one object that desktop clients talk to.
///
/// It does no mail work: a method checks its arguments, takes a sequence id, binds the id to this
/// object and queues a task; the result comes back as an event. Only GetCurProfileInfo answers in the
/// call. Ten methods are empty for good: they stay for the clients that call them.
///
/// Owner:  one per process, kept by the class factory. The module counts its outside references.
/// Thread: the main thread, for everything.
/// Errors: E_FAIL is the only failure that a method gives.
class CMapiClient final : public ISupportErrorInfo,
                          public IConnectionPointContainer,
                          public CProxy_IMapiDtClientEvents,
                          public IMapiDtClient
{
public:
    CMapiClient(const CMapiClient&) = delete;
    CMapiClient& operator=(const CMapiClient&) = delete;

    /// A CreateObjectFunction for the class factory.
    static HRESULT Create(IModuleLock& module, IUnknown** object) noexcept;

    /// The class's part in the start and the stop of the process. Does nothing in a registration run.
    /// Thread: the main thread; the start makes the hidden window.
    /// Errors: false when there is no memory for the monitor.
    static bool ObjectMain(bool starting, const IMonitorHost& host) noexcept;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    // ISupportErrorInfo
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) noexcept override;

    // IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE
    EnumConnectionPoints(IEnumConnectionPoints** enumerator) noexcept override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid,
                                                  IConnectionPoint** point) noexcept override;

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index,
                                          LCID locale,
                                          ITypeInfo** info) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(
        REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id,
                                     REFIID reserved,
                                     LCID locale,
                                     WORD flags,
                                     DISPPARAMS* parameters,
                                     VARIANT* result,
                                     EXCEPINFO* exception,
                                     UINT* wrongArgument) noexcept override;

    // IMapiDtClient, in the order of its dispatch ids
    HRESULT STDMETHODCALLTYPE Initialize(TLVOI_MAILTYPE tlvMailType,
                                         BSTR bstrTraceLocation,
                                         BSTR bstrInitializationType) noexcept override;
    /// Leaves `bstrProfileInfo` as it is until the mail system is ready.
    HRESULT STDMETHODCALLTYPE GetCurProfileInfo(BSTR* bstrProfileInfo) noexcept override;
    HRESULT STDMETHODCALLTYPE SendMail(BSTR, BSTR, BSTR) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE ResolveName(BSTR) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE ListAppointment(oiexMapiFileTime* pftStart,
                                              oiexMapiFileTime* pftEnd,
                                              ULONG* pulSequenceID) noexcept override;
    HRESULT STDMETHODCALLTYPE ListRecurrentInstance(BSTR,
                                                    oiexMapiFileTime*,
                                                    oiexMapiFileTime*,
                                                    ULONG*) noexcept override
    {
        return Empty();
    }
    HRESULT STDMETHODCALLTYPE ListRecentEmail(ULONG, BSTR, ULONG, ULONG*) noexcept override
    {
        return Empty();
    }
    HRESULT STDMETHODCALLTYPE GetAppointment(BSTR, ULONG*) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE GetContactDetail(BSTR, ULONG*) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE GetPersonalContact() noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE SearchForContacts(BSTR, UINT) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE ResolveByUri(BSTR) noexcept override { return Empty(); }
    HRESULT STDMETHODCALLTYPE ResolveByPhoneNumber(BSTR) noexcept override { return Empty(); }
    /// Silences every event from here on, whatever the count says.
    HRESULT STDMETHODCALLTYPE ReleaseApp(VARIANT_BOOL vbHibernate) noexcept override;
    HRESULT STDMETHODCALLTYPE PostEvent(TLVOI_EVENTTYPE chEventType,
                                        BSTR bstrKey) noexcept override;

    // IMonitorClient
    IUnknown* MonitorUnknown() noexcept override { return static_cast<IMapiDtClient*>(this); }

private:
    explicit CMapiClient(IModuleLock& module);
    ~CMapiClient() = default;

    HRESULT FinalConstruct();
    void FinalRelease() noexcept;
    /// The one body of the empty methods: no effect, out values unwritten.
    static HRESULT Empty() noexcept { return S_OK; }

    CCachedRefCount m_refs;
    CTypeLibDispatch m_dispatch;
    CHandle m_hConnectEvent;
    ULONG m_nMapiRefCount = 0; ///< Initialize calls not yet matched by ReleaseApp
};
