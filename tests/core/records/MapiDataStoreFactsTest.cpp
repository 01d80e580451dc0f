#include <gtest/gtest.h>

#include "MapiDataStore.h"

namespace
{

TEST(MapiDataStoreFacts, AllEightAreEmptyAtFirst)
{
    const CMapiDataStore store;

    EXPECT_TRUE(store.GetLibraryPath().empty());
    EXPECT_TRUE(store.GetUserEmail().empty());
    EXPECT_TRUE(store.GetUserFirstName().empty());
    EXPECT_TRUE(store.GetUserLastName().empty());
    EXPECT_TRUE(store.GetProfileName().empty());
    EXPECT_TRUE(store.GetStoreName().empty());
    EXPECT_TRUE(store.GetStoreEntryId().empty());
    EXPECT_TRUE(store.GetRecordKey().empty());
}

TEST(MapiDataStoreFacts, EachSetterReachesItsOwnGettersOnly)
{
    CMapiDataStore store;

    store.SetLibraryPath(WTEXT("C:\\lib.dll"));
    store.SetUserFacts(WTEXT("ada@example.org"), WTEXT("Ada"), WTEXT("Lovelace"));
    store.SetProfileName(WTEXT("Outlook"));
    store.SetStoreFacts(WTEXT("Mailbox"), {1, 2, 3}, WTEXT("0A0B"));

    EXPECT_EQ(store.GetLibraryPath(), WTEXT("C:\\lib.dll"));
    EXPECT_EQ(store.GetUserEmail(), WTEXT("ada@example.org"));
    EXPECT_EQ(store.GetUserFirstName(), WTEXT("Ada"));
    EXPECT_EQ(store.GetUserLastName(), WTEXT("Lovelace"));
    EXPECT_EQ(store.GetProfileName(), WTEXT("Outlook"));
    EXPECT_EQ(store.GetStoreName(), WTEXT("Mailbox"));
    EXPECT_EQ(store.GetStoreEntryId(), (BinaryBlock{1, 2, 3}));
    EXPECT_EQ(store.GetRecordKey(), WTEXT("0A0B"));
}

TEST(MapiDataStoreFacts, ALaterBringUpReplacesThemAll)
{
    CMapiDataStore store;
    store.SetUserFacts(WTEXT("ada@example.org"), WTEXT("Ada"), WTEXT("Lovelace"));
    store.SetStoreFacts(WTEXT("Mailbox"), {1, 2, 3}, WTEXT("0A0B"));

    store.SetUserFacts(WTEXT(""), WTEXT("Grace"), WTEXT(""));
    store.SetStoreFacts(WTEXT("Archive"), {}, WTEXT(""));

    EXPECT_EQ(store.GetUserEmail(), WTEXT(""));
    EXPECT_EQ(store.GetUserFirstName(), WTEXT("Grace"));
    EXPECT_EQ(store.GetUserLastName(), WTEXT(""));
    EXPECT_EQ(store.GetStoreName(), WTEXT("Archive"));
    EXPECT_TRUE(store.GetStoreEntryId().empty());
    EXPECT_EQ(store.GetRecordKey(), WTEXT(""));
}

TEST(MapiDataStoreFacts, TheReleasingFlagFollowsWhatWasSetLast)
{
    CMapiDataStore store;

    EXPECT_FALSE(store.IsReleasing());
    store.SetReleasing(1);
    EXPECT_TRUE(store.IsReleasing());
    store.SetReleasing(0);
    EXPECT_FALSE(store.IsReleasing());
}

TEST(MapiDataStoreFacts, ClearingTheStoreLeavesFactsAndFlagAlone)
{
    CMapiDataStore store;
    store.SetLibraryPath(WTEXT("C:\\lib.dll"));
    store.SetUserFacts(WTEXT("ada@example.org"), WTEXT("Ada"), WTEXT("Lovelace"));
    store.SetProfileName(WTEXT("Outlook"));
    store.SetStoreFacts(WTEXT("Mailbox"), {1}, WTEXT("0A"));
    store.SetReleasing(1);

    store.ClearDataStore();

    EXPECT_EQ(store.GetLibraryPath(), WTEXT("C:\\lib.dll"));
    EXPECT_EQ(store.GetUserEmail(), WTEXT("ada@example.org"));
    EXPECT_EQ(store.GetProfileName(), WTEXT("Outlook"));
    EXPECT_EQ(store.GetStoreName(), WTEXT("Mailbox"));
    EXPECT_EQ(store.GetStoreEntryId(), BinaryBlock{1});
    EXPECT_EQ(store.GetRecordKey(), WTEXT("0A"));
    EXPECT_TRUE(store.IsReleasing());
}

TEST(MapiDataStoreOfTheProcess, EveryCallGivesTheSameStore)
{
    CMapiDataStore& first = MapiDataStore();

    EXPECT_EQ(&MapiDataStore(), &first);
    EXPECT_EQ(g_pMapiDataStore.load(), &first);
}

} // namespace
