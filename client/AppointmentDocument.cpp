#include "AppointmentDocument.h"

#include <array>
#include <charconv>
#include <system_error>

#include "TaggedReader.h"

namespace dtclient
{
namespace
{
constexpr std::int64_t kMinutesPerDay = 1440;
constexpr std::int64_t kCancelledFlag = 4; // Of PidLidAppointmentStateFlags [MS-OXOCAL].
constexpr std::string_view kFolderFailureSubject = "####DTOIEX_OUTLOOK_MEETING_ERROR####";
constexpr std::int64_t kFolderFailureStatus = 5;

constexpr std::array<AppointmentField, 34> kAppointmentFields = {{
    {"subKey", &Appointment::subKey},
    {"subject", &Appointment::subject},
    {"location", &Appointment::location},
    {"description", &Appointment::description},
    {"hostName", &Appointment::hostName},
    {"hostEmail", &Appointment::hostEmail},
    {"duration", &Appointment::duration},
    {"meetStatus", &Appointment::meetStatus},
    {"isRecurrent", &Appointment::isRecurrent},
    {"recurrentType", &Appointment::recurrentType},
    {"recurrentPattern", &Appointment::recurrentPattern},
    {"profile", &Appointment::profile},
    {"store", &Appointment::store},
    {"isAllDayEvent", &Appointment::isAllDayEvent},
    {"responseStatus", &Appointment::responseStatus},
    {"busyStatus", &Appointment::busyStatus},
    {"tlvcOIEx", &Appointment::tlvcOIEx},
    {"desktoolsproperty", &Appointment::desktoolsproperty},
    {"UCCapabilities", &Appointment::ucCapabilities},
    {"startTime", &Appointment::startTime},
    {"endTime", &Appointment::endTime},
    {"firstTime", &Appointment::firstTime},
    {"recStateEntryID", &Appointment::recStateEntryID},
    {"recStateIDSize", &Appointment::recStateIDSize},
    {"timeZoneEntryID", &Appointment::timeZoneEntryID},
    {"timeZoneIDSize", &Appointment::timeZoneIDSize},
    {"entryID", &Appointment::entryID},
    {"entryIDSize", &Appointment::entryIDSize},
    {"instanceEntryID", &Appointment::instanceEntryID},
    {"instanceIDSize", &Appointment::instanceIDSize},
    {"storeEntryID", &Appointment::storeEntryID},
    {"storeIDSize", &Appointment::storeIDSize},
    {"UId", &Appointment::uid},
    {"xaltdescription", &Appointment::xaltdescription},
}};

constexpr std::array<AttendeeField, 5> kAttendeeFields = {{
    {"name", &Attendee::name},
    {"email", &Attendee::email},
    {"attendType", &Attendee::attendType},
    {"recipType", &Attendee::recipType},
    {"responseType", &Attendee::responseType},
}};

bool Convert(const TaggedValue& value, std::int64_t& number)
{
    const char* const end = value.text.data() + value.text.size();
    const auto result = std::from_chars(value.text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool Convert(const TaggedValue& value, bool& flag)
{
    flag = value.text == "TRUE";
    return flag || value.text == "FALSE";
}

bool Convert(const TaggedValue& value, std::string& text)
{
    // Plain values are written without escaping, so there is nothing to undo in them.
    text = value.inCData ? UnescapeText(value.text) : std::string(value.text);
    return true;
}

bool Convert(const TaggedValue& value, std::optional<CalendarTime>& time)
{
    time = ParseDocumentTime(value.text);
    if (!time)
    {
        return false;
    }
    if (!IsRealTime(*time))
    {
        time.reset();
    }
    return true;
}

class CDocumentParser
{
public:
    CDocumentParser(std::string_view document, DocumentError& error)
        : m_reader(document), m_error(error)
    {
    }

    bool ReadDocument(std::vector<Appointment>& appointments)
    {
        std::string_view name;
        if (m_reader.PeekStart(name) && name == "appointment")
        {
            return ReadAppointment(appointments) && ReadEndOfText();
        }
        if (!m_reader.TakeStart("appointments"))
        {
            return Fail("the document does not begin with <appointments> or <appointment>");
        }
        while (m_reader.PeekStart(name))
        {
            const bool read =
                name == "appointment" ? ReadAppointment(appointments) : SkipUnknown(name);
            if (!read)
            {
                return false;
            }
        }
        if (!m_reader.TakeEnd("appointments"))
        {
            return Fail("expected </appointments>");
        }
        return ReadEndOfText();
    }

private:
    bool Fail(std::string what)
    {
        m_error.offset = m_reader.Offset();
        m_error.what = std::move(what);
        return false;
    }

    bool ReadEndOfText() { return m_reader.AtEnd() || Fail("text behind the end of the document"); }

    bool SkipUnknown(std::string_view name)
    {
        return m_reader.SkipElement(name) || Fail("<" + std::string(name) + "> has no end");
    }

    // One element that the table knows, or one to skip.
    template <class Record, class Fields>
    bool ReadField(std::string_view name, const Fields& fields, Record& record)
    {
        for (const auto& field : fields)
        {
            if (name == field.name)
            {
                TaggedValue value;
                if (!m_reader.TakeElement(name, value))
                {
                    return Fail("<" + std::string(name) + "> has no end");
                }
                return std::visit([&](auto member) { return Convert(value, record.*member); },
                                  field.member) ||
                       Fail("the value of <" + std::string(name) + "> cannot be read");
            }
        }
        return SkipUnknown(name);
    }

    bool ReadAppointment(std::vector<Appointment>& appointments)
    {
        Appointment appointment;
        if (!m_reader.TakeStart("appointment"))
        {
            return Fail("expected <appointment>");
        }
        std::string_view name;
        while (m_reader.PeekStart(name))
        {
            const bool read = name == "attendees"
                                  ? ReadAttendees(appointment.attendees)
                                  : ReadField(name, AppointmentFields(), appointment);
            if (!read)
            {
                return false;
            }
        }
        if (!m_reader.TakeEnd("appointment"))
        {
            return Fail("expected </appointment>");
        }
        appointments.push_back(std::move(appointment));
        return true;
    }

    bool ReadAttendees(std::vector<Attendee>& attendees)
    {
        if (!m_reader.TakeStart("attendees"))
        {
            return Fail("expected <attendees>");
        }
        std::string_view name;
        while (m_reader.PeekStart(name))
        {
            const bool read = name == "attendee" ? ReadAttendee(attendees) : SkipUnknown(name);
            if (!read)
            {
                return false;
            }
        }
        return m_reader.TakeEnd("attendees") || Fail("expected </attendees>");
    }

    bool ReadAttendee(std::vector<Attendee>& attendees)
    {
        Attendee attendee;
        if (!m_reader.TakeStart("attendee"))
        {
            return Fail("expected <attendee>");
        }
        std::string_view name;
        while (m_reader.PeekStart(name))
        {
            if (!ReadField(name, AttendeeFields(), attendee))
            {
                return false;
            }
        }
        if (!m_reader.TakeEnd("attendee"))
        {
            return Fail("expected </attendee>");
        }
        attendees.push_back(std::move(attendee));
        return true;
    }

    CTaggedReader m_reader;
    DocumentError& m_error;
};
} // namespace

std::span<const AppointmentField> AppointmentFields()
{
    return kAppointmentFields;
}

std::span<const AttendeeField> AttendeeFields()
{
    return kAttendeeFields;
}

bool ParseAppointments(std::string_view document,
                       std::vector<Appointment>& appointments,
                       DocumentError& error)
{
    appointments.clear();
    return CDocumentParser(document, error).ReadDocument(appointments);
}

bool IsFolderFailure(const Appointment& appointment)
{
    return appointment.meetStatus == kFolderFailureStatus &&
           appointment.subject == kFolderFailureSubject;
}

bool IsChangedInstance(const Appointment& appointment)
{
    return appointment.isRecurrent && appointment.subKey % kMinutesPerDay != 0;
}

bool IsCancelled(const Appointment& appointment)
{
    return (appointment.meetStatus & kCancelledFlag) != 0 && !IsFolderFailure(appointment);
}
} // namespace dtclient
