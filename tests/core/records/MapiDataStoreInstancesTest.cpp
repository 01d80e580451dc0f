// Appointments by their instance key: what a look-up finds follows every change of the map.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <new>
#include <random>
#include <string>

#include "HexText.h"
#include "MapiDataStore.h"
#include "NewHook.h"

namespace
{

MeetingInfo MeetingOf(BinaryBlock instanceKey, const WCHAR* name = WTEXT(""))
{
    MeetingInfo record;
    record.strName = name;
    record.itemRef.instanceKey = std::move(instanceKey);
    return record;
}

bool Holds(const CMapiDataStore& store, const WCHAR* instanceHex)
{
    MeetingInfo found;
    return store.FindAppointmentByInstance(instanceHex, found);
}

} // namespace

TEST(MapiDataStoreInstances, AReplacedRecordIsFoundByItsNewInstanceKeyAlone)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({1}));

    store.AddAppointment(WTEXT("0A"), MeetingOf({2}));

    EXPECT_FALSE(Holds(store, WTEXT("01")));
    EXPECT_TRUE(Holds(store, WTEXT("02")));
}

TEST(MapiDataStoreInstances, AReplacedRecordWithTheSameInstanceKeyIsFoundAsItIsNow)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({1}, WTEXT("older")));

    store.AddAppointment(WTEXT("0A"), MeetingOf({1}, WTEXT("newer")));

    MeetingInfo found;
    ASSERT_TRUE(store.FindAppointmentByInstance(WTEXT("01"), found));
    EXPECT_EQ(found.strName, WTEXT("newer"));
}

TEST(MapiDataStoreInstances, ARemovedRecordIsNotFoundAndTheNextOfItsInstanceIs)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({1}, WTEXT("first")));
    store.AddAppointment(WTEXT("0B"), MeetingOf({1}, WTEXT("second")));

    store.RemoveAppointment(WTEXT("0A"));

    MeetingInfo found;
    ASSERT_TRUE(store.FindAppointmentByInstance(WTEXT("01"), found));
    EXPECT_EQ(found.strName, WTEXT("second"));
    store.RemoveAppointment(WTEXT("0B"));
    EXPECT_FALSE(Holds(store, WTEXT("01")));
}

TEST(MapiDataStoreInstances, AClearedStoreFindsNothingAndTakesTheSameAgain)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({1}));

    store.ClearDataStore();

    EXPECT_FALSE(Holds(store, WTEXT("01")));
    store.AddAppointment(WTEXT("0A"), MeetingOf({1}));
    EXPECT_TRUE(Holds(store, WTEXT("01")));
}

TEST(MapiDataStoreInstances, ARecordWithoutInstanceKeyIsFoundByTheEmptyText)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({}));

    EXPECT_TRUE(Holds(store, WTEXT("")));
    EXPECT_FALSE(Holds(store, WTEXT("0"))); // read as no bytes, but another text
    EXPECT_FALSE(Holds(store, WTEXT("00")));
}

TEST(MapiDataStoreInstances, ALetterThatIsNoDigitIsNotReadAsZero)
{
    CMapiDataStore store;
    store.AddAppointment(WTEXT("0A"), MeetingOf({0x00, 0x0A}));

    EXPECT_TRUE(Holds(store, WTEXT("000A")));
    EXPECT_FALSE(Holds(store, WTEXT("xx0A")));
}

TEST(MapiDataStoreInstances, WithoutMemoryForItARecordIsNeitherKeptNorFound)
{
    CMapiDataStore store;
    const auto record = std::make_shared<const MeetingInfo>(MeetingOf({1}));
    const WString key = WTEXT("0A");
    // Every block that adding takes is refused once: the first, the second, and so on until none is.
    bool isAdded = false;
    unsigned refusals = 0;
    for (unsigned refused = 0; !isAdded; ++refused)
    {
        unsigned taken = 0;
        try
        {
            const CNewHook hook([&](std::size_t) {
                if (taken++ == refused)
                {
                    throw std::bad_alloc();
                }
            });
            isAdded = store.AddAppointment(key, record);
        }
        catch (const std::bad_alloc&)
        {
            ++refusals;
            EXPECT_EQ(store.FindAppointment(key), nullptr) << refused;
            EXPECT_FALSE(Holds(store, WTEXT("01"))) << refused;
        }
    }
    EXPECT_GE(refusals, 2U);
    EXPECT_TRUE(Holds(store, WTEXT("01")));
}

TEST(MapiDataStoreInstances, ALongRowOfChangesLeavesWhatASearchThroughAllWouldFind)
{
    std::mt19937 random(20261102);
    const auto below = [&random](unsigned limit) {
        return static_cast<std::uint8_t>(random() % limit);
    };
    CMapiDataStore store;
    std::map<WString, BinaryBlock> model;
    for (unsigned step = 0; step < 20000; ++step)
    {
        const WString key = HexTextOf(BinaryBlock{below(40)});
        // Keys of different length that begin alike.
        const BinaryBlock instanceKey(below(3), below(6));
        const WString instanceHex = HexTextOf(instanceKey);
        const auto first = std::find_if(model.begin(), model.end(), [&](const auto& entry) {
            return entry.second == instanceKey;
        });
        MeetingInfo found;
        switch (random() % 4)
        {
        case 0:
            store.AddAppointment(key, MeetingOf(instanceKey, key.c_str()));
            model[key] = instanceKey;
            break;
        case 1:
            EXPECT_EQ(store.RemoveAppointment(key), model.erase(key) != 0);
            break;
        case 2:
            ASSERT_EQ(store.FindAppointmentByInstance(instanceHex, found), first != model.end());
            ASSERT_TRUE(first == model.end() || found.strName == first->first) << step;
            break;
        default:
            ASSERT_EQ(store.TakeAppointmentByInstance(instanceHex, found), first != model.end());
            if (first != model.end())
            {
                ASSERT_EQ(found.strName, first->first) << step;
                ASSERT_EQ(store.FindAppointment(first->first), nullptr) << step;
                model.erase(first);
            }
            break;
        }
    }
    for (const auto& [key, instanceKey] : model)
    {
        EXPECT_NE(store.FindAppointment(key), nullptr);
    }
}
