#include "AppointmentDocument.h"

#include <gtest/gtest.h>

#include "DocumentSamples.h"

using dtclient::Appointment;
using dtclient::CalendarTime;
using dtclient::DocumentError;

namespace
{
std::vector<Appointment> Parse(const std::string& document)
{
    std::vector<Appointment> appointments;
    DocumentError error;
    EXPECT_TRUE(dtclient::ParseAppointments(document, appointments, error)) << error.what;
    return appointments;
}

DocumentError ErrorOf(const std::string& document)
{
    std::vector<Appointment> appointments;
    DocumentError error;
    EXPECT_FALSE(dtclient::ParseAppointments(document, appointments, error)) << document;
    return error;
}
} // namespace

TEST(AppointmentDocument, EveryElementOfAFullRecordIsRead)
{
    const std::vector<Appointment> list = Parse(samples::Listing(samples::kFullAppointment));

    ASSERT_EQ(list.size(), 1U);
    const Appointment& one = list[0];
    EXPECT_EQ(one.subKey, 223655400);
    EXPECT_EQ(one.subject, "A & B <now>");
    EXPECT_EQ(one.location, "Room 5");
    EXPECT_EQ(one.description, "line 1\r\nline 2");
    EXPECT_EQ(one.hostName, "Ana Diaz");
    EXPECT_EQ(one.hostEmail, "ana@example.org");
    EXPECT_EQ(one.duration, 90);
    EXPECT_EQ(one.meetStatus, 3);
    EXPECT_TRUE(one.isRecurrent);
    EXPECT_EQ(one.recurrentType, 2);
    EXPECT_EQ(one.recurrentPattern, "every week");
    EXPECT_EQ(one.store, "ana@example.org");
    EXPECT_FALSE(one.isAllDayEvent);
    EXPECT_EQ(one.responseStatus, 3);
    EXPECT_EQ(one.busyStatus, 2);
    EXPECT_EQ(one.tlvcOIEx, "oi");
    EXPECT_EQ(one.desktoolsproperty, "dt");
    EXPECT_EQ(one.ucCapabilities, "uc");
    EXPECT_EQ(one.startTime, (CalendarTime{2026, 11, 2, 14, 30, 0}));
    EXPECT_EQ(one.endTime, (CalendarTime{2026, 11, 2, 16, 0, 0}));
    EXPECT_EQ(one.firstTime, (CalendarTime{2026, 10, 5, 13, 30, 5}));
    EXPECT_EQ(one.recStateEntryID, "01ABFF");
    EXPECT_EQ(one.recStateIDSize, 3);
    EXPECT_EQ(one.timeZoneEntryID, "C4FF");
    EXPECT_EQ(one.timeZoneIDSize, 2);
    EXPECT_EQ(one.entryID, "AA");
    EXPECT_EQ(one.entryIDSize, 1);
    EXPECT_EQ(one.instanceEntryID, "BBCC");
    EXPECT_EQ(one.instanceIDSize, 2);
    EXPECT_EQ(one.storeEntryID, "DD");
    EXPECT_EQ(one.storeIDSize, 1);
    EXPECT_EQ(one.uid, "040000008200E000");
    EXPECT_EQ(one.xaltdescription, "<p>hi</p>");
}

TEST(AppointmentDocument, AttendeesKeepTheirOrderAndTheirCrossedNumbers)
{
    const std::vector<Appointment> list = Parse(samples::Listing(samples::kFullAppointment));

    ASSERT_EQ(list.size(), 1U);
    ASSERT_EQ(list[0].attendees.size(), 2U);
    EXPECT_EQ(list[0].attendees[0].name, "Ana Diaz");
    EXPECT_EQ(list[0].attendees[0].attendType, 3);
    EXPECT_EQ(list[0].attendees[0].recipType, 1);
    EXPECT_EQ(list[0].attendees[1].name, "Li & Co");
    EXPECT_EQ(list[0].attendees[1].email, "li@example.org");
    EXPECT_EQ(list[0].attendees[1].recipType, 2);
    EXPECT_EQ(list[0].attendees[1].responseType, 3);
}

TEST(AppointmentDocument, AnEmptyRecordHasNoTimesAndNoTexts)
{
    const std::vector<Appointment> list = Parse(samples::Listing(samples::kEmptyAppointment));

    ASSERT_EQ(list.size(), 1U);
    EXPECT_FALSE(list[0].startTime.has_value());
    EXPECT_FALSE(list[0].endTime.has_value());
    EXPECT_FALSE(list[0].firstTime.has_value());
    EXPECT_EQ(list[0].subject, "");
    EXPECT_TRUE(list[0].attendees.empty());
}

TEST(AppointmentDocument, AnEmptyListingHoldsNothing)
{
    EXPECT_TRUE(Parse("<appointments></appointments>").empty());
}

TEST(AppointmentDocument, RecordsKeepTheOrderOfTheDocument)
{
    const std::vector<Appointment> list =
        Parse(samples::Listing(samples::kFullAppointment + samples::kEmptyAppointment));

    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].subject, "A & B <now>");
    EXPECT_EQ(list[1].subject, "");
}

TEST(AppointmentDocument, AChangeEventCarriesOneBareAppointment)
{
    EXPECT_EQ(Parse(samples::kFullAppointment).size(), 1U);
}

TEST(AppointmentDocument, PlainValuesAreTakenAsTheyStandEvenWithMarkup)
{
    std::string document = samples::Listing(samples::kFullAppointment);
    const std::string before = "<profile>R&D</profile>";
    document.replace(document.find(before), before.size(), "<profile>a<b>&amp;c</profile>");

    const std::vector<Appointment> list = Parse(document);

    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].profile, "a<b>&amp;c");
    EXPECT_EQ(list[0].store, "ana@example.org");
}

TEST(AppointmentDocument, EscapedTextIsUndoneOnceOnly)
{
    const std::vector<Appointment> list = Parse(
        "<appointment><subject><![CDATA[&amp;lt; &amp;amp; &quot;]]></subject></appointment>");

    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].subject, "&lt; &amp; &quot;");
}

TEST(AppointmentDocument, UnknownElementsAreSkippedAndMissingOnesKeepTheirDefaults)
{
    const std::vector<Appointment> list =
        Parse("<appointments><note>x</note><appointment><mood><![CDATA[good]]></mood>"
              "<subject><![CDATA[S]]></subject></appointment></appointments>");

    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].subject, "S");
    EXPECT_EQ(list[0].duration, 0);
}

TEST(AppointmentDocument, NegativeNumbersAreNumbers)
{
    const std::vector<Appointment> list =
        Parse("<appointment><duration>-15</duration></appointment>");

    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].duration, -15);
}

TEST(AppointmentDocument, ADayThatDoesNotExistIsNoTime)
{
    const std::vector<Appointment> list =
        Parse("<appointment><startTime>02/30/2026 10:00:00</startTime></appointment>");

    ASSERT_EQ(list.size(), 1U);
    EXPECT_FALSE(list[0].startTime.has_value());
}

TEST(AppointmentDocument, WhatIsNoListingIsRefusedAtItsFirstByte)
{
    EXPECT_EQ(ErrorOf("hello").offset, 0U);
    EXPECT_EQ(ErrorOf("").what, "the document does not begin with <appointments> or <appointment>");
}

TEST(AppointmentDocument, AWrongValueIsNamedWithItsElement)
{
    EXPECT_EQ(ErrorOf("<appointment><duration>long</duration></appointment>").what,
              "the value of <duration> cannot be read");
    EXPECT_EQ(ErrorOf("<appointment><isRecurrent>true</isRecurrent></appointment>").what,
              "the value of <isRecurrent> cannot be read");
    EXPECT_EQ(ErrorOf("<appointment><startTime>2026-11-02</startTime></appointment>").what,
              "the value of <startTime> cannot be read");
}

TEST(AppointmentDocument, TextBehindTheEndIsRefused)
{
    EXPECT_EQ(ErrorOf("<appointments></appointments>x").what,
              "text behind the end of the document");
}

TEST(AppointmentDocument, EveryCutOfADocumentIsRefused)
{
    const std::string whole = samples::Listing(samples::kFullAppointment);
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        std::vector<Appointment> appointments;
        DocumentError error;

        EXPECT_FALSE(dtclient::ParseAppointments(whole.substr(0, length), appointments, error))
            << length;
        EXPECT_LE(error.offset, length);
    }
}

TEST(AppointmentDocument, RecordsBeforeTheDamageAreKept)
{
    std::vector<Appointment> appointments;
    DocumentError error;

    EXPECT_FALSE(dtclient::ParseAppointments(
        "<appointments>" + samples::kFullAppointment + "<appointment>", appointments, error));

    EXPECT_EQ(appointments.size(), 1U);
    EXPECT_EQ(error.what, "expected </appointment>");
}

TEST(AppointmentDocument, OnlyTheMarkerNameWithItsStatusIsAFolderFailure)
{
    Appointment appointment;
    appointment.subject = "####DTOIEX_OUTLOOK_MEETING_ERROR####";
    EXPECT_FALSE(dtclient::IsFolderFailure(appointment));
    appointment.meetStatus = 5;
    EXPECT_TRUE(dtclient::IsFolderFailure(appointment));
    EXPECT_FALSE(dtclient::IsCancelled(appointment));
    appointment.subject = "another";
    EXPECT_FALSE(dtclient::IsFolderFailure(appointment));
}

TEST(AppointmentDocument, AChangedInstanceCarriesATimeOfDayInItsSubKey)
{
    Appointment appointment;
    appointment.isRecurrent = true;
    appointment.subKey = 223655040; // a midnight
    EXPECT_FALSE(dtclient::IsChangedInstance(appointment));
    appointment.subKey += 600;
    EXPECT_TRUE(dtclient::IsChangedInstance(appointment));
    appointment.isRecurrent = false;
    EXPECT_FALSE(dtclient::IsChangedInstance(appointment));
}

TEST(AppointmentDocument, TheCancelledFlagIsOneBitOfTheStatus)
{
    Appointment appointment;
    for (const std::int64_t status : {0, 1, 3, 8})
    {
        appointment.meetStatus = status;
        EXPECT_FALSE(dtclient::IsCancelled(appointment)) << status;
    }
    for (const std::int64_t status : {5, 7})
    {
        appointment.meetStatus = status;
        EXPECT_TRUE(dtclient::IsCancelled(appointment)) << status;
    }
}
