// Profile, logon, address book, logoff.

#include "ControllerTest.h"
#include "MapiDataStore.h"

class LogonTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        outlook.bMAPIX = 1;
        outlook.bMAPIXInited = 1;
    }
    void TearDown() override
    {
        outlook.bMAPIXInited = 0;
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    CTestOutlook outlook;
};

TEST_F(LogonTest, DefaultProfileIsUsedWhateverTheOrderOfTheRows)
{
    const FakeProps other{{PR_DISPLAY_NAME_A, std::string("Other")}, {PR_DEFAULT_PROFILE, false}};
    const FakeProps work{{PR_DISPLAY_NAME_A, std::string("Work")}, {PR_DEFAULT_PROFILE, true}};
    mapi.profiles = {other, work};
    std::vector<WString> profiles;
    CTestOutlook::GetProfiles(profiles);
    EXPECT_EQ(profiles, (std::vector<WString>{L"Work"}));

    mapi.profiles = {work, other};
    profiles.clear();
    CTestOutlook::GetProfiles(profiles);
    EXPECT_EQ(profiles, (std::vector<WString>{L"Work"}));

    EXPECT_EQ(Lines(),
              (Strings{"2 CMapiCtrl::GetProfiles - get default profile[Work]",
                       "2 CMapiCtrl::GetProfiles - get default profile[Work]"}));
}

TEST_F(LogonTest, ProfileTableIsReadAsItStands)
{
    std::vector<WString> profiles;

    CTestOutlook::GetProfiles(profiles);

    EXPECT_EQ(mapi.tags["ProfileTable::SetColumns"], (std::vector<ULONG>{0x3001001E, 0x3D04000B}));
    EXPECT_EQ(mapi.flags["ProfileTable::QueryRows"], 1U);
    EXPECT_EQ(mapi.CountCalls("ProfileTable::Restrict"), 0U);
}

TEST_F(LogonTest, ProfileFailuresHaveTheirLines)
{
    std::vector<WString> profiles;
    mapi.answers["MAPIAdminProfiles"] = {E_FAIL};
    CTestOutlook::GetProfiles(profiles);
    mapi.answers["IProfAdmin::GetProfileTable"] = {E_FAIL};
    CTestOutlook::GetProfiles(profiles);
    mapi.answers["ProfileTable::QueryRows"] = {E_FAIL};
    CTestOutlook::GetProfiles(profiles);

    EXPECT_EQ(profiles, std::vector<WString>{});
    EXPECT_EQ(Lines(),
              (Strings{"0 CMapiCtrl::GetProfiles - failed MAPIAdminProfiles",
                       "0 CMapiCtrl::GetProfiles - failed GetProfileTable"}));
}

TEST_F(LogonTest, DefaultProfileWithoutANameIsPassedOver)
{
    mapi.profiles = {{{PR_DISPLAY_NAME_A, std::string()}, {PR_DEFAULT_PROFILE, true}},
                     {{PR_DEFAULT_PROFILE, true}}};

    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(outlook.m_bNoDefaultProfile, 1U);
}

TEST_F(LogonTest, BusyProfileTableIsAskedAgain)
{
    mapi.answers["ProfileTable::QueryRows"] = {MAPI_E_BUSY, MAPI_E_BUSY};
    std::vector<WString> profiles;

    CTestOutlook::GetProfiles(profiles);

    EXPECT_EQ(profiles.size(), 1U);
    EXPECT_EQ(trace.Count("QueryAllRows hResult==MAPI_E_BUSY"), 2U);
    EXPECT_EQ(mapi.CountCalls("ProfileTable::WaitForCompletion"), 2U);
}

TEST_F(LogonTest, BusyTableThatCannotWaitIsGivenUp)
{
    mapi.answers["ProfileTable::QueryRows"] = {MAPI_E_BUSY, MAPI_E_BUSY};
    mapi.answers["ProfileTable::WaitForCompletion"] = {MAPI_E_NO_SUPPORT};
    std::vector<WString> profiles;

    CTestOutlook::GetProfiles(profiles);

    EXPECT_EQ(profiles.size(), 0U);
    EXPECT_EQ(mapi.CountCalls("ProfileTable::QueryRows"), 1U);
}

TEST_F(LogonTest, LogonNeverShowsADialogAndKeepsTheProfile)
{
    EXPECT_TRUE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(mapi.logonFlags, 0x80100032U);
    EXPECT_EQ(mapi.logonProfile, L"Work");
    EXPECT_EQ(outlook.m_strProfile, L"Work");
    EXPECT_EQ(MapiDataStore().GetProfileName(), L"Work");
    EXPECT_EQ(outlook.m_bNoDefaultProfile, 0U);
}

TEST_F(LogonTest, FirstLogonLogsOffBefore)
{
    outlook.m_hrInit = 0;

    EXPECT_TRUE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(outlook.m_hrInit, 1U);
    EXPECT_EQ(Lines(),
              (Strings{"2 LogonDefaultMAPIProfile",
                       "2 CMapiCtrl::GetProfiles - get default profile[Work]",
                       "2 Logoff",
                       "2 UnAdviceTableSink",
                       "2 UnAdviceContactTableSink",
                       "3 close address book",
                       "3 CMapiCtrl::Logon - to call MAPILogonEx",
                       "2 CMapiCtrl::Logon - mapi logon profile [Work] successful"}));
}

TEST_F(LogonTest, WithoutADefaultProfileNothingIsTried)
{
    mapi.profiles = {};

    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(Lines(),
              (Strings{"2 LogonDefaultMAPIProfile", "0 CMapiCtrl::Logon - strDefaultProfile []"}));
    EXPECT_EQ(outlook.m_bNoDefaultProfile, 1U);
    EXPECT_EQ(mapi.CountCalls("MAPILogonEx"), 0U);
}

TEST_F(LogonTest, FailedLogonIsNotTriedAgain)
{
    mapi.answers["MAPILogonEx"] = {MAPI_E_LOGON_FAILED};

    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());

    EXPECT_TRUE(trace.Has(2, "CMapiCtrl::Logon - mapi logon failed, hr[0x80040111]"));
    EXPECT_EQ(mapi.CountCalls("MAPILogonEx"), 1U);
    EXPECT_EQ(outlook.m_bNoDefaultProfile, 0U);
    EXPECT_EQ(outlook.m_strProfile, L"");
}

TEST_F(LogonTest, SessionAlreadyOpenUnderTheProfileCountsAsFailed)
{
    ASSERT_TRUE(outlook.LogonDefaultMAPIProfile());
    trace.Clear();

    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(Lines(),
              (Strings{"2 LogonDefaultMAPIProfile",
                       "2 CMapiCtrl::GetProfiles - get default profile[Work]",
                       "0 CMapiCtrl::Logon - strDefaultProfile [Work]"}));
    EXPECT_TRUE(outlook.lpSession);
    EXPECT_EQ(outlook.m_bNoDefaultProfile, 0U);
}

TEST_F(LogonTest, ChangedDefaultProfileReplacesTheSession)
{
    ASSERT_TRUE(outlook.LogonDefaultMAPIProfile());
    mapi.profiles = {{{PR_DISPLAY_NAME_A, std::string("Home")}, {PR_DEFAULT_PROFILE, true}}};
    trace.Clear();

    EXPECT_TRUE(outlook.LogonDefaultMAPIProfile());

    EXPECT_TRUE(trace.Has(2, "CMapiCtrl::Logoff - to log off profile[Work]"));
    EXPECT_EQ(outlook.m_strProfile, L"Home");
    EXPECT_EQ(mapi.CountCalls("IMAPISession::Logoff(0,0)"), 1U);
}

TEST_F(LogonTest, LogonBeforeTheLibraryIsStartedDoesNothing)
{
    outlook.bMAPIXInited = 0;
    outlook.m_bNoDefaultProfile = 1;

    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());

    EXPECT_EQ(Lines(), (Strings{"2 LogonDefaultMAPIProfile"}));
    EXPECT_EQ(outlook.m_bNoDefaultProfile, 0U);
    outlook.bMAPIXInited = 1;
    outlook.bMAPIX = 0;
    EXPECT_FALSE(outlook.LogonDefaultMAPIProfile());
    EXPECT_EQ(mapi.calls, Strings{});
}

TEST_F(LogonTest, LogoffAnswersOneAndRefusesFromThenOn)
{
    LogOn(outlook);

    EXPECT_EQ(outlook.Logoff(), 1U);

    EXPECT_EQ(outlook.m_hrInit, 1U);
    EXPECT_FALSE(outlook.lpSession);
    EXPECT_EQ(outlook.m_strProfile, L"");
}

TEST_F(LogonTest, AddressBookNeedsASession)
{
    EXPECT_EQ(outlook.OpenAddressbook(), 0U);

    EXPECT_EQ(Lines(), (Strings{"3 CMapiCtrl::OpenAddressbook - lpSession is NULL"}));
}

TEST_F(LogonTest, AddressBookOpensWithoutADialog)
{
    LogOn(outlook);

    EXPECT_EQ(outlook.OpenAddressbook(), 1U);

    EXPECT_EQ(Lines(), (Strings{"3 open address book successful"}));
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenAddressBook(1)"), 1U);
}

TEST_F(LogonTest, AddressBookThatOpensWithAWarningCountsAsFailed)
{
    for (const HRESULT status : {HRESULT{E_FAIL}, HRESULT{MAPI_W_ERRORS_RETURNED}})
    {
        LogOn(outlook);
        mapi.answers["IMAPISession::OpenAddressBook(1)"] = {status};
        trace.Clear();

        EXPECT_EQ(outlook.OpenAddressbook(), 0U);

        EXPECT_EQ(Lines(), (Strings{"3 open address book failed"}));
        EXPECT_FALSE(outlook.m_lpAdrBook);
    }
}
