// The default store, its common folders, and opening what is in it.

#include "ControllerTest.h"
#include "MapiDataStore.h"

class StoreTest : public ControllerTest
{
protected:
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    CTestOutlook outlook;
};

namespace
{

const BinaryBlock kPersonal{
    0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01, 0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x00};

} // namespace

TEST_F(StoreTest, OpeningNeedsASession)
{
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(Lines(), (Strings{"3 CMessageStoreBase::OpenMessageStore - lpSession is NULL"}));
}

TEST_F(StoreTest, FirstDefaultRowIsTheStoreAndItsFactsAreKept)
{
    LogOn(outlook);
    mapi.stores.insert(mapi.stores.begin(),
                       {{PR_ENTRYID, BinaryBlock{9}},
                        {PR_DISPLAY_NAME_A, std::string("Archive")},
                        {PR_DEFAULT_STORE, false}});

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(outlook.m_strStoreName, L"Mailbox");
    EXPECT_EQ(outlook.m_StoreEid, (BinaryBlock{1, 2, 0xAB}));
    EXPECT_TRUE(outlook.lpMsgStore);
    EXPECT_EQ(MapiDataStore().GetStoreName(), L"Mailbox");
    EXPECT_EQ(MapiDataStore().GetStoreEntryId(), (BinaryBlock{1, 2, 0xAB}));
    EXPECT_EQ(MapiDataStore().GetRecordKey(), L"CDEF");
}

TEST_F(StoreTest, DefaultRowWithoutAnIdentifierIsPassedOver)
{
    LogOn(outlook);
    mapi.stores.insert(mapi.stores.begin(),
                       {{PR_ENTRYID, BinaryBlock{}},
                        {PR_DISPLAY_NAME_A, std::string("Broken")},
                        {PR_DEFAULT_STORE, true}});

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(outlook.m_strStoreName, L"Mailbox");
}

TEST_F(StoreTest, WithoutADefaultRowThereIsNoStore)
{
    LogOn(outlook);
    mapi.stores = {{{PR_ENTRYID, BinaryBlock{1}}, {PR_DEFAULT_STORE, false}}};
    MapiDataStore().SetStoreFacts(L"old", {7}, L"07");

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(Lines(), Strings{});
    EXPECT_EQ(MapiDataStore().GetStoreName(), L"");
    EXPECT_EQ(MapiDataStore().GetRecordKey(), L"");
}

TEST_F(StoreTest, StoresTableFailuresHaveTheirLines)
{
    LogOn(outlook);
    mapi.answers["IMAPISession::GetMsgStoresTable"] = {E_FAIL};
    SetLastError(1234);
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());
    mapi.answers["StoresTable::QueryRows"] = {E_FAIL};
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(Lines(),
              (Strings{"3 CMessageStoreBase::OpenMessageStore - Get Msg store table failed. Error "
                       "Code[1234]",
                       "0 CMessageStoreBase::OpenMessageStore - QueryAllRows failed"}));
}

TEST_F(StoreTest, PersonalProviderNeedsNoRealIdentifiers)
{
    LogOn(outlook);
    mapi.stores[0].push_back({PR_MDB_PROVIDER, kPersonal});

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(outlook.m_bNeedRealEntryID, 0U);
    EXPECT_TRUE(trace.Has(
        2, "CMessageStoreBase::OpenMessageStore - The default folder[Mailbox] is personal"));
}

TEST_F(StoreTest, OtherOrMissingProviderNeedsRealIdentifiers)
{
    LogOn(outlook);
    outlook.m_bNeedRealEntryID = 0;
    EXPECT_TRUE(outlook.OpenDefaultMessageStore());
    EXPECT_EQ(outlook.m_bNeedRealEntryID, 1U);

    outlook.m_bNeedRealEntryID = 0;
    mapi.stores[0].push_back({PR_MDB_PROVIDER, BinaryBlock(16, 0x11)});
    EXPECT_TRUE(outlook.OpenDefaultMessageStore());
    EXPECT_EQ(outlook.m_bNeedRealEntryID, 1U);

    EXPECT_EQ(trace.Count("CMessageStoreBase::OpenMessageStore - The default folder[Mailbox] is "
                          "NOT personal, need to get real EntryID"),
              2U);
}

TEST_F(StoreTest, OpensByBestAccessUnlessToldOtherwise)
{
    LogOn(outlook);

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(mapi.openStoreFlags, 0x10U);
    EXPECT_TRUE(
        trace.Has(2, "CMessageStoreBase::OpenMessageStore, dwUseOnlineMode=0, bOnlineMode=0"));
}

TEST_F(StoreTest, UserValueTurnsTheOnlineModeOn)
{
    LogOn(outlook);
    SetUserDword(kDeskToolsKey, L"OutlookMeetingOnlineMode", 5);
    SetMachineDword(
        kPolicyKey, L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLINEMODE", 0);

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(mapi.openStoreFlags, 0x180U);
    EXPECT_TRUE(
        trace.Has(2, "CMessageStoreBase::OpenMessageStore, dwUseOnlineMode=5, bOnlineMode=0"));
}

TEST_F(StoreTest, PolicyTurnsTheOnlineModeOn)
{
    LogOn(outlook);
    SetUserDword(kPolicyKey, L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLINEMODE", 1);

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(mapi.openStoreFlags, 0x180U);
}

TEST_F(StoreTest, MachinePolicyOfZeroBeatsTheUsersOne)
{
    LogOn(outlook);
    SetUserDword(kPolicyKey, L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLINEMODE", 1);
    SetMachineDword(
        kPolicyKey, L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLINEMODE", 0);

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(mapi.openStoreFlags, 0x10U);
}

TEST_F(StoreTest, FailedOpenIsNotTriedAgain)
{
    LogOn(outlook);
    mapi.answers["IMAPISession::OpenMsgStore"] = {MAPI_E_FAILONEPROVIDER};

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_TRUE(trace.Has(1,
                          "CMessageStoreBase::OpenMessageStore - open msg store failed, "
                          "hResult[0x8004011d], name[Mailbox]"));
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenMsgStore"), 1U);
    EXPECT_EQ(mapi.CountCalls("IMAPISession::GetLastError"), 0U);
    EXPECT_EQ(outlook.m_strStoreName, L"");
    EXPECT_EQ(MapiDataStore().GetRecordKey(), L"CDEF");
}

TEST_F(StoreTest, OpenWithErrorsCountsAsFailedAndTellsTheDetail)
{
    LogOn(outlook);
    mapi.answers["IMAPISession::OpenMsgStore"] = {MAPI_W_ERRORS_RETURNED};

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_FALSE(outlook.lpMsgStore);
    EXPECT_TRUE(trace.Has(1,
                          "CMessageStoreBase::OpenMessageStore - open msg store failed, "
                          "hResult[0x40380], name[Mailbox]"));
    EXPECT_TRUE(trace.Has(3,
                          "CMessageStoreBase::OpenMessageStore - GetLastError, szComponent[fake "
                          "component], ulVersion[1], ulContext[7], ulLowLevelError[42]"));
}

TEST_F(StoreTest, CommonFoldersNeedAStore)
{
    outlook.GetCommonEids();

    EXPECT_EQ(Lines(), (Strings{"2 CMessageStoreBase::GetCommonEids - lpMsgStore is NULL"}));
}

TEST_F(StoreTest, CommonFoldersAreKeptAsTheMaskSays)
{
    OpenStore(outlook);
    outlook.GetCommonEids();
    EXPECT_EQ(outlook.m_OutboxEid, FakeFolderId(L"Outbox"));
    EXPECT_EQ(outlook.m_SentEid, FakeFolderId(L"Sent"));

    mapi.storeProps[1].data = LONG{0x10};
    outlook.GetCommonEids();
    EXPECT_EQ(outlook.m_OutboxEid, BinaryBlock{});
    EXPECT_EQ(outlook.m_SentEid, FakeFolderId(L"Sent"));

    mapi.storeProps[1].data = LONG{4};
    outlook.GetCommonEids();
    EXPECT_EQ(outlook.m_OutboxEid, FakeFolderId(L"Outbox"));
    EXPECT_EQ(outlook.m_SentEid, BinaryBlock{});
}

TEST_F(StoreTest, MaskThatIsAnErrorCountsAsZero)
{
    OpenStore(outlook);
    mapi.storeProps.erase(mapi.storeProps.begin() + 1);

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_OutboxEid, BinaryBlock{});
    EXPECT_EQ(outlook.m_SentEid, BinaryBlock{});
}

TEST_F(StoreTest, SentItemsAreKeptAlsoWhenTheOutboxIsAnError)
{
    OpenStore(outlook);
    mapi.storeProps.erase(mapi.storeProps.begin() + 2);

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_OutboxEid, BinaryBlock{});
    EXPECT_EQ(outlook.m_SentEid, FakeFolderId(L"Sent"));
}

TEST_F(StoreTest, CommonFoldersThatCannotBeReadStayEmpty)
{
    OpenStore(outlook);
    outlook.m_SentEid = {1};
    mapi.answers["IMsgStore::GetProps"] = {MAPI_E_NETWORK_ERROR};

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_SentEid, BinaryBlock{});
    EXPECT_EQ(Lines(),
              (Strings{"2 CMessageStoreBase::GetCommonEids - get outbox/sentbox entryid failed"}));
}

TEST_F(StoreTest, InboxIsOpenedOnce)
{
    OpenStore(outlook);

    IMAPIFolder* const first = outlook.GetInboxFolder();
    IMAPIFolder* const second = outlook.GetInboxFolder();

    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(mapi.CountCalls("IMsgStore::OpenEntry"), 1U);
    EXPECT_EQ(trace.Count("CMessageStoreBase::GetInBoxFolder - success"), 2U);
}

TEST_F(StoreTest, InboxFailuresAreTracedAndTriedAgainAtTheNextCall)
{
    EXPECT_EQ(outlook.GetInboxFolder(), nullptr);
    OpenStore(outlook);
    mapi.answers["IMsgStore::GetReceiveFolder"] = {E_FAIL};
    EXPECT_EQ(outlook.GetInboxFolder(), nullptr);
    mapi.answers["IMsgStore::OpenEntry"] = {E_FAIL};
    EXPECT_EQ(outlook.GetInboxFolder(), nullptr);

    EXPECT_EQ(Lines(), Strings(3, "3 CMessageStoreBase::GetInBoxFolder - failed"));
    EXPECT_NE(outlook.GetInboxFolder(), nullptr);
}

TEST_F(StoreTest, OutboxFolderIsTheOneOfSentMail)
{
    OpenStore(outlook);
    EXPECT_EQ(outlook.GetOutboxFolder(), nullptr);
    outlook.m_OutboxEid = FakeFolderId(L"Outbox"); // which does not exist
    outlook.m_SentEid = FakeFolderId(L"Sent");

    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);
    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);

    EXPECT_EQ(mapi.CountCalls("IMsgStore::OpenEntry"), 1U);
    EXPECT_EQ(Lines(),
              (Strings{"3 CMessageStoreBase::GetOutboxFolder - failed",
                       "3 CMessageStoreBase::GetOutboxFolder - success",
                       "3 CMessageStoreBase::GetOutboxFolder - success"}));
}

TEST_F(StoreTest, OpeningFoldersAndMessagesNeedsAStore)
{
    EXPECT_FALSE(outlook.OpenFolder({1}));
    EXPECT_FALSE(outlook.OpenMAPIMessage({1}));

    EXPECT_EQ(Lines(),
              (Strings{"3 CMessageStoreBase::OpenFolder - MsgStore is NULL",
                       "3 CMessageStoreBase::OpenMAPIMessage - MsgStore is NULL"}));
}

TEST_F(StoreTest, OnlyTheWantedTypeIsOpened)
{
    OpenStore(outlook);
    mapi.folders.push_back({.name = L"Mail", .openedAs = MAPI_MESSAGE});

    EXPECT_TRUE(outlook.OpenFolder(FakeFolderId(L"Calendar")));
    EXPECT_FALSE(outlook.OpenFolder(FakeFolderId(L"Mail")));
    EXPECT_TRUE(outlook.OpenMAPIMessage(FakeFolderId(L"Mail")));
    EXPECT_FALSE(outlook.OpenMAPIMessage(FakeFolderId(L"Calendar")));
    EXPECT_FALSE(outlook.OpenFolder(FakeFolderId(L"Nowhere")));

    EXPECT_EQ(
        Lines(),
        (Strings{"0 CMessageStoreBase::OpenFolder - failed, hResult[0x0] objType[5]",
                 "0 CMessageStoreBase::OpenMAPIMessage - failed, hResult[0x0] objType[3]",
                 "0 CMessageStoreBase::OpenFolder - failed, hResult[0x8004010f] objType[0]"}));
}
