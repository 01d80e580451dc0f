#include "MeetingCompare.h"

#include <gtest/gtest.h>

#include <functional>

#include "DateTexts.h"

namespace
{

MeetingInfo Meeting()
{
    MeetingInfo meeting;
    meeting.start = TimeOf("2024-03-05T10:00:00");
    meeting.end = TimeOf("2024-03-05T11:00:00");
    meeting.strName = L"plan";
    meeting.location = L"room";
    meeting.strDesc = L"body";
    meeting.strXaltDesc = L"html";
    meeting.calendarText = L"text";
    meeting.strPropertyFromDeskTools = L"property";
    meeting.uid = L"uid";
    meeting.recurrenceState = {1, 2};
    meeting.attendees.resize(2);
    meeting.attendees[0].email = L"ada@example.org";
    meeting.attendees[1].email = L"grace@example.org";
    return meeting;
}

bool IsSameAfter(const std::function<void(MeetingInfo&)>& change)
{
    MeetingInfo changed = Meeting();
    change(changed);
    const bool isSame = IsSameMeeting(Meeting(), changed);
    EXPECT_EQ(IsSameMeeting(changed, Meeting()), isSame);
    return isSame;
}

TEST(IsSameMeeting, ACopyIsTheSame)
{
    EXPECT_TRUE(IsSameAfter([](MeetingInfo&) {}));
}

TEST(IsSameMeeting, TimesCountDownToTheMinute)
{
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.start.wMinute = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.start.wYear = 2023; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.end.wHour = 12; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.end.wMonth = 4; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.end.wDay = 6; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.start.wSecond = 30; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.end.wMilliseconds = 30; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.end.wDayOfWeek = 3; }));
}

TEST(IsSameMeeting, SubjectPlaceAndBodiesCountExactly)
{
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.strName = L"Plan"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.location = L"Room"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.strDesc = L"Body"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.strXaltDesc = L"Html"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.uid = L"UID"; }));
}

TEST(IsSameMeeting, TheTwoPropertiesCountWithoutRegardToCase)
{
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.calendarText = L"TEXT"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.strPropertyFromDeskTools = L"PROPERTY"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.calendarText = L"texts"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.strPropertyFromDeskTools = L""; }));
}

TEST(IsSameMeeting, CaseIsThatOfAllLetters)
{
    MeetingInfo lower = Meeting();
    lower.calendarText = L"\u00E4\u03B1";
    lower.attendees[0].email = L"\u00E5da@example.org";
    MeetingInfo upper = lower;
    upper.calendarText = L"\u00C4\u0391";
    upper.attendees[0].email = L"\u00C5DA@example.org";

    EXPECT_TRUE(IsSameMeeting(lower, upper));
}

TEST(IsSameMeeting, NumbersAndFlagsCount)
{
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.duration = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.meetingStatus = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.isAllDay = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.responseStatus = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.busyStatus = 1; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.isRecurring = 1; }));
}

TEST(IsSameMeeting, ThePatternCountsBySizeAndBytes)
{
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.recurrenceState = {1, 3}; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.recurrenceState = {1}; }));
}

TEST(IsSameMeeting, AttendeesCountByNumberAddressAndAnswerInTheirOrder)
{
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.attendees.pop_back(); }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.attendees[1].trackStatus = 3; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { m.attendees[1].email = L"x@example.org"; }));
    EXPECT_FALSE(IsSameAfter([](MeetingInfo& m) { std::swap(m.attendees[0], m.attendees[1]); }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.attendees[1].email = L"GRACE@example.org"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.attendees[1].name = L"other"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.attendees[1].recipientType = 2; }));
}

TEST(IsSameMeeting, WhatClientsAreNotToldOfDoesNotCount)
{
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.hostName = L"x"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.hostEmail = L"x"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.timeZone = {1}; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.recurrenceType = 2; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.recurrencePattern = L"x"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.space = L"x"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.key = L"x"; }));
    EXPECT_TRUE(IsSameAfter([](MeetingInfo& m) { m.m_strUCCapabilities = L"x"; }));
}

} // namespace
