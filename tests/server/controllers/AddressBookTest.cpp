// The containers of the address book and the mail users in them.

#include "ControllerTest.h"

class AddressBookTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        LogOn(outlook);
        ASSERT_EQ(outlook.OpenAddressbook(), 1U);
        mapi.addressBook.children = {{.name = L"People",
                                      .displayType = DT_GLOBAL,
                                      .entries = {Entry("ada", L"Ada Stone", L"EX")}}};
        trace.Clear();
    }
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    /// A mail user "<id>@example.org" as row and as opened entry.
    static FakeProps Entry(const std::string& id,
                           const std::wstring& displayName,
                           const std::wstring& addressType,
                           LONG objectType = MAPI_MAILUSER)
    {
        const std::wstring wideId(id.begin(), id.end());
        return {{PR_DISPLAY_NAME_W, displayName},
                {PR_ENTRYID, BinaryBlock(id.begin(), id.end())},
                {PR_OBJECT_TYPE, objectType},
                {PR_ADDRTYPE_W, addressType},
                {PR_EMAIL_ADDRESS_W,
                 addressType == L"SMTP" ? wideId + L"@native.example" : L"/o=Example/cn=" + wideId},
                {PR_SMTP_ADDRESS_W, wideId + L"@Example.org"}};
    }
    std::vector<FakeProps>& Entries() { return mapi.addressBook.children[0].entries; }
    std::vector<std::wstring> NamesFor(const WString& name)
    {
        std::vector<ABEmailEntry> list;
        outlook.ListABEmailWithName(FakeAddressId(L"People"), name, list);
        std::vector<std::wstring> names;
        for (const ABEmailEntry& entry : list)
        {
            names.push_back(entry.displayName);
        }
        return names;
    }

    CTestOutlook outlook;
};

using Names = std::vector<std::wstring>;

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

TEST_F(AddressBookTest, NameIsCutAtThePeriodAndThenAtTheBlankForTheDirectory)
{
    const struct
    {
        const wchar_t* name;
        const wchar_t* asked;
    } rows[] = {{L"ada", L"ada"},
                {L"ada stone", L"ada"},
                {L"ada.stone", L"ada"},
                {L"a.b c", L"a"},
                {L"a b.c", L"a"}};
    for (const auto& row : rows)
    {
        NamesFor(row.name);
        EXPECT_EQ(mapi.lastRestrictionText, row.asked);
        EXPECT_EQ(mapi.lastRestrictionTag, PR_ANR_W);
        EXPECT_EQ(mapi.lastRestriction.res.resProperty.relop, RELOP_EQ);
    }
}

TEST_F(AddressBookTest, NameThatLeavesNothingToAskIsInvalid)
{
    EXPECT_EQ(NamesFor(L".stone"), Names{});
    EXPECT_EQ(NamesFor(L" ada"), Names{});

    EXPECT_EQ(Lines(), Strings(2, "3 CABbase::ListABEmailWithName - input parameter invalid, []"));
}

TEST_F(AddressBookTest, WholeNameIsComparedWithNameOrAddress)
{
    Entries() = {Entry("ada", L"Ada Stone", L"EX"),
                 Entry("ada.brook", L"Brook, Ada", L"EX"),
                 Entry("eve", L"Ada Other", L"EX")};

    EXPECT_EQ(NamesFor(L"ada s"), (Names{L"Ada Stone"}));
    EXPECT_EQ(NamesFor(L"ada.b"), (Names{L"Brook, Ada"}));
    EXPECT_EQ(NamesFor(L"ada"), (Names{L"Ada Stone", L"Brook, Ada", L"Ada Other"}));
    // The caller folds the name; as it is given it is compared.
    EXPECT_EQ(NamesFor(L"Ada"), Names{});
}

TEST_F(AddressBookTest, DistributionListsArePassedOver)
{
    Entries() = {Entry("ada", L"Ada Team", L"EX", MAPI_DISTLIST)};

    EXPECT_EQ(NamesFor(L"ada"), Names{});

    EXPECT_EQ(mapi.CountCalls("ABEntry::GetProps"), 0U);
}

TEST_F(AddressBookTest, RowWithoutAnIdentifierHasItsLine)
{
    Entries() = {
        {{PR_DISPLAY_NAME_W, std::wstring(L"Ada")}, {PR_OBJECT_TYPE, LONG{MAPI_MAILUSER}}}};

    EXPECT_EQ(NamesFor(L"ada"), Names{});

    EXPECT_EQ(Lines(), (Strings{"3 CABbase::GetABEmailAddress - Invalid Entryid[NULL] !!!"}));
}

TEST_F(AddressBookTest, KeyIsAskedUncutAndComparedWithTheWholeAddress)
{
    Entries() = {Entry("ada.brook", L"Brook, Ada", L"EX"), Entry("ada", L"Ada Stone", L"EX")};
    std::vector<ABEmailEntry> list;

    EXPECT_EQ(outlook.ListABEmailWithKey(
                  FakeAddressId(L"People"), L"ADA.brook@example.org", PR_SMTP_ADDRESS_W, list),
              1U);

    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, L"Brook, Ada");
    EXPECT_EQ(list[0].smtpAddress, L"ada.brook@Example.org");
    EXPECT_EQ(mapi.lastRestrictionText, L"ADA.brook@example.org");
    EXPECT_EQ(mapi.lastRestrictionTag, PR_SMTP_ADDRESS_W);
}

TEST_F(AddressBookTest, WalkFailuresHaveTheirLinesUnderBothNames)
{
    const struct
    {
        const char* operation;
        HRESULT status;
        const char* line;
    } rows[] = {
        {"IAddrBook::OpenEntry",
         MAPI_E_NOT_FOUND,
         "OpenEntry failed, result[0x8004010f], objecttype[0]"},
        {"IABContainer::GetContentsTable", E_FAIL, "GetContentsTable failed, result[0x80004005]"},
        {"ABContentsTable::Restrict", E_FAIL, "restrict failed, result[0x80004005]"},
        {"ABContentsTable::SetColumns", E_FAIL, "SetColumns failed, result[0x80004005]"},
        {"ABContentsTable::GetRowCount",
         E_FAIL,
         "GetRowCount failed, result[0x80004005], rowcount[0]"},
        {"ABContentsTable::QueryRows", E_FAIL, "QueryRows failed, result[0x80004005]"},
    };
    std::vector<ABEmailEntry> list;
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.line);
        trace.Clear();
        mapi.answers[row.operation] = {row.status, row.status};

        outlook.ListABEmailWithName(FakeAddressId(L"People"), L"ada", list);
        EXPECT_EQ(outlook.ListABEmailWithKey(FakeAddressId(L"People"), L"ada", PR_ANR_W, list), 0U);

        EXPECT_EQ(Lines(),
                  (Strings{std::string("3 CABbase::ListABEmailWithName - ") + row.line,
                           std::string("3 CABbase::ListABEmailWithKey - ") + row.line}));
    }
    EXPECT_TRUE(list.empty());
}

TEST_F(AddressBookTest, WarningOnOpeningAContainerEndsTheWalk)
{
    mapi.answers["IAddrBook::OpenEntry"] = {MAPI_W_ERRORS_RETURNED};
    std::vector<ABEmailEntry> list;

    outlook.ListABEmailWithName(FakeAddressId(L"People"), L"ada", list);

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABEmailWithName - OpenEntry failed, result[0x40380], "
                       "objecttype[4]"}));
}

TEST_F(AddressBookTest, ContainerWithoutHitsHasItsLine)
{
    Entries() = {};
    std::vector<ABEmailEntry> list;

    outlook.ListABEmailWithName(FakeAddressId(L"People"), L"ada", list);

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABEmailWithName - GetRowCount failed, result[0x0], "
                       "rowcount[0]"}));
}

TEST_F(AddressBookTest, ClosedBookHasItsLinesAndNoAddress)
{
    outlook.CloseAddressbook();
    trace.Clear();
    std::vector<ABEmailEntry> list;
    ABEmailEntry entry;

    outlook.ListABEmailWithName({1}, L"ada", list);
    EXPECT_EQ(outlook.ListABEmailWithKey({1}, L"ada", PR_ANR_W, list), 0U);
    EXPECT_EQ(outlook.GetABEmailAddress({1}, entry), 0U);

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABEmailWithName m_lpAdrBook == NULL",
                       "3 CABbase::ListABEmailWithKey m_lpAdrBook == NULL"}));
}

TEST_F(AddressBookTest, SmtpEntryHasItsNativeAddress)
{
    Entries() = {Entry("ada", L"Ada", L"SMTP")};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 1U);

    EXPECT_EQ(entry.smtpAddress, L"ada@native.example");
    EXPECT_EQ(entry.nativeAddress, L"ada@native.example");
    EXPECT_EQ(entry.addressType, L"SMTP");
    EXPECT_EQ(entry.displayName, L"Ada");
    EXPECT_EQ(entry.entryId, (BinaryBlock{'a', 'd', 'a'}));
}

TEST_F(AddressBookTest, SmtpInLowerCaseIsNotTakenAsSmtp)
{
    Entries() = {Entry("ada", L"Ada", L"smtp")};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 1U);

    EXPECT_EQ(entry.smtpAddress, L"ada@Example.org");
}

TEST_F(AddressBookTest, DirectoryEntryWithoutAnSmtpValueHasItsOriginalName)
{
    Entries() = {Entry("ada", L"Ada", L"EX")};
    Entries()[0].back() = {PR_ORIGINAL_DISPLAY_NAME_W, std::wstring(L"Ada the First")};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 1U);

    EXPECT_EQ(entry.smtpAddress, L"Ada the First");
    EXPECT_EQ(entry.nativeAddress, L"/o=Example/cn=ada");
}

TEST_F(AddressBookTest, EntryThatWillNotOpenHasNoAddress)
{
    mapi.answers["IAddrBook::OpenEntry"] = {MAPI_E_NOT_FOUND};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 0U);

    EXPECT_EQ(entry.entryId, (BinaryBlock{'a', 'd', 'a'}));
    EXPECT_EQ(Lines(), Strings{});
}
