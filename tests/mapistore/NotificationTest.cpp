#include <map>
#include <random>
#include <set>

#include "RecordingSink.h"

using namespace mapitest;

namespace
{

std::string Item(int id, const std::string& subject, int importance = 1, int folder = 8)
{
    return R"({ "id": )" + std::to_string(id) + R"(, "folder": )" + std::to_string(folder) +
           R"(, "class": "IPM.Appointment", "properties": { "PR_SUBJECT_W": ")" + subject +
           R"(", "PR_IMPORTANCE": )" + std::to_string(importance) + " } }";
}

class NotificationTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        Write(Item(100, "one") + "," + Item(101, "two"));
        Start();
        table = Contents(8);
        CTags columns{PR_ENTRYID, PR_SUBJECT_W};
        ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
        ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    }
    void TearDown() override
    {
        if (connection != 0)
        {
            EXPECT_EQ(table->Unadvise(connection), S_OK);
        }
        table.Reset();
        StoreTest::TearDown();
        EXPECT_EQ(sink.References(), 1);
    }
    void Write(const std::string& messages) { WriteDocument(UsualDocument(messages)); }
    void Change(const std::string& messages)
    {
        Write(messages);
        ASSERT_EQ(MapiStoreRefresh(), S_OK);
    }
    static std::string Key(ULONG64 id)
    {
        return std::string("row\0", 4) + std::string(reinterpret_cast<char*>(&id), sizeof(id));
    }

    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table;
    mapi64::Connection connection = 0;
};

TEST_F(NotificationTest, ConnectionNumberNeedsAllItsBits)
{
    EXPECT_GT(connection, mapi64::Connection{0xFFFFFFFF});
}

TEST_F(NotificationTest, AddedRowComesWithItsColumnsAndTheRowBeforeIt)
{
    Change(Item(100, "one") + "," + Item(101, "two") + "," + Item(102, "three"));
    const HeardEvent event = sink.WaitFor(1)[0];
    EXPECT_EQ(event.type, fnevTableModified);
    EXPECT_EQ(event.tableEvent, static_cast<ULONG>(TABLE_ROW_ADDED));
    EXPECT_EQ(HexOf(event.index), HexOf(Key(102)));
    EXPECT_EQ(HexOf(event.prior), HexOf(Key(101)));
    EXPECT_EQ(event.tags, (std::vector<ULONG>{PR_ENTRYID, PR_SUBJECT_W}));
    EXPECT_EQ(event.texts, std::vector<std::wstring>{L"three"});
    EXPECT_EQ(HexOf(event.entryId), HexOf(MessageId(102)));
}

TEST_F(NotificationTest, ChangedRowComesWithItsNewValues)
{
    Change(Item(100, "uno") + "," + Item(101, "two"));
    const HeardEvent event = sink.WaitFor(1)[0];
    EXPECT_EQ(event.tableEvent, static_cast<ULONG>(TABLE_ROW_MODIFIED));
    EXPECT_EQ(HexOf(event.index), HexOf(Key(100)));
    EXPECT_EQ(event.prior, "");
    EXPECT_EQ(event.texts, std::vector<std::wstring>{L"uno"});
}

TEST_F(NotificationTest, DeletedRowComesWithItsKeyAndNoRow)
{
    Change(Item(101, "two"));
    const HeardEvent event = sink.WaitFor(1)[0];
    EXPECT_EQ(event.tableEvent, static_cast<ULONG>(TABLE_ROW_DELETED));
    EXPECT_EQ(HexOf(event.index), HexOf(Key(100)));
    EXPECT_TRUE(event.tags.empty());
}

TEST_F(NotificationTest, ChangeOfAPropertyThatIsNoColumnIsToldToo)
{
    Change(Item(100, "one", 2) + "," + Item(101, "two"));
    EXPECT_EQ(sink.WaitFor(1)[0].tableEvent, static_cast<ULONG>(TABLE_ROW_MODIFIED));
}

TEST_F(NotificationTest, MoveToAnotherFolderIsADeletionHere)
{
    Change(Item(100, "one", 1, 9) + "," + Item(101, "two"));
    EXPECT_EQ(sink.WaitFor(1)[0].tableEvent, static_cast<ULONG>(TABLE_ROW_DELETED));
}

TEST_F(NotificationTest, RestrictionMutesRowsOutsideAndTurnsCrossingIntoAddingAndDeleting)
{
    SPropValue high{};
    high.ulPropTag = PR_IMPORTANCE;
    high.Value.l = 2;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, PR_IMPORTANCE, &high};
    ASSERT_EQ(table->Restrict(&res, TBL_BATCH), S_OK);

    Change(Item(100, "changed outside") + "," + Item(101, "two", 2));
    Change(Item(100, "changed outside") + "," + Item(101, "changed inside", 2));
    Change(Item(100, "changed outside") + "," + Item(101, "leaves", 1));

    const std::vector<HeardEvent> heard = sink.WaitFor(3);
    ASSERT_EQ(heard.size(), 3U);
    EXPECT_EQ(heard[0].tableEvent, static_cast<ULONG>(TABLE_ROW_ADDED));
    EXPECT_EQ(heard[1].tableEvent, static_cast<ULONG>(TABLE_ROW_MODIFIED));
    EXPECT_EQ(heard[2].tableEvent, static_cast<ULONG>(TABLE_ROW_DELETED));
}

TEST_F(NotificationTest, SinkIsCalledOnAThreadOfTheLibrarysOwn)
{
    Change(Item(101, "two"));
    EXPECT_NE(sink.WaitFor(1)[0].thread, GetCurrentThreadId());
}

TEST_F(NotificationTest, NothingComesAfterUnadvise)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& second = *new CRecordingSink;
    mapi64::Connection other = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &second, &other), S_OK);
    ASSERT_EQ(table->Unadvise(connection), S_OK);
    connection = 0;
    Change(Item(101, "two"));
    second.WaitFor(1);
    EXPECT_TRUE(sink.Heard().empty());
    EXPECT_EQ(table->Unadvise(other), S_OK);
    EXPECT_EQ(table->Unadvise(other), MAPI_E_INVALID_PARAMETER);
    table.Reset();
    Stop(); // a call that was under way has let go of the sink now
    EXPECT_EQ(second.References(), 1);
}

TEST_F(NotificationTest, UnadviseDoesNotWaitForACallUnderWay)
{
    HANDLE inside = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE leave = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    sink.SetAction([&] {
        SetEvent(inside);
        WaitForSingleObject(leave, INFINITE);
    });
    Change(Item(101, "two"));
    WaitForSingleObject(inside, INFINITE);

    EXPECT_EQ(table->Unadvise(connection), S_OK);

    connection = 0;
    EXPECT_EQ(sink.References(), 2); // the test's, and that of the call under way
    SetEvent(leave);
    table.Reset();
    Stop(); // which waits for the call that is under way
    CloseHandle(inside);
    CloseHandle(leave);
}

TEST_F(NotificationTest, ManyChangesComeInOrderEachOnce)
{
    constexpr int kChanges = 300;
    std::mt19937 random(11);
    std::map<int, std::string> items;
    std::vector<std::pair<ULONG, int>> expected;
    items[100] = "one";
    items[101] = "two";
    for (int i = 0; i < kChanges; ++i)
    {
        const int id = 100 + static_cast<int>(random() % 40);
        const bool isThere = items.count(id) != 0;
        if (isThere && random() % 3 == 0)
        {
            items.erase(id);
            expected.emplace_back(TABLE_ROW_DELETED, id);
        }
        else
        {
            items[id] = "text " + std::to_string(i);
            expected.emplace_back(isThere ? TABLE_ROW_MODIFIED : TABLE_ROW_ADDED, id);
        }
        std::string all;
        for (const auto& [number, text] : items)
        {
            all += (all.empty() ? "" : ",") + Item(number, text);
        }
        Change(all);
    }

    const std::vector<HeardEvent> heard = sink.WaitFor(kChanges);

    ASSERT_EQ(heard.size(), expected.size());
    for (size_t i = 0; i < heard.size(); ++i)
    {
        EXPECT_EQ(heard[i].tableEvent, expected[i].first) << i;
        EXPECT_EQ(HexOf(heard[i].index), HexOf(Key(static_cast<ULONG64>(expected[i].second)))) << i;
    }
}

TEST_F(NotificationTest, OneCallMayCarrySeveralEvents)
{
    HANDLE inside = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE leave = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    sink.SetAction([&] {
        SetEvent(inside);
        WaitForSingleObject(leave, INFINITE);
    });
    Change(Item(101, "two"));
    WaitForSingleObject(inside, INFINITE);
    std::string all = Item(101, "two");
    for (int id = 200; id < 210; ++id)
    {
        all += "," + Item(id, "more");
    }
    Change(all);
    SetEvent(leave);
    EXPECT_EQ(sink.WaitFor(11).size(), 11U);
    EXPECT_EQ(sink.Calls(), 2U);
    CloseHandle(inside);
    CloseHandle(leave);
}

TEST_F(NotificationTest, FolderWithoutAdviseAnswersNoSupport)
{
    const TableRef other = Contents(11);
    mapi64::Connection number = 5;
    EXPECT_EQ(other->Advise(fnevTableModified, &sink, &number), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(number, 0U);
}

TEST_F(NotificationTest, SinkMayNotUseTheLibraryOnItsThread)
{
    HRESULT hr = S_OK;
    sink.SetAction([&] {
        ULONG count = 0;
        hr = table->GetRowCount(0, &count);
    });
    Change(Item(101, "two"));
    sink.WaitFor(1);
    Change(Item(101, "two") + "," + Item(102, "three"));
    sink.WaitFor(2); // so the first call's action is over
    EXPECT_EQ(hr, MAPI_E_NOT_INITIALIZED);
    EXPECT_GE(Counts().misuse, 1U);
}

TEST_F(NotificationTest, TableThatGoesWithItsConnectionLeavesItInTheLedger)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& second = *new CRecordingSink;
    {
        const TableRef other = Contents(8);
        mapi64::Connection number = 0;
        ASSERT_EQ(other->Advise(fnevTableModified, &second, &number), S_OK);
    }
    EXPECT_EQ(Counts().connectionsLeft, 2U);
    EXPECT_EQ(table->Unadvise(connection), S_OK);
    connection = 0;
    table.Reset();
    store.Reset();
    session.Reset();
    MAPIUninitialize();
    EXPECT_NE(Report().find("left connection connection from IMAPITable::Advise"),
              std::string::npos);
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK);
    LogOn();
}

TEST_F(NotificationTest, StoreTellsOfObjects)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& second = *new CRecordingSink;
    mapi64::Connection number = 0;
    ASSERT_EQ(store->Advise(0,
                            nullptr,
                            fnevObjectCreated | fnevObjectDeleted | fnevObjectModified |
                                fnevObjectMoved | fnevNewMail,
                            &second,
                            &number),
              S_OK);
    Change(Item(100, "uno") + "," + Item(101, "two", 1, 9) + "," + Item(102, "new", 1, 4));
    const std::vector<HeardEvent> heard = second.WaitFor(4);
    std::multiset<ULONG> types;
    for (const HeardEvent& event : heard)
    {
        types.insert(event.type);
    }
    EXPECT_EQ(types,
              (std::multiset<ULONG>{
                  fnevNewMail, fnevObjectCreated, fnevObjectModified, fnevObjectMoved}));
    EXPECT_EQ(store->Unadvise(number), S_OK);
}

TEST_F(NotificationTest, HierarchyTableTellsOfCountsAndFolders)
{
    const FolderRef top = OpenFolder(3);
    TableRef hierarchy;
    ASSERT_EQ(top->GetHierarchyTable(MAPI_UNICODE, hierarchy.PutAs<::IMAPITable>()), S_OK);
    CTags columns{PR_DISPLAY_NAME_W, PR_CONTENT_COUNT};
    ASSERT_EQ(hierarchy->SetColumns(columns, 0), S_OK);
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& second = *new CRecordingSink;
    mapi64::Connection number = 0;
    ASSERT_EQ(hierarchy->Advise(fnevTableModified, &second, &number), S_OK);
    Change(Item(100, "one"));
    const HeardEvent event = second.WaitFor(1)[0];
    EXPECT_EQ(event.tableEvent, static_cast<ULONG>(TABLE_ROW_MODIFIED));
    EXPECT_EQ(event.texts, std::vector<std::wstring>{L"Calendar"});
    EXPECT_EQ(hierarchy->Unadvise(number), S_OK);
}

} // namespace
