#pragma once

#include <vector>

#include "AppointmentRecords.h"
#include "MapiHeaders.h"

/// Text that stands in a body field when the store would not give the body.
inline constexpr WStringView kBodyNotRead = L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI";

/// Reads calendar messages into records.
///
/// Shape:  a mix-in without data; what it reads comes from the message alone.
/// Owner:  messages are borrowed for the call.
/// Thread: the work thread.
/// Errors: an absent property leaves its field at its default; nothing read here is fatal.
class CMAPIMessageBase
{
protected:
    CMAPIMessageBase() = default;
    ~CMAPIMessageBase() = default;

    /// Reads all but the recipients. `info.start` is left alone; `info.firstTime` holds the start.
    /// Always true.
    static bool GetMAPIAppointmentInfo(IMessage* message, MeetingInfo& info);

    /// Appends the recipients that have an address, with a pause of one millisecond after each row,
    /// so that a large meeting does not starve the mail client.
    static void GetMAPIApptAttenddeeList(IMessage* message, std::vector<AttendeeInfo>& attendees);

    /// Looks through the embedded messages of a series for one whose first time lies in the window,
    /// both ends included. With several the last one is taken.
    /// Units: UTC. Errors: false when none matched; `info` is then left alone.
    static bool GetExceptionAppointmentInfo(const FILETIME& windowStart,
                                            const FILETIME& windowEnd,
                                            IMessage* message,
                                            MeetingInfo& info);

    /// The recipients of every changed instance of a series, by its UTC start in minutes. With two
    /// instances of one start the first one stays.
    /// Errors: false when the table or one of the messages could not be opened; what could be read is
    ///         in `recipients` all the same.
    static bool GetExceptionRecipients(IMessage* message, SeriesRecipients& recipients);
};
