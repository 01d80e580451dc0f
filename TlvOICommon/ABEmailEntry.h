#pragma once

#include "AppointmentRecords.h"
#include "BinaryBlock.h"
#include "PlatformTypes.h"

/// One address book entry: a person under all the addresses the directory knows.
struct ABEmailEntry
{
    BinaryBlock entryId;
    WString displayName;
    WString smtpAddress;
    WString nativeAddress; ///< PR_EMAIL_ADDRESS_W as it stands; X.500 for directory entries
    WString addressType;   ///< PR_ADDRTYPE_W
};

/// `entry` in the form in which the address map of the data store keeps it.
AttendeeInfo AttendeeFromABEmailEntry(const ABEmailEntry& entry);

/// The address book entry that the address map keeps as `attendee`.
ABEmailEntry ABEmailEntryFromAttendee(const AttendeeInfo& attendee);
