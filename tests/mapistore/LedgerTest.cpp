#include <cstring>

#include "RecordingSink.h"

using namespace mapitest;

namespace
{

std::string g_debuggerText;

/// Takes what is meant for a debugger; the call that sent it goes on.
LONG CALLBACK TakeDebuggerText(EXCEPTION_POINTERS* raised)
{
    const EXCEPTION_RECORD& record = *raised->ExceptionRecord;
    constexpr DWORD kDebuggerText = 0x40010006;
    if (record.ExceptionCode != kDebuggerText || record.NumberParameters < 2)
    {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    g_debuggerText += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    return EXCEPTION_CONTINUE_EXECUTION;
}

class LedgerTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(
            R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "one" } })"));
    }
    static bool Readable(const void* address)
    {
        MEMORY_BASIC_INFORMATION info{};
        const bool known = VirtualQuery(address, &info, sizeof(info)) != 0;
        return known && info.State == MEM_COMMIT && (info.Protect & PAGE_NOACCESS) == 0;
    }
};

TEST_F(LedgerTest, CountsAreExactByKind)
{
    Start();
    const MapiStoreCounts before = Counts();
    {
        const FolderRef folder = OpenFolder(4);
        TableRef table;
        ASSERT_EQ(folder->GetContentsTable(0, table.PutAs<::IMAPITable>()), S_OK);
        MapiStoreCounts now = Counts();
        EXPECT_EQ(now.interfacesLeft - before.interfacesLeft, 2U);
        folder->AddRef();
        EXPECT_EQ(Counts().interfacesLeft, now.interfacesLeft);
        folder->Release();
        CRows rows;
        ASSERT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
        now = Counts();
        EXPECT_EQ(now.buffersLeft - before.buffersLeft, 2U); // the set and its one row
    }
    const MapiStoreCounts after = Counts();
    EXPECT_EQ(after.interfacesLeft, before.interfacesLeft);
    EXPECT_EQ(after.buffersLeft, before.buffersLeft);
    EXPECT_EQ(after.interfacesHanded - before.interfacesHanded, 2U);
    EXPECT_EQ(after.misuse, 0U);
}

TEST_F(LedgerTest, ReportNamesWhatIsLeftAndWhoHandedItOut)
{
    const std::wstring file = StorePath() + L"\\ledger.txt";
    ASSERT_EQ(MapiStoreConfigure(L"Ledger", file.c_str()), S_OK);
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK);
    LogOn();
    mapi64::IMAPITable* leaked = nullptr;
    {
        const FolderRef folder = OpenFolder(4);
        ASSERT_EQ(folder->GetContentsTable(0, reinterpret_cast<::IMAPITable**>(&leaked)), S_OK);
    }
    SRowSet* rows = nullptr;
    ASSERT_EQ(leaked->QueryRows(5, 0, &rows), S_OK);
    MAPIFreeBuffer(rows); // the row in it is left
    store.Reset();
    session.Reset();
    MAPIUninitialize();

    const std::string text = ReadFileText(file);
    EXPECT_EQ(text.find("ledger process " + std::to_string(GetCurrentProcessId()) + "\n"), 0U);
    EXPECT_NE(text.find("left interface IMAPITable from IMAPIFolder::GetContentsTable ticket "),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("left buffer buffer bytes "), std::string::npos) << text;
    EXPECT_NE(text.find(" from IMAPITable::QueryRows ticket "), std::string::npos) << text;
    EXPECT_NE(text.find("left interfaces 1 buffers 1 connections 0 misuse 0\n"), std::string::npos)
        << text;
    // What is left can still be given back, and says so when it is used.
    EXPECT_EQ(leaked->GetRowCount(0, nullptr), MAPI_E_NOT_INITIALIZED);
    EXPECT_EQ(leaked->Release(), 0U);
}

TEST_F(LedgerTest, ReportsOfSeveralRunsStandOneBehindTheOther)
{
    const std::wstring file = StorePath() + L"\\ledger.txt";
    ASSERT_EQ(MapiStoreConfigure(L"Ledger", file.c_str()), S_OK);
    Start();
    Stop();
    Start();
    Stop();
    const std::string text = ReadFileText(file);
    const size_t first = text.find("summary ");
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(text.find("summary ", first + 1), std::string::npos);
}

TEST_F(LedgerTest, ObjectOfAnEarlierRunIsRefused)
{
    Start();
    FolderRef folder = OpenFolder(4);
    store.Reset();
    session.Reset();
    MAPIUninitialize();
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK);
    LogOn();
    TableRef table;
    EXPECT_EQ(folder->GetContentsTable(0, table.PutAs<::IMAPITable>()), MAPI_E_NOT_INITIALIZED);
    EXPECT_EQ(Counts().misuse, 1U);
}

TEST_F(LedgerTest, ForeignAndLinkedAndFreedPointersAreRefused)
{
    Start();
    void* head = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(10, &head), S_OK);
    void* linked = nullptr;
    ASSERT_EQ(MAPIAllocateMore(10, head, &linked), S_OK);
    EXPECT_EQ(static_cast<HRESULT>(MAPIFreeBuffer(linked)), MAPI_E_INVALID_PARAMETER);
    int own = 0;
    EXPECT_EQ(static_cast<HRESULT>(MAPIFreeBuffer(&own)), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIFreeBuffer(head), 0U);
    EXPECT_EQ(static_cast<HRESULT>(MAPIFreeBuffer(head)), MAPI_E_INVALID_PARAMETER);
    void* more = &own;
    EXPECT_EQ(MAPIAllocateMore(10, head, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(more, nullptr);
    EXPECT_EQ(MAPIFreeBuffer(nullptr), 0U);
    EXPECT_EQ(Counts().misuse, 4U);
}

TEST_F(LedgerTest, BuffersNeedMapi)
{
    void* head = nullptr;
    EXPECT_EQ(MAPIAllocateBuffer(10, &head), MAPI_E_NOT_INITIALIZED);
    MAPIUninitialize();
    EXPECT_GE(Counts().misuse, 2U);
}

TEST_F(LedgerTest, GuardPageStandsBehindEachValueAndReplacesWhatWasFreed)
{
    Start();
    void* head = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(16, &head), S_OK);
    char* bytes = static_cast<char*>(head);
    EXPECT_TRUE(Readable(bytes + 15));
    EXPECT_FALSE(Readable(bytes + 16));
    void* linked = nullptr;
    ASSERT_EQ(MAPIAllocateMore(24, head, &linked), S_OK);
    EXPECT_FALSE(Readable(static_cast<char*>(linked) + 24));
    ASSERT_EQ(MAPIFreeBuffer(head), 0U);
    EXPECT_FALSE(Readable(bytes));
    EXPECT_FALSE(Readable(linked));

    const MessageRef message = OpenMessage(100);
    CHeld<SPropValue> subject = GetProp(message.Get(), PR_SUBJECT_W);
    const wchar_t* text = subject->Value.lpszW;
    EXPECT_TRUE(Readable(text + 3)); // the terminator
    EXPECT_FALSE(Readable(text + 4));
    CHeld<SPropValue> narrow = GetProp(message.Get(), PR_SUBJECT_A);
    EXPECT_FALSE(Readable(narrow->Value.lpszA + 4));
    const CHeld<SPropValue> id = GetProp(message.Get(), PR_ENTRYID);
    EXPECT_TRUE(Readable(id->Value.bin.lpb + 31));
    EXPECT_FALSE(Readable(id->Value.bin.lpb + 32));
    subject.Reset();
    EXPECT_FALSE(Readable(text));
}

TEST_F(LedgerTest, WritingBehindABufferIsNoticedWhenItIsFreed)
{
    Start();
    void* head = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(13, &head), S_OK);
    static_cast<char*>(head)[14] = 'x'; // within the eight bytes of alignment, so no fault yet
    EXPECT_EQ(MAPIFreeBuffer(head), 0U);
    EXPECT_EQ(Counts().misuse, 1U);
    EXPECT_NE(Report().find("wrote past the end of a buffer"), std::string::npos);
}

TEST_F(LedgerTest, WithoutGuardBuffersWorkAllTheSame)
{
    ASSERT_EQ(MapiStoreConfigure(L"Guard", nullptr), S_OK);
    Start();
    std::vector<void*> heads;
    for (ULONG i = 0; i < 1000; ++i)
    {
        void* head = nullptr;
        ASSERT_EQ(MAPIAllocateBuffer(i, &head), S_OK);
        std::memset(head, 1, i);
        heads.push_back(head);
    }
    for (void* head : heads)
    {
        EXPECT_EQ(MAPIFreeBuffer(head), 0U);
    }
    const MessageRef message = OpenMessage(100);
    EXPECT_EQ(TextProp(message.Get(), PR_SUBJECT_W), L"one");
}

TEST_F(LedgerTest, ConnectionsAreCountedUntilTheyAreGivenBack)
{
    Start();
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table = Contents(4);
    mapi64::Connection first = 0;
    mapi64::Connection second = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &first), S_OK);
    ASSERT_EQ(store->Advise(0, nullptr, fnevNewMail, &sink, &second), S_OK);
    EXPECT_EQ(Counts().connectionsHanded, 2U);
    EXPECT_EQ(Counts().connectionsLeft, 2U);
    EXPECT_NE(Report().find("left connection connection from IMAPITable::Advise ticket "),
              std::string::npos);
    EXPECT_NE(Report().find("left connection connection from IMsgStore::Advise ticket "),
              std::string::npos);
    EXPECT_EQ(table->Unadvise(first), S_OK);
    EXPECT_EQ(store->Unadvise(second), S_OK);
    EXPECT_EQ(Counts().connectionsHanded, 2U);
    EXPECT_EQ(Counts().connectionsLeft, 0U);
}

TEST_F(LedgerTest, ReportGoesToTheDebuggerAsWell)
{
    Start();
    g_debuggerText.clear();
    void* handler = AddVectoredExceptionHandler(1, TakeDebuggerText);
    Stop();
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(g_debuggerText.find("mapistore: ledger process " +
                                  std::to_string(GetCurrentProcessId()) + "\n"),
              0U)
        << g_debuggerText;
    EXPECT_NE(g_debuggerText.find("mapistore: summary handed interfaces "), std::string::npos)
        << g_debuggerText;
}

} // namespace
