#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "RecordingSink.h"
#include "TestPaths.h"

using namespace mapitest;

namespace
{

#define DT_WIDEN(text) L##text
#define DT_WIDE(text) DT_WIDEN(text)

/// A writing process over the store of the test.
class CWriter
{
public:
    CWriter(const std::wstring& store, const std::wstring& name, int count)
    {
        const std::wstring event = L"mapistore-writer-" + std::to_wstring(GetCurrentProcessId()) +
                                   L"-" + std::to_wstring(++s_number);
        m_ready = CreateEventW(nullptr, TRUE, FALSE, event.c_str());
        SetEnvironmentVariableW(L"MAPISTORE_FOLDER", store.c_str());
        std::wstring command = L"\"Z:" DT_WIDE(DT_BINARY_DIR) L"/tests/mapistore_writer.exe\" " +
                               name + L" " + std::to_wstring(count) + L" " + event;
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        EXPECT_TRUE(CreateProcessW(nullptr,
                                   command.data(),
                                   nullptr,
                                   nullptr,
                                   FALSE,
                                   0,
                                   nullptr,
                                   nullptr,
                                   &startup,
                                   &m_process));
        SetEnvironmentVariableW(L"MAPISTORE_FOLDER", nullptr);
    }
    ~CWriter()
    {
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
        CloseHandle(m_ready);
    }
    CWriter(const CWriter&) = delete;
    CWriter& operator=(const CWriter&) = delete;

    /// Until the first message stands; false when the process ended before.
    bool WaitReady() const
    {
        HANDLE handles[] = {m_ready, m_process.hProcess};
        return WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0;
    }
    /// Lets it run for so long at most, then ends it the hard way.
    void KillAfter(DWORD timeMs) const
    {
        WaitForSingleObject(m_process.hProcess, timeMs);
        TerminateProcess(m_process.hProcess, 99);
        WaitForSingleObject(m_process.hProcess, INFINITE);
    }
    DWORD Wait() const
    {
        WaitForSingleObject(m_process.hProcess, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(m_process.hProcess, &code);
        return code;
    }

private:
    static inline int s_number = 0;
    HANDLE m_ready = nullptr;
    PROCESS_INFORMATION m_process{};
};

class DiskTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        // Thousands of rows a round: guard pages for each value would only cost time here.
        ASSERT_EQ(MapiStoreConfigure(L"Guard", nullptr), S_OK);
        WriteDocument(UsualDocument(""));
    }
    /// Subject by identifier of what lies in the inbox; fails for a message whose twins differ.
    std::map<ULONG64, std::wstring> Inbox()
    {
        const TableRef table = Contents(4);
        CTags columns{PR_ENTRYID, PR_SUBJECT_W, PR_COMMENT_W};
        EXPECT_EQ(table->SetColumns(columns, 0), S_OK);
        const CRows rows = AllRows(table);
        std::map<ULONG64, std::wstring> found;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            const SPropValue* values = rows[i].lpProps;
            ULONG64 id = 0;
            std::memcpy(&id, values[0].Value.bin.lpb + 24, sizeof(id));
            if (values[1].ulPropTag != PR_SUBJECT_W || values[2].ulPropTag != PR_COMMENT_W)
            {
                ADD_FAILURE() << "a message without its properties";
                continue;
            }
            EXPECT_STREQ(values[1].Value.lpszW, values[2].Value.lpszW);
            EXPECT_TRUE(found.emplace(id, values[1].Value.lpszW).second);
        }
        EXPECT_EQ(found.size(), rows.Count());
        return found;
    }
};

TEST_F(DiskTest, ChangeOnTheDiskBecomesANotification)
{
    ASSERT_EQ(MapiStoreConfigure(L"Watch", L"1"), S_OK);
    Start();
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table = Contents(4);
    mapi64::Connection connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    for (int i = 0; i < 20; ++i)
    {
        WriteDocument(UsualDocument(R"({ "id": )" + std::to_string(100 + i) +
                                    R"(, "folder": 4, "class": "IPM.Note", "properties": {} })"));
        sink.WaitFor(static_cast<size_t>(i == 0 ? 1 : 2 * i + 1));
    }
    const std::vector<HeardEvent> heard = sink.Heard();
    EXPECT_EQ(heard.size(), 39U); // each round but the first deletes one and adds one
    EXPECT_EQ(table->Unadvise(connection), S_OK);
}

TEST_F(DiskTest, WhatAnotherProcessWritesIsHeardOnceAndInOrder)
{
    ASSERT_EQ(MapiStoreConfigure(L"Watch", L"1"), S_OK);
    Start();
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    TableRef table = Contents(4);
    CTags columns{PR_SUBJECT_W};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    mapi64::Connection connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    {
        const CWriter writer(StorePath(), L"other", 10);
        EXPECT_EQ(writer.Wait(), 0U);
    }
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    // Whatever was seen on the way, adding and deleting leave what stands.
    const std::map<ULONG64, std::wstring> inbox = Inbox();
    EXPECT_EQ(inbox.size(), 7U);
    std::set<std::string> rows;
    const auto settled = [&] {
        rows.clear();
        for (const HeardEvent& event : sink.Heard())
        {
            if (event.tableEvent == TABLE_ROW_ADDED)
            {
                EXPECT_TRUE(rows.insert(event.index).second);
            }
            else
            {
                EXPECT_EQ(rows.count(event.index), 1U);
            }
            if (event.tableEvent == TABLE_ROW_DELETED)
            {
                rows.erase(event.index);
            }
        }
        return rows.size() == inbox.size();
    };
    while (!settled())
    {
        sink.WaitFor(sink.Heard().size() + 1);
    }
    EXPECT_EQ(table->Unadvise(connection), S_OK);
}

TEST_F(DiskTest, ProcessesThatWriteAtOnceKeepEachOthersMessages)
{
    constexpr int kProcesses = 4;
    constexpr int kMessages = 15;
    {
        std::vector<std::unique_ptr<CWriter>> writers;
        for (int i = 0; i < kProcesses; ++i)
        {
            writers.push_back(
                std::make_unique<CWriter>(StorePath(), L"p" + std::to_wstring(i), kMessages));
        }
        for (const auto& writer : writers)
        {
            EXPECT_EQ(writer->Wait(), 0U);
        }
    }
    Start();
    std::map<std::wstring, int> seen;
    for (const auto& [id, subject] : Inbox())
    {
        ++seen[subject];
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(kProcesses) * 10U);
    for (int i = 0; i < kProcesses; ++i)
    {
        for (int number = 0; number < kMessages; ++number)
        {
            const std::wstring subject =
                L"p" + std::to_wstring(i) + L" " + std::to_wstring(number) + L" changed";
            EXPECT_EQ(seen[subject], number % 3 == 2 ? 0 : 1);
        }
    }
}

TEST_F(DiskTest, ThousandKillsAtRandomMomentsNeverTearTheStore)
{
    constexpr int kKills = 1000;
    Start();
    std::mt19937 random(42);
    std::map<ULONG64, std::wstring> before;
    int progressed = 0;
    for (int round = 0; round < kKills && !HasFailure(); ++round)
    {
        {
            const CWriter writer(StorePath(), L"w" + std::to_wstring(round), 0);
            ASSERT_TRUE(writer.WaitReady());
            writer.KillAfter(random() % 25);
        }
        ASSERT_EQ(MapiStoreRefresh(), S_OK);
        EXPECT_EQ(Report().find("note store.json"), std::string::npos) << Report();
        const std::map<ULONG64, std::wstring> after = Inbox();
        // What an earlier round left is not this round's to change.
        for (const auto& [id, subject] : before)
        {
            const auto still = after.find(id);
            ASSERT_NE(still, after.end()) << round;
            EXPECT_EQ(still->second, subject) << round;
        }
        EXPECT_GT(after.size(), before.size());
        progressed += after.size() > before.size() + 1 ? 1 : 0;
        before = after;
        if (before.size() > 60)
        {
            WriteDocument(UsualDocument(""));
            ASSERT_EQ(MapiStoreRefresh(), S_OK);
            before.clear();
        }
    }
    // The kills have to fall at different places, or they prove little.
    EXPECT_GT(progressed, kKills / 10);
}

TEST_F(DiskTest, RangesInTheTextStayRightOverManyChanges)
{
    Start();
    std::mt19937 random(5);
    FolderRef inbox = OpenFolder(4);
    std::map<ULONG64, std::wstring> model;
    const auto idOf = [](IMessage* message) {
        const CHeld<SPropValue> id = GetProp(message, PR_ENTRYID);
        ULONG64 number = 0;
        std::memcpy(&number, id->Value.bin.lpb + 24, sizeof(number));
        return number;
    };
    const auto set = [](IMessage* message, const std::wstring& text) {
        SPropValue values[2] = {};
        values[0].ulPropTag = PR_SUBJECT_W;
        values[1].ulPropTag = PR_COMMENT_W;
        values[0].Value.lpszW = const_cast<wchar_t*>(text.c_str());
        values[1].Value.lpszW = values[0].Value.lpszW;
        EXPECT_EQ(message->SetProps(2, values, nullptr), S_OK);
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    };
    for (int i = 0; i < 300; ++i)
    {
        const std::wstring text(random() % 40, static_cast<wchar_t>(L'a' + random() % 26));
        const auto kind = random() % 10;
        if (kind < 5 || model.empty())
        {
            MessageRef message;
            ASSERT_EQ(inbox->CreateMessage(nullptr, 0, message.Put()), S_OK);
            set(message.Get(), text);
            model[idOf(message.Get())] = text;
            continue;
        }
        auto chosen = model.begin();
        std::advance(chosen, random() % model.size());
        if (kind < 8)
        {
            const MessageRef message = OpenMessage(chosen->first);
            set(message.Get(), text);
            chosen->second = text;
            continue;
        }
        std::string id = MessageId(chosen->first);
        SBinary binary{32, reinterpret_cast<BYTE*>(id.data())};
        ENTRYLIST list{1, &binary};
        EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
        model.erase(chosen);
    }
    EXPECT_EQ(Inbox(), model);
    inbox.Reset();
    Stop();
    Start();
    EXPECT_EQ(Inbox(), model);
}

} // namespace
