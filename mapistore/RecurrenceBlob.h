#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Days1601.h"

namespace mapistore
{

/// Whole minutes since 1601-01-01 00:00 in the zone of the series.
using Minutes1601 = std::uint32_t;

constexpr Minutes1601 kMinutesPerDay = 1440;

enum class RecurrenceFrequency
{
    Daily,
    Workdays,
    Weekly,
    Monthly,
    Yearly
};

enum class RecurrenceEnd
{
    Never,
    Count,
    Until
};

/// One changed instance; an absent member is one that it has in common with the series.
struct ModifiedInstance
{
    Minutes1601 original = 0; // start that it would have had
    Minutes1601 start = 0;
    Minutes1601 end = 0;
    std::optional<std::wstring> subject;
    std::optional<std::uint32_t> meetingType;
    std::optional<std::uint32_t> reminderMinutes;
    std::optional<bool> reminder;
    std::optional<std::wstring> location;
    std::optional<std::uint32_t> busyStatus;
    std::optional<std::uint32_t> attachments;
    std::optional<bool> allDay;
    std::optional<std::uint32_t> color;
    bool hasBody = false;
};

/// A recurrence in words, as a store's document describes it.
///
/// Units: dates are days since 1601-01-01; `dayMask` has Sunday as 1 and Saturday as 64.
struct RecurrenceDescription
{
    RecurrenceFrequency frequency = RecurrenceFrequency::Daily;
    std::uint32_t interval = 1;
    std::uint32_t dayMask = 0;
    std::uint32_t week = 0;       // 1 to 5; 0 when the pattern is by the day of the month
    std::uint32_t dayOfMonth = 0; // 1 to 31
    std::uint32_t firstDayOfWeek = 0;
    std::uint32_t start = 0;
    std::uint32_t startMinute = 0;
    std::uint32_t endMinute = 0;
    RecurrenceEnd endKind = RecurrenceEnd::Never;
    std::uint32_t count = 0;
    std::uint32_t last = 0;
    std::vector<std::uint32_t> deleted;
    std::vector<ModifiedInstance> modified;
    std::uint32_t writerVersion2 = 0x3009;
};

/// AppointmentRecurrencePattern as a mail client would write it.
///
/// Source: [MS-OXOCAL] 2.2.1.44.5 and 2.2.1.44.1.
std::string EncodeRecurrence(const RecurrenceDescription& description);

/// How many instances the pattern has from its start to `last`, both included.
std::uint32_t CountInstances(const RecurrenceDescription& description, std::uint32_t last);

/// The pattern's fields FirstDateTime and Period: minutes for daily ones, weeks, or months.
std::uint32_t FirstDateTimeOf(const RecurrenceDescription& description);
std::uint32_t PeriodOf(const RecurrenceDescription& description);

struct ZoneSwitch
{
    std::uint16_t month = 0; // 0: no such switch
    std::uint16_t week = 0;  // 1 to 5, 5 is the last
    std::uint16_t dayOfWeek = 0;
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
};

struct ZoneDescription
{
    std::int32_t bias = 0; // minutes to be added to local time
    std::int32_t standardBias = 0;
    std::int32_t daylightBias = 0;
    ZoneSwitch standardDate;
    ZoneSwitch daylightDate;
};

/// The 48 bytes of PidLidTimeZoneStruct.
///
/// Source: [MS-OXOCAL] 2.2.1.39.
std::string EncodeZone(const ZoneDescription& description);

} // namespace mapistore
