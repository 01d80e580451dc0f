#include "ABEmailEntry.h"

AttendeeInfo AttendeeFromABEmailEntry(const ABEmailEntry& entry)
{
    AttendeeInfo attendee;
    attendee.entryId = entry.entryId;
    attendee.name = entry.displayName;
    attendee.email = entry.smtpAddress;
    attendee.address = entry.nativeAddress;
    attendee.addressType = entry.addressType;
    return attendee;
}

ABEmailEntry ABEmailEntryFromAttendee(const AttendeeInfo& attendee)
{
    ABEmailEntry entry;
    entry.entryId = attendee.entryId;
    entry.displayName = attendee.name;
    entry.smtpAddress = attendee.email;
    entry.nativeAddress = attendee.address;
    entry.addressType = attendee.addressType;
    return entry;
}
