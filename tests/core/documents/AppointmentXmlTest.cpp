#include "AppointmentXml.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <utility>
#include <vector>

#include "DocumentFile.h"
#include "NewHook.h"

namespace
{

AttendeeInfo Attendee(std::string_view name,
                      std::string_view email,
                      std::uint32_t flags,
                      std::uint32_t type,
                      std::uint32_t track)
{
    AttendeeInfo attendee;
    attendee.name = WideFromUtf8(name);
    attendee.email = WideFromUtf8(email);
    attendee.recipientFlags = flags;
    attendee.recipientType = type;
    attendee.trackStatus = track;
    return attendee;
}

SYSTEMTIME Time(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second)
{
    SYSTEMTIME time{};
    time.wYear = year;
    time.wMonth = month;
    time.wDay = day;
    time.wHour = hour;
    time.wMinute = minute;
    time.wSecond = second;
    return time;
}

MeetingInfo FullMeeting()
{
    MeetingInfo meeting;
    meeting.subKey = 218937600;
    meeting.start = Time(2024, 3, 5, 14, 7, 9);
    meeting.end = Time(2024, 3, 5, 15, 37, 0);
    meeting.strName = WTEXT("Quarterly planning");
    meeting.location = WTEXT("Room 4, second floor");
    meeting.strDesc = WTEXT("Agenda:\r\n1. Figures\r\n\t2. Plans");
    meeting.strXaltDesc = WTEXT("<html><body>Agenda &amp; plans</body></html>");
    meeting.hostName = WTEXT("Ada Lovelace");
    meeting.hostEmail = WTEXT("ada@example.org");
    meeting.duration = 90;
    meeting.hostEntryId = {9, 9};
    meeting.meetingStatus = 3;
    meeting.calendarText = WTEXT("<oi>1</oi>");
    meeting.strPropertyFromDeskTools = WTEXT("PHByb3A+");
    meeting.space = WTEXT("space is not written");
    meeting.key = WTEXT("key is not written");
    meeting.uid = WTEXT("040000008200E00074C5B7101A82E008");
    meeting.isRecurring = 1;
    meeting.firstTime = Time(2019, 12, 31, 23, 59, 59);
    meeting.recurrenceType = 2;
    meeting.recurrencePattern = WTEXT("every second Monday from 14:00 to 15:30");
    meeting.recurrenceState = {0x01, 0xAB, 0xFF};
    meeting.timeZone = {0xC4, 0xFF, 0xFF, 0xFF, 0x00};
    meeting.isAllDay = 1;
    meeting.responseStatus = 1;
    meeting.busyStatus = 2;
    meeting.attendees = {Attendee("Ada Lovelace", "ada@example.org", 3, 1, 0),
                         Attendee("Grace Hopper", "grace@example.org", 1, 2, 3),
                         Attendee("Émilie du Châtelet", "emilie@example.org", 1, 1, 4)};
    meeting.itemRef.profileName = WTEXT("Outlook");
    meeting.itemRef.storeName = WTEXT("Mailbox - Ada Lovelace");
    meeting.itemRef.parentEntryId = {0x77};
    meeting.itemRef.entryId = {0, 0, 0, 0, 0xAA, 0xBB};
    meeting.itemRef.instanceKey = {1, 2, 3, 4, 5, 6, 7, 8};
    meeting.itemRef.storeEntryId = {0xFE};
    meeting.m_strUCCapabilities = WTEXT("audio;video");
    return meeting;
}

void ExpectDocument(const WString& built, const std::string& file)
{
    EXPECT_EQ(Utf8FromWide(built), Utf8FromWide(ExpectedDocument(file)));
    EXPECT_EQ(built, ExpectedDocument(file));
}

TEST(AppointmentXml, AnEmptyRecordGivesEveryElement)
{
    ExpectDocument(BuildAppointmentXml(MeetingInfo()), "appointment-empty.expected.txt");
}

TEST(AppointmentXml, AFullRecordGivesEveryValueInTheFixedOrder)
{
    ExpectDocument(BuildAppointmentXml(FullMeeting()), "appointment-full.expected.txt");
}

TEST(AppointmentXml, MarkupIsEscapedInsideCdataAndBareInTheFourPlainTexts)
{
    MeetingInfo meeting;
    meeting.strName = WTEXT("a<b & c>d");
    meeting.location = WTEXT("&&&");
    meeting.strDesc = WTEXT("]]>");
    meeting.hostName = WTEXT("<");
    meeting.hostEmail = WTEXT(">");
    meeting.calendarText = WTEXT("\"quoted\" & 'quoted'");
    meeting.strPropertyFromDeskTools = WTEXT("<&>");
    meeting.m_strUCCapabilities = WTEXT("x&amp;y");
    meeting.recurrencePattern = WTEXT("<&>");
    meeting.itemRef.profileName = WTEXT("P & Co");
    meeting.itemRef.storeName = WTEXT("<store>");
    meeting.uid = WTEXT("a&b");
    meeting.strXaltDesc = WTEXT("<p>1 < 2</p>");
    meeting.attendees = {Attendee("R&D <team>", "r&d@example.org", 1, 1, 0)};

    ExpectDocument(BuildAppointmentXml(meeting), "appointment-escapes.expected.txt");
}

TEST(AppointmentXml, TextsInManyScriptsComeOutUnchanged)
{
    MeetingInfo meeting;
    meeting.strName = WideFromUtf8("Планёрка");
    meeting.location = WideFromUtf8("会議室 三");
    meeting.strDesc = WideFromUtf8("اجتماع العمل");
    meeting.hostName = WideFromUtf8("Ελένη Παπαδοπούλου");
    meeting.hostEmail = WTEXT("eleni@example.org");
    meeting.calendarText = WideFromUtf8("बैठक");
    meeting.strPropertyFromDeskTools = WideFromUtf8("회의");
    meeting.m_strUCCapabilities = WideFromUtf8("😀𝄞𠮷");
    meeting.strXaltDesc = WideFromUtf8("<p>Füße &amp; Ärger 👩‍💻</p>");
    meeting.attendees = {Attendee("渡辺 花子", "hanako@example.org", 1, 1, 3)};

    ExpectDocument(BuildAppointmentXml(meeting), "appointment-scripts.expected.txt");
}

TEST(AppointmentXml, AnUnpairedSurrogatePassesThrough)
{
    MeetingInfo meeting;
    meeting.strName = WString{0xD83D, 'x'};

    EXPECT_NE(BuildAppointmentXml(meeting).find(WString{'[', 0xD83D, 'x', ']', ']'}),
              WString::npos);
}

TEST(AppointmentXml, AnEmptyListGivesTheTwoTags)
{
    ExpectDocument(BuildAppointmentsXml({}), "appointments-none.expected.txt");
}

TEST(AppointmentXml, AListKeepsItsOrder)
{
    std::vector<MeetingInfo> meetings(2);
    meetings[0].strName = WTEXT("second first");
    meetings[0].duration = 30;
    meetings[1].strName = WTEXT("first second");
    meetings[1].attendees = {Attendee("Ada", "ada@example.org", 1, 1, 0)};

    ExpectDocument(BuildAppointmentsXml(meetings), "appointments-two.expected.txt");
}

TEST(AppointmentXml, SharedRecordsGiveTheDocumentOfTheirCopies)
{
    MeetingInfo first;
    first.strName = WTEXT("second first");
    MeetingInfo second;
    second.attendees = {Attendee("Ada", "ada@example.org", 1, 1, 0)};
    const std::vector<MeetingInfo> copies = {first, second};
    const std::vector<SharedMeeting> shared = {std::make_shared<const MeetingInfo>(first),
                                               std::make_shared<const MeetingInfo>(second)};

    EXPECT_EQ(BuildAppointmentsEvent(shared).View(), BuildAppointmentsXml(copies));
    EXPECT_EQ(BuildAppointmentsEvent({}).View(), BuildAppointmentsXml({}));
}

TEST(AppointmentXml, TheMonthComesFirst)
{
    MeetingInfo meeting;
    meeting.start = Time(2024, 3, 5, 14, 7, 9);

    EXPECT_NE(
        BuildAppointmentXml(meeting).find(WTEXT("<startTime>03/05/2024 14:07:09</startTime>")),
        WString::npos);
}

TEST(AppointmentXml, ATimeThatIsNoDateIsWrittenAsItStands)
{
    MeetingInfo meeting;
    meeting.end = Time(65535, 13, 99, 100, 7, 60000);

    EXPECT_NE(
        BuildAppointmentXml(meeting).find(WTEXT("<endTime>13/99/65535 100:07:60000</endTime>")),
        WString::npos);
}

TEST(AppointmentXml, NumbersAreSigned)
{
    MeetingInfo meeting;
    meeting.duration = 0xFFFFFFFF;
    meeting.subKey = 0x80000000;
    meeting.recurrenceType = -5;

    const WString document = BuildAppointmentXml(meeting);

    EXPECT_NE(document.find(WTEXT("<duration>-1</duration>")), WString::npos);
    EXPECT_NE(document.find(WTEXT("<subKey>-2147483648</subKey>")), WString::npos);
    EXPECT_NE(document.find(WTEXT("<recurrentType>-5</recurrentType>")), WString::npos);
}

TEST(AppointmentXml, AnyNonZeroFlagReadsTrue)
{
    MeetingInfo meeting;
    meeting.isRecurring = -1;
    meeting.isAllDay = 2;

    const WString document = BuildAppointmentXml(meeting);

    EXPECT_NE(document.find(WTEXT("<isRecurrent>TRUE</isRecurrent>")), WString::npos);
    EXPECT_NE(document.find(WTEXT("<isAllDayEvent>TRUE</isAllDayEvent>")), WString::npos);
}

TEST(AppointmentXml, ATextForWhichThereIsNoMemoryIsRaised)
{
    std::vector<MeetingInfo> meetings(2);
    const CNewHook refusing([](std::size_t) { throw std::bad_alloc(); });

    EXPECT_THROW(static_cast<void>(BuildAppointmentXml(meetings[0])), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(BuildAppointmentsXml(meetings)), std::bad_alloc);
}

TEST(AppointmentXml, ALongBodyIsWrittenWhole)
{
    MeetingInfo meeting;
    meeting.strDesc.assign(3'000'000, WTEXT('x'));
    meeting.strDesc[1'500'000] = WTEXT('&');

    const WString document = BuildAppointmentXml(meeting);

    EXPECT_EQ(document.size(), BuildAppointmentXml(MeetingInfo()).size() + 3'000'004);
    EXPECT_TRUE(document.ends_with(WTEXT("</appointment>")));
}

} // namespace
