#include "StoreFixture.h"

using namespace mapitest;

namespace
{

class AddressBookTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(""));
        Start();
        ASSERT_EQ(session->OpenAddressBook(0, nullptr, AB_NO_DIALOG, book.PutAs<::IAddrBook>()),
                  S_OK);
    }
    void TearDown() override
    {
        book.Reset();
        StoreTest::TearDown();
    }
    CRef<IABContainer> Container(const std::string& id)
    {
        std::string bytes = id;
        CRef<IABContainer> container;
        ULONG type = 0;
        EXPECT_EQ(
            book->OpenEntry(static_cast<ULONG>(bytes.size()),
                            bytes.empty() ? nullptr : reinterpret_cast<ENTRYID*>(bytes.data()),
                            nullptr,
                            MAPI_BEST_ACCESS,
                            &type,
                            container.PutAs<IUnknown>()),
            S_OK);
        EXPECT_EQ(type, MAPI_ABCONT);
        return container;
    }
    TableRef ContentsOf(ULONG64 container)
    {
        TableRef table;
        const CRef<IABContainer> opened = Container(EntryId(MAPI_ABCONT, bookUid, container));
        EXPECT_EQ(opened->GetContentsTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
        return table;
    }
    std::vector<std::wstring> Answering(const wchar_t* text)
    {
        const TableRef table = ContentsOf(28);
        std::wstring copy = text;
        SPropValue value{};
        value.ulPropTag = PR_ANR_W;
        value.Value.lpszW = copy.data();
        SRestriction res{};
        res.rt = RES_PROPERTY;
        res.res.resProperty = {RELOP_EQ, PR_ANR_W, &value};
        EXPECT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);
        return TextColumn(table, PR_DISPLAY_NAME_W);
    }
    using Texts = std::vector<std::wstring>;

    BookRef book;
};

TEST_F(AddressBookTest, RootListsItsContainersWithFlagsAndDisplayType)
{
    const CRef<IABContainer> root = Container("");
    TableRef table;
    ASSERT_EQ(root->GetHierarchyTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{
        PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DISPLAY_TYPE};
    ASSERT_EQ(table->SetColumns(columns, TBL_BATCH), S_OK);
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 1U);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"Global Address List");
    EXPECT_EQ(rows[0].lpProps[2].Value.l, static_cast<LONG>(MAPI_ABCONT));
    EXPECT_EQ(rows[0].lpProps[3].Value.l, 11);
    EXPECT_EQ(rows[0].lpProps[4].Value.l, static_cast<LONG>(DT_GLOBAL));
}

TEST_F(AddressBookTest, ContainerInAContainerHasFlagsOfItsOwn)
{
    const CRef<IABContainer> global = Container(EntryId(MAPI_ABCONT, bookUid, 28));
    TableRef table;
    ASSERT_EQ(global->GetHierarchyTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_DISPLAY_NAME_W, PR_CONTAINER_FLAGS, PR_DISPLAY_TYPE};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 1U);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"Nordlys");
    EXPECT_EQ(rows[0].lpProps[1].Value.l, 9);
    EXPECT_EQ(rows[0].lpProps[2].Value.l, 256);
}

TEST_F(AddressBookTest, DeepHierarchyGivesEveryContainerWithItsDepth)
{
    const CRef<IABContainer> root = Container("");
    TableRef table;
    ASSERT_EQ(root->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.PutAs<::IMAPITable>()),
              S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W), (Texts{L"Global Address List", L"Nordlys"}));
}

TEST_F(AddressBookTest, ContentsShowTheEntriesOfTheContainer)
{
    EXPECT_EQ(TextColumn(ContentsOf(28), PR_DISPLAY_NAME_W),
              (Texts{L"Ada Quist", L"Everybody", L"Bo Ferrand"}));
    EXPECT_EQ(TextColumn(ContentsOf(29), PR_DISPLAY_NAME_W), Texts{L"Ada Quist"});
}

TEST_F(AddressBookTest, AmbiguousNamesAnswerByTheBeginningOfAnyPart)
{
    EXPECT_EQ(Answering(L"ad"), Texts{L"Ada Quist"});
    EXPECT_EQ(Answering(L"qui"), Texts{L"Ada Quist"});
    EXPECT_EQ(Answering(L"FERRAND"), Texts{L"Bo Ferrand"});
    EXPECT_EQ(Answering(L"ada.quist@"), Texts{L"Ada Quist"});
    EXPECT_EQ(Answering(L"bo.f"), Texts{L"Bo Ferrand"});
    EXPECT_EQ(Answering(L"uist"), Texts{});
}

TEST_F(AddressBookTest, SmtpAddressCanBeRestrictedToo)
{
    const TableRef table = ContentsOf(28);
    wchar_t text[] = L"ADA.quist@nordlys.example";
    SPropValue value{};
    value.ulPropTag = mapistore::kTagSmtpAddressW;
    value.Value.lpszW = text;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, mapistore::kTagSmtpAddressW, &value};
    ASSERT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W), Texts{L"Ada Quist"});
}

TEST_F(AddressBookTest, DistributionListHasMembersAndNoContainers)
{
    std::string id = EntryId(MAPI_DISTLIST, bookUid, 31);
    CRef<IDistList> list;
    ULONG type = 0;
    ASSERT_EQ(book->OpenEntry(32,
                              reinterpret_cast<ENTRYID*>(id.data()),
                              nullptr,
                              MAPI_BEST_ACCESS,
                              &type,
                              list.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(type, MAPI_DISTLIST);
    TableRef table;
    ASSERT_EQ(list->GetContentsTable(MAPI_UNICODE, table.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W), (Texts{L"Ada Quist", L"Bo Ferrand"}));
    EXPECT_EQ(list->GetHierarchyTable(0, table.PutAs<::IMAPITable>()), MAPI_E_NO_SUPPORT);
}

TEST_F(AddressBookTest, BookIsReadOnly)
{
    std::string id = EntryId(MAPI_MAILUSER, bookUid, 30);
    CRef<IMailUser> user;
    ULONG type = 0;
    EXPECT_EQ(book->OpenEntry(32,
                              reinterpret_cast<ENTRYID*>(id.data()),
                              nullptr,
                              MAPI_MODIFY,
                              &type,
                              user.PutAs<IUnknown>()),
              MAPI_E_NO_ACCESS);
    ASSERT_EQ(
        book->OpenEntry(
            32, reinterpret_cast<ENTRYID*>(id.data()), nullptr, 0, &type, user.PutAs<IUnknown>()),
        S_OK);
    SPropValue value{};
    value.ulPropTag = PR_COMMENT_W;
    wchar_t text[] = L"x";
    value.Value.lpszW = text;
    EXPECT_EQ(user->SetProps(1, &value, nullptr), MAPI_E_NO_ACCESS);
    const CRef<IABContainer> root = Container("");
    CRef<IMAPIProp> made;
    EXPECT_EQ(root->CreateEntry(0, nullptr, 0, made.Put()), MAPI_E_NO_ACCESS);
}

TEST_F(AddressBookTest, ContainerResolvesNamesOfItsOwnEntries)
{
    const CRef<IABContainer> container = Container(EntryId(MAPI_ABCONT, bookUid, 29));
    CHeld<ADRLIST> list;
    ASSERT_EQ(MAPIAllocateBuffer(CbNewADRLIST(2), reinterpret_cast<void**>(list.Put())), S_OK);
    list->cEntries = 2;
    wchar_t names[2][16] = {L"Quist", L"Ferrand"};
    for (ULONG i = 0; i < 2; ++i)
    {
        void* values = nullptr;
        ASSERT_EQ(MAPIAllocateMore(sizeof(SPropValue), list.Get(), &values), S_OK);
        list->aEntries[i] = {0, 1, static_cast<SPropValue*>(values)};
        list->aEntries[i].rgPropVals->ulPropTag = PR_DISPLAY_NAME_W;
        list->aEntries[i].rgPropVals->Value.lpszW = names[i];
    }
    struct
    {
        ULONG count;
        ULONG flags[2];
    } results = {2, {MAPI_UNRESOLVED, MAPI_UNRESOLVED}};
    ASSERT_EQ(container->ResolveNames(
                  nullptr, MAPI_UNICODE, list.Get(), reinterpret_cast<FlagList*>(&results)),
              S_OK);
    EXPECT_EQ(results.flags[0], MAPI_RESOLVED);
    EXPECT_EQ(results.flags[1], MAPI_UNRESOLVED);
}

TEST_F(AddressBookTest, SearchPathAndDefaultDirectoryNameTheContainers)
{
    CRows path;
    ASSERT_EQ(book->GetSearchPath(MAPI_UNICODE, path.Put()), S_OK);
    ASSERT_EQ(path.Count(), 2U);
    EXPECT_STREQ(path[0].lpProps[1].Value.lpszW, L"Global Address List");
    ULONG cb = 0;
    CHeld<ENTRYID> id;
    ASSERT_EQ(book->GetDefaultDir(&cb, id.Put()), S_OK);
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(id.Get()), cb)),
              HexOf(EntryId(MAPI_ABCONT, bookUid, 28)));
    ASSERT_EQ(book->GetPAB(&cb, id.Put()), S_OK);
    EXPECT_EQ(HexOf(std::string(reinterpret_cast<char*>(id.Get()), cb)),
              HexOf(EntryId(MAPI_ABCONT, bookUid, 29)));
}

} // namespace
