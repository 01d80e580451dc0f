// Who the user of the session is.

#include "ControllerTest.h"
#include "MapiDataStore.h"
#include "PatchedImport.h"

namespace
{

std::vector<DWORD>* g_pauses = nullptr;

/// Notes how long the code wants to wait, and does not.
void WINAPI NoteSleep(DWORD pauseMs)
{
    g_pauses->push_back(pauseMs);
}

} // namespace

class CurrentUserTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        g_pauses = &pauses;
    }
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    void SetUser(ULONG tag, const std::wstring& text)
    {
        for (FakeValue& value : mapi.user)
        {
            if (value.tag == tag)
            {
                value.data = text;
            }
        }
    }
    void DropUser(ULONG tag)
    {
        std::erase_if(mapi.user, [tag](const FakeValue& value) { return value.tag == tag; });
    }
    /// The e-mail address that is found, empty when the user is not.
    std::wstring FoundEmail()
    {
        LogOn(outlook);
        return outlook.GetCurrentUserInfo() ? outlook.m_strUserEmail : std::wstring();
    }

    std::vector<DWORD> pauses;
    CPatchedImport sleep{"Sleep", &NoteSleep};
    CTestOutlook outlook;
};

TEST_F(CurrentUserTest, NeedsASession)
{
    EXPECT_FALSE(outlook.GetCurrentUserInfo());

    EXPECT_EQ(Lines(), (Strings{"2 CMapiCtrl::GetCurrentUserInfo - lpSession is NULL"}));
}

TEST_F(CurrentUserTest, DirectoryUserHasTheSmtpAddress)
{
    EXPECT_EQ(FoundEmail(), L"ada@example.org");

    EXPECT_EQ(outlook.m_strUserName, L"Ada Stone");
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"ada@example.org");
    EXPECT_EQ(MapiDataStore().GetUserFirstName(), L"Ada");
    EXPECT_EQ(MapiDataStore().GetUserLastName(), L"Stone");
    EXPECT_EQ(LinesWith("TALVO"), Strings{});
    EXPECT_EQ(
        mapi.tags["IMailUser::GetProps"],
        (std::vector<ULONG>{
            0x3A06001F, 0x3A11001F, 0x39FE001F, 0x3001001F, 0x3003001F, 0x3002001F, 0x3A00001F}));
    EXPECT_EQ(mapi.flags["IMailUser::GetProps"], 0U);
}

TEST_F(CurrentUserTest, SmtpUserHasTheAddressEvenIfTheSmtpValueDiffers)
{
    SetUser(PR_ADDRTYPE_W, L"SMTP");
    SetUser(PR_EMAIL_ADDRESS_W, L"ada@home.example");

    EXPECT_EQ(FoundEmail(), L"ada@home.example");
}

TEST_F(CurrentUserTest, SmtpUserWithoutAnAddressFallsBackToTheSmtpValue)
{
    SetUser(PR_ADDRTYPE_W, L"SMTP");
    SetUser(PR_EMAIL_ADDRESS_W, L"");

    EXPECT_EQ(FoundEmail(), L"ada@example.org");

    EXPECT_TRUE(
        trace.Has(3, "CMapiCtrl::GetCurrentUserInfo TALVO-8173 - strEmail = ada@example.org"));
}

TEST_F(CurrentUserTest, DirectoryUserWithoutAnSmtpValueFallsBackToTheAddress)
{
    DropUser(PR_SMTP_ADDRESS_W);

    EXPECT_EQ(FoundEmail(), L"/o=Example/cn=ada");

    EXPECT_TRUE(
        trace.Has(3, "CMapiCtrl::GetCurrentUserInfo TALVO-8173 - strEmail = /o=Example/cn=ada"));
}

TEST_F(CurrentUserTest, MadeUpValuesArePassedOverByTheFallback)
{
    SetUser(PR_ADDRTYPE_W, L"SMTP");
    SetUser(PR_EMAIL_ADDRESS_W, L"");
    SetUser(PR_SMTP_ADDRESS_W, L"\x1made up");

    EXPECT_EQ(FoundEmail(), L"");

    DropUser(PR_SMTP_ADDRESS_W);
    SetUser(PR_ADDRTYPE_W, L"EX");
    SetUser(PR_EMAIL_ADDRESS_W, L"\x1made up");
    outlook.Logoff();
    EXPECT_EQ(FoundEmail(), L"");
    EXPECT_EQ(LinesWith("TALVO"), Strings{});
}

TEST_F(CurrentUserTest, OnlyTheFallbackPassesMadeUpValuesOver)
{
    SetUser(PR_SMTP_ADDRESS_W, L"\x1made up");

    EXPECT_EQ(FoundEmail(), L"\x1made up");

    EXPECT_EQ(LinesWith("TALVO"), Strings{});
}

TEST_F(CurrentUserTest, AddressTypeIsComparedWithItsCase)
{
    SetUser(PR_ADDRTYPE_W, L"smtp");
    SetUser(PR_EMAIL_ADDRESS_W, L"ada@home.example");

    EXPECT_EQ(FoundEmail(), L"ada@example.org");
}

TEST_F(CurrentUserTest, NameWithoutAddressAndAddressWithoutNameBothFail)
{
    DropUser(PR_DISPLAY_NAME_W);
    EXPECT_EQ(FoundEmail(), L"");
    EXPECT_EQ(outlook.m_strUserEmail, L"");
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"");
    // First and last name are handed over in both outcomes.
    EXPECT_EQ(MapiDataStore().GetUserFirstName(), L"Ada");

    mapi.user = {{PR_DISPLAY_NAME_W, std::wstring(L"Ada Stone")}};
    outlook.Logoff();
    EXPECT_EQ(FoundEmail(), L"");
}

TEST_F(CurrentUserTest, UserWhoIsNoLongerFoundKeepsAddressAndName)
{
    ASSERT_EQ(FoundEmail(), L"ada@example.org");
    DropUser(PR_DISPLAY_NAME_W);
    SetUser(PR_SMTP_ADDRESS_W, L"new@example.org");
    SetUser(PR_GIVEN_NAME_W, L"Adele");

    EXPECT_FALSE(outlook.GetCurrentUserInfo());

    EXPECT_EQ(outlook.m_strUserEmail, L"ada@example.org");
    EXPECT_EQ(outlook.m_strUserName, L"Ada Stone");
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"ada@example.org");
    EXPECT_EQ(MapiDataStore().GetUserFirstName(), L"Adele");
}

TEST_F(CurrentUserTest, ValuesOfAnotherTypeStayEmpty)
{
    DropUser(PR_GIVEN_NAME_W);
    mapi.user.push_back({PR_GIVEN_NAME_A, std::string("Ada")});

    EXPECT_EQ(FoundEmail(), L"ada@example.org");

    EXPECT_EQ(MapiDataStore().GetUserFirstName(), L"");
}

TEST_F(CurrentUserTest, IdentityThatCannotBeAskedStoresNothing)
{
    MapiDataStore().SetUserFacts(L"old@example.org", L"Old", L"User");
    mapi.answers["IMAPISession::QueryIdentity"] = {MAPI_E_NOT_FOUND};

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_TRUE(trace.Has(
        3, "CMapiCtrl::GetCurrentUserInfo - QueryIdentity hr[0x8004010f], ulEntryIDLen[0]"));
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"old@example.org");
}

TEST_F(CurrentUserTest, IdentityWithoutBytesStoresNothing)
{
    MapiDataStore().SetUserFacts(L"old@example.org", L"Old", L"User");
    mapi.identityBytes = 0;

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_EQ(Lines(),
              (Strings{"3 CMapiCtrl::GetCurrentUserInfo - to QueryIdentity",
                       "3 CMapiCtrl::GetCurrentUserInfo - QueryIdentity hr[0x0], "
                       "ulEntryIDLen[0]"}));
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"old@example.org");
}

TEST_F(CurrentUserTest, NetworkErrorIsTriedOnceMore)
{
    mapi.answers["IMAPISession::OpenEntry(8)"] = {MAPI_E_NETWORK_ERROR};

    EXPECT_EQ(FoundEmail(), L"ada@example.org");

    EXPECT_EQ(pauses, std::vector<DWORD>{1000});
    const Strings lines = Lines();
    EXPECT_EQ(Strings(lines.begin(), lines.begin() + 5),
              (Strings{"3 CMapiCtrl::GetCurrentUserInfo - to QueryIdentity",
                       "3 CMapiCtrl::GetCurrentUserInfo - to OpenEntry",
                       "2 CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x80040115]",
                       "3 CMapiCtrl::GetCurrentUserInfo - network error, try again to OpenEntry",
                       "3 CMapiCtrl::GetCurrentUserInfo - to Query Interface IID_IMailUser"}));
}

TEST_F(CurrentUserTest, SecondNetworkErrorGivesUp)
{
    mapi.answers["IMAPISession::OpenEntry(8)"] = {MAPI_E_NETWORK_ERROR, MAPI_E_NETWORK_ERROR};

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_EQ(trace.Count("CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x80040115]"), 2U);
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenEntry(8)"), 2U);
    EXPECT_EQ(pauses, std::vector<DWORD>{1000});
}

TEST_F(CurrentUserTest, OtherErrorsAreNotTriedAgain)
{
    MapiDataStore().SetUserFacts(L"", L"Old", L"User");
    mapi.answers["IMAPISession::OpenEntry(8)"] = {MAPI_E_NOT_FOUND};

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenEntry(8)"), 1U);
    // The facts are handed over in both outcomes.
    EXPECT_EQ(MapiDataStore().GetUserFirstName(), L"");
}

TEST_F(CurrentUserTest, OpenEntryWithoutAnObjectHasItsLine)
{
    mapi.opensUser = false;

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_TRUE(trace.Has(2, "CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x0]"));
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenEntry(8)"), 1U);
}

TEST_F(CurrentUserTest, AnotherErrorOfTheSecondTryHasItsLine)
{
    mapi.answers["IMAPISession::OpenEntry(8)"] = {MAPI_E_NETWORK_ERROR, MAPI_E_NOT_FOUND};

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_EQ(Lines().back(), "2 CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x8004010f]");
}

TEST_F(CurrentUserTest, StatusOfThePropertiesIsNotLookedAt)
{
    mapi.userStatus = MAPI_E_NETWORK_ERROR;

    EXPECT_EQ(FoundEmail(), L"ada@example.org");
}

TEST_F(CurrentUserTest, OtherThanSevenValuesAreNotTaken)
{
    mapi.userValues = 6;

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_EQ(LinesWith("First Name[]").size(), 1U);
}

TEST_F(CurrentUserTest, MissingInterfacesHaveTheirLines)
{
    mapi.answers["IMailUser::QueryInterface(IMailUser)"] = {E_NOINTERFACE};
    EXPECT_EQ(FoundEmail(), L"");
    EXPECT_TRUE(trace.Has(
        2, "CMapiCtrl::GetCurrentUserInfo - Query Interface IID_IMailUser, hr[0x80004002]"));

    outlook.Logoff();
    mapi.answers["IMailUser::QueryInterface(IMAPIProp)"] = {E_NOINTERFACE};
    EXPECT_EQ(FoundEmail(), L"");
    EXPECT_TRUE(trace.Has(
        2, "CMapiCtrl::GetCurrentUserInfo - Query Interface IID_IMAPIProp, hr[0x80004002]"));
}

TEST_F(CurrentUserTest, PropertiesThatCannotBeReadLeaveTheUserUnknown)
{
    mapi.answers["IMailUser::GetProps"] = {E_FAIL};

    EXPECT_EQ(FoundEmail(), L"");

    EXPECT_TRUE(trace.Has(3,
                          "CMapiCtrl::GetCurrentUserInfo - First Name[], Last Name[], SMTP[], "
                          "Display Name[], Address[], AddressType[], account[]"));
}
