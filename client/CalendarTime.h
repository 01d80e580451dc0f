#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dtclient
{
/// A date and time of day without a zone; who holds one says whether it is local time or UTC.
///
/// Units: `month` and `day` count from 1.
struct CalendarTime
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;

    bool operator==(const CalendarTime&) const = default;
};

/// True for a date of the years 1601 to 9999 that the calendar has, with a time of day that exists.
bool IsRealTime(const CalendarTime& time);

/// Seconds since 1601-01-01 00:00:00, the epoch of FILETIME.
///
/// Errors: the result is meaningless unless IsRealTime holds.
std::int64_t SecondsSince1601(const CalendarTime& time);

/// The inverse of SecondsSince1601.
CalendarTime TimeFromSeconds1601(std::int64_t seconds);

/// `time` moved by whole days.
CalendarTime AddDays(const CalendarTime& time, int days);

/// "Mon" to "Sun".
const char* WeekdayName(const CalendarTime& time);

/// Reads "2026-11-02", "2026-11-02 14:30" or "2026-11-02T14:30:15"; a date alone is its midnight.
///
/// Errors: nothing when the text has another form or names a day that does not exist.
std::optional<CalendarTime> ParseDayTime(std::string_view text);

/// Reads the documents' own form, month first: "11/02/2026 14:30:15".
///
/// Errors: nothing when the text has another form. The date itself is not judged: an unset time
/// travels as "00/00/0000 00:00:00".
std::optional<CalendarTime> ParseDocumentTime(std::string_view text);

/// "2026-11-02T14:30:15Z"; the caller knows that `time` is UTC.
std::string IsoUtcText(const CalendarTime& time);

/// "2026-11-02 14:30".
std::string MinuteText(const CalendarTime& time);
} // namespace dtclient
