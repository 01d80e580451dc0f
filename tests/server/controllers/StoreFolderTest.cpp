// The common folders of the store, and opening what is in it.

#include "ControllerTest.h"

class StoreFolderTest : public ControllerTest
{
protected:
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    CTestOutlook outlook;
};

TEST_F(StoreFolderTest, CommonFoldersNeedAStore)
{
    outlook.GetCommonEids();

    EXPECT_EQ(Lines(), (Strings{"2 CMessageStoreBase::GetCommonEids - lpMsgStore is NULL"}));
}

TEST_F(StoreFolderTest, CommonFoldersAreKeptAsTheMaskSays)
{
    OpenStore(outlook);
    outlook.GetCommonEids();
    EXPECT_EQ(mapi.tags["IMsgStore::GetProps"],
              (std::vector<ULONG>{0x35DF0003, 0x35E20102, 0x35E40102, 0x35E30102}));
    EXPECT_EQ(mapi.flags["IMsgStore::GetProps"], 0U);
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

TEST_F(StoreFolderTest, MaskThatIsAnErrorCountsAsZero)
{
    OpenStore(outlook);
    mapi.storeProps.erase(mapi.storeProps.begin() + 1);

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_OutboxEid, BinaryBlock{});
    EXPECT_EQ(outlook.m_SentEid, BinaryBlock{});
}

TEST_F(StoreFolderTest, SentItemsAreKeptAlsoWhenTheOutboxIsAnError)
{
    OpenStore(outlook);
    mapi.storeProps.erase(mapi.storeProps.begin() + 2);

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_OutboxEid, BinaryBlock{});
    EXPECT_EQ(outlook.m_SentEid, FakeFolderId(L"Sent"));
}

TEST_F(StoreFolderTest, CommonFoldersThatCannotBeReadStayEmpty)
{
    OpenStore(outlook);
    outlook.m_SentEid = {1};
    mapi.answers["IMsgStore::GetProps"] = {MAPI_E_NETWORK_ERROR};

    outlook.GetCommonEids();

    EXPECT_EQ(outlook.m_SentEid, BinaryBlock{});
    EXPECT_EQ(Lines(),
              (Strings{"2 CMessageStoreBase::GetCommonEids - get outbox/sentbox entryid failed"}));
}

TEST_F(StoreFolderTest, InboxIsOpenedOnce)
{
    OpenStore(outlook);

    IMAPIFolder* const first = outlook.GetInboxFolder();
    IMAPIFolder* const second = outlook.GetInboxFolder();

    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(mapi.CountCalls("IMsgStore::OpenEntry"), 1U);
    EXPECT_EQ(mapi.flags["IMsgStore::GetReceiveFolder"], MAPI_UNICODE);
    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], 0U);
    EXPECT_EQ(trace.Count("CMessageStoreBase::GetInBoxFolder - success"), 2U);
}

TEST_F(StoreFolderTest, InboxFailuresAreTracedAndTriedAgainAtTheNextCall)
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

TEST_F(StoreFolderTest, OutboxFolderIsTheOneOfSentMail)
{
    OpenStore(outlook);
    EXPECT_EQ(outlook.GetOutboxFolder(), nullptr);
    outlook.m_OutboxEid = FakeFolderId(L"Outbox"); // which does not exist
    outlook.m_SentEid = FakeFolderId(L"Sent");

    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);
    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);

    EXPECT_EQ(mapi.CountCalls("IMsgStore::OpenEntry"), 1U);
    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], 0U);
    EXPECT_EQ(Lines(),
              (Strings{"3 CMessageStoreBase::GetOutboxFolder - failed",
                       "3 CMessageStoreBase::GetOutboxFolder - success",
                       "3 CMessageStoreBase::GetOutboxFolder - success"}));
}

TEST_F(StoreFolderTest, OutboxFolderThatDoesNotOpenIsTriedAgainAtTheNextCall)
{
    EXPECT_EQ(outlook.GetOutboxFolder(), nullptr);
    OpenStore(outlook);
    outlook.m_SentEid = FakeFolderId(L"Sent");
    mapi.answers["IMsgStore::OpenEntry"] = {E_FAIL};
    EXPECT_EQ(outlook.GetOutboxFolder(), nullptr);

    EXPECT_EQ(Lines(), Strings(2, "3 CMessageStoreBase::GetOutboxFolder - failed"));
    EXPECT_NE(outlook.GetOutboxFolder(), nullptr);
}

TEST_F(StoreFolderTest, OpeningFoldersAndMessagesNeedsAStore)
{
    EXPECT_FALSE(outlook.OpenFolder({1}));
    EXPECT_FALSE(outlook.OpenMAPIMessage({1}));

    EXPECT_EQ(Lines(),
              (Strings{"3 CMessageStoreBase::OpenFolder - MsgStore is NULL",
                       "3 CMessageStoreBase::OpenMAPIMessage - MsgStore is NULL"}));
}

TEST_F(StoreFolderTest, OnlyTheWantedTypeIsOpened)
{
    OpenStore(outlook);
    mapi.folders.push_back({.name = L"Mail", .openedAs = MAPI_MESSAGE});

    EXPECT_TRUE(outlook.OpenFolder(FakeFolderId(L"Calendar")));
    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], 0x10U);
    EXPECT_FALSE(outlook.OpenFolder(FakeFolderId(L"Mail")));
    mapi.flags.clear();
    EXPECT_TRUE(outlook.OpenMAPIMessage(FakeFolderId(L"Mail")));
    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], 0x10U);
    EXPECT_FALSE(outlook.OpenMAPIMessage(FakeFolderId(L"Calendar")));
    EXPECT_FALSE(outlook.OpenFolder(FakeFolderId(L"Nowhere")));

    EXPECT_EQ(
        Lines(),
        (Strings{"0 CMessageStoreBase::OpenFolder - failed, hResult[0x0] objType[5]",
                 "0 CMessageStoreBase::OpenMAPIMessage - failed, hResult[0x0] objType[3]",
                 "0 CMessageStoreBase::OpenFolder - failed, hResult[0x8004010f] objType[0]"}));
}
