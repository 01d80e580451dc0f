#include "StoreFixture.h"

using namespace mapitest;

namespace
{

std::string Mail(int id, const char* subject, int importance, const char* extra = "")
{
    return R"({ "id": )" + std::to_string(id) +
           R"(, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": ")" + subject +
           R"(", "PR_IMPORTANCE": )" + std::to_string(importance) + extra + " } }";
}

class TableTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(Mail(100, "pear", 1) + "," + Mail(101, "Apple", 2) + "," +
                                    Mail(102, "fig", 0) + "," + Mail(103, "apple pie", 2)));
        Start();
        table = Contents(4);
    }
    void TearDown() override
    {
        table.Reset();
        StoreTest::TearDown();
    }
    using Texts = std::vector<std::wstring>;
    Texts Subjects() { return TextColumn(table, PR_SUBJECT_W); }
    HRESULT Sort(ULONG tag, ULONG order)
    {
        SSortOrderSet set{1, 0, 0, {{tag, order}}};
        return table->SortTable(&set, 0);
    }
    static SRestriction Importance(ULONG relop, SPropValue& value, LONG number)
    {
        value = SPropValue();
        value.ulPropTag = PR_IMPORTANCE;
        value.Value.l = number;
        SRestriction res{};
        res.rt = RES_PROPERTY;
        res.res.resProperty = {relop, PR_IMPORTANCE, &value};
        return res;
    }

    TableRef table;
};

TEST_F(TableTest, RowsComeInTheOrderOfTheDocument)
{
    EXPECT_EQ(Subjects(), (Texts{L"pear", L"Apple", L"fig", L"apple pie"}));
}

TEST_F(TableTest, SortingIgnoresCaseAndKeepsEqualsInOrder)
{
    ASSERT_EQ(Sort(PR_SUBJECT_W, TABLE_SORT_ASCEND), S_OK);
    EXPECT_EQ(Subjects(), (Texts{L"Apple", L"apple pie", L"fig", L"pear"}));
    ASSERT_EQ(Sort(PR_IMPORTANCE, TABLE_SORT_DESCEND), S_OK);
    EXPECT_EQ(Subjects(), (Texts{L"Apple", L"apple pie", L"pear", L"fig"}));
}

TEST_F(TableTest, SortKeyNeedsNoColumn)
{
    CTags columns{PR_ENTRYID};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    ASSERT_EQ(Sort(PR_SUBJECT_W, TABLE_SORT_DESCEND), S_OK);
    EXPECT_EQ(Subjects(), (Texts{L"pear", L"fig", L"apple pie", L"Apple"}));
}

TEST_F(TableTest, RestrictionIsCopiedSoItsNodesMayLieOnTheStack)
{
    {
        SPropValue value{};
        SRestriction res = Importance(RELOP_GE, value, 2);
        ASSERT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);
        res.rt = 99;
        value.Value.l = 0;
    }
    EXPECT_EQ(Subjects(), (Texts{L"Apple", L"apple pie"}));
    ASSERT_EQ(table->Restrict(nullptr, TBL_BATCH), S_OK);
    EXPECT_EQ(Subjects().size(), 4U);
}

TEST_F(TableTest, QueryRowsReadsForwardBackwardAndWithoutMoving)
{
    CTags columns{PR_SUBJECT_W};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    CRows rows;
    ASSERT_EQ(table->QueryRows(3, TBL_NOADVANCE, rows.Put()), S_OK);
    EXPECT_EQ(rows.Count(), 3U);
    ASSERT_EQ(table->QueryRows(3, 0, rows.Put()), S_OK);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"pear");
    ASSERT_EQ(table->QueryRows(3, 0, rows.Put()), S_OK);
    ASSERT_EQ(rows.Count(), 1U);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"apple pie");
    ASSERT_EQ(table->QueryRows(3, 0, rows.Put()), S_OK);
    EXPECT_EQ(rows.Count(), 0U);
    ASSERT_EQ(table->QueryRows(-2, 0, rows.Put()), S_OK);
    ASSERT_EQ(rows.Count(), 2U);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"fig");
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, 2U);
    EXPECT_EQ(denominator, 4U);
    EXPECT_EQ(table->QueryRows(0, 0, rows.Put()), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(table->QueryRows(1, 2, rows.Put()), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(TableTest, SeekRowStopsAtTheEnds)
{
    LONG sought = 0;
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 10, &sought), S_OK);
    EXPECT_EQ(sought, 4);
    ASSERT_EQ(table->SeekRow(BOOKMARK_CURRENT, -1, &sought), S_OK);
    EXPECT_EQ(sought, -1);
    ASSERT_EQ(table->SeekRow(BOOKMARK_END, -9, &sought), S_OK);
    EXPECT_EQ(sought, -4);
    EXPECT_EQ(table->SeekRow(77, 0, &sought), MAPI_E_INVALID_BOOKMARK);
    ASSERT_EQ(table->SeekRowApprox(1, 2), S_OK);
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, 2U);
}

TEST_F(TableTest, BookmarkStaysAtItsRow)
{
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 2, nullptr), S_OK);
    BOOKMARK bookmark = 0;
    ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    ASSERT_EQ(table->SeekRow(bookmark, 0, nullptr), S_OK);
    CTags columns{PR_SUBJECT_W};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    CRows rows;
    ASSERT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
    EXPECT_STREQ(rows[0].lpProps[0].Value.lpszW, L"fig");
    ASSERT_EQ(table->FreeBookmark(bookmark), S_OK);
    EXPECT_EQ(table->FreeBookmark(bookmark), MAPI_E_INVALID_BOOKMARK);
}

TEST_F(TableTest, BookmarkOfARowThatWentSaysSo)
{
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 1, nullptr), S_OK);
    BOOKMARK bookmark = 0;
    ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
    WriteDocument(UsualDocument(Mail(100, "pear", 1) + "," + Mail(102, "fig", 0)));
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(table->SeekRow(bookmark, 0, nullptr), MAPI_W_POSITION_CHANGED);
    EXPECT_EQ(Subjects(), (Texts{L"pear", L"fig"}));
    ASSERT_EQ(table->FreeBookmark(bookmark), S_OK);
}

TEST_F(TableTest, FindRowGoesToTheMatchInEitherDirection)
{
    SPropValue value{};
    SRestriction res = Importance(RELOP_EQ, value, 2);
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    ASSERT_EQ(table->FindRow(&res, BOOKMARK_BEGINNING, 0), S_OK);
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, 1U);
    ASSERT_EQ(table->FindRow(&res, BOOKMARK_END, DIR_BACKWARD), S_OK);
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, 3U);
    res = Importance(RELOP_EQ, value, 9);
    EXPECT_EQ(table->FindRow(&res, BOOKMARK_BEGINNING, 0), MAPI_E_NOT_FOUND);
}

TEST_F(TableTest, ColumnsThatNobodySetAreGivenInTheTablesWidth)
{
    CHeld<SPropTagArray> columns;
    ASSERT_EQ(table->QueryColumns(0, columns.Put()), S_OK);
    bool hasSubject = false;
    for (ULONG i = 0; i < columns->cValues; ++i)
    {
        hasSubject = hasSubject || columns->aulPropTag[i] == PR_SUBJECT_W;
    }
    EXPECT_TRUE(hasSubject);
    const TableRef narrow = Contents(4, 0);
    ASSERT_EQ(narrow->QueryColumns(TBL_ALL_COLUMNS, columns.Put()), S_OK);
    hasSubject = false;
    for (ULONG i = 0; i < columns->cValues; ++i)
    {
        hasSubject = hasSubject || columns->aulPropTag[i] == PR_SUBJECT_A;
    }
    EXPECT_TRUE(hasSubject);
}

TEST_F(TableTest, ErrorColumnHasTheErrorTypeInItsTag)
{
    CTags columns{PR_COMMENT_W, PR_SUBJECT_A};
    ASSERT_EQ(table->SetColumns(columns, TBL_BATCH), S_OK);
    const CRows rows = AllRows(table);
    EXPECT_EQ(rows[0].lpProps[0].ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_COMMENT_W)));
    EXPECT_STREQ(rows[0].lpProps[1].Value.lpszA, "pear");
}

TEST_F(TableTest, SmallOperationsAnswerAsDocumented)
{
    ULONG status = 1;
    ULONG type = 0;
    EXPECT_EQ(table->GetStatus(&status, &type), S_OK);
    EXPECT_EQ(status, TBLSTAT_COMPLETE);
    EXPECT_EQ(type, TBLTYPE_DYNAMIC);
    TableRef stores; // whose rows nothing changes
    ASSERT_EQ(session->GetMsgStoresTable(0, stores.PutAs<::IMAPITable>()), S_OK);
    EXPECT_EQ(stores->GetStatus(&status, &type), S_OK);
    EXPECT_EQ(type, TBLTYPE_SNAPSHOT);
    EXPECT_EQ(table->Abort(), S_OK);
    EXPECT_EQ(table->WaitForCompletion(0, 1000, nullptr), S_OK);
    EXPECT_EQ(table->WaitForCompletion(0, 1000, &status), S_OK);
    CHeld<SSortOrderSet> order;
    ASSERT_EQ(Sort(PR_SUBJECT_W, TABLE_SORT_DESCEND), S_OK);
    ASSERT_EQ(table->QuerySortOrder(order.Put()), S_OK);
    ASSERT_EQ(order->cSorts, 1U);
    EXPECT_EQ(order->aSort[0].ulPropTag, PR_SUBJECT_W);
    SSortOrderSet categories{1, 1, 1, {{PR_SUBJECT_W, TABLE_SORT_ASCEND}}};
    EXPECT_EQ(table->SortTable(&categories, 0), MAPI_E_TOO_COMPLEX);
    CRows rows;
    ULONG more = 0;
    EXPECT_EQ(table->ExpandRow(0, nullptr, 1, 0, rows.Put(), &more), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->SetColumns(nullptr, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(table->SetColumns(CTags{}, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(table->GetRowCount(0, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(TableTest, LongTextIsCutInRowsAndComparedWhole)
{
    const std::string text(300, 'x');
    WriteDocument(UsualDocument(Mail(100, (text + "end").c_str(), 1) + "," +
                                Mail(101, (text + "END!").c_str(), 1)));
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(Subjects()[0], std::wstring(255, L'x'));
    std::wstring wanted(300, L'x');
    wanted += L"END";
    SPropValue value{};
    value.ulPropTag = PR_SUBJECT_W;
    value.Value.lpszW = wanted.data();
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, PR_SUBJECT_W, &value};
    ASSERT_EQ(table->Restrict(&res, 0), S_OK);
    EXPECT_EQ(Subjects().size(), 1U);
}

TEST_F(TableTest, IdentifiersInRowsHaveTheStoresForm)
{
    CTags columns{PR_ENTRYID, PR_INSTANCE_KEY};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    const auto first = [&] {
        EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
        const CRows rows = AllRows(table);
        const SBinary& id = rows[0].lpProps[0].Value.bin;
        return HexOf(std::string(reinterpret_cast<char*>(id.lpb), id.cb));
    };
    EXPECT_EQ(first(), HexOf(MessageId(100)));
    std::string document = UsualDocument(Mail(100, "pear", 1));
    document.replace(document.find("\"personal\": true"), 16, "\"personal\": false");
    WriteDocument(document);
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(first(), HexOf(MessageId(100, true)));
}

} // namespace
