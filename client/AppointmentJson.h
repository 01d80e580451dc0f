#pragma once

#include <string>
#include <vector>

#include "AppointmentDocument.h"

namespace dtclient
{
/// The document for programs: {"appointments": [...]}, indented by two blanks, without a line end.
///
/// Keys are named and ordered like the elements of the server's document. Times are ISO 8601 UTC,
/// or null where the server has none; numbers and flags stand as such; attendees are a list of
/// objects. The order of the appointments is the server's.
std::string AppointmentsJson(const std::vector<Appointment>& appointments);

/// One line for programs that follow changes:
/// {"event": "...", "kind": "...", "appointments": [...]}.
std::string AppointmentEventJson(const std::string& event,
                                 const std::string& kind,
                                 const std::vector<Appointment>& appointments);
} // namespace dtclient
