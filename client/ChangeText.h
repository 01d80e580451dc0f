#pragma once

#include <cstdint>
#include <string>

#include "AppointmentTable.h"
#include "Arguments.h"

namespace dtclient
{
/// "added", "deleted" or "updated", by the type word of a change event.
std::string ChangeKind(std::uint32_t type);

/// A change of the calendar as `watch` prints it, with its line end.
///
/// `document` is the event's text. One that is empty or cannot be read is said to be so rather than
/// passed over: the change itself is still news.
std::string CalendarChangeText(OutputForm form,
                               std::uint32_t type,
                               const std::string& document,
                               const LocalClock& toLocal);

/// A change of the contacts.
std::string ContactChangeText(OutputForm form, std::uint32_t type, const std::string& document);

/// Any other event: its name, its number (a result or a sequence id) and how much text it brought.
/// All clients of the server hear the answers to each of them.
std::string OtherEventText(OutputForm form,
                           const std::string& event,
                           std::uint32_t number,
                           const std::string& text);
} // namespace dtclient
