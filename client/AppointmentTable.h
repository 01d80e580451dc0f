#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "AppointmentDocument.h"

namespace dtclient
{
/// Turns UTC into the time of the machine.
using LocalClock = std::function<CalendarTime(const CalendarTime& utc)>;

/// The table for people: one line an appointment, in order of its start, times local.
///
/// Records by which the server reports a failed folder are left out; whoever prints the table says
/// so beside it. Without an appointment the text is empty.
std::string AppointmentsTable(std::vector<Appointment> appointments, const LocalClock& toLocal);

/// One line without a heading, for a change that has just come.
std::string AppointmentLine(const Appointment& appointment, const LocalClock& toLocal);

/// "45 min", "1 h 30 min", "2 days".
std::string DurationText(std::int64_t minutes);

/// The user's own answer: "organizer", "accepted" and so on; empty where none is asked.
std::string AnswerText(std::int64_t responseStatus);

/// "recurring, changed, cancelled, all day", as far as they apply.
std::string MarksText(const Appointment& appointment);
} // namespace dtclient
