// Lists one day of the user's calendar: the whole of a client, without any helper.
#include <windows.h>

#include <ocidl.h>

#include <cstdio>
#include <string>

#include "dtOIEx64_i.h" // generated from idl/dtOIEx64.idl, as are the identifiers

namespace
{
constexpr const wchar_t* kFrameClass = L"Tlv_FrameWnd_OneStep_4AB81DDB_3EA4_4920_819F_AF9B4613D075";

// The sink: the server calls Invoke for each event, on the thread that advised it.
class CSink final : public IDispatch
{
public:
    bool initialized = false;
    LONG result = 0;
    bool listed = false;
    std::wstring document;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        const bool known =
            iid == IID_IUnknown || iid == IID_IDispatch || iid == DIID__IMapiDtClientEvents;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; } // lives on the stack of wmain
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL; // the server fires by number
    }
    STDMETHODIMP Invoke(
        DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) override
    {
        if (id == 2) // OnInitialize(lResult)
        {
            result = parameters->rgvarg[0].lVal;
            initialized = true;
        }
        else if (id == 3) // OnListAppointment(ulSequenceID, bstrAppointments): the last comes first
        {
            document = parameters->rgvarg[0].bstrVal;
            listed = true;
        }
        return S_OK;
    }
};

// Events arrive while this thread takes messages.
void PumpUntil(const bool& done)
{
    MSG message{};
    while (!done && GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// The window is local time, written as a FILETIME without conversion.
oiexMapiFileTime LocalTime(WORD year, WORD month, WORD day)
{
    SYSTEMTIME date{};
    date.wYear = year;
    date.wMonth = month;
    date.wDay = day;
    FILETIME time{};
    SystemTimeToFileTime(&date, &time);
    return {time.dwLowDateTime, time.dwHighDateTime};
}

HRESULT ListOneDay(IMapiDtClient* server, CSink& sink)
{
    BSTR trace = SysAllocString(L"");
    BSTR type = SysAllocString(L"CALENDARING");
    HRESULT hr = server->Initialize(TLVOIMAILTYPE_OFFICEOUTLOOK, trace, type);
    SysFreeString(type);
    SysFreeString(trace);
    if (FAILED(hr))
    {
        return hr;
    }
    PumpUntil(sink.initialized);
    if (sink.result != 0)
    {
        return sink.result;
    }
    oiexMapiFileTime start = LocalTime(2020, 1, 1);
    oiexMapiFileTime end = LocalTime(2020, 1, 2);
    unsigned long sequence = 0;
    hr = server->ListAppointment(&start, &end, &sequence);
    if (SUCCEEDED(hr))
    {
        PumpUntil(sink.listed);
    }
    return hr;
}
} // namespace

int wmain()
{
    // 1. The frame window. Without it the server ends two seconds after its start.
    WNDCLASSW frame{};
    frame.lpfnWndProc = DefWindowProcW;
    frame.lpszClassName = kFrameClass;
    RegisterClassW(&frame);
    CreateWindowExW(0, kFrameClass, L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);

    // 2. The object, and a sink on its connection point.
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IMapiDtClient* server = nullptr;
    HRESULT hr = CoCreateInstance(CLSID_MapiDtClient,
                                  nullptr,
                                  CLSCTX_LOCAL_SERVER,
                                  IID_IMapiDtClient,
                                  reinterpret_cast<void**>(&server));
    if (SUCCEEDED(hr))
    {
        CSink sink;
        DWORD cookie = 0;
        IConnectionPointContainer* container = nullptr;
        IConnectionPoint* point = nullptr;
        server->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container));
        container->FindConnectionPoint(DIID__IMapiDtClientEvents, &point);
        point->Advise(&sink, &cookie);

        // 3. The work.
        hr = ListOneDay(server, sink);
        std::printf("0x%08lX\n%ls\n", static_cast<unsigned long>(hr), sink.document.c_str());

        // 4. Let go. The server ends with the last reference.
        point->Unadvise(cookie);
        point->Release();
        container->Release();
        server->Release();
    }
    CoUninitialize();
    return SUCCEEDED(hr) ? 0 : 1;
}
