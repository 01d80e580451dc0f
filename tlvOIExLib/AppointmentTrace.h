#pragma once

#include <string>

#include "AppointmentRecords.h"

/// "name=[...], rectype=[...], ..." of a record, for traces. The name is in base64.
std::string AppointmentFacts(const MeetingInfo& meeting);

/// `text` for a trace line: of more than ten characters only the first and the last five stay, and
/// each one between becomes a star.
WString MaskedText(WStringView text);
