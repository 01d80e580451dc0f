#include "PatternWords.h"

#include <array>

#include "DateText.h"
#include "Minutes1601.h"
#include "MonthArithmetic.h"
#include "Utf8Text.h"
#include "WeekdayNames.h"

namespace
{

std::string Number(std::uint64_t value)
{
    return std::to_string(value);
}

/// "every day", "every 3 days".
std::string Every(std::uint32_t count, const std::string& unit)
{
    return count == 1 ? "every " + unit : "every " + Number(count) + " " + unit + "s";
}

/// "Monday, Wednesday and Friday".
std::string DaysOfMask(std::uint32_t mask)
{
    std::vector<std::string_view> days;
    for (std::size_t day = 0; day < 7; ++day)
    {
        if ((mask >> day & 1) != 0)
        {
            days.push_back(LongWeekday(day));
        }
    }
    std::string text;
    for (std::size_t i = 0; i < days.size(); ++i)
    {
        text += i == 0 ? "" : (i + 1 == days.size() ? " and " : ", ");
        text += days[i];
    }
    return text.empty() ? "no day" : text;
}

std::string OrdinalDay(const PatternView& view)
{
    constexpr std::array<const char*, 6> kWeeks = {
        "zeroth", "first", "second", "third", "fourth", "last"};
    const std::string week =
        view.week < kWeeks.size() ? kWeeks[view.week] : "number " + Number(view.week);
    switch (view.specific)
    {
    case 62:
        return week + " working day";
    case 65:
        return week + " weekend day";
    case 127:
        return week + " day";
    case 78:
        return week + " Saturday";
    default:
        return week + " " + DaysOfMask(view.specific);
    }
}

std::string MonthOf(const PatternView& view)
{
    const SYSTEMTIME first = SystemTimeFromMinutes(view.tail.startDate);
    return std::string(MonthName(MonthOfYearly(view.firstDateTime, first)));
}

bool IsYearly(RuleForm form)
{
    return form == RuleForm::YearlyDay || form == RuleForm::YearlyOrdinal;
}

bool IsMonthlyOrYearly(RuleForm form)
{
    return IsYearly(form) || form == RuleForm::MonthlyDay || form == RuleForm::MonthlyOrdinal;
}

std::string OffsetText(std::int64_t minutesWestOfUtc)
{
    const std::int64_t minutes = minutesWestOfUtc < 0 ? -minutesWestOfUtc : minutesWestOfUtc;
    const auto two = [](std::int64_t value) {
        return (value < 10 ? "0" : "") + std::to_string(value);
    };
    return std::string("UTC") + (minutesWestOfUtc > 0 ? "-" : "+") + two(minutes / 60) + ":" +
           two(minutes % 60);
}

std::string SwitchText(const SYSTEMTIME& date)
{
    constexpr std::array<const char*, 6> kWeeks = {
        "week 0", "first Sunday", "second Sunday", "third Sunday", "fourth Sunday", "last Sunday"};
    const std::string day =
        date.wDay < kWeeks.size() ? kWeeks[date.wDay] : "week " + Number(date.wDay);
    return day + " of " + std::string(MonthName(date.wMonth)) + " at " + Number(date.wHour) + ":00";
}

} // namespace

std::string RuleInWords(const PatternView& view)
{
    switch (view.form)
    {
    case RuleForm::EveryDays:
        return view.period % 1440 == 0 ? Every(view.period / 1440, "day")
                                       : Every(view.period, "minute");
    case RuleForm::WorkingDays:
        return "every working day, Monday to Friday";
    case RuleForm::Weekly:
        return Every(view.period, "week") + " on " + DaysOfMask(view.specific & 0x7F);
    case RuleForm::MonthlyDay:
        return "day " + Number(view.specific) + " of " + Every(view.period, "month");
    case RuleForm::MonthlyOrdinal:
        return "the " + OrdinalDay(view) + " of " + Every(view.period, "month");
    case RuleForm::YearlyDay:
        return MonthOf(view) + " " + Number(view.specific) + ", " + Every(view.period / 12, "year");
    case RuleForm::YearlyOrdinal:
        return "the " + OrdinalDay(view) + " of " + MonthOf(view) + ", " +
               Every(view.period / 12, "year");
    case RuleForm::Unknown:
        break;
    }
    return "none that the server knows (frequency " + Number(view.frequency) + ", pattern type " +
           Number(view.patternType) + ", " + Number(view.size) + " bytes)";
}

std::vector<std::string> RuleRemarks(const PatternView& view)
{
    std::vector<std::string> remarks;
    if (IsMonthlyOrYearly(view.form) && view.calendarType != 0)
    {
        remarks.push_back("calendar type " + Number(view.calendarType) +
                          " is not the Gregorian one: the server lists nothing");
    }
    const bool isTooShort = IsYearly(view.form)
                                ? view.period < 12
                                : view.form != RuleForm::WorkingDays && view.period == 0;
    if (view.IsComplete() && isTooShort)
    {
        remarks.push_back("the period is too short: modified instances only");
    }
    if (view.form == RuleForm::EveryDays && view.period > 1440)
    {
        remarks.push_back("a window that opens between two days of the rule lists nothing");
    }
    if ((view.form == RuleForm::MonthlyDay || view.form == RuleForm::MonthlyOrdinal) &&
        view.period > 1)
    {
        remarks.push_back("a window that opens in a month off the rule lists nothing");
    }
    if (view.form == RuleForm::YearlyDay && view.specific > 28)
    {
        remarks.push_back("a year that lacks the day ends the series there");
    }
    if (view.form == RuleForm::YearlyOrdinal && view.specific == 62 && view.week > 1 &&
        view.week < 5)
    {
        remarks.push_back("yearly working days are counted on over the weekend");
    }
    return remarks;
}

std::string EndInWords(const PatternView& view)
{
    const std::string date = DateOfMinutes(view.tail.endDate);
    switch (view.endType & 0xFF)
    {
    case 0x21:
        return "by date: " + date;
    case 0x22:
        return "after " + Number(view.occurrenceCount) + " instances, stored as the date " + date +
               ", which is what counts";
    case 0x23:
    case 0xFF:
        return "never (stored date " + date + ")";
    default:
        return "unknown end type " + Number(view.endType & 0xFF) + ": modified instances only";
    }
}

std::vector<std::string> ZoneInWords(const TIME_ZONE_INFORMATION& zone, std::size_t blobSize)
{
    if (blobSize != 48)
    {
        return {blobSize == 0
                    ? "none: local time is UTC"
                    : Number(blobSize) + " bytes instead of 48, not read: local time is UTC"};
    }
    std::vector<std::string> lines = {OffsetText(zone.Bias)};
    if (zone.StandardDate.wMonth == 0)
    {
        lines.push_back("no daylight time");
        return lines;
    }
    lines.push_back(OffsetText(std::int64_t{zone.Bias} + zone.DaylightBias) +
                    " in daylight time, from the " + SwitchText(zone.DaylightDate) + " to the " +
                    SwitchText(zone.StandardDate));
    if (zone.StandardBias != 0)
    {
        lines.push_back("standard bias " + std::to_string(zone.StandardBias) +
                        " minutes, which counts for the window only");
    }
    return lines;
}

std::string ExceptionInWords(std::uint32_t date,
                             const RecurExceptionInfo& info,
                             const PatternView& view)
{
    std::string text = DateOfMinutes(date) + ": ";
    if (info.state == kExceptionDeleted)
    {
        return text + "deleted";
    }
    const PatternTail& tail = view.tail;
    const bool isMoved =
        info.start != date + tail.startTimeOffset || info.end != date + tail.endTimeOffset;
    std::vector<std::string> changes;
    if (isMoved)
    {
        const bool isSameDay = info.start / 1440 == info.end / 1440;
        changes.push_back("moved to " + LongOfMinutes(info.start) + " - " +
                          (isSameDay ? TimeOfMinutes(info.end) : LongOfMinutes(info.end)));
    }
    if ((info.overrideFlags & 1) != 0)
    {
        changes.push_back("subject \"" + EscapedUtf8(info.subject) + "\"");
    }
    if ((info.overrideFlags & 16) != 0)
    {
        changes.push_back("location \"" + EscapedUtf8(info.location) + "\"");
    }
    if (info.hasMeetingType != 0)
    {
        changes.push_back("meeting type " + Number(info.meetingType) +
                          (info.meetingType == 7 ? " (cancelled)" : ""));
    }
    struct FlagName
    {
        std::uint32_t flag;
        const char* name;
    };
    for (const FlagName& other : {FlagName{4, "reminder time"},
                                  FlagName{8, "reminder"},
                                  FlagName{32, "busy status"},
                                  FlagName{64, "attachments"},
                                  FlagName{128, "all-day"},
                                  FlagName{256, "colour"},
                                  FlagName{512, "body"}})
    {
        if ((info.overrideFlags & other.flag) != 0)
        {
            changes.emplace_back(other.name);
        }
    }
    if (changes.empty())
    {
        changes.emplace_back("modified, with nothing changed");
    }
    for (std::size_t i = 0; i < changes.size(); ++i)
    {
        text += (i == 0 ? "" : ", ") + changes[i];
    }
    return text;
}

std::string WarningInWords(TailWarning warning)
{
    switch (warning)
    {
    case TailWarning::None:
        return "nothing";
    case TailWarning::ExtendedStart:
        return "no room for an extended record's start (usual when no exception changes a text)";
    case TailWarning::ExtendedDates:
        return "no room for an extended record's end and original date";
    case TailWarning::ExtendedUnknownDate:
        return "an extended record's original date is not among the exceptions";
    case TailWarning::ExtendedSubject:
        return "an extended subject runs past the end";
    case TailWarning::ExtendedLocation:
        return "an extended location runs past the end";
    case TailWarning::DeletedList:
        return "the deleted dates run past the end";
    case TailWarning::FixedPart:
        return "the fixed part before the exceptions runs past the end";
    case TailWarning::ExceptionRecord:
        return "an exception record runs past the end";
    case TailWarning::ExceptionSubject:
        return "an exception's subject runs past the end";
    case TailWarning::ExceptionLocation:
        return "an exception's location runs past the end";
    case TailWarning::FirstReservedSize:
        return "no room for the first reserved size";
    }
    return "unknown";
}
