#include "AppointmentRecords.h"

#include <gtest/gtest.h>

#include "ABEmailEntry.h"
#include "ContactRecord.h"
#include "MailRecord.h"

namespace
{

TEST(MeetingInfo, ANewRecordIsAllZeroAndEmpty)
{
    const MeetingInfo record;

    EXPECT_EQ(record.subKey, 0U);
    EXPECT_EQ(record.start.wYear, 0);
    EXPECT_EQ(record.end.wMinute, 0);
    EXPECT_EQ(record.firstTime.wMonth, 0);
    EXPECT_EQ(record.duration, 0U);
    EXPECT_EQ(record.meetingStatus, 0U);
    EXPECT_EQ(record.isRecurring, 0);
    EXPECT_EQ(record.recurrenceType, 0);
    EXPECT_EQ(record.isAllDay, 0);
    EXPECT_EQ(record.responseStatus, 0U);
    EXPECT_EQ(record.busyStatus, 0U);
    EXPECT_TRUE(record.strName.empty());
    EXPECT_TRUE(record.recurrenceState.empty());
    EXPECT_TRUE(record.attendees.empty());
    EXPECT_TRUE(record.itemRef.entryId.empty());
}

TEST(MeetingInfo, ACopySharesNothingWithItsSource)
{
    MeetingInfo source;
    source.strName = WTEXT("plan");
    source.recurrenceState = {1, 2, 3};
    source.attendees.resize(2);
    source.attendees[1].entryId = {9};

    const MeetingInfo copy = source;
    source.strName[0] = WTEXT('x');
    source.recurrenceState[0] = 0xFF;
    source.attendees[1].entryId[0] = 0;

    EXPECT_EQ(copy.strName, WTEXT("plan"));
    EXPECT_EQ(copy.recurrenceState, (BinaryBlock{1, 2, 3}));
    EXPECT_EQ(copy.attendees.size(), 2U);
    EXPECT_EQ(copy.attendees[1].entryId, BinaryBlock{9});
}

TEST(MeetingInfo, AssigningOverARecordReplacesItsAttendees)
{
    MeetingInfo target;
    target.attendees.resize(3);
    MeetingInfo source;
    source.attendees.resize(1);
    source.attendees[0].name = WTEXT("Ada");

    target = source;

    ASSERT_EQ(target.attendees.size(), 1U);
    EXPECT_EQ(target.attendees[0].name, WTEXT("Ada"));
}

TEST(AttendeeInfo, ANewRecordHasRecipientFlagsOne)
{
    const AttendeeInfo attendee;

    EXPECT_EQ(attendee.recipientFlags, 1U);
    EXPECT_EQ(attendee.recipientType, 0U);
    EXPECT_EQ(attendee.trackStatus, 0U);
}

TEST(ABEmailEntry, TheAddressMapsFormKeepsTheBlockAndTheFourTexts)
{
    ABEmailEntry entry;
    entry.entryId = {1, 2};
    entry.displayName = WTEXT("Ada Lovelace");
    entry.smtpAddress = WTEXT("ada@example.org");
    entry.nativeAddress = WTEXT("/o=Example/cn=ada");
    entry.addressType = WTEXT("EX");

    const AttendeeInfo attendee = AttendeeFromABEmailEntry(entry);

    EXPECT_EQ(attendee.entryId, (BinaryBlock{1, 2}));
    EXPECT_EQ(attendee.name, WTEXT("Ada Lovelace"));
    EXPECT_EQ(attendee.email, WTEXT("ada@example.org"));
    EXPECT_EQ(attendee.address, WTEXT("/o=Example/cn=ada"));
    EXPECT_EQ(attendee.addressType, WTEXT("EX"));
}

TEST(ABEmailEntry, TheWayThroughTheAddressMapAndBackChangesNothing)
{
    ABEmailEntry entry;
    entry.entryId = {1, 2};
    entry.displayName = WTEXT("Ada Lovelace");
    entry.smtpAddress = WTEXT("ada@example.org");
    entry.nativeAddress = WTEXT("/o=Example/cn=ada");
    entry.addressType = WTEXT("EX");

    const ABEmailEntry back = ABEmailEntryFromAttendee(AttendeeFromABEmailEntry(entry));

    EXPECT_EQ(back.entryId, entry.entryId);
    EXPECT_EQ(back.displayName, entry.displayName);
    EXPECT_EQ(back.smtpAddress, entry.smtpAddress);
    EXPECT_EQ(back.nativeAddress, entry.nativeAddress);
    EXPECT_EQ(back.addressType, entry.addressType);
}

TEST(ContactRecord, ANewRecordHasNoPicture)
{
    const ContactRecord contact;

    EXPECT_EQ(contact.hasPicture, 0);
    EXPECT_TRUE(contact.picture.empty());
}

TEST(MailRecord, ANewRecordHasNoTimeAndNoFlags)
{
    const MailRecord mail;

    EXPECT_EQ(mail.deliveryTime.dwLowDateTime, 0U);
    EXPECT_EQ(mail.deliveryTime.dwHighDateTime, 0U);
    EXPECT_EQ(mail.messageFlags, 0U);
    EXPECT_EQ(mail.importance, 0U);
}

} // namespace
