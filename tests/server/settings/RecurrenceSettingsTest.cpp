#include <gtest/gtest.h>

#include "RegistryRecurrenceSettings.h"
#include "SettingsKeys.h"

namespace
{

constexpr const WCHAR* kDeskToolsKey = L"SOFTWARE\\Talvo\\DeskTools";

TEST(RegistryRecurrenceSettings, WithoutValuesBothNamesAreEmpty)
{
    EXPECT_EQ(RegistryRecurrenceSettings().SiteName(), L"");
    EXPECT_EQ(RegistryRecurrenceSettings().KeepAllSiteName(), L"");
}

TEST(RegistryRecurrenceSettings, EachNameIsReadFromItsOwnValueOfTheUser)
{
    CRegistryValues values;
    values.SetText(HKEY_CURRENT_USER, kDeskToolsKey, L"SiteName", L"north.example.org");
    values.SetText(HKEY_CURRENT_USER, kDeskToolsKey, L"KeepAllSiteName", L"north");

    EXPECT_EQ(RegistryRecurrenceSettings().SiteName(), L"north.example.org");
    EXPECT_EQ(RegistryRecurrenceSettings().KeepAllSiteName(), L"north");
}

TEST(RegistryRecurrenceSettings, NothingIsKeptBetweenReads)
{
    CRegistryValues values;
    values.SetText(HKEY_CURRENT_USER, kDeskToolsKey, L"SiteName", L"one");
    EXPECT_EQ(RegistryRecurrenceSettings().SiteName(), L"one");

    values.SetText(HKEY_CURRENT_USER, kDeskToolsKey, L"SiteName", L"two");
    EXPECT_EQ(RegistryRecurrenceSettings().SiteName(), L"two");
}

TEST(RegistryRecurrenceSettings, AValueThatIsNoTextIsAbsent)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kDeskToolsKey, L"SiteName", 7);

    EXPECT_EQ(RegistryRecurrenceSettings().SiteName(), L"");
}

} // namespace
