#include "AppointmentTable.h"

#include <gtest/gtest.h>

using dtclient::Appointment;
using dtclient::AppointmentsTable;
using dtclient::CalendarTime;

namespace
{
// A zone one hour ahead of UTC, without daylight saving time.
CalendarTime OneHourAhead(const CalendarTime& utc)
{
    return dtclient::TimeFromSeconds1601(dtclient::SecondsSince1601(utc) + 3600);
}

Appointment Meeting(const CalendarTime& start, const std::string& subject)
{
    Appointment appointment;
    appointment.startTime = start;
    appointment.subject = subject;
    appointment.duration = 30;
    return appointment;
}
} // namespace

TEST(AppointmentTable, RowsStandInOrderOfTheirStartInLocalTime)
{
    Appointment late = Meeting({2026, 11, 2, 23, 30, 0}, "Late call");
    late.location = "Room 5";
    late.hostName = "Ana Diaz";
    late.responseStatus = 3;
    late.isRecurrent = true;
    const Appointment early = Meeting({2026, 11, 2, 8, 0, 0}, "Breakfast");

    EXPECT_EQ(AppointmentsTable({late, early}, OneHourAhead),
              "Start                 Length  Subject    Place   Host      Answer    Marks\n"
              "--------------------  ------  ---------  ------  --------  --------  ---------\n"
              "Mon 2026-11-02 09:00  30 min  Breakfast\n"
              "Tue 2026-11-03 00:30  30 min  Late call  Room 5  Ana Diaz  accepted  recurring\n");
}

TEST(AppointmentTable, NothingToShowIsAnEmptyText)
{
    EXPECT_EQ(AppointmentsTable({}, OneHourAhead), "");
}

TEST(AppointmentTable, TheRecordOfAFailedFolderIsNoRow)
{
    Appointment marker;
    marker.subject = "####DTOIEX_OUTLOOK_MEETING_ERROR####";
    marker.meetStatus = 5;

    EXPECT_EQ(AppointmentsTable({marker}, OneHourAhead), "");
}

TEST(AppointmentTable, AWholeDayFromLocalMidnightShowsNoTimeOfDay)
{
    Appointment holiday = Meeting({2026, 11, 1, 23, 0, 0}, "Holiday");
    holiday.isAllDayEvent = true;
    holiday.duration = 1440;

    EXPECT_EQ(dtclient::AppointmentLine(holiday, OneHourAhead),
              "Mon 2026-11-02  1 day  Holiday  all day");
}

TEST(AppointmentTable, AWholeDayOfAnotherZoneShowsWhenItBeginsHere)
{
    Appointment holiday = Meeting({2026, 11, 2, 5, 0, 0}, "Holiday");
    holiday.isAllDayEvent = true;
    holiday.duration = 1440;

    EXPECT_EQ(dtclient::AppointmentLine(holiday, OneHourAhead),
              "Mon 2026-11-02 06:00  1 day  Holiday  all day");
}

TEST(AppointmentTable, AMissingSubjectAndAMissingTimeAreSaid)
{
    EXPECT_EQ(dtclient::AppointmentLine(Appointment{}, OneHourAhead),
              "no time  0 min  (no subject)");
}

TEST(AppointmentTable, TheAddressStandsForAHostWithoutName)
{
    Appointment meeting = Meeting({2026, 11, 2, 8, 0, 0}, "M");
    meeting.hostEmail = "ana@example.org";

    EXPECT_EQ(dtclient::AppointmentLine(meeting, OneHourAhead),
              "Mon 2026-11-02 09:00  30 min  M  ana@example.org");
}

TEST(AppointmentTable, ASubjectCannotBreakTheTable)
{
    EXPECT_EQ(
        dtclient::AppointmentLine(Meeting({2026, 11, 2, 8, 0, 0}, "a\r\nb\x1B[2Jc"), OneHourAhead),
        "Mon 2026-11-02 09:00  30 min  a b [2Jc");
}

TEST(AppointmentTable, LengthsAreSaidInDaysHoursAndMinutes)
{
    EXPECT_EQ(dtclient::DurationText(0), "0 min");
    EXPECT_EQ(dtclient::DurationText(45), "45 min");
    EXPECT_EQ(dtclient::DurationText(60), "1 h");
    EXPECT_EQ(dtclient::DurationText(90), "1 h 30 min");
    EXPECT_EQ(dtclient::DurationText(1440), "1 day");
    EXPECT_EQ(dtclient::DurationText(2 * 1440 + 65), "2 days 1 h 5 min");
    EXPECT_EQ(dtclient::DurationText(-30), "-30 min");
}

TEST(AppointmentTable, AnswersHaveTheirNames)
{
    EXPECT_EQ(dtclient::AnswerText(0), "");
    EXPECT_EQ(dtclient::AnswerText(1), "organizer");
    EXPECT_EQ(dtclient::AnswerText(2), "tentative");
    EXPECT_EQ(dtclient::AnswerText(3), "accepted");
    EXPECT_EQ(dtclient::AnswerText(4), "declined");
    EXPECT_EQ(dtclient::AnswerText(5), "not answered");
    EXPECT_EQ(dtclient::AnswerText(9), "answer 9");
}

TEST(AppointmentTable, MarksAreListedAsFarAsTheyApply)
{
    Appointment appointment;
    EXPECT_EQ(dtclient::MarksText(appointment), "");
    appointment.isRecurrent = true;
    appointment.subKey = 600;
    appointment.meetStatus = 7;
    appointment.isAllDayEvent = true;
    EXPECT_EQ(dtclient::MarksText(appointment), "recurring, changed, cancelled, all day");
}
