#include "EventSink.h"

#include <oleauto.h>

#include <array>
#include <utility>

#include "dtOIEx64_i.h"

namespace dtclient
{
namespace
{
constexpr DISPID kLastEvent = static_cast<DISPID>(EventId::Trace);

// The arguments of all events: at most one number and one text, told apart by their type.
ServerEvent ReadEvent(DISPID id, const DISPPARAMS& parameters)
{
    ServerEvent event;
    event.id = static_cast<EventId>(id);
    for (UINT index = 0; index < parameters.cArgs; ++index)
    {
        const VARIANT& argument = parameters.rgvarg[index];
        if (argument.vt == VT_BSTR && argument.bstrVal != nullptr)
        {
            event.text.assign(argument.bstrVal, SysStringLen(argument.bstrVal));
        }
        else if (argument.vt == VT_UI4)
        {
            event.number = argument.ulVal;
        }
        else if (argument.vt == VT_I4)
        {
            event.number = static_cast<std::uint32_t>(argument.lVal);
        }
    }
    return event;
}
} // namespace

const char* EventName(EventId id)
{
    constexpr std::array<const char*, 15> kNames = {
        "event",
        "OnCalendarUpdated",
        "OnInitialize",
        "OnListAppointment",
        "OnListRecurrentInstance",
        "OnGetAppointment",
        "OnGetRecentEmails",
        "OnResolveName",
        "OnGetContactDetail",
        "OnGetPersonalContact",
        "OnContactUpdated",
        "OnSearchForContacts",
        "OnResolveByUri",
        "OnResolveByPhoneNumber",
        "OnTrace",
    };
    const auto index = static_cast<std::size_t>(id);
    return index < kNames.size() ? kNames[index] : kNames[0];
}

CEventSink::CEventSink(Handler handler) : m_handler(std::move(handler)) {}

void CEventSink::Close()
{
    m_handler = nullptr;
}

HRESULT CEventSink::QueryInterface(REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IDispatch || iid == DIID__IMapiDtClientEvents)
    {
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

ULONG CEventSink::AddRef() noexcept
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG CEventSink::Release() noexcept
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0)
    {
        delete this;
    }
    return static_cast<ULONG>(count);
}

HRESULT CEventSink::GetTypeInfoCount(UINT* count) noexcept
{
    if (count == nullptr)
    {
        return E_POINTER;
    }
    *count = 0;
    return S_OK;
}

HRESULT CEventSink::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) noexcept
{
    if (info != nullptr)
    {
        *info = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CEventSink::GetIDsOfNames(
    REFIID /*iid*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/, DISPID* /*ids*/) noexcept
{
    // The server fires by number.
    return E_NOTIMPL;
}

HRESULT CEventSink::Invoke(DISPID id,
                           REFIID /*iid*/,
                           LCID /*locale*/,
                           WORD /*flags*/,
                           DISPPARAMS* parameters,
                           VARIANT* /*result*/,
                           EXCEPINFO* /*exception*/,
                           UINT* /*badArgument*/) noexcept
try
{
    if (id < 1 || id > kLastEvent)
    {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (parameters == nullptr)
    {
        return E_POINTER;
    }
    if (m_handler)
    {
        m_handler(ReadEvent(id, *parameters));
    }
    return S_OK;
}
catch (...)
{
    return E_OUTOFMEMORY;
}
} // namespace dtclient
