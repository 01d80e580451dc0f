#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "CalendarTime.h"

namespace dtclient
{
/// One recipient of an appointment.
struct Attendee
{
    std::string name;
    std::string email;
    std::int64_t attendType = 0;   ///< Recipient flags; 3 marks the host.
    std::int64_t recipType = 0;    ///< 1 required, 2 optional, 3 resource.
    std::int64_t responseType = 0; ///< As responseStatus of the appointment.
};

/// One appointment, or one instance of a series, as the server sends it.
///
/// Shape: texts are UTF-8, with the server's escaping undone; binary values are upper-case
///        hexadecimal text; times are UTC, and absent where the server has none.
struct Appointment
{
    std::int64_t subKey = 0; ///< Minutes since 1601, local to the series.
    std::string subject;
    std::string location;
    std::string description;
    std::string hostName;
    std::string hostEmail;
    std::int64_t duration = 0; ///< Minutes.
    std::int64_t meetStatus = 0;
    bool isRecurrent = false;
    std::int64_t recurrentType = 0;
    std::string recurrentPattern;
    std::string profile;
    std::string store;
    bool isAllDayEvent = false;
    std::int64_t responseStatus = 0;
    std::int64_t busyStatus = 0;
    std::string tlvcOIEx;
    std::string desktoolsproperty;
    std::string ucCapabilities;
    std::optional<CalendarTime> startTime;
    std::optional<CalendarTime> endTime;
    std::optional<CalendarTime> firstTime;
    std::string recStateEntryID;
    std::int64_t recStateIDSize = 0;
    std::string timeZoneEntryID;
    std::int64_t timeZoneIDSize = 0;
    std::string entryID;
    std::int64_t entryIDSize = 0;
    std::string instanceEntryID;
    std::int64_t instanceIDSize = 0;
    std::string storeEntryID;
    std::int64_t storeIDSize = 0;
    std::string uid;
    std::string xaltdescription;
    std::vector<Attendee> attendees;
};

/// One element of an appointment: its name in the document and the member that holds it.
struct AppointmentField
{
    const char* name;
    std::variant<std::int64_t Appointment::*,
                 bool Appointment::*,
                 std::string Appointment::*,
                 std::optional<CalendarTime> Appointment::*>
        member;
};

/// One element of an attendee.
struct AttendeeField
{
    const char* name;
    std::variant<std::int64_t Attendee::*, std::string Attendee::*> member;
};

/// All elements of an appointment but the attendees, in the order of the document.
std::span<const AppointmentField> AppointmentFields();

/// All elements of an attendee, in the order of the document.
std::span<const AttendeeField> AttendeeFields();

/// Where a document stopped making sense.
struct DocumentError
{
    std::size_t offset = 0; ///< Bytes of UTF-8 from the start of the document.
    std::string what;
};

/// Reads "<appointments>" or, from a change event, a single "<appointment>".
///
/// Unknown elements are skipped and missing ones keep their defaults, so that a client goes on
/// working with a server that writes more or less.
///
/// Errors: what stands in `error`; the records before the damage are left in `appointments`.
bool ParseAppointments(std::string_view document,
                       std::vector<Appointment>& appointments,
                       DocumentError& error);

/// True for the record by which the server says that it could not read one of the folders.
bool IsFolderFailure(const Appointment& appointment);

/// True for an instance that was moved or edited by itself.
///
/// An instance as the rule gives it carries the midnight of its day as sub key, a changed one its
/// original start. For a series that begins at midnight the two are the same, and nothing in the
/// document tells them apart: such an instance counts as unchanged.
bool IsChangedInstance(const Appointment& appointment);

/// True when the organizer has called the meeting off.
bool IsCancelled(const Appointment& appointment);
} // namespace dtclient
