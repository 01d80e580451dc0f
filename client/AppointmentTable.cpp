#include "AppointmentTable.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ColumnText.h"

namespace dtclient
{
namespace
{
constexpr std::size_t kSubjectColumns = 40;
constexpr std::size_t kPlaceColumns = 24;
constexpr std::size_t kHostColumns = 24;

constexpr std::int64_t kMinutesPerHour = 60;
constexpr std::int64_t kMinutesPerDay = 1440;

std::string StartText(const Appointment& appointment, const LocalClock& toLocal)
{
    if (!appointment.startTime)
    {
        return "no time";
    }
    const CalendarTime local = toLocal(*appointment.startTime);
    std::string text = WeekdayName(local);
    text += ' ';
    text += MinuteText(local);
    // A whole day that begins at the machine's own midnight needs no time of day. One made in
    // another zone does, or it would seem to lie on the wrong day.
    if (appointment.isAllDayEvent && local.hour == 0 && local.minute == 0)
    {
        text.resize(text.size() - std::string_view(" 00:00").size());
    }
    return text;
}

std::vector<std::string> Cells(const Appointment& appointment, const LocalClock& toLocal)
{
    const std::string& host =
        appointment.hostName.empty() ? appointment.hostEmail : appointment.hostName;
    return {
        StartText(appointment, toLocal),
        DurationText(appointment.duration),
        CellText(appointment.subject.empty() ? "(no subject)" : appointment.subject,
                 kSubjectColumns),
        CellText(appointment.location, kPlaceColumns),
        CellText(host, kHostColumns),
        AnswerText(appointment.responseStatus),
        MarksText(appointment),
    };
}

std::int64_t SortKey(const Appointment& appointment)
{
    return appointment.startTime ? SecondsSince1601(*appointment.startTime) : 0;
}
} // namespace

std::string DurationText(std::int64_t minutes)
{
    if (minutes < 0)
    {
        // An appointment whose end lies before its start; the number says more than a phrase.
        return std::to_string(minutes) + " min";
    }
    const std::int64_t days = minutes / kMinutesPerDay;
    const std::int64_t hours = minutes % kMinutesPerDay / kMinutesPerHour;
    const std::int64_t rest = minutes % kMinutesPerHour;
    std::string text;
    const auto append = [&text](std::int64_t count, const std::string& unit) {
        text += text.empty() ? "" : " ";
        text += std::to_string(count) + " " + unit;
    };
    if (days != 0)
    {
        append(days, days == 1 ? "day" : "days");
    }
    if (hours != 0)
    {
        append(hours, "h");
    }
    if (rest != 0 || text.empty())
    {
        append(rest, "min");
    }
    return text;
}

std::string AnswerText(std::int64_t responseStatus)
{
    // PidLidResponseStatus of [MS-OXOCAL].
    switch (responseStatus)
    {
    case 0:
        return "";
    case 1:
        return "organizer";
    case 2:
        return "tentative";
    case 3:
        return "accepted";
    case 4:
        return "declined";
    case 5:
        return "not answered";
    default:
        return "answer " + std::to_string(responseStatus);
    }
}

std::string MarksText(const Appointment& appointment)
{
    std::string text;
    const auto append = [&text](bool applies, const char* mark) {
        if (applies)
        {
            text += text.empty() ? "" : ", ";
            text += mark;
        }
    };
    append(appointment.isRecurrent, "recurring");
    append(IsChangedInstance(appointment), "changed");
    append(IsCancelled(appointment), "cancelled");
    append(appointment.isAllDayEvent, "all day");
    return text;
}

std::string AppointmentsTable(std::vector<Appointment> appointments, const LocalClock& toLocal)
{
    std::erase_if(appointments, IsFolderFailure);
    if (appointments.empty())
    {
        return "";
    }
    // The server lists folder by folder, and within a series the changed instances first.
    std::stable_sort(appointments.begin(),
                     appointments.end(),
                     [](const Appointment& left, const Appointment& right) {
                         return SortKey(left) < SortKey(right);
                     });
    std::vector<std::vector<std::string>> rows;
    rows.push_back({"Start", "Length", "Subject", "Place", "Host", "Answer", "Marks"});
    for (const Appointment& appointment : appointments)
    {
        rows.push_back(Cells(appointment, toLocal));
    }
    return TableText(rows);
}

std::string AppointmentLine(const Appointment& appointment, const LocalClock& toLocal)
{
    std::string line;
    for (const std::string& cell : Cells(appointment, toLocal))
    {
        if (!cell.empty())
        {
            line += line.empty() ? "" : "  ";
            line += cell;
        }
    }
    return line;
}
} // namespace dtclient
