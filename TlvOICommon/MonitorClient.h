#pragma once

#include <windows.h>

#include <oleauto.h>

/// A client object as the monitor sees it: something to fire events at.
///
/// Shape:  one operation for each event of _IMapiDtClientEvents. Texts are borrowed for the call.
/// Owner:  the monitor keeps plain pointers: an object takes itself out before it goes.
/// Thread: the main thread.
class IMonitorClient
{
public:
    IMonitorClient() = default;
    IMonitorClient(const IMonitorClient&) = delete;
    IMonitorClient& operator=(const IMonitorClient&) = delete;

    /// The object's identity, not counted.
    virtual IUnknown* MonitorUnknown() noexcept = 0;

    virtual void Fire_OnCalendarUpdated(ULONG type, BSTR appointmentInfo) = 0;
    virtual void Fire_OnInitialize(LONG result) = 0;
    virtual void Fire_OnListAppointment(ULONG sequence, BSTR appointments) = 0;
    virtual void Fire_OnListRecurrentInstance(ULONG sequence, BSTR appointments) = 0;
    virtual void Fire_OnGetAppointment(ULONG sequence, BSTR appointment) = 0;
    virtual void Fire_OnGetRecentEmails(ULONG sequence, BSTR emails) = 0;
    virtual void Fire_OnResolveName(BSTR resolvedInfo) = 0;
    virtual void Fire_OnGetContactDetail(ULONG sequence, BSTR contactInfo) = 0;
    virtual void Fire_OnGetPersonalContact(BSTR contact) = 0;
    virtual void Fire_OnContactUpdated(ULONG type, BSTR contacts) = 0;
    virtual void Fire_OnSearchForContacts(BSTR searchResult) = 0;
    virtual void Fire_OnResolveByUri(BSTR resolveString) = 0;
    virtual void Fire_OnResolveByPhoneNumber(BSTR resolveString) = 0;
    virtual void Fire_OnTrace(BSTR resolveString) = 0;

protected:
    ~IMonitorClient() = default;
};
