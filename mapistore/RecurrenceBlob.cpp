#include "RecurrenceBlob.h"

#include <windows.h>

#include <algorithm>

namespace mapistore
{
namespace
{

constexpr std::uint32_t kNeverEndDate = 0x5AE980DF;
constexpr std::uint32_t kWorkdayMask = 0x3E;

// OverrideFlags of an exception.
constexpr std::uint32_t kSubject = 0x0001;
constexpr std::uint32_t kMeetingType = 0x0002;
constexpr std::uint32_t kReminderDelta = 0x0004;
constexpr std::uint32_t kReminderSet = 0x0008;
constexpr std::uint32_t kLocation = 0x0010;
constexpr std::uint32_t kBusyStatus = 0x0020;
constexpr std::uint32_t kAttachment = 0x0040;
constexpr std::uint32_t kSubType = 0x0080;
constexpr std::uint32_t kColor = 0x0100;
constexpr std::uint32_t kBody = 0x0200;

void Put16(std::string& bytes, std::uint32_t value)
{
    bytes.push_back(static_cast<char>(value & 0xFF));
    bytes.push_back(static_cast<char>((value >> 8) & 0xFF));
}

void Put32(std::string& bytes, std::uint32_t value)
{
    Put16(bytes, value & 0xFFFF);
    Put16(bytes, value >> 16);
}

void PutPattern(std::string& bytes, const RecurrenceDescription& rule)
{
    const bool byMonth = rule.frequency == RecurrenceFrequency::Monthly ||
                         rule.frequency == RecurrenceFrequency::Yearly;
    std::uint32_t frequency = 0x200A;
    std::uint32_t pattern = 0;
    if (byMonth)
    {
        frequency = rule.frequency == RecurrenceFrequency::Monthly ? 0x200C : 0x200D;
        pattern = rule.dayOfMonth != 0 ? 2 : 3;
    }
    else if (rule.frequency == RecurrenceFrequency::Weekly)
    {
        frequency = 0x200B;
        pattern = 1;
    }
    else if (rule.frequency == RecurrenceFrequency::Workdays)
    {
        pattern = 1;
    }
    Put16(bytes, 0x3004);
    Put16(bytes, 0x3004);
    Put16(bytes, frequency);
    Put16(bytes, pattern);
    Put16(bytes, 0);
    Put32(bytes, FirstDateTimeOf(rule));
    Put32(bytes, PeriodOf(rule));
    Put32(bytes, 0);
    if (pattern == 1)
    {
        const bool workdays = rule.frequency == RecurrenceFrequency::Workdays;
        Put32(bytes, workdays ? kWorkdayMask : rule.dayMask);
    }
    else if (pattern == 2)
    {
        Put32(bytes, rule.dayOfMonth);
    }
    else if (pattern == 3)
    {
        Put32(bytes, rule.dayMask);
        Put32(bytes, rule.week);
    }
}

void PutEnd(std::string& bytes, const RecurrenceDescription& rule)
{
    std::uint32_t kind = 0x2023;
    std::uint32_t count = 10;
    if (rule.endKind == RecurrenceEnd::Until)
    {
        kind = 0x2021;
        count = CountInstances(rule, rule.last);
    }
    else if (rule.endKind == RecurrenceEnd::Count)
    {
        kind = 0x2022;
        count = rule.count;
    }
    Put32(bytes, kind);
    Put32(bytes, count);
    Put32(bytes, rule.firstDayOfWeek);
}

void PutDates(std::string& bytes, std::vector<std::uint32_t> days)
{
    std::sort(days.begin(), days.end());
    Put32(bytes, static_cast<std::uint32_t>(days.size()));
    for (const std::uint32_t day : days)
    {
        Put32(bytes, day * kMinutesPerDay);
    }
}

std::uint16_t FlagsOf(const ModifiedInstance& one)
{
    std::uint32_t flags = 0;
    flags |= one.subject ? kSubject : 0U;
    flags |= one.meetingType ? kMeetingType : 0U;
    flags |= one.reminderMinutes ? kReminderDelta : 0U;
    flags |= one.reminder ? kReminderSet : 0U;
    flags |= one.location ? kLocation : 0U;
    flags |= one.busyStatus ? kBusyStatus : 0U;
    flags |= one.attachments ? kAttachment : 0U;
    flags |= one.allDay ? kSubType : 0U;
    flags |= one.color ? kColor : 0U;
    flags |= one.hasBody ? kBody : 0U;
    return static_cast<std::uint16_t>(flags);
}

std::string Windows1252(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t unit : text)
    {
        char out[4];
        BOOL lost = FALSE;
        const int cb =
            WideCharToMultiByte(1252, WC_NO_BEST_FIT_CHARS, &unit, 1, out, sizeof(out), "?", &lost);
        const bool isLow = unit >= 0xDC00 && unit < 0xE000;
        if (!isLow) // a surrogate pair becomes one mark
        {
            bytes.append(cb > 0 ? out : "?", 1);
        }
    }
    return bytes;
}

void PutNarrow(std::string& bytes, const std::optional<std::wstring>& text)
{
    if (text)
    {
        const std::string narrow = Windows1252(*text);
        Put16(bytes, static_cast<std::uint32_t>(narrow.size() + 1));
        Put16(bytes, static_cast<std::uint32_t>(narrow.size()));
        bytes += narrow;
    }
}

template <class T>
void PutOptional(std::string& bytes, const std::optional<T>& value)
{
    if (value)
    {
        Put32(bytes, static_cast<std::uint32_t>(*value));
    }
}

void PutException(std::string& bytes, const ModifiedInstance& one)
{
    Put32(bytes, one.start);
    Put32(bytes, one.end);
    Put32(bytes, one.original);
    Put16(bytes, FlagsOf(one));
    PutNarrow(bytes, one.subject);
    PutOptional(bytes, one.meetingType);
    PutOptional(bytes, one.reminderMinutes);
    PutOptional(bytes, one.reminder);
    PutNarrow(bytes, one.location);
    PutOptional(bytes, one.busyStatus);
    PutOptional(bytes, one.attachments);
    PutOptional(bytes, one.allDay);
    PutOptional(bytes, one.color);
}

void PutWide(std::string& bytes, const std::optional<std::wstring>& text)
{
    if (text)
    {
        Put16(bytes, static_cast<std::uint32_t>(text->size()));
        for (const wchar_t unit : *text)
        {
            Put16(bytes, unit);
        }
    }
}

void PutExtended(std::string& bytes, const ModifiedInstance& one, std::uint32_t writerVersion2)
{
    if (writerVersion2 >= 0x3009)
    {
        Put32(bytes, 4); // size of the change highlight
        Put32(bytes, 0);
    }
    Put32(bytes, 0); // reserved block
    if (one.subject || one.location)
    {
        Put32(bytes, one.start);
        Put32(bytes, one.end);
        Put32(bytes, one.original);
        PutWide(bytes, one.subject);
        PutWide(bytes, one.location);
        Put32(bytes, 0); // reserved block
    }
}

void PutSwitch(std::string& bytes, const ZoneSwitch& date)
{
    Put16(bytes, 0); // year
    Put16(bytes, date.month);
    Put16(bytes, date.dayOfWeek);
    Put16(bytes, date.week);
    Put16(bytes, date.hour);
    Put16(bytes, date.minute);
    Put16(bytes, 0); // second
    Put16(bytes, 0); // millisecond
}

} // namespace

std::string EncodeRecurrence(const RecurrenceDescription& rule)
{
    std::string bytes;
    PutPattern(bytes, rule);
    PutEnd(bytes, rule);

    std::vector<ModifiedInstance> modified = rule.modified;
    std::sort(modified.begin(),
              modified.end(),
              [](const ModifiedInstance& left, const ModifiedInstance& right) {
                  return left.start < right.start;
              });
    std::vector<std::uint32_t> deletedDays = rule.deleted;
    std::vector<std::uint32_t> modifiedDays;
    for (const ModifiedInstance& one : modified)
    {
        deletedDays.push_back(one.original / kMinutesPerDay);
        modifiedDays.push_back(one.start / kMinutesPerDay);
    }
    PutDates(bytes, std::move(deletedDays));
    PutDates(bytes, std::move(modifiedDays));
    Put32(bytes, rule.start * kMinutesPerDay);
    Put32(bytes, rule.endKind == RecurrenceEnd::Never ? kNeverEndDate : rule.last * kMinutesPerDay);
    Put32(bytes, 0x3006);
    Put32(bytes, rule.writerVersion2);
    Put32(bytes, rule.startMinute);
    Put32(bytes, rule.endMinute);
    Put16(bytes, static_cast<std::uint32_t>(modified.size()));
    for (const ModifiedInstance& one : modified)
    {
        PutException(bytes, one);
    }
    Put32(bytes, 0);
    for (const ModifiedInstance& one : modified)
    {
        PutExtended(bytes, one, rule.writerVersion2);
    }
    Put32(bytes, 0);
    return bytes;
}

std::string EncodeZone(const ZoneDescription& zone)
{
    std::string bytes;
    Put32(bytes, static_cast<std::uint32_t>(zone.bias));
    Put32(bytes, static_cast<std::uint32_t>(zone.standardBias));
    Put32(bytes, static_cast<std::uint32_t>(zone.daylightBias));
    Put16(bytes, 0); // year of the standard date
    PutSwitch(bytes, zone.standardDate);
    Put16(bytes, 0);
    PutSwitch(bytes, zone.daylightDate);
    return bytes;
}

} // namespace mapistore
