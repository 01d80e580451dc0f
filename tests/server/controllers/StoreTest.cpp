// Finding and opening the default store.

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
    MapiDataStore().SetStoreFacts(L"before", {}, L"");
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(Lines(), (Strings{"3 CMessageStoreBase::OpenMessageStore - lpSession is NULL"}));
    EXPECT_EQ(MapiDataStore().GetStoreName(), L"before");
    EXPECT_EQ(outlook.m_bNeedRealEntryID, 1U);
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
    EXPECT_EQ(mapi.openStoreId, (BinaryBlock{1, 2, 0xAB}));
    EXPECT_EQ(mapi.tags["StoresTable::SetColumns"],
              (std::vector<ULONG>{0x0FFF0102, 0x3001001E, 0x3400000B, 0x34140102, 0x0FF90102}));
    EXPECT_EQ(mapi.flags["StoresTable::QueryRows"], 1U);
}

TEST_F(StoreTest, StoreWithoutARecordKeyHasNone)
{
    LogOn(outlook);
    mapi.stores[0].pop_back();
    MapiDataStore().SetStoreFacts(L"before", {}, L"07");

    EXPECT_TRUE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(MapiDataStore().GetRecordKey(), L"");
}

TEST_F(StoreTest, WalkEndsAtTheFirstDefaultRow)
{
    LogOn(outlook);
    mapi.stores.push_back({{PR_ENTRYID, BinaryBlock{9}},
                           {PR_DISPLAY_NAME_A, std::string("Second")},
                           {PR_DEFAULT_STORE, true}});
    mapi.answers["IMAPISession::OpenMsgStore"] = {E_FAIL};

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(mapi.openStoreId, (BinaryBlock{1, 2, 0xAB}));
    EXPECT_EQ(mapi.CountCalls("IMAPISession::OpenMsgStore"), 1U);
}

TEST_F(StoreTest, FailedOpenEmptiesTheNameAndKeepsTheOldIdentifier)
{
    LogOn(outlook);
    ASSERT_TRUE(outlook.OpenDefaultMessageStore());
    mapi.stores[0][0].data = BinaryBlock{9};
    mapi.answers["IMAPISession::OpenMsgStore"] = {E_FAIL};

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(MapiDataStore().GetStoreName(), L"");
    EXPECT_EQ(MapiDataStore().GetStoreEntryId(), (BinaryBlock{1, 2, 0xAB}));
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
    outlook.m_bNeedRealEntryID = 0;

    EXPECT_FALSE(outlook.OpenDefaultMessageStore());

    EXPECT_EQ(Lines(), Strings{});
    EXPECT_EQ(outlook.m_bNeedRealEntryID, 0U) << "only a default store settles it";
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
    EXPECT_EQ(Lines(),
              (Strings{"2 CMessageStoreBase::OpenMessageStore - The default folder[Mailbox] is NOT "
                       "personal, need to get real EntryID",
                       "2 CMessageStoreBase::OpenMessageStore PreCall",
                       "3 failed 1",
                       "2 CMessageStoreBase::OpenMessageStore, dwUseOnlineMode=0, bOnlineMode=0",
                       "2 CMessageStoreBase::OpenMessageStore AfterCall",
                       "1 CMessageStoreBase::OpenMessageStore - open msg store failed, "
                       "hResult[0x40380], name[Mailbox]",
                       "3 CMessageStoreBase::OpenMessageStore - GetLastError, szComponent[fake "
                       "component], ulVersion[1], ulContext[7], ulLowLevelError[42]"}));
}

TEST_F(StoreTest, DetailThatIsNotToldIsNoReasonToStumble)
{
    LogOn(outlook);
    mapi.answers["IMAPISession::OpenMsgStore"] = {MAPI_W_ERRORS_RETURNED, MAPI_W_ERRORS_RETURNED};
    mapi.answers["IMAPISession::GetLastError"] = {E_FAIL};
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());
    EXPECT_EQ(LinesWith("szComponent"), Strings{});

    mapi.hasErrorComponent = false;
    EXPECT_FALSE(outlook.OpenDefaultMessageStore());
    EXPECT_EQ(LinesWith("szComponent"),
              (Strings{"3 CMessageStoreBase::OpenMessageStore - GetLastError, szComponent[(null)], "
                       "ulVersion[1], ulContext[7], ulLowLevelError[42]"}));
}
