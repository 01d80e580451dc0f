// A COM local server with one object that does nothing: what activation and a call cost at the least.
// The object answers IPersist, which the system itself knows how to carry between processes, and IDispatch,
// to send a text of any length to a sink of its caller.
#include <windows.h>

#include <oaidl.h>
#include <objbase.h>
#include <objidl.h>
#include <oleauto.h>

#include <algorithm>

#include "BareIdentity.h"

namespace
{
DWORD g_mainThread = 0;

class CBareObject final : public IPersist, public IDispatch
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        if (iid == IID_IUnknown || iid == IID_IPersist)
        {
            *object = static_cast<IPersist*>(this);
            AddRef();
            return S_OK;
        }
        if (iid == IID_IDispatch)
        {
            *object = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override
    {
        return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
    }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG count = InterlockedDecrement(&m_refCount);
        if (count == 0)
        {
            delete this;
            PostThreadMessageW(g_mainThread, WM_QUIT, 0, 0);
        }
        return static_cast<ULONG>(count);
    }
    STDMETHODIMP GetClassID(CLSID* clsid) override
    {
        *clsid = kBareClass;
        return S_OK;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) override
    {
        *info = nullptr;
        return DISP_E_BADINDEX;
    }
    STDMETHODIMP GetIDsOfNames(REFIID /*iid*/,
                               LPOLESTR* /*names*/,
                               UINT /*count*/,
                               LCID /*locale*/,
                               DISPID* /*ids*/) override
    {
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id,
                        REFIID /*iid*/,
                        LCID /*locale*/,
                        WORD /*flags*/,
                        DISPPARAMS* parameters,
                        VARIANT* /*result*/,
                        EXCEPINFO* /*exception*/,
                        UINT* /*badArgument*/) override
    {
        if (id != kBareSendEvent || parameters->cArgs != 2 ||
            parameters->rgvarg[1].vt != VT_DISPATCH || parameters->rgvarg[1].pdispVal == nullptr ||
            parameters->rgvarg[0].vt != VT_UI4)
        {
            return DISP_E_MEMBERNOTFOUND;
        }
        return SendEvent(*parameters->rgvarg[1].pdispVal, parameters->rgvarg[0].ulVal);
    }

private:
    ~CBareObject() = default;

    /// An event of the product's form: a text, and before it a number.
    static HRESULT SendEvent(IDispatch& sink, UINT length)
    {
        BSTR text = SysAllocStringLen(nullptr, length);
        if (text == nullptr)
        {
            return E_OUTOFMEMORY;
        }
        std::fill_n(text, length, L'x');
        VARIANTARG arguments[2] = {};
        arguments[0].vt = VT_BSTR;
        arguments[0].bstrVal = text;
        arguments[1].vt = VT_UI4;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        VARIANT result;
        VariantInit(&result);
        const HRESULT hr = sink.Invoke(kBareEvent,
                                       IID_NULL,
                                       LOCALE_USER_DEFAULT,
                                       DISPATCH_METHOD,
                                       &parameters,
                                       &result,
                                       nullptr,
                                       nullptr);
        VariantClear(&result);
        SysFreeString(text);
        return hr;
    }

    LONG m_refCount = 1;
};

// Lives on the stack of the process: counting would change nothing.
class CBareFactory final : public IClassFactory
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown* /*outer*/, REFIID iid, void** object) override
    {
        auto* const bare = new CBareObject;
        const HRESULT hr = bare->QueryInterface(iid, object);
        bare->Release();
        return hr;
    }
    STDMETHODIMP LockServer(BOOL /*lock*/) override { return S_OK; }
};
} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int)
{
    g_mainThread = GetCurrentThreadId();
    if (FAILED(CoInitialize(nullptr)))
    {
        return 1;
    }
    CBareFactory factory;
    DWORD registration = 0;
    const HRESULT hr = CoRegisterClassObject(
        kBareClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &registration);
    if (SUCCEEDED(hr))
    {
        MSG message{};
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        CoRevokeClassObject(registration);
    }
    CoUninitialize();
    return SUCCEEDED(hr) ? 0 : 1;
}
