#include <algorithm>
#include <random>

#include "RecordingSink.h"

using namespace mapitest;

namespace
{

constexpr ULONG64 kFirst = 100;
constexpr ULONG64 kMessages = 12;

std::string Messages()
{
    std::string text;
    for (ULONG64 id = kFirst; id < kFirst + kMessages; ++id)
    {
        text += (id == kFirst ? "" : ",\n        ");
        text +=
            R"({ "id": )" + std::to_string(id) +
            R"(, "folder": 8, "class": "IPM.Appointment", "properties": { "PR_SUBJECT_W": "No )" +
            std::to_string(id) + "\" } }";
    }
    return text;
}

std::wstring SubjectOf(ULONG64 id)
{
    return L"No " + std::to_wstring(id);
}

class DeleteTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(Messages()));
        Start();
    }
    HRESULT Delete(const std::vector<ULONG64>& ids)
    {
        std::vector<std::string> names;
        for (const ULONG64 id : ids)
        {
            names.push_back(MessageId(id));
        }
        std::vector<SBinary> entries;
        for (std::string& name : names)
        {
            entries.push_back(
                {static_cast<ULONG>(name.size()), reinterpret_cast<BYTE*>(name.data())});
        }
        ENTRYLIST list{static_cast<ULONG>(entries.size()), entries.data()};
        return OpenFolder(8)->DeleteMessages(&list, 0, nullptr, 0);
    }
    /// Reads the document anew: whatever is wrong in it, the logon finds.
    void Restart()
    {
        Stop();
        Start();
    }
    int Revision() const
    {
        const std::string text = ReadDocument();
        const std::string key = "\"revision\": ";
        return std::stoi(text.substr(text.find(key) + key.size()));
    }
    void ExpectLeft(const std::vector<ULONG64>& ids)
    {
        std::vector<std::wstring> subjects;
        std::transform(ids.begin(), ids.end(), std::back_inserter(subjects), SubjectOf);
        EXPECT_EQ(TextColumn(Contents(8), PR_SUBJECT_W), subjects);
    }
};

TEST_F(DeleteTest, OneCallForManyMessagesIsOneChangeOfTheDocument)
{
    const int before = Revision();
    EXPECT_EQ(Delete({100, 101, 104, 106, 107, 108, 110}), S_OK);
    EXPECT_EQ(Revision(), before + 1);
    const std::vector<ULONG64> left = {102, 103, 105, 109, 111};
    ExpectLeft(left);
    Restart();
    ExpectLeft(left);
}

TEST_F(DeleteTest, NeighboursAtTheEndGoWithTheirCommas)
{
    EXPECT_EQ(Delete({111, 109, 110}), S_OK);
    Restart();
    ExpectLeft({100, 101, 102, 103, 104, 105, 106, 107, 108});
}

TEST_F(DeleteTest, AnEmptiedFolderTakesNewMessages)
{
    EXPECT_EQ(OpenFolder(8)->EmptyFolder(0, nullptr, 0), S_OK);
    ExpectLeft({});
    {
        MessageRef message;
        ASSERT_EQ(OpenFolder(8)->CreateMessage(nullptr, 0, message.Put()), S_OK);
        std::wstring subject = L"new";
        SPropValue value{};
        value.ulPropTag = PR_SUBJECT_W;
        value.Value.lpszW = subject.data();
        ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
        ASSERT_EQ(message->SaveChanges(0), S_OK);
    }
    Restart();
    EXPECT_EQ(TextColumn(Contents(8), PR_SUBJECT_W), std::vector<std::wstring>{L"new"});
}

TEST_F(DeleteTest, WhatIsGoneOrNamedTwiceMakesTheAnswerPartial)
{
    EXPECT_EQ(Delete({100, 100, 101}), MAPI_W_PARTIAL_COMPLETION);
    EXPECT_EQ(Delete({101, 102}), MAPI_W_PARTIAL_COMPLETION);
    const int before = Revision();
    EXPECT_EQ(Delete({100, 101}), MAPI_W_PARTIAL_COMPLETION);
    EXPECT_EQ(Revision(), before);
    ExpectLeft({103, 104, 105, 106, 107, 108, 109, 110, 111});
}

TEST_F(DeleteTest, EveryDeletedMessageIsToldOnceInTheOrderOfTheCall)
{
    // Outlives the test: a notification may still be under way when Unadvise returns.
    CRecordingSink& sink = *new CRecordingSink;
    const TableRef table = Contents(8);
    mapi64::Connection connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, &sink, &connection), S_OK);
    EXPECT_EQ(Delete({107, 101, 102}), S_OK);
    const std::vector<HeardEvent> events = sink.WaitFor(3);
    ASSERT_EQ(events.size(), 3U);
    const ULONG64 expected[] = {107, 101, 102};
    for (size_t i = 0; i < events.size(); ++i)
    {
        EXPECT_EQ(events[i].tableEvent, static_cast<ULONG>(TABLE_ROW_DELETED));
        EXPECT_EQ(events[i].index.substr(4),
                  std::string(reinterpret_cast<const char*>(&expected[i]), sizeof(ULONG64)));
    }
    EXPECT_EQ(table->Unadvise(connection), S_OK);
}

TEST_F(DeleteTest, AnyChoiceOfMessagesLeavesTheOthersAndTheirPlaces)
{
    std::mt19937 random(7);
    for (int round = 0; round < 30; ++round)
    {
        Stop();
        WriteDocument(UsualDocument(Messages()));
        Start();
        std::vector<ULONG64> gone;
        std::vector<ULONG64> left;
        for (ULONG64 id = kFirst; id < kFirst + kMessages; ++id)
        {
            (random() % 2 == 0 ? gone : left).push_back(id);
        }
        if (left.empty() || gone.empty())
        {
            continue;
        }
        std::shuffle(gone.begin(), gone.end(), random);
        ASSERT_EQ(Delete(gone), S_OK) << "round " << round;
        // A change finds its message by the place that the deletion moved.
        {
            std::wstring subject = SubjectOf(left.back()) + L" changed";
            const MessageRef message = OpenMessage(left.back());
            SPropValue value{};
            value.ulPropTag = PR_SUBJECT_W;
            value.Value.lpszW = subject.data();
            ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
            ASSERT_EQ(message->SaveChanges(0), S_OK) << "round " << round;
        }
        Restart();
        std::vector<std::wstring> subjects;
        std::transform(left.begin(), left.end(), std::back_inserter(subjects), SubjectOf);
        subjects.back() += L" changed";
        ASSERT_EQ(TextColumn(Contents(8), PR_SUBJECT_W), subjects) << "round " << round;
    }
}

} // namespace
