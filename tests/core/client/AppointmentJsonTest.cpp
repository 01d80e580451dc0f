#include "AppointmentJson.h"

#include <gtest/gtest.h>

#include "DocumentSamples.h"

using dtclient::Appointment;
using dtclient::AppointmentsJson;

namespace
{
std::vector<Appointment> Parse(const std::string& document)
{
    std::vector<Appointment> appointments;
    dtclient::DocumentError error;
    EXPECT_TRUE(dtclient::ParseAppointments(document, appointments, error)) << error.what;
    return appointments;
}
} // namespace

TEST(AppointmentJson, AFullRecordKeepsNamesOrderAndKindsOfItsElements)
{
    const char* const kExpected = R"({
  "appointments": [
    {
      "subKey": 223655400,
      "subject": "A & B <now>",
      "location": "Room 5",
      "description": "line 1\r\nline 2",
      "hostName": "Ana Diaz",
      "hostEmail": "ana@example.org",
      "duration": 90,
      "meetStatus": 3,
      "isRecurrent": true,
      "recurrentType": 2,
      "recurrentPattern": "every week",
      "profile": "R&D",
      "store": "ana@example.org",
      "isAllDayEvent": false,
      "responseStatus": 3,
      "busyStatus": 2,
      "tlvcOIEx": "oi",
      "desktoolsproperty": "dt",
      "UCCapabilities": "uc",
      "startTime": "2026-11-02T14:30:00Z",
      "endTime": "2026-11-02T16:00:00Z",
      "firstTime": "2026-10-05T13:30:05Z",
      "recStateEntryID": "01ABFF",
      "recStateIDSize": 3,
      "timeZoneEntryID": "C4FF",
      "timeZoneIDSize": 2,
      "entryID": "AA",
      "entryIDSize": 1,
      "instanceEntryID": "BBCC",
      "instanceIDSize": 2,
      "storeEntryID": "DD",
      "storeIDSize": 1,
      "UId": "040000008200E000",
      "xaltdescription": "<p>hi</p>",
      "attendees": [
        {
          "name": "Ana Diaz",
          "email": "ana@example.org",
          "attendType": 3,
          "recipType": 1,
          "responseType": 0
        },
        {
          "name": "Li & Co",
          "email": "li@example.org",
          "attendType": 1,
          "recipType": 2,
          "responseType": 3
        }
      ]
    }
  ]
})";
    EXPECT_EQ(AppointmentsJson(Parse(samples::Listing(samples::kFullAppointment))), kExpected);
}

TEST(AppointmentJson, NothingFoundIsAnEmptyList)
{
    EXPECT_EQ(AppointmentsJson({}), "{\n  \"appointments\": []\n}");
}

TEST(AppointmentJson, AnUnsetTimeIsNull)
{
    const std::string json = AppointmentsJson(Parse(samples::Listing(samples::kEmptyAppointment)));

    EXPECT_NE(json.find("\"startTime\": null,"), std::string::npos);
    EXPECT_NE(json.find("\"attendees\": []"), std::string::npos);
}

TEST(AppointmentJson, ABrokenByteDoesNotCostTheDocument)
{
    Appointment appointment;
    appointment.subject = "a\xFF"
                          "b";

    const std::string json = AppointmentsJson({appointment});

    EXPECT_NE(json.find("\"subject\": \"a\xEF\xBF\xBD"
                        "b\""),
              std::string::npos);
}

TEST(AppointmentJson, ControlCharactersAreEscaped)
{
    Appointment appointment;
    appointment.subject = "bell\x07 tab\t quote\" back\\";

    EXPECT_NE(
        AppointmentsJson({appointment}).find(R"("subject": "bell\u0007 tab\t quote\" back\\",)"),
        std::string::npos);
}

TEST(AppointmentJson, AnEventStandsInOneLine)
{
    const std::string line =
        dtclient::AppointmentEventJson("OnCalendarUpdated", "added", {Appointment{}});

    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(line.rfind(
                  R"({"event":"OnCalendarUpdated","kind":"added","appointments":[{"subKey":0,)", 0),
              0U);
}
