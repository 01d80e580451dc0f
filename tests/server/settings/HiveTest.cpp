// Whose HKEY_CURRENT_USER the readers see. The linker leads the questions for the logged-on user's root
// key and for the system's class here, so that a process of another account can be stood in for.

#include <gtest/gtest.h>

#include <array>
#include <optional>

#include "OsClass.h"
#include "RegisterUtil.h"
#include "RegKey.h"
#include "SettingsKeys.h"
#include "UserProfile.h"

extern "C"
{
    HKEY __real__ZN12CUserProfile7RootKeyEv() noexcept; // NOLINT
    HKEY __wrap__ZN12CUserProfile7RootKeyEv() noexcept; // NOLINT
    OsClass __real__Z14CurrentOsClassv() noexcept;      // NOLINT
    OsClass __wrap__Z14CurrentOsClassv() noexcept;      // NOLINT
}

namespace
{

constexpr const WCHAR* kOtherHive = L"SOFTWARE\\dtOIEx64OtherHiveTest";
constexpr const WCHAR* kOtherScratchKey =
    L"SOFTWARE\\dtOIEx64OtherHiveTest\\SOFTWARE\\dtOIEx64SettingsTest";
constexpr const WCHAR* kOtherPolicyKey =
    L"SOFTWARE\\dtOIEx64OtherHiveTest\\SOFTWARE\\Policies\\VantorTalvo";
constexpr const WCHAR* kFeature = L"FEATURE_DTOIEX64_HIVE_TEST";

HKEY g_rootKey = nullptr; // null for the real one
int g_rootKeyRequests = 0;
std::optional<OsClass> g_osClass;

/// A logged-on user whose hive is a key below that of the test's own account.
class HiveTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER,
                                  kOtherHive,
                                  0,
                                  nullptr,
                                  0,
                                  KEY_ALL_ACCESS,
                                  nullptr,
                                  m_otherHive.Put(),
                                  nullptr),
                  ERROR_SUCCESS);
        m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"text", L"own");
        m_values.SetText(HKEY_CURRENT_USER, kOtherScratchKey, L"text", L"another's");
        m_values.SetDword(HKEY_CURRENT_USER, kScratchKey, L"number", 1);
        m_values.SetDword(HKEY_CURRENT_USER, kOtherScratchKey, L"number", 2);
        g_rootKey = m_otherHive.Get();
        g_rootKeyRequests = 0;
        g_osClass = OsClass::VistaOrLater;
    }
    void TearDown() override
    {
        g_rootKey = nullptr;
        g_osClass.reset();
        m_otherHive.Reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kOtherHive);
    }

    CRegKey m_otherHive;
    CRegistryValues m_values;
};

WString UserText()
{
    WString text;
    ReadRegString(HKEY_CURRENT_USER, kScratchKey, L"text", text, 0);
    return text;
}

DWORD UserNumber()
{
    DWORD number = 0;
    ReadPolicyDword(HKEY_CURRENT_USER, kScratchKey, L"number", number, 0);
    return number;
}

} // namespace

HKEY __wrap__ZN12CUserProfile7RootKeyEv() noexcept
{
    g_rootKeyRequests++;
    return g_rootKey != nullptr ? g_rootKey : __real__ZN12CUserProfile7RootKeyEv();
}

OsClass __wrap__Z14CurrentOsClassv() noexcept
{
    return g_osClass ? *g_osClass : __real__Z14CurrentOsClassv();
}

TEST_F(HiveTest, TextsOfTheUserComeFromTheHiveOfTheLoggedOnUser)
{
    std::array<WCHAR, 16> buffer{};

    EXPECT_EQ(UserText(), L"another's");
    EXPECT_EQ(GetRegValueSize(HKEY_CURRENT_USER, kScratchKey, L"text", 0), 20);
    EXPECT_EQ(
        RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"text", buffer.data(), sizeof(buffer), 0),
        1);
    EXPECT_STREQ(buffer.data(), L"another's");
}

TEST_F(HiveTest, NumbersOfTheUserComeFromTheHiveOfTheLoggedOnUser)
{
    EXPECT_EQ(UserNumber(), 2U);
}

TEST_F(HiveTest, PolicyOfTheUserIsThatOfTheLoggedOnUser)
{
    m_values.SetDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, 1);
    EXPECT_FALSE(ReadPolicyFeature(kFeature));

    m_values.SetDword(HKEY_CURRENT_USER, kOtherPolicyKey, kFeature, 1);
    EXPECT_TRUE(ReadPolicyFeature(kFeature));
}

TEST_F(HiveTest, ValueThatTheLoggedOnUserLacksIsAbsentEvenIfTheOwnAccountHasIt)
{
    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"only own", L"x");
    WString text;

    EXPECT_EQ(ReadRegString(HKEY_CURRENT_USER, kScratchKey, L"only own", text, 0), 0);
    EXPECT_EQ(GetRegValueSize(HKEY_CURRENT_USER, kScratchKey, L"only own", 0), -1);
}

TEST_F(HiveTest, OtherHivesStandAsTheyAreGiven)
{
    m_values.SetText(HKEY_LOCAL_MACHINE, kScratchKey, L"text", L"machine");
    WString text;

    EXPECT_EQ(ReadRegString(HKEY_LOCAL_MACHINE, kScratchKey, L"text", text, 0), 1);

    EXPECT_EQ(text, L"machine");
    EXPECT_EQ(g_rootKeyRequests, 0);
}

TEST_F(HiveTest, BeforeVistaTheOwnHiveStands)
{
    for (const OsClass older : {OsClass::Other, OsClass::Windows2000, OsClass::WindowsXp})
    {
        g_osClass = older;
        EXPECT_EQ(UserText(), L"own");
        EXPECT_EQ(UserNumber(), 1U);
    }
    EXPECT_EQ(g_rootKeyRequests, 0);
}

TEST_F(HiveTest, ReadRegReadsTheHiveOfItsOwnAccount)
{
    std::array<WCHAR, 16> buffer{};
    DWORD number = 0;

    EXPECT_TRUE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, L"text", buffer.data(), sizeof(buffer), nullptr, 0));
    EXPECT_TRUE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"number", nullptr, 0, &number, 1));

    EXPECT_STREQ(buffer.data(), L"own");
    EXPECT_EQ(number, 1U);
    EXPECT_EQ(g_rootKeyRequests, 0);
}

TEST_F(HiveTest, RootKeyIsAskedForAtEveryRead)
{
    EXPECT_EQ(UserText(), L"another's");
    const int requests = g_rootKeyRequests;
    EXPECT_GT(requests, 0);

    EXPECT_EQ(UserText(), L"another's");
    EXPECT_EQ(g_rootKeyRequests, 2 * requests);
}
