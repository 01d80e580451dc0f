#pragma once

#include <span>

#include "AppointmentRecords.h"
#include "EventText.h"
#include "PlatformTypes.h"

/// The appointment documents for the client.
///
/// Shape: UTF-16 text without declaration and without white space between elements; every element
///        always stands there, and always in the same order. Texts in CDATA sections are escaped as
///        well; recurrentPattern, profile, store and UId are not escaped at all. Times begin with
///        the month.

/// One <appointment>.
WString BuildAppointmentXml(const MeetingInfo& meeting);

/// <appointments> around one <appointment> for each record, in their order.
WString BuildAppointmentsXml(std::span<const MeetingInfo> meetings);
/// The same of shared records, none of them null, ready to be posted: a listing can be of hundreds of
/// megabytes.
CEventText BuildAppointmentsEvent(std::span<const SharedMeeting> meetings);
