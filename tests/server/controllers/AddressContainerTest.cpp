// The containers of the address book.

#include "AddressBookTest.h"

TEST_F(AddressBookTest, ContainersAreListedDepthFirstParentsBeforeChildren)
{
    mapi.addressBook.children = {
        {.name = L"A",
         .flags = AB_SUBCONTAINERS,
         .children = {{.name = L"A1", .flags = AB_SUBCONTAINERS, .children = {{.name = L"A11"}}},
                      {.name = L"A2"}}},
        {.name = L"B", .flags = 0x20, .displayType = DT_GLOBAL}};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 5U);

    Names names;
    for (const ABContainerInfo& info : list)
    {
        names.push_back(info.name);
    }
    EXPECT_EQ(names, (Names{L"A", L"A1", L"A11", L"A2", L"B"}));
    EXPECT_EQ(list[4].displayType, 0x20000U);
    EXPECT_EQ(list[4].entryId, FakeAddressId(L"B"));
    EXPECT_EQ(LinesWith("[B]"),
              (Strings{"3 CABbase::ListABContainer - check abcontainer name[B], "
                       "contentflag[0x20], displayType[0x20000]",
                       "3 CABbase::ListABContainer - got abcontainer name[B], contentflag[0x20], "
                       "displayType[0x20000]"}));
}

TEST_F(AddressBookTest, ContainersAreOpenedAndReadWithTheirFlagsAndColumns)
{
    std::vector<ABContainerInfo> list;

    outlook.ListABContainer({}, list);

    EXPECT_EQ(mapi.flags["IAddrBook::OpenEntry"], MAPI_BEST_ACCESS);
    EXPECT_EQ(mapi.flags["IABContainer::GetHierarchyTable"], MAPI_UNICODE);
    EXPECT_EQ(mapi.tags["ABHierarchyTable::SetColumns"],
              (Tags{0x3001001F, 0x0FFF0102, 0x0FFE0003, 0x36000003, 0x39000003}));
    EXPECT_EQ(mapi.flags["ABHierarchyTable::SetColumns"], TBL_BATCH);
    EXPECT_EQ(mapi.limits["ABHierarchyTable::QueryRows"], 1);
    EXPECT_EQ(mapi.flags["ABHierarchyTable::QueryRows"], 0U);
}

TEST_F(AddressBookTest, AnswersToTheOpeningAndToTheColumnsAreNotLookedAt)
{
    mapi.answers["IAddrBook::OpenEntry"] = {MAPI_W_ERRORS_RETURNED};
    mapi.answers["ABHierarchyTable::SetColumns"] = {E_FAIL};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 1U);
}

TEST_F(AddressBookTest, CountThatIsToldWithAFailureIsTaken)
{
    mapi.isCountToldOnFailure = true;
    mapi.answers["ABHierarchyTable::GetRowCount"] = {E_FAIL};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 1U);
}

TEST_F(AddressBookTest, FailedContainerDoesNotStopItsSiblings)
{
    mapi.addressBook.children = {
        {.name = L"A", .flags = AB_SUBCONTAINERS, .children = {{.name = L"A1"}}}, {.name = L"B"}};
    mapi.answers["IABContainer::GetHierarchyTable"] = {S_OK, E_FAIL};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 2U);

    EXPECT_EQ(list[1].name, L"B");
}

TEST_F(AddressBookTest, ContainerWithoutAnIdentifierIsListedAndNotEntered)
{
    // Its empty identifier would be the root's, and the walk would never end.
    mapi.addressBook.children = {
        {.name = L"A", .flags = AB_SUBCONTAINERS, .hasEntryIdColumn = false}, {.name = L"B"}};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 2U);

    EXPECT_TRUE(list[0].entryId.empty());
    EXPECT_TRUE(
        trace.Has(1, "CABbase::ListABContainer - abcontainer without an entryid is not entered"));
}

TEST_F(AddressBookTest, ChildrenAreReadOnlyWhereTheFlagsTellOfThem)
{
    mapi.addressBook.children = {{.name = L"A", .children = {{.name = L"A1"}}}};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 1U);
}

TEST_F(AddressBookTest, LeftOutContainerIsSkippedWithAllBelowIt)
{
    mapi.addressBook.children = {
        {.name = L"A", .flags = 0x100 | AB_SUBCONTAINERS, .children = {{.name = L"A1"}}}};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABContainer - check abcontainer name[A], "
                       "contentflag[0x102], displayType[0x0]"}));
}

TEST_F(AddressBookTest, RowThatIsNoContainerIsCheckedAndNotAdded)
{
    mapi.addressBook.children = {{.name = L"List", .objectType = MAPI_DISTLIST}};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);

    EXPECT_EQ(LinesWith("check").size(), 1U);
    EXPECT_EQ(LinesWith("got").size(), 0U);
}

TEST_F(AddressBookTest, AddressBookWithoutContainersIsLoadedAllTheSame)
{
    mapi.addressBook.children = {};
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainerByType(1, list), 0U);
    EXPECT_EQ(outlook.ListABContainerByType(1, list), 0U);

    EXPECT_EQ(Lines(), (Strings{"3 CABbase::ListABContainer - GetRowCount is 0, result [0x0]"}));
}

TEST_F(AddressBookTest, FailedWalkIsNotTriedAgainUntilTheBookIsClosed)
{
    mapi.answers["IABContainer::GetHierarchyTable"] = {E_FAIL};
    std::vector<ABContainerInfo> list;
    EXPECT_EQ(outlook.ListABContainerByType(1, list), 0U);
    EXPECT_EQ(outlook.ListABContainerByType(1, list), 0U);

    outlook.CloseAddressbook();
    ASSERT_EQ(outlook.OpenAddressbook(), 1U);
    EXPECT_EQ(outlook.ListABContainerByType(1, list), 1U);
}

TEST_F(AddressBookTest, ContainersSurviveTheClosingAndAreAppendedTo)
{
    std::vector<ABContainerInfo> list;
    ASSERT_EQ(outlook.ListABContainerByType(1, list), 1U);
    outlook.CloseAddressbook();
    ASSERT_EQ(outlook.OpenAddressbook(), 1U);
    list.clear();

    EXPECT_EQ(outlook.ListABContainerByType(1, list), 2U);
}

TEST_F(AddressBookTest, SelectorsTakeAllGlobalOrNone)
{
    mapi.addressBook.children.push_back({.name = L"Local", .displayType = 0x30000});
    std::vector<ABContainerInfo> list;

    EXPECT_EQ(outlook.ListABContainerByType(2, list), 0U);
    EXPECT_EQ(outlook.ListABContainerByType(0x30000, list), 0U);
    EXPECT_EQ(outlook.ListABContainerByType(DT_GLOBAL, list), 1U);
    EXPECT_EQ(outlook.ListABContainerByType(1, list), 3U);
}

TEST_F(AddressBookTest, ContainerFailuresHaveTheirLines)
{
    std::vector<ABContainerInfo> list;
    mapi.answers["IAddrBook::OpenEntry"] = {MAPI_E_NO_ACCESS};
    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);
    mapi.answers["IABContainer::GetHierarchyTable"] = {E_FAIL};
    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);
    mapi.answers["ABHierarchyTable::GetRowCount"] = {E_FAIL};
    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);
    mapi.answers["ABHierarchyTable::QueryRows"] = {E_FAIL};
    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);
    outlook.CloseAddressbook();
    EXPECT_EQ(outlook.ListABContainer({}, list), 0U);

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABContainer - OpenEntry failed, result [0x80070005]",
                       "3 CABbase::ListABContainer - GetHierarchyTable failed, result [0x80004005]",
                       "3 CABbase::ListABContainer - GetRowCount is 0, result [0x80004005]",
                       "3 CABbase::ListABContainer - QueryRows failed, result [0x80004005]",
                       "3 close address book",
                       "3 CABbase::ListABContainer m_lpAdrBook == NULL"}));
}
