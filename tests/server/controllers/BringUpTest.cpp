// The bring-up from its first line to its last, its result codes, and the way down.

#include <objbase.h>

#include <algorithm>
#include <thread>

#include "ControllerTest.h"
#include "MapiDataStore.h"

class BringUpTest : public ControllerTest
{
protected:
    /// Runs the bring-up with one operation failing and gives the result.
    ULONG InitWithFailure(const std::string& operation, HRESULT status)
    {
        mapi.answers = {{operation, {status, status}}};
        CTestOutlook outlook;
        const ULONG result = outlook.Init(1);
        outlook.FreeLib();
        return result;
    }
};

TEST_F(BringUpTest, CalendarBringUpIsReady)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_EQ(outlook.m_CalendarSinks.size(), 1U);
    EXPECT_EQ(outlook.m_ContactSinks.size(), 0U);
    EXPECT_TRUE(outlook.m_lpAdrBook);
    outlook.FreeLib();
}

TEST_F(BringUpTest, TypeOneThenTwoBringsUpOnceAndSubscribesEachOnce)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0U);
    EXPECT_EQ(outlook.Init(2), 0U);

    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    EXPECT_EQ(mapi.CountCalls("MAPILogonEx"), 1U);
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenAddressBook(1)"), 1U);
    EXPECT_EQ(outlook.m_CalendarSinks.size(), 1U);
    EXPECT_EQ(outlook.m_ContactSinks.size(), 1U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, AddressBookOpensBehindTheFirstSubscription)
{
    CTestOutlook outlook;

    outlook.Init(1);

    const Strings lines = Lines();
    const auto subscribed =
        std::find(lines.begin(), lines.end(), "3 CMapiCtrl.InitAppTbl - sink table successfull");
    const auto opened = std::find(lines.begin(), lines.end(), "3 open address book successful");
    EXPECT_LT(subscribed, opened);
    EXPECT_NE(opened, lines.end());
    outlook.FreeLib();
}

TEST_F(BringUpTest, TypeTwoThenOneBringsUpOnceAndSubscribesEachOnce)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(2), 0U);
    EXPECT_EQ(outlook.m_CalendarSinks.size(), 0U);
    EXPECT_EQ(outlook.m_ContactSinks.size(), 1U);
    EXPECT_TRUE(outlook.m_lpAdrBook);
    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_EQ(outlook.m_CalendarSinks.size(), 1U);
    EXPECT_EQ(outlook.m_ContactSinks.size(), 1U);
    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenAddressBook(1)"), 1U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, TypeThreeBringsUpAndSubscribesNothing)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(3), 0U);

    EXPECT_EQ(mapi.CountCalls("ContentsTable::Advise"), 0U);
    EXPECT_TRUE(outlook.m_lpAdrBook);
    outlook.FreeLib();
}

TEST_F(BringUpTest, TypeZeroIsRefusedAndTouchesNothing)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(0), 1U);

    EXPECT_EQ(Lines(), (Strings{"0 initType[0]", "0 Error init type [NO_INITIALIZATION]"}));
    EXPECT_EQ(outlook.m_bInitialized, 0U);
    EXPECT_EQ(outlook.m_hrInit, 1U);
}

TEST_F(BringUpTest, MissingMailClientTouchesNoLibrary)
{
    RegisterMailClient(false);
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080002U);

    EXPECT_EQ(Lines(), (Strings{"0 initType[1]", "0 OUTLOOK is not installed"}));
    EXPECT_FALSE(outlook.m_hMAPIDll);
    EXPECT_EQ(mapi.calls, Strings{});
}

TEST_F(BringUpTest, MissingDefaultProfileHasItsOwnCode)
{
    mapi.profiles = {{{PR_DISPLAY_NAME_A, std::string("Other")}, {PR_DEFAULT_PROFILE, false}}};
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080003U);

    EXPECT_TRUE(trace.Has(0, "logon failed"));
    outlook.FreeLib();
}

TEST_F(BringUpTest, EachFailureHasItsCodeAndItsLine)
{
    const struct
    {
        const char* operation;
        HRESULT status;
        ULONG result;
        const char* line;
    } rows[] = {
        {"MAPIInitialize", E_FAIL, 0x80080002, "MAPI Initialize failed"},
        {"MAPILogonEx", MAPI_E_LOGON_FAILED, 0x80080004, "logon failed"},
        {"IMAPISession::QueryIdentity", E_FAIL, 0x80080004, "Get current user failed"},
        {"IMAPISession::OpenEntry(8)", MAPI_E_NOT_FOUND, 0x80080004, "Get current user failed"},
        {"IMAPISession::GetMsgStoresTable", E_FAIL, 0x80080004, "Get default message store failed"},
        {"IMAPISession::OpenMsgStore",
         MAPI_E_FAILONEPROVIDER,
         0x80080004,
         "Get default message store failed"},
        {"MAPIAdminProfiles", E_FAIL, 0x80080003, "logon failed"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.operation);
        trace.Clear();

        EXPECT_EQ(InitWithFailure(row.operation, row.status), row.result);

        EXPECT_TRUE(trace.Has(0, row.line));
        EXPECT_EQ(mapi.liveObjects, 0);
    }
}

TEST_F(BringUpTest, NothingRunsBehindAFailedStep)
{
    const struct
    {
        const char* operation;
        ULONG result;
        const char* lastCall;
    } rows[] = {
        {"MAPIInitialize", 0x80080002, "MAPIInitialize"},
        {"MAPILogonEx", 0x80080004, "MAPILogonEx"},
        {"IMAPISession::QueryIdentity", 0x80080004, "IMAPISession::QueryIdentity"},
        {"IMAPISession::OpenMsgStore", 0x80080004, "StoresTable::Release"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.operation);
        mapi.answers = {{row.operation, {E_FAIL}}};
        mapi.calls.clear();
        CTestOutlook outlook;

        EXPECT_EQ(outlook.Init(1), row.result);

        EXPECT_EQ(outlook.m_hrInit, row.result);
        EXPECT_EQ(mapi.calls.back(), row.lastCall);
        outlook.FreeLib();
    }
}

TEST_F(BringUpTest, NoDefaultStoreInTheTableFailsTheBringUp)
{
    mapi.stores = {{{PR_ENTRYID, BinaryBlock{1}}, {PR_DEFAULT_STORE, false}}};
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080004U);

    EXPECT_TRUE(trace.Has(0, "Get default message store failed"));
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenMsgStore"), 0U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, StatusIsReadyFromTheLogonOn)
{
    CTestOutlook outlook;
    ULONG atLogon = 7;
    ULONG atIdentity = 7;
    mapi.actions["MAPILogonEx"] = [&] { atLogon = outlook.m_hrInit; };
    mapi.actions["IMAPISession::QueryIdentity"] = [&] { atIdentity = outlook.m_hrInit; };

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_EQ(atLogon, 1U) << "the first logon begins with a logoff";
    EXPECT_EQ(atIdentity, 0U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, FailedStepsBehindTheStoreDoNotReachTheResult)
{
    for (const char* const operation : {"IMsgStore::GetProps",
                                        "IMsgStore::OpenEntry",
                                        "IMAPIFolder::OpenProperty",
                                        "HierarchyTable::QueryRows",
                                        "IMAPIFolder::GetContentsTable",
                                        "ContentsTable::Advise",
                                        "IMAPISession::OpenAddressBook(1)"})
    {
        SCOPED_TRACE(operation);

        EXPECT_EQ(InitWithFailure(operation, E_FAIL), 0U);

        EXPECT_EQ(mapi.liveObjects, 0);
    }
}

TEST_F(BringUpTest, LaterTypeAfterAFailureSubscribesAndAnswersTheOldResult)
{
    mapi.answers["MAPILogonEx"] = {E_FAIL};
    CTestOutlook outlook;
    ASSERT_EQ(outlook.Init(1), 0x80080004U);
    trace.Clear();

    EXPECT_EQ(outlook.Init(2), 0x80080004U);

    EXPECT_EQ(Lines(),
              (Strings{"0 initType[2]",
                       "2 InitContactTbl",
                       "3 CMapiCtrl::InitContactTbl - MsgStore is NULL"}));
    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, FailedBringUpLeavesWhatWasAchieved)
{
    mapi.answers["IMAPISession::OpenMsgStore"] = {E_FAIL};
    CTestOutlook outlook;

    ASSERT_EQ(outlook.Init(1), 0x80080004U);

    EXPECT_TRUE(outlook.m_hMAPIDll);
    EXPECT_TRUE(outlook.lpSession);
    EXPECT_EQ(mapi.CountCalls("MAPIUninitialize"), 0U);
    outlook.FreeLib();
    EXPECT_EQ(mapi.CountCalls("MAPIUninitialize"), 1U);
}

TEST_F(BringUpTest, FreeingGoesInItsOrder)
{
    CTestOutlook outlook;
    ASSERT_EQ(outlook.Init(1), 0U);
    ASSERT_EQ(outlook.Init(2), 0U);
    ASSERT_NE(outlook.GetInboxFolder(), nullptr);
    ASSERT_NE(outlook.GetOutboxFolder(), nullptr);
    trace.Clear();
    mapi.calls.clear();

    outlook.FreeLib();

    EXPECT_EQ(Lines(),
              (Strings{"2 Logoff",
                       "2 UnAdviceTableSink",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 1.",
                       "2 UnAdviceContactTableSink",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 1.",
                       "3 close address book",
                       "3 CMessageStoreBase::CloseMessageStore - close message store",
                       "2 CMapiCtrl::Logoff - to log off profile[Work]",
                       "3 CMapiCtrl::MAPIUninit - MAPIUninitialize",
                       "3 CMapiCtrl::FreeLib - Free MAPI Library"}));
    EXPECT_EQ(mapi.calls,
              (Strings{"IMAPIFolder::Release",
                       "IMAPIFolder::Release",
                       "ContentsTable::Unadvise",
                       "IMAPIFolder::Release",
                       "ContentsTable::Release",
                       "ContentsTable::Unadvise",
                       "IMAPIFolder::Release",
                       "ContentsTable::Release",
                       "IAddrBook::Release",
                       "IMsgStore::StoreLogoff(1)",
                       "IMsgStore::Release",
                       "IMAPISession::Logoff(0,0)",
                       "IMAPISession::Release",
                       "MAPIUninitialize"}));
    EXPECT_EQ(outlook.m_hrInit, 1U);
    EXPECT_FALSE(outlook.m_hMAPIDll);
}

TEST_F(BringUpTest, FreeingWhatWasNeverBroughtUpIsHarmless)
{
    CTestOutlook outlook;

    outlook.FreeLib();

    EXPECT_EQ(Lines(),
              (Strings{"2 Logoff",
                       "2 UnAdviceTableSink",
                       "2 UnAdviceContactTableSink",
                       "3 close address book",
                       "3 CMapiCtrl::MAPIUninit - bMAPIXInited[0]"}));
}

TEST_F(BringUpTest, InitializeAsksForNotificationsOnAThreadOfTheirOwn)
{
    CTestOutlook outlook;

    outlook.Init(3);

    EXPECT_EQ(mapi.initializeFlags, 1U);
    outlook.FreeLib();
}

TEST_F(BringUpTest, ComIsLeftToTheLibraryToInitialize)
{
    HRESULT apartment = S_OK;
    std::thread([&apartment] {
        CTestOutlook outlook;
        outlook.Init(1);
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        apartment = CoGetApartmentType(&type, &qualifier);
        outlook.FreeLib();
    }).join();

    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    EXPECT_EQ(apartment, CO_E_NOTINITIALIZED);
}

TEST_F(BringUpTest, EveryLineOfAGoodBringUpInItsOrder)
{
    CTestOutlook outlook;

    ASSERT_EQ(outlook.Init(3), 0U);

    Strings lines = Lines();
    // The lines that carry paths and versions of this machine are held by tests of their own.
    std::erase_if(lines, [](const std::string& line) {
        return line.find("MAPI path[") != std::string::npos ||
               line.find("try to load") != std::string::npos ||
               line.find("szPath = ") != std::string::npos ||
               line.find("hkeyMapiClient[") != std::string::npos;
    });
    EXPECT_EQ(
        lines,
        (Strings{
            "0 initType[3]",
            "2 GetNextMAPIPath:CurrentSource[0]",
            "3 GetRegisteredMapiClient:bDLL[0],bDLLEx[0]",
            "3 GetMailClientFromMSIData:fail to query Outlook Mapi Client key "
            "value[MSIComponentID], error = 0x2",
            "3 GetRegisteredMapiClient:bDLL[1],bDLLEx[1]",
            "3 CMapiCtrl::LoadLib - MAPI dll load success",
            "2 COutlookCtrl::MAPIXInit Before call MAPIInitialize",
            "2 COutlookCtrl::MAPIXInit After call MAPIInitialize",
            "2 CMapiCtrl::MAPIXInit - MAPIInitialize successful",
            "2 LogonDefaultMAPIProfile",
            "2 CMapiCtrl::GetProfiles - get default profile[Work]",
            "2 Logoff",
            "2 UnAdviceTableSink",
            "2 UnAdviceContactTableSink",
            "3 close address book",
            "3 CMapiCtrl::Logon - to call MAPILogonEx",
            "2 CMapiCtrl::Logon - mapi logon profile [Work] successful",
            "3 CMapiCtrl::GetCurrentUserInfo - to QueryIdentity",
            "3 CMapiCtrl::GetCurrentUserInfo - to OpenEntry",
            "3 CMapiCtrl::GetCurrentUserInfo - to Query Interface IID_IMailUser",
            "3 CMapiCtrl::GetCurrentUserInfo - to Query Interface IID_IMAPIProp",
            "3 CMapiCtrl::GetCurrentUserInfo - First Name[Ada], Last Name[Stone], "
            "SMTP[ada@example.org], Display Name[Ada Stone], Address[/o=Example/cn=ada], "
            "AddressType[EX], account[ada]",
            "2 CMessageStoreBase::OpenMessageStore - The default folder[Mailbox] is NOT personal, "
            "need to get real EntryID",
            "2 CMessageStoreBase::OpenMessageStore PreCall",
            "3 failed 1",
            "2 CMessageStoreBase::OpenMessageStore, dwUseOnlineMode=0, bOnlineMode=0",
            "2 CMessageStoreBase::OpenMessageStore AfterCall",
            "2 CMessageStoreBase::OpenMessageStore - store is open successful",
            "3 open address book successful"}));
    outlook.FreeLib();
}
