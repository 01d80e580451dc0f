#include "PatternBlob.h"

#include <algorithm>

#include "DateTexts.h"
#include "Minutes1601.h"

namespace pattern
{

namespace
{

class CWriter
{
public:
    void U16(std::uint32_t value)
    {
        m_bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
        m_bytes.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
    }
    void U32(std::uint32_t value)
    {
        U16(value & 0xFFFF);
        U16(value >> 16);
    }
    void U32(const std::optional<std::uint32_t>& value)
    {
        if (value.has_value())
        {
            U32(*value);
        }
    }
    void NarrowText(const std::optional<std::string>& text)
    {
        if (!text.has_value())
        {
            return;
        }
        U16(static_cast<std::uint32_t>(text->size() + 1));
        U16(static_cast<std::uint32_t>(text->size()));
        m_bytes.insert(m_bytes.end(), text->begin(), text->end());
    }
    void WideText(const std::optional<std::string>& text)
    {
        if (!text.has_value())
        {
            return;
        }
        U16(static_cast<std::uint32_t>(text->size()));
        for (const char c : *text)
        {
            U16(static_cast<std::uint8_t>(c));
        }
    }
    Bytes Take() { return std::move(m_bytes); }

private:
    Bytes m_bytes;
};

void WriteException(CWriter& out, const Modified& modified)
{
    out.U32(modified.start);
    out.U32(modified.end);
    out.U32(modified.original);
    out.U16(modified.Flags());
    out.NarrowText(modified.subject);
    out.U32(modified.meetingType);
    out.U32(modified.reminderDelta);
    out.U32(modified.reminder);
    out.NarrowText(modified.location);
    out.U32(modified.busyStatus);
    out.U32(modified.attachment);
    out.U32(modified.subType);
    out.U32(modified.color);
}

void WriteExtended(CWriter& out, const Modified& modified, std::uint32_t writerVersion2)
{
    if (writerVersion2 >= 0x3009)
    {
        out.U32(4); // size of the change highlight
        out.U32(0);
    }
    out.U32(0); // reserved block
    if (modified.subject.has_value() || modified.location.has_value())
    {
        out.U32(modified.start);
        out.U32(modified.end);
        out.U32(modified.original);
        out.WideText(modified.subject);
        out.WideText(modified.location);
        out.U32(0); // reserved block
    }
}

std::uint32_t Midnight(std::uint32_t minutes)
{
    return minutes - minutes % 1440;
}

/// Minutes from the beginning of the year to that of the date's month.
std::uint32_t MonthOffset(const SYSTEMTIME& date)
{
    std::uint32_t days = 0;
    for (std::uint32_t month = 1; month < date.wMonth; ++month)
    {
        days += DaysInMonth(month, date.wYear);
    }
    return days * 1440;
}

} // namespace

std::uint32_t Minutes(const std::string& text)
{
    return MinutesFromSystemTime(TimeOf(text.size() == 10 ? text + "T00:00:00" : text));
}

Modified Moved(const std::string& original, const std::string& start, const std::string& end)
{
    Modified modified;
    modified.original = Minutes(original);
    modified.start = Minutes(start);
    modified.end = Minutes(end);
    return modified;
}

std::uint16_t Modified::Flags() const
{
    const auto flag = [](bool isSet, unsigned value) { return isSet ? value : 0U; };
    return static_cast<std::uint16_t>(
        flag(subject.has_value(), 1) | flag(meetingType.has_value(), 2) |
        flag(reminderDelta.has_value(), 4) | flag(reminder.has_value(), 8) |
        flag(location.has_value(), 16) | flag(busyStatus.has_value(), 32) |
        flag(attachment.has_value(), 64) | flag(subType.has_value(), 128) |
        flag(color.has_value(), 256) | flag(hasBody, 512));
}

Bytes Pattern::Write() const
{
    CWriter out;
    out.U16(0x3004);
    out.U16(0x3004);
    out.U16(frequency);
    out.U16(patternType);
    out.U16(calendarType);
    out.U32(firstDateTime);
    out.U32(period);
    out.U32(0); // sliding flag
    for (const std::uint32_t value : specific)
    {
        out.U32(value);
    }
    out.U32(endType);
    out.U32(occurrenceCount);
    out.U32(0); // first day of week

    std::vector<std::uint32_t> allDeleted = deleted;
    std::vector<std::uint32_t> newDates;
    for (const Modified& m : modified)
    {
        allDeleted.push_back(Midnight(m.original));
        newDates.push_back(Midnight(m.start));
    }
    for (std::vector<std::uint32_t>* dates : {&allDeleted, &newDates})
    {
        std::sort(dates->begin(), dates->end());
        out.U32(static_cast<std::uint32_t>(dates->size()));
        for (const std::uint32_t date : *dates)
        {
            out.U32(date);
        }
    }
    out.U32(startDate);
    out.U32(endDate);
    out.U32(0x3006);
    out.U32(writerVersion2);
    out.U32(startOffset);
    out.U32(endOffset);
    out.U16(static_cast<std::uint32_t>(modified.size()));
    for (const Modified& m : modified)
    {
        WriteException(out, m);
    }
    out.U32(0); // reserved block
    for (const Modified& m : modified)
    {
        WriteExtended(out, m, writerVersion2);
    }
    out.U32(0); // reserved block
    return out.Take();
}

Pattern Daily(const std::string& startDate, std::uint32_t days)
{
    Pattern p;
    p.startDate = Minutes(startDate);
    p.period = days * 1440;
    p.firstDateTime = p.startDate % p.period;
    return p;
}

Pattern WorkingDays(const std::string& startDate)
{
    Pattern p;
    p.patternType = 1;
    p.startDate = Minutes(startDate);
    p.firstDateTime = 8640;
    p.period = 1;
    p.specific = {62};
    return p;
}

Pattern Weekly(const std::string& startDate, std::uint32_t mask, std::uint32_t weeks)
{
    Pattern p;
    p.frequency = kWeekly;
    p.patternType = 1;
    p.startDate = Minutes(startDate);
    p.period = weeks;
    p.specific = {mask};
    return p;
}

Pattern MonthlyDay(const std::string& startDate, std::uint32_t day, std::uint32_t months)
{
    Pattern p;
    p.frequency = kMonthly;
    p.patternType = 2;
    p.startDate = Minutes(startDate);
    p.period = months;
    p.specific = {day};
    return p;
}

Pattern MonthlyOrdinal(const std::string& startDate,
                       std::uint32_t mask,
                       std::uint32_t week,
                       std::uint32_t months)
{
    Pattern p = MonthlyDay(startDate, 0, months);
    p.patternType = 3;
    p.specific = {mask, week};
    return p;
}

Pattern YearlyDay(const std::string& startDate, std::uint32_t day, std::uint32_t years)
{
    Pattern p = MonthlyDay(startDate, day, years * 12);
    p.frequency = kYearly;
    p.firstDateTime = MonthOffset(SystemTimeFromMinutes(p.startDate));
    return p;
}

Pattern YearlyOrdinal(const std::string& startDate,
                      std::uint32_t mask,
                      std::uint32_t week,
                      std::uint32_t years)
{
    Pattern p = YearlyDay(startDate, 0, years);
    p.patternType = 3;
    p.specific = {mask, week};
    return p;
}

Bytes Zone(const TIME_ZONE_INFORMATION& zone)
{
    Bytes bytes(48);
    const auto put = [&bytes](std::size_t at, std::uint32_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
        {
            bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i) & 0xFF);
        }
    };
    put(0, static_cast<std::uint32_t>(zone.Bias), 4);
    put(8, static_cast<std::uint32_t>(zone.DaylightBias), 4);
    put(16, zone.StandardDate.wMonth, 2);
    put(20, zone.StandardDate.wDay, 2);
    put(22, zone.StandardDate.wHour, 2);
    put(26, static_cast<std::uint32_t>(zone.StandardBias), 4);
    put(34, zone.DaylightDate.wMonth, 2);
    put(38, zone.DaylightDate.wDay, 2);
    put(40, zone.DaylightDate.wHour, 2);
    return bytes;
}

} // namespace pattern
