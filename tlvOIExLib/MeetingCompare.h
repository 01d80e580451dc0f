#pragma once

#include "AppointmentRecords.h"

/// Whether the client would see no difference worth an event between two records of one meeting.
///
/// Shape: seconds, host, zone, recurrence type and pattern, space, key and capabilities do not
///        count; neither does the case of addresses and of the two client properties.
[[nodiscard]] bool IsSameMeeting(const MeetingInfo& first, const MeetingInfo& second) noexcept;
