// Subscribing the folders to watch.

#include "SubscriptionTest.h"

#include <cstdlib>

#include "MapiDataStore.h"

namespace
{

constexpr const wchar_t* kOnlyTopFolder =
    L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLYTOPFOLDER";

[[noreturn]] void Fault()
{
    RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    std::abort();
}

/// A C++ exception of the compiler that mail clients are built with.
[[noreturn]] void Throw()
{
    RaiseException(0xE06D7363, 0, 0, nullptr);
    std::abort();
}

} // namespace

TEST_F(SubscriptionTest, CalendarLinesInTheirOrder)
{
    outlook.InitAppTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "3 CMapiCtrl::InitAppTbl - open mapi folder success, folder type:[3]",
                       "3 CMapiCtrl::InitAppTbl - to call RecFolders....",
                       "2 RecFolders",
                       "3 CMapiCtrl::InitAppTbl - after call RecFolders....",
                       "2 CMapiCtrl.InitAppTbl - Folders dont need reduce",
                       "3 CMapiCtrl::InitAppTbl - after release ipmroot....",
                       "3 CMapiCtrl.InitAppTbl - to sink folder, name[First], "
                       "entryid[463A4669727374]",
                       "3 CMAPITableAdviseSink.m_cRef increased to 2.",
                       "3 CMapiCtrl.InitAppTbl - sink table successfull",
                       "3 CMapiCtrl.InitAppTbl - to sink folder, name[Second], "
                       "entryid[463A5365636F6E64]",
                       "3 CMAPITableAdviseSink.m_cRef increased to 2.",
                       "3 CMapiCtrl.InitAppTbl - sink table successfull"}));
    ASSERT_EQ(outlook.m_CalendarSinks.size(), 2U);
    EXPECT_EQ(outlook.m_CalendarSinks[0].folderInfo.name, L"First");
    EXPECT_EQ(outlook.m_CalendarSinks[0].folderInfo.kind, 5U);
    EXPECT_EQ(outlook.m_CalendarSinks[0].connection, 0x100000001U);
    EXPECT_EQ(outlook.m_CalendarSinks[1].connection, 0x100000002U);
    EXPECT_TRUE(outlook.m_ContactSinks.empty());
}

TEST_F(SubscriptionTest, ContactLinesInTheirOrder)
{
    outlook.InitContactTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitContactTbl",
                       "3 CMapiCtrl::InitContactTbl - open mapi folder success, folder type:[3]",
                       "2 RecFolders",
                       "3 CMapiCtrl.InitContactTbl - to sink folder, name[People], "
                       "entryid[463A50656F706C65]",
                       "3 CMAPITableAdviseSink.m_cRef increased to 2.",
                       "3 CMapiCtrl.InitContactTbl - sink table successfull"}));
    ASSERT_EQ(outlook.m_ContactSinks.size(), 1U);
    EXPECT_EQ(outlook.m_ContactSinks[0].folderInfo.kind, 6U);
    EXPECT_TRUE(outlook.m_CalendarSinks.empty());
}

TEST_F(SubscriptionTest, FoldersAreOpenedAndWatchedWithTheirFlags)
{
    mapi.folders.resize(1);

    outlook.InitAppTbl();

    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], MAPI_BEST_ACCESS);
    EXPECT_EQ(mapi.flags["IMAPIFolder::GetContentsTable"], MAPI_UNICODE);
    EXPECT_EQ(mapi.flags["ContentsTable::Advise"], 0x100U);
}

TEST_F(SubscriptionTest, SubtreeIsOpenedWithoutFlags)
{
    mapi.folders.clear();

    outlook.InitAppTbl();

    EXPECT_EQ(mapi.flags["IMsgStore::OpenEntry"], 0U);
}

TEST_F(SubscriptionTest, MissingStoreIsCaughtByTheGuardOfTheCalendarAlone)
{
    outlook.lpMsgStore.Reset();

    outlook.InitAppTbl();
    outlook.InitContactTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "3 CMapiCtrl::InitAppTbl - MsgStore is NULL",
                       "3 CMapiCtrl::InitAppTbl - ******catch exception\n",
                       "2 InitContactTbl",
                       "3 CMapiCtrl::InitContactTbl - MsgStore is NULL"}));
}

TEST_F(SubscriptionTest, FaultOrThrowOfTheProviderWhenTheSubtreeIsOpenedIsSurvived)
{
    for (void (*const fail)() : {&Fault, &Throw})
    {
        trace.Clear();
        mapi.actions["IMsgStore::OpenEntry"] = fail;

        outlook.InitAppTbl();

        EXPECT_EQ(Lines(),
                  (Strings{"2 InitAppTbl", "3 CMapiCtrl::InitAppTbl - ******catch exception\n"}));
        EXPECT_TRUE(outlook.m_CalendarSinks.empty());
        mapi.actions.clear();
    }
}

TEST_F(SubscriptionTest, FaultOrThrowOfTheProviderWhenTheSubtreeIsReleasedIsSurvived)
{
    for (void (*const fail)() : {&Fault, &Throw})
    {
        mapi.calls.clear();
        trace.Clear();
        mapi.actions["IMAPIFolder::Release"] = [&] {
            // The walk gives back each child before; the root is the one behind the last of them.
            if (mapi.CountCalls("IMAPIFolder::Release") == 4)
            {
                fail();
            }
        };

        outlook.InitAppTbl();

        EXPECT_EQ(LinesWith("ipmroot"),
                  (Strings{"0 cCMapiCtrl::InitAppTbl - atch SAFE_RELEASE(ipmroot) error",
                           "3 CMapiCtrl::InitAppTbl - after release ipmroot...."}));
        EXPECT_EQ(outlook.m_CalendarSinks.size(), 2U);
        mapi.actions.clear();
        outlook.UnAdviceTableSink();
    }
}

TEST_F(SubscriptionTest, StoreWithoutASubtreeSubscribesNothing)
{
    mapi.storeProps.erase(mapi.storeProps.begin());

    outlook.InitAppTbl();
    outlook.InitContactTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "3 CMapiCtrl::InitAppTbl - get PR_IPM_SUBTREE_ENTRYID failed",
                       "2 CMapiCtrl::InitAppTbl - eid.isempty()",
                       "2 CMapiCtrl::InitAppTbl - ipmroot==0",
                       "2 InitContactTbl",
                       "3 CMapiCtrl::InitContactTbl - get PR_IPM_SUBTREE_ENTRYID failed",
                       "2 CMapiCtrl::InitContactTbl - ipmroot==0"}));
}

TEST_F(SubscriptionTest, EmptySubtreeIdentifierIsAnEmptyOne)
{
    mapi.storeProps[0].data = BinaryBlock{};

    outlook.InitAppTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "2 CMapiCtrl::InitAppTbl - eid.isempty()",
                       "2 CMapiCtrl::InitAppTbl - ipmroot==0"}));
}

TEST_F(SubscriptionTest, SubtreeThatIsNoFolderIsGivenBack)
{
    mapi.rootOpenedAs = MAPI_MESSAGE;

    outlook.InitAppTbl();
    outlook.InitContactTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "3 CMapiCtrl::InitAppTbl - open mapi folder success, folder type:[5]",
                       "2 CMapiCtrl::InitAppTbl - ipmroot==0",
                       "2 InitContactTbl",
                       "3 CMapiCtrl::InitContactTbl - open mapi folder success, folder type:[5]",
                       "2 CMapiCtrl::InitContactTbl - ipmroot==0"}));
}

TEST_F(SubscriptionTest, SubtreeThatWillNotOpenSubscribesNothing)
{
    mapi.answers["IMsgStore::OpenEntry"] = {MAPI_E_NETWORK_ERROR, MAPI_E_NETWORK_ERROR};

    outlook.InitAppTbl();
    outlook.InitContactTbl();

    EXPECT_EQ(Lines(),
              (Strings{"2 InitAppTbl",
                       "2 CMapiCtrl::InitAppTbl - ipmroot==0",
                       "2 InitContactTbl",
                       "2 CMapiCtrl::InitContactTbl - ipmroot==0"}));
}

TEST_F(SubscriptionTest, ProfileWithTheNameInItsMiddleIsReducedToTheFirstFolder)
{
    MapiDataStore().SetProfileName(L"My G Suite profile");

    outlook.InitAppTbl();

    ASSERT_EQ(outlook.m_CalendarSinks.size(), 1U);
    EXPECT_EQ(outlook.m_CalendarSinks[0].folderInfo.name, L"First");
    EXPECT_EQ(LinesWith("Folders"),
              (Strings{"3 CMapiCtrl::InitAppTbl - to call RecFolders....",
                       "2 RecFolders",
                       "3 CMapiCtrl::InitAppTbl - after call RecFolders....",
                       "2 CMapiCtrl.InitAppTbl - Folders need reduce, bOnlyTopFolder=0",
                       "2 CMapiCtrl.InitAppTbl - Folders, name[First]",
                       "2 CMapiCtrl.InitAppTbl - Folders, name[Second]"}));
}

TEST_F(SubscriptionTest, ProfileNameInAnotherCaseIsNotReduced)
{
    MapiDataStore().SetProfileName(L"my g suite profile");

    outlook.InitAppTbl();

    EXPECT_EQ(outlook.m_CalendarSinks.size(), 2U);
}

TEST_F(SubscriptionTest, PolicyReducesAlsoWhereThereIsOneFolder)
{
    SetMachineDword(kPolicyKey, kOnlyTopFolder, 1);
    mapi.folders.erase(mapi.folders.begin());

    outlook.InitAppTbl();

    EXPECT_EQ(LinesWith("CMapiCtrl.InitAppTbl - Folders"),
              (Strings{"2 CMapiCtrl.InitAppTbl - Folders need reduce, bOnlyTopFolder=1",
                       "2 CMapiCtrl.InitAppTbl - Folders, name[Second]"}));
    EXPECT_EQ(outlook.m_CalendarSinks.size(), 1U);
}

TEST_F(SubscriptionTest, PolicyOfAnotherNumberIsOff)
{
    SetMachineDword(kPolicyKey, kOnlyTopFolder, 2);

    outlook.InitAppTbl();

    EXPECT_EQ(outlook.m_CalendarSinks.size(), 2U);
}

TEST_F(SubscriptionTest, ContactsAreNeverReduced)
{
    SetMachineDword(kPolicyKey, kOnlyTopFolder, 1);
    mapi.folders.push_back({.name = L"More", .containerClass = "IPF.Contact"});

    outlook.InitContactTbl();

    EXPECT_EQ(outlook.m_ContactSinks.size(), 2U);
}

TEST_F(SubscriptionTest, FailedFolderIsLeftOutAndTheRestGoOn)
{
    const struct
    {
        const char* operation;
        HRESULT first;
        HRESULT second;
        const char* line;
    } rows[] = {
        // The subtree opens before the folder.
        {"IMsgStore::OpenEntry",
         S_OK,
         MAPI_E_NO_ACCESS,
         "CMapiCtrl.InitAppTbl - open folder failed"},
        {"IMAPIFolder::GetContentsTable",
         E_FAIL,
         S_OK,
         "CMapiCtrl.InitAppTbl - get folder table failed"},
        {"ContentsTable::Advise",
         MAPI_E_NO_SUPPORT,
         S_OK,
         "CMapiCtrl.InitAppTbl - this folder table not support notification"},
        {"ContentsTable::Advise", E_FAIL, S_OK, "CMapiCtrl.InitAppTbl - sink table failed"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.line);
        mapi.answers[row.operation] = {row.first, row.second};

        outlook.InitAppTbl();

        EXPECT_TRUE(trace.Has(2, row.line));
        ASSERT_EQ(outlook.m_CalendarSinks.size(), 1U);
        EXPECT_EQ(outlook.m_CalendarSinks[0].folderInfo.name, L"Second");
        outlook.UnAdviceTableSink();
        trace.Clear();
    }
}

TEST_F(SubscriptionTest, ContactFailuresHaveTheirOwnLines)
{
    mapi.answers["IMsgStore::OpenEntry"] = {S_OK, MAPI_E_NO_ACCESS};
    outlook.InitContactTbl();
    mapi.answers["IMAPIFolder::GetContentsTable"] = {E_FAIL};
    outlook.InitContactTbl();
    mapi.answers["ContentsTable::Advise"] = {MAPI_E_NO_SUPPORT, E_FAIL};
    outlook.InitContactTbl();
    outlook.InitContactTbl();

    EXPECT_EQ(LinesWith("CMapiCtrl.InitContactTbl"),
              (Strings{"3 CMapiCtrl.InitContactTbl - to sink folder, name[People], "
                       "entryid[463A50656F706C65]",
                       "2 CMapiCtrl.InitContactTbl - open folder failed",
                       "3 CMapiCtrl.InitContactTbl - to sink folder, name[People], "
                       "entryid[463A50656F706C65]",
                       "2 CMapiCtrl.InitContactTbl - get folder table failed",
                       "3 CMapiCtrl.InitContactTbl - to sink folder, name[People], "
                       "entryid[463A50656F706C65]",
                       "2 CMapiCtrl.InitContactTbl - this folder table not support notification",
                       "3 CMapiCtrl.InitContactTbl - to sink folder, name[People], "
                       "entryid[463A50656F706C65]",
                       "2 CMapiCtrl.InitContactTbl - sink table failed"}));
    EXPECT_TRUE(outlook.m_ContactSinks.empty());
}
