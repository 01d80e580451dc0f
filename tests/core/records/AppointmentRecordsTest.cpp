#include "AppointmentRecords.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "ABEmailEntry.h"
#include "ContactRecord.h"
#include "MailRecord.h"

namespace
{

bool IsUnset(const SYSTEMTIME& time)
{
    constexpr SYSTEMTIME kUnset{};
    return std::memcmp(&time, &kUnset, sizeof(time)) == 0;
}

TEST(MeetingInfo, ANewRecordIsAllZeroAndEmpty)
{
    // Built over bytes that are not zero, so that a field nobody sets is seen.
    alignas(MeetingInfo) std::array<std::byte, sizeof(MeetingInfo)> room{};
    room.fill(std::byte{0xCC});
    auto* const record = new (room.data()) MeetingInfo;

    for (const std::uint32_t number : {record->subKey,
                                       record->duration,
                                       record->meetingStatus,
                                       record->responseStatus,
                                       record->busyStatus,
                                       static_cast<std::uint32_t>(record->isRecurring),
                                       static_cast<std::uint32_t>(record->recurrenceType),
                                       static_cast<std::uint32_t>(record->isAllDay)})
    {
        EXPECT_EQ(number, 0U);
    }
    for (const SYSTEMTIME& time : {record->start, record->end, record->firstTime})
    {
        EXPECT_TRUE(IsUnset(time));
    }
    for (const WString& text : {record->strName,
                                record->location,
                                record->strDesc,
                                record->strXaltDesc,
                                record->hostName,
                                record->hostEmail,
                                record->calendarText,
                                record->strPropertyFromDeskTools,
                                record->space,
                                record->key,
                                record->uid,
                                record->recurrencePattern,
                                record->m_strUCCapabilities,
                                record->itemRef.profileName,
                                record->itemRef.storeName})
    {
        EXPECT_TRUE(text.empty());
    }
    for (const BinaryBlock& block : {record->hostEntryId,
                                     record->recurrenceState,
                                     record->timeZone,
                                     record->itemRef.parentEntryId,
                                     record->itemRef.entryId,
                                     record->itemRef.instanceKey,
                                     record->itemRef.storeEntryId})
    {
        EXPECT_TRUE(block.empty());
    }
    EXPECT_TRUE(record->attendees.empty());
    std::destroy_at(record);
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
