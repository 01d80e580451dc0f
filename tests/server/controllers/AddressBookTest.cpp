// The mail users in the containers of the address book, and their addresses.

#include "AddressBookTest.h"

#include <algorithm>

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

TEST_F(AddressBookTest, EmptyKeyIsInvalid)
{
    std::vector<ABEmailEntry> list;

    EXPECT_EQ(outlook.ListABEmailWithKey(FakeAddressId(L"People"), L"", PR_ANR_W, list), 0U);

    EXPECT_EQ(Lines(), (Strings{"3 CABbase::ListABEmailWithKey - input parameter invalid, []"}));
}

TEST_F(AddressBookTest, MailUsersAreReadWithTheirFlagsAndColumns)
{
    NamesFor(L"ada");

    EXPECT_EQ(mapi.flags["IAddrBook::OpenEntry"], MAPI_BEST_ACCESS);
    EXPECT_EQ(mapi.flags["IABContainer::GetContentsTable"], MAPI_UNICODE);
    EXPECT_EQ(mapi.flags["ABContentsTable::Restrict"], TBL_BATCH);
    EXPECT_EQ(mapi.tags["ABContentsTable::SetColumns"], (Tags{0x3001001F, 0x0FFF0102, 0x0FFE0003}));
    EXPECT_EQ(mapi.flags["ABContentsTable::SetColumns"], TBL_BATCH);
    EXPECT_EQ(mapi.limits["ABContentsTable::QueryRows"], 1);
    EXPECT_EQ(mapi.flags["ABContentsTable::QueryRows"], 0U);
    EXPECT_EQ(std::find(mapi.calls.begin(), mapi.calls.end(), "ABContentsTable::Restrict") <
                  std::find(mapi.calls.begin(), mapi.calls.end(), "ABContentsTable::SetColumns"),
              true);
}

TEST_F(AddressBookTest, CountThatFailsEndsTheWalkWhateverItTells)
{
    mapi.isCountToldOnFailure = true;
    mapi.answers["ABContentsTable::GetRowCount"] = {E_FAIL};

    EXPECT_EQ(NamesFor(L"ada"), Names{});

    EXPECT_EQ(Lines(),
              (Strings{"3 CABbase::ListABEmailWithName - GetRowCount failed, result[0x80004005], "
                       "rowcount[1]"}));
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

TEST_F(AddressBookTest, NamesAreFoldedBeyondAscii)
{
    Entries() = {Entry("e", L"\u00C9lodie \u0416", L"EX")};

    EXPECT_EQ(NamesFor(L"\u00E9lodie \u0436"), (Names{L"\u00C9lodie \u0416"}));
}

TEST_F(AddressBookTest, EntryWithoutAnSmtpAddressIsNotListed)
{
    Entries() = {Entry("ada", L"Ada", L"EX")};
    Entries()[0].pop_back();

    EXPECT_EQ(NamesFor(L"ada"), Names{});
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

TEST_F(AddressBookTest, EmptySmtpValueIsAsGoodAsNone)
{
    Entries() = {Entry("ada", L"Ada", L"EX")};
    Entries()[0].back() = {PR_SMTP_ADDRESS_W, std::wstring()};
    Entries()[0].push_back({PR_ORIGINAL_DISPLAY_NAME_W, std::wstring(L"Ada the First")});
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 1U);

    EXPECT_EQ(entry.smtpAddress, L"Ada the First");
}

TEST_F(AddressBookTest, SmtpEntryWithoutANativeAddressHasNone)
{
    Entries() = {Entry("ada", L"Ada", L"SMTP")};
    std::erase_if(Entries()[0],
                  [](const FakeValue& value) { return value.tag == PR_EMAIL_ADDRESS_W; });
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 0U);

    EXPECT_EQ(entry.smtpAddress, L"") << "the second road is for other types alone";
}

TEST_F(AddressBookTest, MissingPropertiesLeaveTheirFieldsEmptyAndTheOthersAreRead)
{
    Entries() = {{{PR_ENTRYID, BinaryBlock{'a'}}, {PR_SMTP_ADDRESS_W, std::wstring(L"a@b")}}};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a'}, entry), 1U);

    EXPECT_EQ(entry.displayName, L"");
    EXPECT_EQ(entry.addressType, L"");
    EXPECT_EQ(entry.nativeAddress, L"");
    EXPECT_EQ(entry.smtpAddress, L"a@b");
    EXPECT_EQ(mapi.flags["IAddrBook::OpenEntry"], MAPI_BEST_ACCESS);
}

TEST_F(AddressBookTest, EntryThatWillNotOpenHasNoAddress)
{
    mapi.answers["IAddrBook::OpenEntry"] = {MAPI_E_NOT_FOUND};
    ABEmailEntry entry;

    EXPECT_EQ(outlook.GetABEmailAddress({'a', 'd', 'a'}, entry), 0U);

    EXPECT_EQ(entry.entryId, (BinaryBlock{'a', 'd', 'a'}));
    EXPECT_EQ(Lines(), Strings{});
}
