#include <gtest/gtest.h>

#include <set>

#include "MapiDataStore.h"

namespace
{

MeetingInfo NamedMeeting(const WCHAR* name, BinaryBlock instanceKey = {})
{
    MeetingInfo record;
    record.strName = name;
    record.itemRef.instanceKey = std::move(instanceKey);
    return record;
}

AttendeeInfo NamedAttendee(const WCHAR* name, const WCHAR* email)
{
    AttendeeInfo attendee;
    attendee.name = name;
    attendee.email = email;
    return attendee;
}

ContactRecord NamedContact(const WCHAR* name, BinaryBlock entryId, const WCHAR* instanceKey)
{
    ContactRecord contact;
    contact.displayName = name;
    contact.entryId = std::move(entryId);
    contact.instanceKey = instanceKey;
    return contact;
}

TEST(MapiDataStore, ReplacingAKeyRemovesTheOldAttendees)
{
    CMapiDataStore store;
    MeetingInfo older = NamedMeeting(WTEXT("older"));
    older.attendees.resize(3);
    store.AddAppointment(WTEXT("0A"), older);

    EXPECT_TRUE(store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("newer"))));

    MeetingInfo found;
    EXPECT_TRUE(store.GetAppointment(WTEXT("0A"), found));
    EXPECT_EQ(found.strName, WTEXT("newer"));
    EXPECT_TRUE(found.attendees.empty());
}

TEST(MapiDataStore, ASharedRecordIsHandedOutAsItIsAndOutlivesItsEntry)
{
    CMapiDataStore store;
    const auto record = std::make_shared<const MeetingInfo>(NamedMeeting(WTEXT("shared"), {1, 2}));
    EXPECT_TRUE(store.AddAppointment(WTEXT("0A"), record));

    const SharedMeeting found = store.FindAppointment(WTEXT("0A"));
    EXPECT_EQ(found, record);
    EXPECT_EQ(store.FindAppointment(WTEXT("0B")), nullptr);

    MeetingInfo taken;
    EXPECT_TRUE(store.TakeAppointmentByInstance(WTEXT("0102"), taken));
    taken.strName = WTEXT("changed");
    EXPECT_EQ(store.FindAppointment(WTEXT("0A")), nullptr);
    EXPECT_EQ(found->strName, WTEXT("shared"));
}

TEST(MapiDataStore, KeysThatDifferInCaseAreTwoEntries)
{
    CMapiDataStore store;

    store.AddAppointment(WTEXT("0a"), NamedMeeting(WTEXT("lower")));
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("upper")));

    MeetingInfo lower;
    MeetingInfo upper;
    EXPECT_TRUE(store.GetAppointment(WTEXT("0a"), lower));
    EXPECT_TRUE(store.GetAppointment(WTEXT("0A"), upper));
    EXPECT_EQ(lower.strName, WTEXT("lower"));
    EXPECT_EQ(upper.strName, WTEXT("upper"));
}

TEST(MapiDataStore, KeysCompareByCodeUnitEvenInsideSurrogatePairs)
{
    CMapiDataStore store;
    store.AddAppointment({0xD83D, 0xDE00}, NamedMeeting(WTEXT("pair"), {7}));
    store.AddAppointment({0xFFE6}, NamedMeeting(WTEXT("wide"), {7}));

    MeetingInfo first;
    EXPECT_TRUE(store.FindAppointmentByInstance(WTEXT("07"), first));

    // A surrogate sorts below U+FFE6 by code unit, although its code point lies above.
    EXPECT_EQ(first.strName, WTEXT("pair"));
}

TEST(MapiDataStore, ARecordCopiedOutStaysValidAfterItsEntryIsRemoved)
{
    CMapiDataStore store;
    MeetingInfo record = NamedMeeting(WTEXT("plan"));
    record.recurrenceState = {1, 2, 3};
    record.attendees.push_back(NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org")));
    store.AddAppointment(WTEXT("0A"), record);
    MeetingInfo copy;
    store.GetAppointment(WTEXT("0A"), copy);

    EXPECT_TRUE(store.RemoveAppointment(WTEXT("0A")));

    EXPECT_EQ(copy.strName, WTEXT("plan"));
    EXPECT_EQ(copy.recurrenceState, (BinaryBlock{1, 2, 3}));
    ASSERT_EQ(copy.attendees.size(), 1U);
    EXPECT_EQ(copy.attendees[0].email, WTEXT("ada@example.org"));
}

TEST(MapiDataStore, AStoredRecordDoesNotFollowItsSource)
{
    CMapiDataStore store;
    MeetingInfo record = NamedMeeting(WTEXT("plan"));
    record.recurrenceState = {1, 2, 3};
    record.attendees.push_back(NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org")));
    store.AddAppointment(WTEXT("0A"), record);

    record.strName[0] = WTEXT('x');
    record.recurrenceState[0] = 0xFF;
    record.attendees[0].email[0] = WTEXT('x');

    MeetingInfo found;
    EXPECT_TRUE(store.GetAppointment(WTEXT("0A"), found));
    EXPECT_EQ(found.strName, WTEXT("plan"));
    EXPECT_EQ(found.recurrenceState, (BinaryBlock{1, 2, 3}));
    ASSERT_EQ(found.attendees.size(), 1U);
    EXPECT_EQ(found.attendees[0].email, WTEXT("ada@example.org"));
}

TEST(MapiDataStore, GetAppointmentReplacesTheOutRecordOnAHitOnly)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("stored")));
    MeetingInfo out = NamedMeeting(WTEXT("before"));
    out.attendees.resize(2);

    EXPECT_FALSE(store.GetAppointment(WTEXT("0B"), out));
    EXPECT_EQ(out.strName, WTEXT("before"));
    EXPECT_EQ(out.attendees.size(), 2U);

    EXPECT_TRUE(store.GetAppointment(WTEXT("0A"), out));
    EXPECT_EQ(out.strName, WTEXT("stored"));
    EXPECT_TRUE(out.attendees.empty());
}

TEST(MapiDataStore, RemoveAppointmentTellsWhetherItWasThere)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("plan")));

    EXPECT_TRUE(store.RemoveAppointment(WTEXT("0A")));
    EXPECT_FALSE(store.RemoveAppointment(WTEXT("0A")));
}

TEST(MapiDataStore, FindByInstanceGivesTheFirstMatchInKeyOrderAndKeepsIt)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0C"), NamedMeeting(WTEXT("last"), {0xAB, 0x01}));
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("other"), {0xAB}));
    store.AddAppointment(WTEXT("0B"), NamedMeeting(WTEXT("first"), {0xAB, 0x01}));

    MeetingInfo found;
    EXPECT_TRUE(store.FindAppointmentByInstance(WTEXT("AB01"), found));

    EXPECT_EQ(found.strName, WTEXT("first"));
    EXPECT_TRUE(store.GetAppointment(WTEXT("0B"), found));
}

TEST(MapiDataStore, KeysOfEveryLengthThatBeginAlikeAreKeptApartAndInTheOrderOfTheirUnits)
{
    // All texts of up to nine units that are one unit repeated, but perhaps for one at any place.
    std::set<WString> keys;
    for (std::size_t length = 0; length <= 9; ++length)
    {
        WString key(length, WTEXT('5'));
        keys.insert(key);
        for (WCHAR& unit : key)
        {
            for (const WCHAR other : {WTEXT('4'), WTEXT('A'), static_cast<WCHAR>(0x0135)})
            {
                unit = other;
                keys.insert(key);
            }
            unit = WTEXT('5');
        }
    }
    CMapiDataStore store;
    for (const WString& key : keys)
    {
        store.AddAppointment(key, NamedMeeting(key.c_str(), {1}));
    }

    for (const WString& key : keys)
    {
        MeetingInfo taken;
        ASSERT_TRUE(store.TakeAppointmentByInstance(WTEXT("01"), taken));
        EXPECT_EQ(taken.strName, key);
    }
}

TEST(MapiDataStore, FindByInstanceComparesTheTextExactly)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("plan"), {0xAB, 0x01}));

    MeetingInfo found;
    EXPECT_FALSE(store.FindAppointmentByInstance(WTEXT("ab01"), found));
    EXPECT_FALSE(store.FindAppointmentByInstance(WTEXT("AB0"), found));
    EXPECT_FALSE(store.FindAppointmentByInstance(WTEXT("AB0100"), found));
    EXPECT_FALSE(store.FindAppointmentByInstance(WTEXT(""), found));
    EXPECT_TRUE(found.strName.empty());
}

TEST(MapiDataStore, TakeByInstanceErasesTheFirstMatchOnly)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0B"), NamedMeeting(WTEXT("second"), {1}));
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("first"), {1}));

    MeetingInfo taken;
    EXPECT_TRUE(store.TakeAppointmentByInstance(WTEXT("01"), taken));
    EXPECT_EQ(taken.strName, WTEXT("first"));

    EXPECT_TRUE(store.TakeAppointmentByInstance(WTEXT("01"), taken));
    EXPECT_EQ(taken.strName, WTEXT("second"));
    EXPECT_FALSE(store.TakeAppointmentByInstance(WTEXT("01"), taken));
}

TEST(MapiDataStore, ALookUpWithoutAHitLeavesTheOutRecordAlone)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("stored"), {1}));
    store.AddAddress(NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org")));
    MeetingInfo meeting = NamedMeeting(WTEXT("before"));
    meeting.attendees.resize(2);
    AttendeeInfo address = NamedAttendee(WTEXT("before"), WTEXT("before@example.org"));

    EXPECT_FALSE(store.FindAppointmentByInstance(WTEXT("02"), meeting));
    EXPECT_FALSE(store.TakeAppointmentByInstance(WTEXT("02"), meeting));
    EXPECT_FALSE(store.GetAddress(WTEXT("Grace"), address));

    EXPECT_EQ(meeting.strName, WTEXT("before"));
    EXPECT_EQ(meeting.attendees.size(), 2U);
    EXPECT_EQ(address.name, WTEXT("before"));
    EXPECT_EQ(address.email, WTEXT("before@example.org"));
}

TEST(MapiDataStore, AHitByInstanceReplacesTheAttendeesOfTheOutRecord)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("stored"), {1}));
    MeetingInfo found;
    found.attendees.resize(2);
    MeetingInfo taken;
    taken.attendees.resize(2);

    EXPECT_TRUE(store.FindAppointmentByInstance(WTEXT("01"), found));
    EXPECT_TRUE(store.TakeAppointmentByInstance(WTEXT("01"), taken));

    EXPECT_TRUE(found.attendees.empty());
    EXPECT_TRUE(taken.attendees.empty());
}

TEST(MapiDataStore, AddAddressWithAnExistingNameLeavesTheFirstValue)
{
    CMapiDataStore store;
    store.AddAddress(NamedAttendee(WTEXT("Ada"), WTEXT("first@example.org")));

    EXPECT_TRUE(store.AddAddress(NamedAttendee(WTEXT("Ada"), WTEXT("second@example.org"))));

    AttendeeInfo found;
    EXPECT_TRUE(store.GetAddress(WTEXT("Ada"), found));
    EXPECT_EQ(found.email, WTEXT("first@example.org"));
    EXPECT_FALSE(store.GetAddress(WTEXT("ada"), found));
}

TEST(MapiDataStore, GetAddressCopiesTheBlockAndTheFourTextsAndNothingElse)
{
    CMapiDataStore store;
    AttendeeInfo stored = NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org"));
    stored.entryId = {1, 2};
    stored.address = WTEXT("/o=Example/cn=ada");
    stored.addressType = WTEXT("EX");
    stored.recipientType = 1;
    stored.recipientFlags = 3;
    stored.trackStatus = 5;
    store.AddAddress(stored);

    AttendeeInfo found;
    found.recipientType = 20;
    found.recipientFlags = 30;
    found.trackStatus = 50;
    EXPECT_TRUE(store.GetAddress(WTEXT("Ada"), found));

    EXPECT_EQ(found.entryId, (BinaryBlock{1, 2}));
    EXPECT_EQ(found.name, WTEXT("Ada"));
    EXPECT_EQ(found.address, WTEXT("/o=Example/cn=ada"));
    EXPECT_EQ(found.addressType, WTEXT("EX"));
    EXPECT_EQ(found.recipientType, 20U);
    EXPECT_EQ(found.recipientFlags, 30U);
    EXPECT_EQ(found.trackStatus, 50U);
}

TEST(MapiDataStore, AContactStandsUnderTheUpperCaseTextOfItsEntryIdentifier)
{
    CMapiDataStore store;
    store.AddContact(NamedContact(WTEXT("older"), {0xAB, 0x0C}, WTEXT("01")));

    EXPECT_TRUE(store.AddContact(NamedContact(WTEXT("newer"), {0xAB, 0x0C}, WTEXT("02"))));

    ContactRecord taken;
    EXPECT_FALSE(store.TakeContactByKey(WTEXT("01"), taken));
    EXPECT_FALSE(store.RemoveContact(WTEXT("ab0c")));
    EXPECT_TRUE(store.RemoveContact(WTEXT("AB0C")));
    EXPECT_FALSE(store.RemoveContact(WTEXT("AB0C")));
}

TEST(MapiDataStore, TakeContactByKeyIgnoresCaseAndTakesTheFirstInKeyOrder)
{
    CMapiDataStore store;
    store.AddContact(NamedContact(WTEXT("second"), {2}, WTEXT("00ab")));
    store.AddContact(NamedContact(WTEXT("first"), {1}, WTEXT("00AB")));

    ContactRecord taken;
    EXPECT_TRUE(store.TakeContactByKey(WTEXT("00aB"), taken));
    EXPECT_EQ(taken.displayName, WTEXT("first"));

    EXPECT_TRUE(store.TakeContactByKey(WTEXT("00AB"), taken));
    EXPECT_EQ(taken.displayName, WTEXT("second"));
    EXPECT_FALSE(store.TakeContactByKey(WTEXT("00AB"), taken));
    EXPECT_EQ(taken.displayName, WTEXT("second"));
}

TEST(MapiDataStore, GetInstanceMatchesTheMinutesExactly)
{
    CMapiDataStore store;
    SeriesRecipients recipients;
    recipients[1000].push_back(NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org")));
    EXPECT_TRUE(store.SetSeries(WTEXT("0A"), recipients));

    std::vector<AttendeeInfo> found(5);
    EXPECT_FALSE(store.GetInstance(WTEXT("0A"), 999, found));
    EXPECT_FALSE(store.GetInstance(WTEXT("0A"), 1001, found));
    EXPECT_FALSE(store.GetInstance(WTEXT("0B"), 1000, found));
    EXPECT_EQ(found.size(), 5U);

    EXPECT_TRUE(store.GetInstance(WTEXT("0A"), 1000, found));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].name, WTEXT("Ada"));
}

TEST(MapiDataStore, SetSeriesNeverMergesWithTheOldOne)
{
    CMapiDataStore store;
    SeriesRecipients older;
    older[1000].resize(1);
    SeriesRecipients newer;
    newer[2000].resize(2);
    store.SetSeries(WTEXT("0A"), older);

    store.SetSeries(WTEXT("0A"), newer);

    std::vector<AttendeeInfo> found;
    EXPECT_FALSE(store.GetInstance(WTEXT("0A"), 1000, found));
    EXPECT_TRUE(store.GetInstance(WTEXT("0A"), 2000, found));
    EXPECT_EQ(found.size(), 2U);
}

TEST(MapiDataStore, ASeriesIsKnownUntilItIsRemovedEvenWithoutInstances)
{
    CMapiDataStore store;
    EXPECT_FALSE(store.HasSeries(WTEXT("0A")));

    store.SetSeries(WTEXT("0A"), {});

    EXPECT_TRUE(store.HasSeries(WTEXT("0A")));
    EXPECT_TRUE(store.RemoveSeries(WTEXT("0A")));
    EXPECT_FALSE(store.HasSeries(WTEXT("0A")));
    EXPECT_FALSE(store.RemoveSeries(WTEXT("0A")));
}

TEST(MapiDataStore, ClearingEmptiesAllFourMaps)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), NamedMeeting(WTEXT("plan")));
    store.AddAddress(NamedAttendee(WTEXT("Ada"), WTEXT("ada@example.org")));
    store.AddContact(NamedContact(WTEXT("Ada"), {1}, WTEXT("01")));
    store.SetSeries(WTEXT("0A"), {});

    store.ClearDataStore();

    MeetingInfo meeting;
    AttendeeInfo address;
    EXPECT_FALSE(store.GetAppointment(WTEXT("0A"), meeting));
    EXPECT_FALSE(store.GetAddress(WTEXT("Ada"), address));
    EXPECT_FALSE(store.RemoveContact(WTEXT("01")));
    EXPECT_FALSE(store.HasSeries(WTEXT("0A")));
}

} // namespace
