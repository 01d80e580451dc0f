#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "MapiDataStore.h"
#include "StartLine.h"

namespace
{

constexpr int kRounds = 2000;

TEST(MapiDataStoreThreads, FactsAndFlagAreReadWhileTheMapsAreInUse)
{
    CMapiDataStore store;
    CStartLine start(3);
    std::atomic<bool> torn{false};

    std::thread maps([&] {
        start.ArriveAndWait();
        MeetingInfo record;
        record.strName = WTEXT("plan");
        record.itemRef.instanceKey = {1};
        for (int i = 0; i < kRounds; ++i)
        {
            store.AddAppointment(WTEXT("0A"), record);
            store.TakeAppointmentByInstance(WTEXT("01"), record);
            store.ClearDataStore();
        }
    });
    std::thread facts([&] {
        start.ArriveAndWait();
        for (int i = 0; i < kRounds; ++i)
        {
            store.SetUserFacts(WTEXT("a"), WTEXT("b"), WTEXT("c"));
            store.SetReleasing(static_cast<std::uint32_t>(i & 1));
        }
    });
    start.ArriveAndWait();
    for (int i = 0; i < kRounds; ++i)
    {
        const WString email = store.GetUserEmail();
        if (!email.empty() && email != WTEXT("a"))
        {
            torn = true;
        }
        static_cast<void>(store.IsReleasing());
    }
    maps.join();
    facts.join();

    EXPECT_FALSE(torn);
}

TEST(MapiDataStoreThreads, OneOfManyTakersGetsEachRecord)
{
    CMapiDataStore store;
    MeetingInfo record;
    record.itemRef.instanceKey = {1};
    for (WCHAR key = 0; key < 100; ++key)
    {
        store.AddAppointment(WString(1, key), record);
    }
    std::atomic<int> taken{0};
    std::vector<std::thread> takers;

    for (int i = 0; i < 4; ++i)
    {
        takers.emplace_back([&] {
            MeetingInfo out;
            while (store.TakeAppointmentByInstance(WTEXT("01"), out))
            {
                ++taken;
            }
        });
    }
    for (std::thread& taker : takers)
    {
        taker.join();
    }

    EXPECT_EQ(taken, 100);
}

TEST(MapiDataStoreThreads, ContactsAreRemovedWhileAnotherThreadClears)
{
    CMapiDataStore store;
    CStartLine start(2);

    std::thread clearing([&] {
        start.ArriveAndWait();
        for (int i = 0; i < kRounds; ++i)
        {
            store.ClearDataStore();
        }
    });
    start.ArriveAndWait();
    for (int i = 0; i < kRounds; ++i)
    {
        ContactRecord contact;
        contact.entryId = {1};
        store.AddContact(contact);
        store.RemoveContact(WTEXT("01"));
    }
    clearing.join();

    EXPECT_FALSE(store.RemoveContact(WTEXT("01")));
}

TEST(MapiDataStoreThreads, AllThreadsSeeOneStoreOfTheProcess)
{
    std::vector<CMapiDataStore*> seen(8);
    CStartLine start(8);
    std::vector<std::thread> threads;

    for (CMapiDataStore*& slot : seen)
    {
        threads.emplace_back([&] {
            start.ArriveAndWait();
            slot = &MapiDataStore();
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ((std::set<CMapiDataStore*>{seen.begin(), seen.end()}.size()), 1U);
}

} // namespace
