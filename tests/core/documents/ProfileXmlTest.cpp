#include "ProfileXml.h"

#include <gtest/gtest.h>

#include "DocumentFile.h"

namespace
{

TEST(ProfileXml, WithoutFactsEveryElementIsEmpty)
{
    const CMapiDataStore store;

    EXPECT_EQ(Utf8FromWide(BuildProfileXml(store)),
              Utf8FromWide(ExpectedDocument("profile-empty.expected.txt")));
}

TEST(ProfileXml, AllTextsButTheRecordKeyAreEscaped)
{
    CMapiDataStore store;
    store.SetProfileName(WTEXT("Work & Home"));
    store.SetLibraryPath(WTEXT("C:\\Programs\\mail & more\\mapi.dll"));
    store.SetUserFacts(WTEXT("r&d@example.org"), WTEXT("A<d>a"), WTEXT("Love & lace"));
    store.SetStoreFacts(WTEXT("<Mailbox>"), {0x00, 0xFF, 0x10}, WTEXT("0A<&>0B"));

    EXPECT_EQ(Utf8FromWide(BuildProfileXml(store)),
              Utf8FromWide(ExpectedDocument("profile-full.expected.txt")));
}

TEST(ProfileXml, SevenTabsAndTwoBlanksStandBeforeTheStoreName)
{
    const CMapiDataStore store;

    EXPECT_NE(BuildProfileXml(store).find(WTEXT("</EmailAddress>\t\t\t\t\t\t\t  <StoreName>")),
              WString::npos);
}

} // namespace
