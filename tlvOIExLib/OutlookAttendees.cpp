// COutlookCtrl: every meeting gets a host, and every attendee an address that can be used.

#include <algorithm>

#include "EmailAddress.h"
#include "NarrowText.h"
#include "OutlookCtrl.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "COutlookCtrl::CheckAppointmentAttendees";
constexpr std::uint32_t kRecipientTypeTo = 1;

void CompleteEmail(AttendeeInfo& attendee)
{
    if (IsValidEmailAddress(attendee.email))
    {
        return;
    }
    if (attendee.addressType == L"SMTP")
    {
        attendee.email = attendee.address;
        return;
    }
    SEND_TRACE(0,
               kFunction,
               "Appointment's recipient[%s] with invalid SmtpAddress[%s],strExAddress[%s], "
               "emailType[%s], AttdType[%d]",
               NarrowText(attendee.name).c_str(),
               NarrowText(attendee.email).c_str(),
               NarrowText(attendee.address).c_str(),
               NarrowText(attendee.addressType).c_str(),
               static_cast<int>(attendee.recipientFlags));
}

void TakeHost(const AttendeeInfo& attendee, MeetingInfo& meeting)
{
    meeting.hostName = attendee.name;
    meeting.hostEmail = attendee.email;
    if (attendee.email.empty() && attendee.address.empty())
    {
        SEND_TRACE(0,
                   kFunction,
                   "Appointment's Host[%s] with empty  Mail Address[%s], meeting instance id[0x%x]",
                   NarrowText(attendee.name).c_str(),
                   NarrowText(attendee.email).c_str(),
                   meeting.subKey);
    }
    // A directory address of the mailbox owner ends in the local part of the mailbox's own address,
    // which is then the store's name.
    const WString& storeName = meeting.itemRef.storeName;
    if (meeting.hostEmail.empty() && IsValidEmailAddress(storeName))
    {
        const WStringView local = WStringView(storeName).substr(0, storeName.find(L'@'));
        if (WStringView(attendee.address).ends_with(local))
        {
            meeting.hostEmail = storeName;
        }
    }
}

} // namespace

void COutlookCtrl::CheckAppointmentAttendees(MeetingInfo& meeting) const
{
    bool isHostFound = false;
    for (AttendeeInfo& attendee : meeting.attendees)
    {
        CompleteEmail(attendee);
        if (attendee.recipientFlags == kRecipientFlagsHost)
        {
            TakeHost(attendee, meeting);
            isHostFound = true;
        }
    }
    if (isHostFound)
    {
        return;
    }
    if (meeting.meetingStatus == 0)
    {
        meeting.hostName = m_strUserName;
        meeting.hostEmail = m_strUserEmail;
    }
    else
    {
        meeting.hostName.clear();
        meeting.hostEmail.clear();
        SEND_TRACE(0, kFunction, "Find no host in attendee list!!");
    }
    AttendeeInfo host;
    host.name = meeting.hostName;
    host.email = meeting.hostEmail;
    host.addressType = L"SMTP";
    host.recipientType = kRecipientTypeTo;
    host.recipientFlags = kRecipientFlagsHost;
    meeting.attendees.push_back(std::move(host));
}
