// A COM local server with one object that does nothing: what activation and a call cost at the least.
// The object answers IPersist, which the system itself knows how to carry between processes.
#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include "BareIdentity.h"

namespace
{
DWORD g_mainThread = 0;

class CBareObject final : public IPersist
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

private:
    ~CBareObject() = default;

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
