#include <gtest/gtest.h>

#include <new>
#include <thread>

#include "MapiDataStore.h"
#include "NewHook.h"

namespace
{

// A lock that should be free and is not makes these tests hang until their time is up.

/// A text that does not fit into the string object itself, so that a copy takes a block.
const WString kLongText(100, WTEXT('x'));

/// Runs `ask` on another thread, to its end, while this one stands in the middle of a map operation.
template <typename Ask>
void AskInsideAMapOperation(Ask ask)
{
    CMapiDataStore store;
    MeetingInfo record;
    record.strName = kLongText;
    store.AddAppointment(WTEXT("0A"), record);
    MeetingInfo copy;
    int asked = 0;
    {
        const CNewHook inside([&](std::size_t) {
            if (asked++ == 0)
            {
                std::thread([&] { ask(store); }).join();
            }
        });
        EXPECT_TRUE(store.GetAppointment(WTEXT("0A"), copy));
    }
    EXPECT_GE(asked, 1); // the copy out took a block, or nothing was shown
    EXPECT_EQ(copy.strName, kLongText);
}

TEST(MapiDataStoreLocks, TheReleasingFlagIsReadAndSetInTheMiddleOfAMapOperation)
{
    AskInsideAMapOperation([](CMapiDataStore& store) {
        EXPECT_FALSE(store.IsReleasing());
        store.SetReleasing(1);
        EXPECT_TRUE(store.IsReleasing());
    });
}

TEST(MapiDataStoreLocks, TheSessionFactsAreReadAndSetInTheMiddleOfAMapOperation)
{
    AskInsideAMapOperation([](CMapiDataStore& store) {
        store.SetProfileName(WTEXT("Outlook"));
        store.SetUserFacts(WTEXT("ada@example.org"), WTEXT("Ada"), WTEXT("Lovelace"));
        store.SetStoreFacts(WTEXT("Mailbox"), {1}, WTEXT("01"));
        store.SetLibraryPath(WTEXT("C:\\lib.dll"));
        EXPECT_EQ(store.GetProfileName(), WTEXT("Outlook"));
        EXPECT_EQ(store.GetUserEmail(), WTEXT("ada@example.org"));
        EXPECT_EQ(store.GetUserFirstName(), WTEXT("Ada"));
        EXPECT_EQ(store.GetUserLastName(), WTEXT("Lovelace"));
        EXPECT_EQ(store.GetStoreName(), WTEXT("Mailbox"));
        EXPECT_EQ(store.GetStoreEntryId(), BinaryBlock{1});
        EXPECT_EQ(store.GetRecordKey(), WTEXT("01"));
        EXPECT_EQ(store.GetLibraryPath(), WTEXT("C:\\lib.dll"));
    });
}

TEST(MapiDataStoreLocks, AnOperationThatRunsOutOfMemoryRaisesItAndLetsGoOfTheMaps)
{
    CMapiDataStore store;
    {
        const CNewHook refusing([](std::size_t) { throw std::bad_alloc(); });
        EXPECT_THROW(store.AddAppointment(WTEXT("0A"), MeetingInfo()), std::bad_alloc);
    }
    bool isThere = true;

    std::thread([&] {
        MeetingInfo out;
        isThere = store.GetAppointment(WTEXT("0A"), out);
    }).join();

    EXPECT_FALSE(isThere);
}

} // namespace
