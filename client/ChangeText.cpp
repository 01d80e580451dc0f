#include "ChangeText.h"

#include <algorithm>

#include "AppointmentJson.h"
#include "ColumnText.h"
#include "PlainDocument.h"

namespace dtclient
{
namespace
{
constexpr const char* kCalendarEvent = "OnCalendarUpdated";
constexpr const char* kContactEvent = "OnContactUpdated";
constexpr std::size_t kKindWidth = 9; // "updated" and two blanks
constexpr std::size_t kContactColumns = 60;

std::string KindColumn(std::uint32_t type)
{
    std::string kind = ChangeKind(type);
    kind.resize(std::max(kind.size() + 2, kKindWidth), ' ');
    return kind;
}

// A comment before the document keeps the stream readable for programs that take XML.
std::string XmlText(const char* event, std::uint32_t type, const std::string& document)
{
    return std::string("<!-- ") + event + " " + ChangeKind(type) + " -->\n" + document + "\n";
}
} // namespace

std::string ChangeKind(std::uint32_t type)
{
    switch (type)
    {
    case 1:
        return "added";
    case 2:
        return "deleted";
    case 3:
        return "updated";
    default:
        return "change " + std::to_string(type);
    }
}

std::string CalendarChangeText(OutputForm form,
                               std::uint32_t type,
                               const std::string& document,
                               const LocalClock& toLocal)
{
    if (form == OutputForm::Xml)
    {
        return XmlText(kCalendarEvent, type, document);
    }
    std::vector<Appointment> appointments;
    DocumentError error;
    const bool readable = !document.empty() && ParseAppointments(document, appointments, error);
    if (form == OutputForm::Json)
    {
        return AppointmentEventJson(kCalendarEvent, ChangeKind(type), appointments) + "\n";
    }
    if (!readable)
    {
        return KindColumn(type) +
               (document.empty() ? "an appointment; the server gave no details"
                                 : "an appointment; its details cannot be read: " + error.what) +
               "\n";
    }
    std::string text;
    for (const Appointment& appointment : appointments)
    {
        text += KindColumn(type) + AppointmentLine(appointment, toLocal) + "\n";
    }
    return text;
}

std::string ContactChangeText(OutputForm form, std::uint32_t type, const std::string& document)
{
    if (form == OutputForm::Xml)
    {
        return XmlText(kContactEvent, type, document);
    }
    PlainDocument contact;
    DocumentError error;
    const bool readable = !document.empty() && ParsePlainDocument(document, contact, error);
    if (form == OutputForm::Json)
    {
        if (!readable)
        {
            contact = PlainDocument{"ContactInfo", {}};
        }
        return PlainEventJson(kContactEvent, ChangeKind(type), contact) + "\n";
    }
    if (!readable)
    {
        return KindColumn(type) + "a contact; the server gave no details that can be read\n";
    }
    std::string line = KindColumn(type) + CellText(contact.Find("DisplayName"), kContactColumns);
    if (const std::string address = CellText(contact.Find("EmailAddress"), kContactColumns);
        !address.empty())
    {
        line += "  <" + address + ">";
    }
    return line + "\n";
}

std::string OtherEventText(OutputForm form,
                           const std::string& event,
                           std::uint32_t number,
                           const std::string& text)
{
    switch (form)
    {
    case OutputForm::Xml:
        return "<!-- " + event + " " + std::to_string(number) + " -->\n" + text + "\n";
    case OutputForm::Json:
        return NumberEventJson(event, number) + "\n";
    case OutputForm::Table:
        break;
    }
    return event + "  " + std::to_string(number) + ", " + std::to_string(text.size()) +
           " bytes of text\n";
}
} // namespace dtclient
