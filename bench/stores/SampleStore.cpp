#include "SampleStore.h"

#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdio>

#include "Trace.h"

namespace
{

constexpr std::uint32_t kMinutesOfDay = 600; // from 7:00 on
constexpr std::uint32_t kFirstMinute = 420;

constexpr const char* kSentence = "We go through the figures, then the plans. ";
constexpr const char* kHtmlSentence = "<p><b>We</b> go through the figures, then the plans.</p>";

/// Appends what printf would print, up to 511 characters.
DT_PRINTF_FORMAT(2, 3)
void Print(std::string& text, const char* format, ...)
{
    std::array<char, 512> line{};
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    text.append(line.data(), static_cast<std::size_t>(length));
}

std::string Repeated(const char* sentence, std::size_t length)
{
    std::string text;
    while (text.size() < length)
    {
        text += sentence;
    }
    return text;
}

/// The n-th working day from Monday, 2026-11-02 on.
std::chrono::year_month_day WorkingDay(std::uint32_t number)
{
    using namespace std::chrono;
    return sys_days(2026y / November / 2) + days(number / 5 * 7 + number % 5);
}

std::string Date(const std::chrono::year_month_day& day)
{
    std::string text;
    Print(text,
          "%04d-%02u-%02u",
          static_cast<int>(day.year()),
          static_cast<unsigned>(day.month()),
          static_cast<unsigned>(day.day()));
    return text;
}

std::string Moment(const std::string& date, std::uint32_t minute)
{
    std::string text = date;
    Print(text, "T%02u:%02u:00Z", minute / 60, minute % 60);
    return text;
}

void AddAttendee(std::string& text, std::uint32_t number)
{
    Print(text,
          "%s{\"PR_RECIPIENT_TYPE\": 1, \"PR_DISPLAY_NAME_W\": \"Guest %u\", \"PR_ADDRTYPE_W\": "
          "\"SMTP\", "
          "\"PR_EMAIL_ADDRESS_W\": \"guest%u@nordlys.example\", "
          "\"PR_SMTP_ADDRESS_W\": \"guest%u@nordlys.example\", "
          "\"PR_RECIPIENT_TRACKSTATUS\": %u, \"PR_RECIPIENT_FLAGS\": %u}",
          number == 0 ? "" : ",\n          ",
          number,
          number,
          number,
          number % 6,
          number == 0 ? 3U : 1U);
}

void AddSeries(std::string& text, const std::string& date, std::uint32_t day, std::uint32_t minute)
{
    static constexpr std::array<const char*, 5> kDays = {"MO", "TU", "WE", "TH", "FR"};
    Print(text, "          \"PidLidRecurrenceType\": 2,\n");
    Print(text, "          \"PidLidRecurrencePattern\": \"every week\",\n");
    Print(text,
          "          \"PidLidTimeZoneStruct\": {\"timeZone\": {\"bias\": 0}},\n"
          "          \"PidLidAppointmentRecur\": {\"recurrence\": {\"frequency\": \"weekly\", "
          "\"days\": [\"%s\"], \"start\": \"%s\", \"startMinute\": %u, \"endMinute\": %u, "
          "\"end\": \"never\"}},\n",
          kDays[day % kDays.size()],
          date.c_str(),
          minute,
          minute + 30);
}

void AddMessage(std::string& text,
                const SampleShape& shape,
                std::uint32_t number,
                const std::string& body,
                const std::string& html)
{
    const std::uint32_t day = number % shape.days;
    const std::uint32_t minute = kFirstMinute + number / shape.days * 5 % kMinutesOfDay;
    const std::string date = Date(WorkingDay(day));
    const bool recurring = shape.recurringEvery != 0 && number % shape.recurringEvery == 0;
    const std::uint32_t revision = number < shape.revised ? shape.revision : 0;
    Print(text,
          "%s      {\n        \"id\": %u,\n        \"folder\": %u,\n"
          "        \"class\": \"IPM.Appointment\",\n        \"properties\": {\n",
          number == 0 ? "" : ",\n",
          static_cast<unsigned>(kSampleFirstMessage + number),
          static_cast<unsigned>(kSampleCalendar));
    // The multiplication scatters the subjects, so that sorting by them has something to do.
    Print(text,
          "          \"PR_SUBJECT_W\": \"Planning %08x, take %u\",\n"
          "          \"PidLidLocation\": \"Room %u, take %u\",\n",
          number * 2654435761U,
          revision,
          number % 40,
          revision);
    text += "          \"PR_BODY_W\": \"" + body + "\",\n";
    text += "          \"PR_BODY_HTML_W\": \"" + html + "\",\n";
    Print(text,
          "          \"PidLidBusyStatus\": 2,\n          \"PidLidAppointmentStateFlags\": 1,\n"
          "          \"PidLidResponseStatus\": 1,\n          \"PidLidAppointmentSubType\": false,\n"
          "          \"PidLidAppointmentDuration\": 30,\n          \"PidLidRecurring\": %s,\n"
          "          \"PidLidGlobalObjectId\": {\"globalObjectId\": "
          "\"bench-%08u@nordlys.example\"},\n",
          recurring ? "true" : "false",
          number);
    if (recurring)
    {
        AddSeries(text, date, day, minute);
    }
    const std::string start = Moment(date, minute);
    const std::string end = Moment(date, minute + 30);
    Print(text,
          "          \"PidLidAppointmentStartWhole\": \"%s\",\n"
          "          \"PidLidAppointmentEndWhole\": \"%s\",\n"
          "          \"PidLidClipStart\": \"%s\",\n          \"PidLidClipEnd\": \"%s\"\n        }",
          start.c_str(),
          end.c_str(),
          start.c_str(),
          recurring ? "4500-08-31T23:59:00Z" : end.c_str());
    if (shape.attendees != 0)
    {
        text += ",\n        \"recipients\": [\n          ";
        for (std::uint32_t attendee = 0; attendee < shape.attendees; ++attendee)
        {
            AddAttendee(text, attendee);
        }
        text += "\n        ]";
    }
    text += "\n      }";
}

constexpr const char* kFolders = R"(
    "folders": [
      {"id": 2, "parent": null, "name": "", "role": "root"},
      {"id": 3, "parent": 2, "name": "Top of personal folders", "role": "ipmSubtree"},
      {"id": 4, "parent": 3, "name": "Inbox", "role": "inbox", "class": "IPF.Note"},
      {"id": 5, "parent": 3, "name": "Outbox", "role": "outbox", "class": "IPF.Note"},
      {"id": 6, "parent": 3, "name": "Sent Items", "role": "sentItems", "class": "IPF.Note"},
      {"id": 7, "parent": 3, "name": "Deleted Items", "role": "deletedItems", "class": "IPF.Note"},
      {"id": 9, "parent": 3, "name": "Calendar", "role": "calendar", "class": "IPF.Appointment"},
      {"id": 10, "parent": 3, "name": "Contacts", "role": "contacts", "class": "IPF.Contact"}
    ],
    "messages": [
)";

constexpr const char* kAddressBook = R"(
  "addressBook": {
    "uid": "B3A1E9F04C5D4682977E10AABBCCDDEE",
    "containers": [
      {"id": 11, "parent": null, "properties": {"PR_DISPLAY_NAME_W": "Global Address List",
        "PR_CONTAINER_FLAGS": 9, "PR_DISPLAY_TYPE": 131072}}
    ],
    "entries": [
      {"id": 12, "containers": [11], "properties": {
        "PR_DISPLAY_NAME_W": "Ada Quist", "PR_GIVEN_NAME_W": "Ada", "PR_SURNAME_W": "Quist",
        "PR_ADDRTYPE_W": "SMTP", "PR_EMAIL_ADDRESS_W": "ada.quist@nordlys.example",
        "PR_SMTP_ADDRESS_W": "ada.quist@nordlys.example", "PR_ACCOUNT_W": "ada.quist"}}
    ]
  }
}
)";

} // namespace

std::string SampleStoreText(const SampleShape& shape)
{
    const std::string body = Repeated(kSentence, shape.bodyLength);
    const std::string html =
        "<html><body>" + Repeated(kHtmlSentence, shape.bodyLength) + "</body></html>";
    std::string text = "{\n  \"format\": \"mapistore\",\n  \"version\": 1,\n";
    Print(text,
          "  \"revision\": %u,\n  \"nextId\": %u,\n"
          "  \"profiles\": [{\"name\": \"Demo\", \"default\": true, \"identity\": 12, \"stores\": "
          "[1]}],\n",
          shape.revision,
          static_cast<unsigned>(kSampleFirstMessage + shape.messages));
    Print(text,
          "  \"stores\": [{\n    \"id\": %u,\n    \"name\": \"ada.quist@nordlys.example\",\n"
          "    \"uid\": \"%s\",\n    \"default\": true,\n    \"personal\": true,",
          static_cast<unsigned>(kSampleStore),
          kSampleUid);
    text += kFolders;
    for (std::uint32_t number = 0; number < shape.messages; ++number)
    {
        AddMessage(text, shape, number, body, html);
    }
    text += "\n    ]\n  }],";
    return text + kAddressBook;
}
