#pragma once

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <functional>
#include <string>

namespace dtclient
{
/// Dispatch ids of the server's events.
enum class EventId : DISPID
{
    CalendarUpdated = 1,
    Initialize = 2,
    ListAppointment = 3,
    ListRecurrentInstance = 4,
    GetAppointment = 5,
    GetRecentEmails = 6,
    ResolveName = 7,
    GetContactDetail = 8,
    GetPersonalContact = 9,
    ContactUpdated = 10,
    SearchForContacts = 11,
    ResolveByUri = 12,
    ResolveByPhoneNumber = 13,
    Trace = 14,
};

/// One event as it came.
struct ServerEvent
{
    EventId id = EventId::Trace;
    std::uint32_t number = 0; ///< Sequence id, change type or result, by event; else 0.
    std::wstring text;        ///< Empty where the event carries none.
};

/// Name of the event as in the interface description, such as "OnInitialize".
const char* EventName(EventId id);

/// Receives the server's events and hands each to one function.
///
/// Owner:  counts references from 1; the creator holds the first.
/// Thread: the server's calls arrive on the thread that advised the sink, inside its message loop.
class CEventSink final : public IDispatch
{
public:
    using Handler = std::function<void(const ServerEvent&)>;

    explicit CEventSink(Handler handler);
    CEventSink(const CEventSink&) = delete;
    CEventSink& operator=(const CEventSink&) = delete;

    /// From here on events are dropped: whoever owns what the handler uses is going away.
    void Close();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override;
    STDMETHODIMP GetIDsOfNames(
        REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id,
                        REFIID iid,
                        LCID locale,
                        WORD flags,
                        DISPPARAMS* parameters,
                        VARIANT* result,
                        EXCEPINFO* exception,
                        UINT* badArgument) noexcept override;

private:
    ~CEventSink() = default;

    volatile LONG m_refCount = 1;
    Handler m_handler;
};
} // namespace dtclient
