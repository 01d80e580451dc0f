#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "BinaryBlock.h"
#include "MapiItemRef.h"
#include "PlatformTypes.h"

/// Value of AttendeeInfo::recipientFlags that marks the host of a meeting.
inline constexpr std::uint32_t kRecipientFlagsHost = 3;

/// Value of MeetingInfo::meetingStatus that marks a cancelled instance of a series.
inline constexpr std::uint32_t kMeetingStatusCancelled = 7;

/// One recipient of an appointment, or one resolved name of the address map.
struct AttendeeInfo
{
    BinaryBlock entryId; ///< PR_ENTRYID
    WString name;        ///< PR_DISPLAY_NAME_W
    WString email;       ///< PR_SMTP_ADDRESS_W
    WString address;     ///< PR_EMAIL_ADDRESS_W; the X.500 form for directory entries
    WString addressType; ///< PR_ADDRTYPE_W
    std::uint32_t recipientType = 0;
    std::uint32_t recipientFlags = 1;
    std::uint32_t trackStatus = 0;
};

/// The recipients of the changed instances of one series, by the start of the instance.
///
/// Units: the key is in whole minutes since 1601-01-01, UTC.
using SeriesRecipients = std::map<std::uint32_t, std::vector<AttendeeInfo>>;

/// One appointment, or one instance of a series, as the client will see it.
///
/// Units: all times are UTC; `subKey` is in minutes since 1601-01-01 in the zone of the series.
/// Owner: owns everything it holds; a copy shares nothing with its source.
struct MeetingInfo
{
    std::uint32_t subKey = 0; ///< identifies an instance within its series, 0 otherwise
    SYSTEMTIME start{};
    SYSTEMTIME end{};
    WString strName; ///< subject
    WString location;
    WString strDesc;     ///< plain body
    WString strXaltDesc; ///< HTML body
    WString hostName;
    WString hostEmail;
    std::uint32_t duration = 0; ///< minutes
    BinaryBlock hostEntryId;
    std::uint32_t meetingStatus = 0; ///< PidLidAppointmentStateFlags
    WString calendarText;            ///< the TalvoOI family of properties
    WString strPropertyFromDeskTools;
    WString space; ///< TalvoSpace
    WString key;   ///< TalvoKey
    WString uid;   ///< global identifier
    std::int16_t isRecurring = 0;
    SYSTEMTIME firstTime{}; ///< start of the first instance
    std::int32_t recurrenceType = 0;
    WString recurrencePattern;   ///< the pattern in words, as the store phrases it
    BinaryBlock recurrenceState; ///< the recurrence pattern blob
    BinaryBlock timeZone;        ///< the 48-byte zone blob
    std::int32_t isAllDay = 0;
    std::uint32_t responseStatus = 0;
    std::uint32_t busyStatus = 0;
    std::vector<AttendeeInfo> attendees;
    MapiItemRef itemRef;
    WString m_strUCCapabilities;
};

/// An appointment as the data store keeps it and listings show it: shared, since a copy of its many texts
/// costs as much as reading them.
///
/// Owner:  everybody who holds it. Thread: any; it never changes.
using SharedMeeting = std::shared_ptr<const MeetingInfo>;
