#include "ShowCommand.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "CalendarDays.h"
#include "DateText.h"
#include "HexInput.h"
#include "Minutes1601.h"
#include "MonthCalendar.h"
#include "NarrowText.h"
#include "PatternSource.h"
#include "PatternView.h"
#include "PatternWords.h"
#include "PlatformDates.h"
#include "RecurrentRule.h"
#include "StandardStreams.h"
#include "ToolSettings.h"
#include "TraceLines.h"
#include "Utf8Text.h"

namespace
{

constexpr std::uint32_t kMinutesPerDay = 1440;

/// Everything that goes into one explanation.
struct Show
{
    Show(const ShowOptions& o, std::vector<std::uint8_t> p, std::vector<std::uint8_t> z)
        : options(o), pattern(std::move(p)), zone(std::move(z)),
          subject(WideOfUtf8(o.subject).value_or(WString())),
          location(WideOfUtf8(o.location).value_or(WString())), view(pattern, subject, location)
    {
    }

    const ShowOptions& options;
    std::vector<std::uint8_t> pattern;
    std::vector<std::uint8_t> zone;
    WString subject;
    WString location;
    PatternView view;
    FILETIME from{};
    FILETIME to{};
    InstanceList instances;
    TIME_ZONE_INFORMATION zoneInfo{};
    std::vector<CTraceLines::Line> trace;
};

FILETIME FileTimeOfMinutes(std::uint32_t minutes)
{
    return dates::FileTimeOf(std::uint64_t{minutes} * calendar::kTicksPerMinute);
}

/// The window: as asked for, else from a day before the start to a day behind the end, a year at most.
void ChooseWindow(Show& show)
{
    const PatternTail& tail = show.view.tail;
    const std::uint32_t start =
        tail.startDate < kMinutesPerDay ? tail.startDate : tail.startDate - kMinutesPerDay;
    show.from = FileTimeOfText(show.options.from).value_or(FileTimeOfMinutes(start));
    const std::uint64_t aYear = dates::TicksOf(show.from) + 366 * calendar::kTicksPerDay;
    const std::uint64_t end = (std::uint64_t{tail.endDate} + std::uint64_t{2} * kMinutesPerDay) *
                              calendar::kTicksPerMinute;
    const bool isBehind = end > dates::TicksOf(show.from);
    show.to = FileTimeOfText(show.options.to)
                  .value_or(dates::FileTimeOf(isBehind ? std::min(aYear, end) : aYear));
}

void Expand(Show& show)
{
    CToolSettings settings;
    settings.KeepAll(show.options.keepsAll);
    const std::unique_ptr<CTraceLines> trace =
        show.options.withTrace ? std::make_unique<CTraceLines>() : nullptr;
    CRecurrentRule rule(&settings);
    rule.SetInfo(
        1,
        static_cast<std::uint32_t>(show.pattern.size()),
        show.pattern.data(),
        static_cast<std::uint32_t>(show.zone.size()),
        show.zone.data(),
        TimeOfText(show.options.first).value_or(SystemTimeFromMinutes(show.view.tail.startDate)),
        show.from,
        show.to,
        show.subject,
        show.location);
    std::uint32_t count = 0;
    rule.ParseRule(count, show.instances);
    show.zoneInfo = rule.Zone();
    if (trace != nullptr)
    {
        show.trace = trace->Take();
    }
}

std::string TextOf(const FILETIME& fileTime)
{
    SYSTEMTIME time{};
    std::string text;
    if (dates::FileTimeToSystemTime(fileTime, time))
    {
        AppendTime(text, time);
    }
    return text;
}

void AppendLines(std::string& out, const char* name, const std::vector<std::string>& lines)
{
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        std::string head = i == 0 ? name : "";
        head.resize(12, ' ');
        out += head + lines[i] + "\n";
    }
}

void AppendRule(std::string& out, const Show& show)
{
    const PatternView& view = show.view;
    AppendLines(out, "Rule", {RuleInWords(view)});
    AppendLines(out, "Remarks", RuleRemarks(view));
    if (!view.IsComplete())
    {
        return;
    }
    AppendLines(out, "Starts", {DateOfMinutes(view.tail.startDate)});
    AppendLines(out, "Ends", {EndInWords(view)});
    const std::uint32_t length = view.tail.endTimeOffset - view.tail.startTimeOffset;
    AppendLines(out,
                "Time",
                {TimeOfMinutes(view.tail.startTimeOffset) + " - " +
                 TimeOfMinutes(view.tail.endTimeOffset) + " local, " + std::to_string(length) +
                 " minutes"});
    AppendLines(out, "Zone", ZoneInWords(show.zoneInfo, show.zone.size()));
    std::vector<std::string> exceptions;
    for (const auto& [date, info] : view.exceptions)
    {
        exceptions.push_back(ExceptionInWords(date, info, view));
    }
    AppendLines(
        out, "Exceptions", exceptions.empty() ? std::vector<std::string>{"none"} : exceptions);
    if (view.tailResult.warning != TailWarning::None)
    {
        AppendLines(out,
                    "Warning",
                    {std::to_string(static_cast<unsigned>(view.tailResult.warning)) +
                     " at offset " + std::to_string(view.tailResult.position - 4) + ": " +
                     WarningInWords(view.tailResult.warning)});
    }
}

/// The exception that an instance was made from; none for a regular one.
const RecurExceptionInfo* ExceptionOf(const Show& show, const RecurInstance& instance)
{
    const auto entry = show.view.exceptions.find(instance.subKey - show.view.tail.startTimeOffset);
    const bool isModified = entry != show.view.exceptions.end() &&
                            entry->second.state == kExceptionModified &&
                            entry->second.originalStart == instance.subKey;
    return isModified ? &entry->second : nullptr;
}

void AppendInstances(std::string& out, const Show& show, std::size_t modifiedCount)
{
    out += "\n" + std::to_string(show.instances.size()) + " instances from " + TextOf(show.from) +
           " to " + TextOf(show.to) + " UTC\n";
    std::size_t index = 0;
    for (const RecurInstance& instance : show.instances)
    {
        const bool isModified = index < modifiedCount;
        const RecurExceptionInfo* const info = isModified ? ExceptionOf(show, instance) : nullptr;
        const std::uint32_t local =
            info != nullptr ? info->start : instance.subKey + show.view.tail.startTimeOffset;
        std::string number = std::to_string(index++);
        number.insert(0, number.size() < 5 ? 5 - number.size() : 0, ' ');
        out += number + "  " + LongOfMinutes(local) + " local  ";
        AppendTime(out, instance.start);
        out += " - ";
        AppendTime(out, instance.end);
        out += " UTC  key " + std::to_string(instance.subKey);
        if (isModified)
        {
            out += instance.hasMeetingType != 0 && instance.meetingType == 7 ? "  cancelled"
                                                                             : "  modified";
            out += "  " + EscapedUtf8(instance.subject) + " | " + EscapedUtf8(instance.location);
        }
        out += "\n";
    }
}

/// Modified instances stand first, by their original date.
std::size_t CountModified(const Show& show)
{
    std::size_t count = 0;
    std::uint32_t last = 0;
    for (const RecurInstance& instance : show.instances)
    {
        if (ExceptionOf(show, instance) == nullptr || (count > 0 && instance.subKey <= last))
        {
            break;
        }
        last = instance.subKey;
        ++count;
    }
    return count;
}

CMonthCalendar CalendarOf(const Show& show, std::size_t modifiedCount)
{
    CMonthCalendar days;
    std::size_t index = 0;
    for (const RecurInstance& instance : show.instances)
    {
        const RecurExceptionInfo* const info =
            index++ < modifiedCount ? ExceptionOf(show, instance) : nullptr;
        if (info == nullptr)
        {
            days.Mark(instance.subKey / kMinutesPerDay, DayMark::Instance);
            continue;
        }
        const bool isCancelled = instance.hasMeetingType != 0 && instance.meetingType == 7;
        days.Mark(info->start / kMinutesPerDay,
                  isCancelled ? DayMark::Cancelled : DayMark::Changed);
    }
    const std::uint64_t from = dates::TicksOf(show.from) / calendar::kTicksPerMinute;
    const std::uint64_t to = dates::TicksOf(show.to) / calendar::kTicksPerMinute;
    for (const auto& [date, info] : show.view.exceptions)
    {
        if (info.originalStart >= from && info.originalStart <= to)
        {
            days.Mark(date / kMinutesPerDay,
                      info.state == kExceptionDeleted ? DayMark::Deleted : DayMark::MovedAway);
        }
    }
    return days;
}

} // namespace

int RunShow(const ShowOptions& options)
{
    const PatternSource pattern = ReadPatternSource(options.pattern);
    const PatternSource zone = ReadPatternSource(options.zone);
    for (const PatternSource* source : {&pattern, &zone})
    {
        if (!source->problem.empty())
        {
            std::fprintf(stderr, "dtrecur: %s\n", source->problem.c_str());
            return source->isUsage ? 2 : 1;
        }
    }
    Show show(options, pattern.bytes, zone.bytes);
    ChooseWindow(show);
    Expand(show);

    std::string out;
    AppendRule(out, show);
    const std::size_t modifiedCount = CountModified(show);
    AppendInstances(out, show, modifiedCount);
    const bool withColor = options.color == ColorChoice::Always ||
                           (options.color == ColorChoice::Auto && IsTerminalOutput());
    out += CalendarOf(show, modifiedCount).Draw(withColor);
    if (options.withTrace)
    {
        out += "\nTrace\n";
        for (const CTraceLines::Line& line : show.trace)
        {
            out += "  " + std::to_string(line.level) + " " + EscapedUtf8(WidenText(line.message)) +
                   "\n";
        }
    }
    return FlushOutput(out) ? 0 : 1;
}
