#include "AppointmentJson.h"

#include <nlohmann/json.hpp>

namespace dtclient
{
namespace
{
using Json = nlohmann::ordered_json;

// Texts come from whoever sent an invitation: a byte that is no UTF-8 must not cost the document.
constexpr auto kReplaceBadText = Json::error_handler_t::replace;

Json Value(std::int64_t number)
{
    return number;
}

Json Value(bool flag)
{
    return flag;
}

Json Value(const std::string& text)
{
    return text;
}

Json Value(const std::optional<CalendarTime>& time)
{
    return time ? Json(IsoUtcText(*time)) : Json(nullptr);
}

template <class Record, class Fields>
Json Object(const Record& record, const Fields& fields)
{
    Json object = Json::object();
    for (const auto& field : fields)
    {
        object[field.name] =
            std::visit([&](auto member) { return Value(record.*member); }, field.member);
    }
    return object;
}

Json List(const std::vector<Appointment>& appointments)
{
    Json list = Json::array();
    for (const Appointment& appointment : appointments)
    {
        Json attendees = Json::array();
        for (const Attendee& attendee : appointment.attendees)
        {
            attendees.push_back(Object(attendee, AttendeeFields()));
        }
        Json object = Object(appointment, AppointmentFields());
        object["attendees"] = std::move(attendees);
        list.push_back(std::move(object));
    }
    return list;
}
} // namespace

std::string AppointmentsJson(const std::vector<Appointment>& appointments)
{
    Json document = Json::object();
    document["appointments"] = List(appointments);
    return document.dump(2, ' ', false, kReplaceBadText);
}

std::string AppointmentEventJson(const std::string& event,
                                 const std::string& kind,
                                 const std::vector<Appointment>& appointments)
{
    Json line = Json::object();
    line["event"] = event;
    line["kind"] = kind;
    line["appointments"] = List(appointments);
    return line.dump(-1, ' ', false, kReplaceBadText);
}
} // namespace dtclient
