// The bring-up over the file-backed mail library, and every row of its failure tables.

#include "MapiDataStore.h"
#include "StoreTest.h"
#include "StoreText.h"

class BringUpOverStoreTest : public StoreTest
{
};

using Paths = std::vector<std::wstring>;

TEST_F(BringUpOverStoreTest, FoldersOfBothKindsAreFoundAndWatched)
{
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);
    EXPECT_EQ(outlook.Init(2), 0U);

    EXPECT_EQ(outlook.CalendarPaths(), (Paths{L"Calendar", L"Calendar\\Team"}));
    EXPECT_EQ(outlook.ContactPaths(), (Paths{L"Contacts", L"Contacts\\Friends"}));
    EXPECT_TRUE(trace.Has(2, "CMapiCtrl.InitAppTbl - this folder table not support notification"));
    EXPECT_EQ(outlook.m_bNeedRealEntryID, 1U);
    EXPECT_FALSE(outlook.m_OutboxEid.empty());
    EXPECT_FALSE(outlook.m_SentEid.empty());
    EXPECT_EQ(MapiDataStore().GetProfileName(), L"Demo");
    EXPECT_EQ(MapiDataStore().GetStoreName(), L"Mailbox - Ada");
    EXPECT_EQ(MapiDataStore().GetRecordKey(), L"5D1F6A0B93C84E27A1B0C2D3E4F50617");
    EXPECT_EQ(MapiDataStore().GetUserEmail(), L"ada.quist@nordlys.example");
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, CachedFoldersAreGivenBackBeforeTheStoreCloses)
{
    CBroughtUp outlook;
    ASSERT_EQ(outlook.Init(1), 0U);

    EXPECT_NE(outlook.GetInboxFolder(), nullptr);
    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);

    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, PersonalStoreNeedsNoRealIdentifiers)
{
    WriteDocument(DocumentWith("\"default\": true,\n      \"folders\"",
                               "\"default\": true, \"personal\": true,\n      \"folders\""));
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_EQ(outlook.m_bNeedRealEntryID, 0U);
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, AddressBookIsWalkedAndAsked)
{
    CBroughtUp outlook;
    ASSERT_EQ(outlook.Init(1), 0U);
    std::vector<ABContainerInfo> containers;

    EXPECT_EQ(outlook.ListABContainerByType(1, containers), 2U);
    EXPECT_EQ(containers[0].name, L"Global");
    EXPECT_EQ(containers[1].name, L"Department");
    containers.clear();
    ASSERT_EQ(outlook.ListABContainerByType(DT_GLOBAL, containers), 1U);

    std::vector<ABEmailEntry> entries;
    outlook.ListABEmailWithName(containers[0].entryId, L"bo", entries);
    ASSERT_EQ(entries.size(), 1U); // the distribution list is passed over
    EXPECT_EQ(entries[0].smtpAddress, L"bo.lind@nordlys.example");
    entries.clear();
    EXPECT_EQ(outlook.ListABEmailWithKey(
                  containers[0].entryId, L"ADA.QUIST@nordlys.example", PR_SMTP_ADDRESS_W, entries),
              1U);
    EXPECT_EQ(entries[0].nativeAddress, L"/o=Nordlys/cn=ada");
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, EveryRowOfTheFailureTables)
{
    const struct
    {
        const char* plan;
        ULONG result;
        int level;
        const char* line;
    } rows[] = {
        {"MAPIInitialize call 1 fail MAPI_E_FAILONEPROVIDER",
         0x80080002,
         0,
         "MAPI Initialize failed"},
        {"MAPIAdminProfiles call 1 fail E_FAIL",
         0x80080003,
         0,
         "CMapiCtrl::GetProfiles - failed MAPIAdminProfiles"},
        {"IProfAdmin::GetProfileTable call 1 fail E_FAIL",
         0x80080003,
         0,
         "CMapiCtrl::GetProfiles - failed GetProfileTable"},
        {"IMAPITable::QueryRows(profiles) call 1 fail E_FAIL",
         0x80080003,
         0,
         "CMapiCtrl::Logon - strDefaultProfile []"},
        {"MAPILogonEx call 1 fail MAPI_E_LOGON_FAILED",
         0x80080004,
         2,
         "CMapiCtrl::Logon - mapi logon failed, hr[0x80040111]"},
        {"IMAPISession::QueryIdentity call 1 fail MAPI_E_NOT_FOUND",
         0x80080004,
         3,
         "CMapiCtrl::GetCurrentUserInfo - QueryIdentity hr[0x8004010f], ulEntryIDLen[0]"},
        {"IMAPISession::OpenEntry call 1 fail MAPI_E_NETWORK_ERROR",
         0,
         3,
         "CMapiCtrl::GetCurrentUserInfo - network error, try again to OpenEntry"},
        {"IMAPISession::OpenEntry every fail MAPI_E_NETWORK_ERROR",
         0x80080004,
         0,
         "Get current user failed"},
        {"IMAPISession::OpenEntry call 1 fail MAPI_E_NOT_FOUND",
         0x80080004,
         2,
         "CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x8004010f]"},
        {"IMailUser::GetProps call 1 fail E_FAIL", 0x80080004, 0, "Get current user failed"},
        {"IMailUser::GetProps call 1 error 0x3001001F MAPI_E_NOT_FOUND",
         0x80080004,
         0,
         "Get current user failed"},
        {"IMAPISession::GetMsgStoresTable call 1 fail E_FAIL",
         0x80080004,
         0,
         "Get default message store failed"},
        {"IMAPITable::QueryRows(stores) call 1 fail E_FAIL",
         0x80080004,
         0,
         "CMessageStoreBase::OpenMessageStore - QueryAllRows failed"},
        {"IMAPITable::QueryRows(stores) call 1 fail MAPI_E_BUSY",
         0,
         3,
         "QueryAllRows hResult==MAPI_E_BUSY"},
        {"IMAPISession::OpenMsgStore call 1 fail MAPI_E_FAILONEPROVIDER",
         0x80080004,
         1,
         "CMessageStoreBase::OpenMessageStore - open msg store failed, hResult[0x8004011d], "
         "name[Mailbox - Ada]"},
        {"IMAPISession::OpenMsgStore call 1 give MAPI_W_ERRORS_RETURNED",
         0x80080004,
         1,
         "CMessageStoreBase::OpenMessageStore - open msg store failed, hResult[0x40380], "
         "name[Mailbox - Ada]"},
        {"IMsgStore::GetProps call 1 fail E_FAIL",
         0,
         2,
         "CMessageStoreBase::GetCommonEids - get outbox/sentbox entryid failed"},
        {"IMsgStore::GetProps(0x35E00102) call 1 fail E_FAIL",
         0,
         3,
         "CMapiCtrl::InitAppTbl - get PR_IPM_SUBTREE_ENTRYID failed"},
        {"IMsgStore::OpenEntry(folder) call 1 fail E_FAIL",
         0,
         2,
         "CMapiCtrl::InitAppTbl - ipmroot==0"},
        {"IMAPITable::QueryRows(hierarchy) calls 1-2 fail MAPI_E_BUSY",
         0,
         3,
         "QueryAllRows hResult==MAPI_E_BUSY"},
        {"IMsgStore::OpenEntry(folder) call 2 fail MAPI_E_NO_ACCESS",
         0,
         2,
         "CMapiCtrl.InitAppTbl - open folder failed"},
        {"IMAPIFolder::GetContentsTable call 1 fail E_FAIL",
         0,
         2,
         "CMapiCtrl.InitAppTbl - get folder table failed"},
        {"IMAPITable::Advise call 1 fail MAPI_E_NO_SUPPORT",
         0,
         2,
         "CMapiCtrl.InitAppTbl - this folder table not support notification"},
        {"IMAPITable::Advise call 1 fail E_FAIL", 0, 2, "CMapiCtrl.InitAppTbl - sink table failed"},
        {"IMAPISession::OpenAddressBook call 1 fail E_FAIL", 0, 3, "open address book failed"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.plan);
        SetFaults(row.plan);
        trace.Clear();
        CBroughtUp outlook;

        EXPECT_EQ(outlook.Init(1), row.result);

        EXPECT_TRUE(trace.Has(row.level, row.line));
        outlook.FreeLib();
        ExpectCleanLedger();
    }
}

TEST_F(BringUpOverStoreTest, FolderThatFailsIsMissingAndTheOthersAreThere)
{
    SetFaults("IMAPIFolder::GetContentsTable call 1 fail E_FAIL");
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_EQ(outlook.CalendarPaths(), (Paths{L"Calendar\\Team"}));
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, ProviderThatCrashesOnTheSubtreeIsSurvived)
{
    SetFaults("IMsgStore::OpenEntry(folder) call 1 crash");
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_TRUE(trace.Has(3, "CMapiCtrl::InitAppTbl - ******catch exception\n"));
    EXPECT_TRUE(outlook.m_CalendarSinks.empty());
    EXPECT_EQ(outlook.Init(2), 0U);
    EXPECT_EQ(outlook.m_ContactSinks.size(), 2U);
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, ProviderThatCrashesOnTheSubtreesIdentifierIsSurvived)
{
    SetFaults("IMsgStore::GetProps(0x35E00102) call 1 crash");
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_TRUE(trace.Has(3, "CMapiCtrl::InitAppTbl - ******catch exception\n"));
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, MissingDefaultProfileIsToldApart)
{
    WriteDocument(DocumentWith("\"name\": \"Demo\", \"default\": true", "\"name\": \"Demo\""));
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080003U);

    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, DamagedStoreFailsTheLogon)
{
    WriteDocument("{ \"format\": \"mapistore\"");
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080004U);

    EXPECT_TRUE(trace.Has(2, "CMapiCtrl::Logon - mapi logon failed, hr[0x80040600]"));
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, StoreWithoutAValidOutboxStillHasItsSentItems)
{
    WriteDocument(DocumentWith("\"default\": true,\n      \"folders\"",
                               "\"default\": true, \"properties\": {\"PR_IPM_OUTBOX_ENTRYID\": "
                               "{\"error\": \"0x8004010F\"}},\n      \"folders\""));
    CBroughtUp outlook;

    EXPECT_EQ(outlook.Init(1), 0U);

    EXPECT_TRUE(outlook.m_OutboxEid.empty());
    EXPECT_FALSE(outlook.m_SentEid.empty());
    outlook.FreeLib();
}

TEST_F(BringUpOverStoreTest, ThirtySessionsInARowLeaveNothing)
{
    for (int session = 0; session < 30; ++session)
    {
        CBroughtUp outlook;
        ASSERT_EQ(outlook.Init(1), 0U);
        ASSERT_EQ(outlook.Init(2), 0U);
        outlook.FreeLib();
        ExpectCleanLedger();
    }
}
