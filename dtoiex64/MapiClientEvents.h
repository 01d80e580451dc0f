#pragma once

#include <windows.h>

#include <ocidl.h>

#include <cstddef>

#include "ConnectionPoint.h"
#include "MonitorClient.h"

/// The firing half of a client object: its connection point for _IMapiDtClientEvents, and one
/// operation for each event, which calls every sink advised on it.
///
/// A sink that fails, or whose process is gone, does not stop the others.
///
/// Owner:  a base of the object that is the container of the connection point.
/// Thread: the main thread. Calls come in while a sink in another process runs; what such a call does
///         to the connections is seen by the sinks still to be called.
class CProxy_IMapiDtClientEvents : public IMonitorClient
{
public:
    void Fire_OnCalendarUpdated(ULONG type, BSTR appointmentInfo) override;
    void Fire_OnInitialize(LONG result) override;
    void Fire_OnListAppointment(ULONG sequence, BSTR appointments) override;
    void Fire_OnListRecurrentInstance(ULONG sequence, BSTR appointments) override;
    void Fire_OnGetAppointment(ULONG sequence, BSTR appointment) override;
    void Fire_OnGetRecentEmails(ULONG sequence, BSTR emails) override;
    void Fire_OnResolveName(BSTR resolvedInfo) override;
    void Fire_OnGetContactDetail(ULONG sequence, BSTR contactInfo) override;
    void Fire_OnGetPersonalContact(BSTR contact) override;
    void Fire_OnContactUpdated(ULONG type, BSTR contacts) override;
    void Fire_OnSearchForContacts(BSTR searchResult) override;
    void Fire_OnResolveByUri(BSTR resolveString) override;
    void Fire_OnResolveByPhoneNumber(BSTR resolveString) override;
    void Fire_OnTrace(BSTR resolveString) override;

protected:
    explicit CProxy_IMapiDtClientEvents(IConnectionPointContainer& container) noexcept;
    ~CProxy_IMapiDtClientEvents() = default;

    CConnectionPoint m_point;

private:
    template <std::size_t Count>
    void Fire(DISPID id, const VARIANTARG (&arguments)[Count]);
    void FireText(DISPID id, BSTR text);
    void FireNumberAndText(DISPID id, ULONG number, BSTR text);
};
