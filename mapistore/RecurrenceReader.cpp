#include "RecurrenceReader.h"

#include <algorithm>
#include <limits>

#include "Text.h"

namespace mapistore
{
namespace
{

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 4500; // later dates leave the 32 bits of the pattern

/// Takes `digits` digits; false when there are not so many.
bool TakeNumber(std::string_view& text, size_t digits, int& number)
{
    if (text.size() < digits)
    {
        return false;
    }
    number = 0;
    for (size_t i = 0; i < digits; ++i)
    {
        if (text[i] < '0' || text[i] > '9')
        {
            return false;
        }
        number = number * 10 + (text[i] - '0');
    }
    text.remove_prefix(digits);
    return true;
}

bool TakeMark(std::string_view& text, char mark)
{
    if (text.empty() || text[0] != mark)
    {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

bool TakeDate(std::string_view& text, int lastYear, std::uint32_t& days)
{
    int year = 0;
    int month = 0;
    int day = 0;
    if (!TakeNumber(text, 4, year) || !TakeMark(text, '-') || !TakeNumber(text, 2, month) ||
        !TakeMark(text, '-') || !TakeNumber(text, 2, day) || year < kFirstYear || year > lastYear ||
        month < 1 || month > 12 || day < 1 || day > DaysInMonthOf(year, month))
    {
        return false;
    }
    days = DaysFrom1601(year, month, day);
    return true;
}

bool TakeClock(std::string_view& text, std::uint32_t& minutes)
{
    int hour = 0;
    int minute = 0;
    if (!TakeNumber(text, 2, hour) || !TakeMark(text, ':') || !TakeNumber(text, 2, minute) ||
        hour > 23 || minute > 59)
    {
        return false;
    }
    minutes = static_cast<std::uint32_t>(hour * 60 + minute);
    return true;
}

Minutes1601 ReadMoment(const CPlace& place)
{
    std::string_view text = place.Text();
    std::uint32_t days = 0;
    std::uint32_t minutes = 0;
    if (!TakeDate(text, kLastYear, days) || !TakeMark(text, 'T') || !TakeClock(text, minutes) ||
        !text.empty())
    {
        place.Fail("expected a date and time such as \"2026-11-02T09:00\"");
    }
    return days * kMinutesPerDay + minutes;
}

std::uint32_t ReadDay(const CPlace& place)
{
    static constexpr std::string_view kDays[] = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
    const std::string_view text = place.Text();
    const auto found = std::find(std::begin(kDays), std::end(kDays), text);
    if (found == std::end(kDays))
    {
        place.Fail("expected a day from \"SU\" to \"SA\"");
    }
    return static_cast<std::uint32_t>(found - std::begin(kDays));
}

template <class Read>
void ForEach(const CPlace& place, std::string_view key, const Read& read)
{
    const JsonNode* member = place.Node().Find(key);
    if (member == nullptr)
    {
        return;
    }
    const CPlace list(place, *member);
    list.RequireArray();
    size_t index = 0;
    for (const JsonNode* item = member->first; item != nullptr; item = item->next)
    {
        read(CPlace(list, *item, index++));
    }
}

template <class T, class Read>
void Optional(const CPlace& place, std::string_view key, std::optional<T>& out, const Read& read)
{
    if (const JsonNode* member = place.Node().Find(key))
    {
        out = read(CPlace(place, *member));
    }
}

std::uint32_t ReadNatural(const CPlace& place)
{
    return static_cast<std::uint32_t>(place.Whole(0, std::numeric_limits<std::uint32_t>::max()));
}

std::wstring ReadWide(const CPlace& place)
{
    return FromUtf8(place.Text());
}

ModifiedInstance ReadModified(const CPlace& place)
{
    place.AllowKeys({"original",
                     "start",
                     "end",
                     "subject",
                     "meetingType",
                     "reminderMinutes",
                     "reminder",
                     "location",
                     "busyStatus",
                     "attachments",
                     "allDay",
                     "color",
                     "body"});
    ModifiedInstance one;
    one.original = ReadMoment(CPlace(place, place.Need("original")));
    one.start = ReadMoment(CPlace(place, place.Need("start")));
    one.end = ReadMoment(CPlace(place, place.Need("end")));
    const auto truth = [](const CPlace& at) { return at.Truth(); };
    Optional(place, "subject", one.subject, ReadWide);
    Optional(place, "meetingType", one.meetingType, ReadNatural);
    Optional(place, "reminderMinutes", one.reminderMinutes, ReadNatural);
    Optional(place, "reminder", one.reminder, truth);
    Optional(place, "location", one.location, ReadWide);
    Optional(place, "busyStatus", one.busyStatus, ReadNatural);
    Optional(place, "attachments", one.attachments, ReadNatural);
    Optional(place, "allDay", one.allDay, truth);
    Optional(place, "color", one.color, ReadNatural);
    one.hasBody = place.TruthOr("body", false);
    return one;
}

RecurrenceFrequency ReadFrequency(const CPlace& place)
{
    static constexpr std::string_view kNames[] = {
        "daily", "workdays", "weekly", "monthly", "yearly"};
    const std::string_view text = place.Text();
    const auto found = std::find(std::begin(kNames), std::end(kNames), text);
    if (found == std::end(kNames))
    {
        place.Fail("expected \"daily\", \"workdays\", \"weekly\", \"monthly\" or \"yearly\"");
    }
    return static_cast<RecurrenceFrequency>(found - std::begin(kNames));
}

void ReadEnd(const CPlace& place, RecurrenceDescription& rule)
{
    if (place.Node().IsText())
    {
        if (place.Text() != "never")
        {
            place.Fail("expected \"never\" or an object");
        }
        return;
    }
    place.AllowKeys({"count", "last", "until"});
    if (place.Node().Find("until") != nullptr)
    {
        place.AllowKeys({"until"});
        rule.endKind = RecurrenceEnd::Until;
        rule.last = ReadDate(CPlace(place, place.Need("until")));
    }
    else
    {
        rule.endKind = RecurrenceEnd::Count;
        rule.count = static_cast<std::uint32_t>(place.WholeOf("count", 1, 0x7FFFFFFF));
        rule.last = ReadDate(CPlace(place, place.Need("last")));
    }
    if (rule.last < rule.start)
    {
        place.Fail("the last instance lies before the first");
    }
}

void CheckDays(const CPlace& place, const RecurrenceDescription& rule)
{
    const bool byMonth = rule.frequency == RecurrenceFrequency::Monthly ||
                         rule.frequency == RecurrenceFrequency::Yearly;
    const bool weekly = rule.frequency == RecurrenceFrequency::Weekly;
    if (weekly ? rule.dayMask == 0 : (rule.dayMask != 0 && !byMonth))
    {
        place.Fail(weekly ? "a weekly rule needs \"days\"" : "\"days\" means nothing here");
    }
    if (byMonth)
    {
        const std::uint32_t mask = rule.dayMask;
        const bool single = mask != 0 && (mask & (mask - 1)) == 0;
        const bool known = single || mask == 0x3E || mask == 0x41 || mask == 0x7F;
        const bool byDay = rule.dayOfMonth != 0;
        if (byDay ? (mask != 0 || rule.week != 0) : (!known || rule.week == 0))
        {
            place.Fail("expected \"dayOfMonth\", or \"week\" with one day, the working days, the "
                       "weekend or all days");
        }
    }
    else if (rule.week != 0 || rule.dayOfMonth != 0)
    {
        place.Fail("\"week\" and \"dayOfMonth\" belong to monthly and yearly rules");
    }
    if (rule.frequency == RecurrenceFrequency::Workdays && rule.interval != 1)
    {
        place.Fail("\"workdays\" has the interval 1");
    }
}

ZoneSwitch ReadSwitch(const CPlace& place)
{
    place.AllowKeys({"month", "week", "day", "time"});
    ZoneSwitch date;
    date.month = static_cast<std::uint16_t>(place.WholeOf("month", 1, 12));
    date.week = static_cast<std::uint16_t>(place.WholeOf("week", 1, 5));
    date.dayOfWeek = static_cast<std::uint16_t>(ReadDay(CPlace(place, place.Need("day"))));
    const CPlace time(place, place.Need("time"));
    std::string_view text = time.Text();
    std::uint32_t minutes = 0;
    if (!TakeClock(text, minutes) || !text.empty())
    {
        time.Fail("expected a time such as \"03:00\"");
    }
    date.hour = static_cast<std::uint16_t>(minutes / 60);
    date.minute = static_cast<std::uint16_t>(minutes % 60);
    return date;
}

} // namespace

std::uint32_t ReadDate(const CPlace& place)
{
    std::string_view text = place.Text();
    std::uint32_t days = 0;
    if (!TakeDate(text, kLastYear, days) || !text.empty())
    {
        place.Fail("expected a date such as \"2026-11-02\"");
    }
    return days;
}

std::uint64_t ReadTime(const CPlace& place)
{
    constexpr std::uint64_t kTicksPerSecond = 10000000;
    std::string_view text = place.Text();
    std::uint32_t days = 0;
    std::uint32_t minutes = 0;
    int seconds = 0;
    std::uint64_t fraction = 0;
    bool good = TakeDate(text, 9999, days) && TakeMark(text, 'T') && TakeClock(text, minutes) &&
                TakeMark(text, ':') && TakeNumber(text, 2, seconds) && seconds < 60;
    if (good && TakeMark(text, '.'))
    {
        std::uint64_t unit = kTicksPerSecond;
        int digit = 0;
        const size_t before = text.size();
        while (unit > 1 && TakeNumber(text, 1, digit))
        {
            unit /= 10;
            fraction += static_cast<std::uint64_t>(digit) * unit;
        }
        good = text.size() != before;
    }
    if (!good || text != "Z")
    {
        place.Fail("expected a time such as \"2026-11-02T09:00:00Z\"");
    }
    const std::uint64_t total =
        (std::uint64_t{days} * kMinutesPerDay + minutes) * 60 + static_cast<std::uint64_t>(seconds);
    return total * kTicksPerSecond + fraction;
}

RecurrenceDescription ReadRecurrence(const CPlace& place)
{
    place.AllowKeys({"frequency",
                     "interval",
                     "days",
                     "week",
                     "dayOfMonth",
                     "firstDayOfWeek",
                     "start",
                     "startMinute",
                     "endMinute",
                     "end",
                     "deleted",
                     "modified",
                     "writerVersion2"});
    RecurrenceDescription rule;
    rule.frequency = ReadFrequency(CPlace(place, place.Need("frequency")));
    rule.interval = static_cast<std::uint32_t>(place.WholeOr("interval", 1, 1, 999));
    ForEach(place, "days", [&](const CPlace& day) { rule.dayMask |= 1U << ReadDay(day); });
    rule.week = static_cast<std::uint32_t>(place.WholeOr("week", 0, 1, 5));
    rule.dayOfMonth = static_cast<std::uint32_t>(place.WholeOr("dayOfMonth", 0, 1, 31));
    if (const JsonNode* first = place.Node().Find("firstDayOfWeek"))
    {
        rule.firstDayOfWeek = ReadDay(CPlace(place, *first));
    }
    rule.start = ReadDate(CPlace(place, place.Need("start")));
    rule.startMinute = static_cast<std::uint32_t>(place.WholeOf("startMinute", 0, 1439));
    rule.endMinute = static_cast<std::uint32_t>(place.WholeOf("endMinute", 0, 0x7FFFFFFF));
    CheckDays(place, rule);
    ReadEnd(CPlace(place, place.Need("end")), rule);
    ForEach(place, "deleted", [&](const CPlace& date) { rule.deleted.push_back(ReadDate(date)); });
    ForEach(
        place, "modified", [&](const CPlace& one) { rule.modified.push_back(ReadModified(one)); });
    static constexpr std::string_view kVersions[] = {"0x3006", "0x3007", "0x3008", "0x3009"};
    const std::string version = place.TextOr("writerVersion2", "0x3009");
    const auto found = std::find(std::begin(kVersions), std::end(kVersions), version);
    if (found == std::end(kVersions))
    {
        CPlace(place, place.Need("writerVersion2")).Fail("expected \"0x3006\" to \"0x3009\"");
    }
    rule.writerVersion2 = 0x3006U + static_cast<std::uint32_t>(found - std::begin(kVersions));
    return rule;
}

ZoneDescription ReadZone(const CPlace& place)
{
    place.AllowKeys({"bias", "standardBias", "daylightBias", "standardDate", "daylightDate"});
    constexpr std::int64_t kMostBias = std::int64_t{24} * 60;
    ZoneDescription zone;
    zone.bias = static_cast<std::int32_t>(place.WholeOf("bias", -kMostBias, kMostBias));
    zone.standardBias =
        static_cast<std::int32_t>(place.WholeOr("standardBias", 0, -kMostBias, kMostBias));
    zone.daylightBias =
        static_cast<std::int32_t>(place.WholeOr("daylightBias", 0, -kMostBias, kMostBias));
    const JsonNode* standard = place.Node().Find("standardDate");
    const JsonNode* daylight = place.Node().Find("daylightDate");
    if ((standard == nullptr) != (daylight == nullptr))
    {
        place.Fail("a zone has both dates or none");
    }
    if (standard != nullptr)
    {
        zone.standardDate = ReadSwitch(CPlace(place, *standard));
        zone.daylightDate = ReadSwitch(CPlace(place, *daylight));
    }
    return zone;
}

} // namespace mapistore
