#include "AppointmentXml.h"

#include "DocumentWriter.h"

namespace
{

void WriteAttendee(CDocumentWriter& writer, const AttendeeInfo& attendee)
{
    writer.Open<"attendee">();
    writer.CdataElement<"name">(attendee.name);
    writer.CdataElement<"email">(attendee.email);
    // The names are crossed: clients read the flags as attendType and the type as recipType.
    writer.NumberElement<"attendType">(attendee.recipientFlags);
    writer.NumberElement<"recipType">(attendee.recipientType);
    writer.NumberElement<"responseType">(attendee.trackStatus);
    writer.Close<"attendee">();
}

void WriteIdentifiers(CDocumentWriter& writer, const MapiItemRef& itemRef)
{
    writer.HexElement<"entryID">(itemRef.entryId);
    writer.NumberElement<"entryIDSize">(BlockSize(itemRef.entryId));
    writer.HexElement<"instanceEntryID">(itemRef.instanceKey);
    writer.NumberElement<"instanceIDSize">(BlockSize(itemRef.instanceKey));
    writer.HexElement<"storeEntryID">(itemRef.storeEntryId);
    writer.NumberElement<"storeIDSize">(BlockSize(itemRef.storeEntryId));
}

void WriteAppointment(CDocumentWriter& writer, const MeetingInfo& meeting)
{
    writer.Open<"appointment">();
    writer.NumberElement<"subKey">(meeting.subKey);
    writer.CdataElement<"subject">(meeting.strName);
    writer.CdataElement<"location">(meeting.location);
    writer.CdataElement<"description">(meeting.strDesc);
    writer.CdataElement<"hostName">(meeting.hostName);
    writer.CdataElement<"hostEmail">(meeting.hostEmail);
    writer.NumberElement<"duration">(meeting.duration);
    writer.NumberElement<"meetStatus">(meeting.meetingStatus);
    writer.FlagElement<"isRecurrent">(meeting.isRecurring != 0);
    writer.NumberElement<"recurrentType">(meeting.recurrenceType);
    writer.RawElement<"recurrentPattern">(meeting.recurrencePattern);
    writer.RawElement<"profile">(meeting.itemRef.profileName);
    writer.RawElement<"store">(meeting.itemRef.storeName);
    writer.FlagElement<"isAllDayEvent">(meeting.isAllDay != 0);
    writer.NumberElement<"responseStatus">(meeting.responseStatus);
    writer.NumberElement<"busyStatus">(meeting.busyStatus);
    writer.CdataElement<"tlvcOIEx">(meeting.calendarText);
    writer.CdataElement<"desktoolsproperty">(meeting.strPropertyFromDeskTools);
    writer.CdataElement<"UCCapabilities">(meeting.m_strUCCapabilities);
    writer.TimeElement<"startTime">(meeting.start);
    writer.TimeElement<"endTime">(meeting.end);
    writer.TimeElement<"firstTime">(meeting.firstTime);
    writer.HexElement<"recStateEntryID">(meeting.recurrenceState);
    writer.NumberElement<"recStateIDSize">(BlockSize(meeting.recurrenceState));
    writer.HexElement<"timeZoneEntryID">(meeting.timeZone);
    writer.NumberElement<"timeZoneIDSize">(BlockSize(meeting.timeZone));
    WriteIdentifiers(writer, meeting.itemRef);
    writer.RawElement<"UId">(meeting.uid);
    writer.CdataElement<"xaltdescription">(meeting.strXaltDesc);
    writer.Open<"attendees">();
    for (const AttendeeInfo& attendee : meeting.attendees)
    {
        WriteAttendee(writer, attendee);
    }
    writer.Close<"attendees">();
    writer.Close<"appointment">();
}

} // namespace

WString BuildAppointmentXml(const MeetingInfo& meeting)
{
    CDocumentWriter writer;
    WriteAppointment(writer, meeting);
    return writer.Take();
}

WString BuildAppointmentsXml(std::span<const MeetingInfo> meetings)
{
    CDocumentWriter writer;
    writer.Open<"appointments">();
    for (const MeetingInfo& meeting : meetings)
    {
        WriteAppointment(writer, meeting);
    }
    writer.Close<"appointments">();
    return writer.Take();
}
