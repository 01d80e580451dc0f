#include "MeetingCompare.h"

#include <algorithm>

#include "OrdinalText.h"

namespace
{

bool IsSameMinute(const SYSTEMTIME& first, const SYSTEMTIME& second) noexcept
{
    return first.wYear == second.wYear && first.wMonth == second.wMonth &&
           first.wDay == second.wDay && first.wHour == second.wHour &&
           first.wMinute == second.wMinute;
}

bool IsSameAttendee(const AttendeeInfo& first, const AttendeeInfo& second) noexcept
{
    return EqualIgnoringCase(first.email, second.email) && first.trackStatus == second.trackStatus;
}

bool HasSameNumbers(const MeetingInfo& first, const MeetingInfo& second) noexcept
{
    return first.duration == second.duration && first.meetingStatus == second.meetingStatus &&
           first.isAllDay == second.isAllDay && first.responseStatus == second.responseStatus &&
           first.busyStatus == second.busyStatus && first.isRecurring == second.isRecurring;
}

bool HasSameTexts(const MeetingInfo& first, const MeetingInfo& second) noexcept
{
    return first.strName == second.strName && first.location == second.location &&
           first.strDesc == second.strDesc && first.strXaltDesc == second.strXaltDesc &&
           EqualIgnoringCase(first.calendarText, second.calendarText) &&
           EqualIgnoringCase(first.strPropertyFromDeskTools, second.strPropertyFromDeskTools);
}

} // namespace

bool IsSameMeeting(const MeetingInfo& first, const MeetingInfo& second) noexcept
{
    return IsSameMinute(first.start, second.start) && IsSameMinute(first.end, second.end) &&
           HasSameTexts(first, second) && HasSameNumbers(first, second) &&
           first.uid == second.uid && first.recurrenceState == second.recurrenceState &&
           std::equal(first.attendees.begin(),
                      first.attendees.end(),
                      second.attendees.begin(),
                      second.attendees.end(),
                      IsSameAttendee);
}
