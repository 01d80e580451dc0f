#include <string_view>
#include <vector>

#include "AppointmentJson.h"
#include "AppointmentTable.h"
#include "FuzzInput.h"
#include "PlainDocument.h"

/// Reads any bytes as the server's documents, and prints what came of them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    const auto sameZone = [](const dtclient::CalendarTime& utc) { return utc; };

    std::vector<dtclient::Appointment> appointments;
    dtclient::DocumentError error;
    const bool read = dtclient::ParseAppointments(document, appointments, error);
    Require(read || (!error.what.empty() && error.offset <= size));
    Require(dtclient::AppointmentsJson(appointments).starts_with("{\n  \"appointments\": ["));
    static_cast<void>(dtclient::AppointmentsTable(appointments, sameZone));
    for (const dtclient::Appointment& appointment : appointments)
    {
        const std::string line = dtclient::AppointmentLine(appointment, sameZone);
        Require(line.find_first_of("\r\n\x1B") == std::string::npos);
    }

    dtclient::PlainDocument plain;
    Require(dtclient::ParsePlainDocument(document, plain, error) || !error.what.empty());
    static_cast<void>(dtclient::PlainDocumentTable(plain));
    static_cast<void>(dtclient::PlainDocumentJson(plain));
    return 0;
}
