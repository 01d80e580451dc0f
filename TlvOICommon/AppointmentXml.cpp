#include "AppointmentXml.h"

#include "DocumentText.h"

namespace
{

template <typename Document>
void WriteAttendee(Document& document, const AttendeeInfo& attendee)
{
    document.template Open<"attendee">();
    document.template Cdata<"name">(attendee.name);
    document.template Cdata<"email">(attendee.email);
    // The names are crossed: clients read the flags as attendType and the type as recipType.
    document.template Number<"attendType">(attendee.recipientFlags);
    document.template Number<"recipType">(attendee.recipientType);
    document.template Number<"responseType">(attendee.trackStatus);
    document.template Close<"attendee">();
}

template <typename Document>
void WriteIdentifiers(Document& document, const MapiItemRef& itemRef)
{
    document.template Hex<"entryID">(itemRef.entryId);
    document.template Number<"entryIDSize">(BlockSize(itemRef.entryId));
    document.template Hex<"instanceEntryID">(itemRef.instanceKey);
    document.template Number<"instanceIDSize">(BlockSize(itemRef.instanceKey));
    document.template Hex<"storeEntryID">(itemRef.storeEntryId);
    document.template Number<"storeIDSize">(BlockSize(itemRef.storeEntryId));
}

template <typename Document>
void WriteAppointment(Document& document, const MeetingInfo& meeting)
{
    document.template Open<"appointment">();
    document.template Number<"subKey">(meeting.subKey);
    document.template Cdata<"subject">(meeting.strName);
    document.template Cdata<"location">(meeting.location);
    document.template Cdata<"description">(meeting.strDesc);
    document.template Cdata<"hostName">(meeting.hostName);
    document.template Cdata<"hostEmail">(meeting.hostEmail);
    document.template Number<"duration">(meeting.duration);
    document.template Number<"meetStatus">(meeting.meetingStatus);
    document.template Flag<"isRecurrent">(meeting.isRecurring != 0);
    document.template Number<"recurrentType">(meeting.recurrenceType);
    document.template Unescaped<"recurrentPattern">(meeting.recurrencePattern);
    document.template Unescaped<"profile">(meeting.itemRef.profileName);
    document.template Unescaped<"store">(meeting.itemRef.storeName);
    document.template Flag<"isAllDayEvent">(meeting.isAllDay != 0);
    document.template Number<"responseStatus">(meeting.responseStatus);
    document.template Number<"busyStatus">(meeting.busyStatus);
    document.template Cdata<"tlvcOIEx">(meeting.calendarText);
    document.template Cdata<"desktoolsproperty">(meeting.strPropertyFromDeskTools);
    document.template Cdata<"UCCapabilities">(meeting.m_strUCCapabilities);
    document.template Time<"startTime">(meeting.start);
    document.template Time<"endTime">(meeting.end);
    document.template Time<"firstTime">(meeting.firstTime);
    document.template Hex<"recStateEntryID">(meeting.recurrenceState);
    document.template Number<"recStateIDSize">(BlockSize(meeting.recurrenceState));
    document.template Hex<"timeZoneEntryID">(meeting.timeZone);
    document.template Number<"timeZoneIDSize">(BlockSize(meeting.timeZone));
    WriteIdentifiers(document, meeting.itemRef);
    document.template Unescaped<"UId">(meeting.uid);
    document.template Cdata<"xaltdescription">(meeting.strXaltDesc);
    document.template Open<"attendees">();
    for (const AttendeeInfo& attendee : meeting.attendees)
    {
        WriteAttendee(document, attendee);
    }
    document.template Close<"attendees">();
    document.template Close<"appointment">();
}

const MeetingInfo& RecordOf(const MeetingInfo& meeting) noexcept
{
    return meeting;
}

const MeetingInfo& RecordOf(const SharedMeeting& meeting) noexcept
{
    return *meeting;
}

template <typename Document, typename Meeting>
void WriteAppointments(Document& document, std::span<const Meeting> meetings)
{
    document.template Open<"appointments">();
    for (const Meeting& meeting : meetings)
    {
        WriteAppointment(document, RecordOf(meeting));
    }
    document.template Close<"appointments">();
}

} // namespace

WString BuildAppointmentXml(const MeetingInfo& meeting)
{
    return BuildDocument([&](auto& document) { WriteAppointment(document, meeting); });
}

WString BuildAppointmentsXml(std::span<const MeetingInfo> meetings)
{
    return BuildDocument([&](auto& document) { WriteAppointments(document, meetings); });
}

CEventText BuildAppointmentsEvent(std::span<const SharedMeeting> meetings)
{
    return BuildEventDocument([&](auto& document) { WriteAppointments(document, meetings); });
}
