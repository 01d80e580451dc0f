#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "EventMessages.h"
#include "EventWindow.h"
#include "LiveBlocks.h"
#include "StartLine.h"
#include "WorkFixture.h"

namespace
{

constexpr const wchar_t* kSemaphoreName = L"dtOIEx-aWorkThread-Semaphore-WorkPending-x64";

class WorkQueueingTest : public WorkThreadTest
{
protected:
    /// Keeps the work thread inside a task until Unblock.
    void Block()
    {
        m_script.listAppointment = [this](WString&) -> ULONG {
            m_blocked.Set();
            m_goOn.Wait();
            return 0;
        };
        Queue(TaskType::GetAppointments, 0xB10C);
        m_blocked.Wait();
    }

    void Unblock() const { m_goOn.Set(); }

    CSignal m_blocked;
    CSignal m_goOn;
};

} // namespace

TEST_F(WorkQueueingTest, ConstructionTracesStatusSemaphoreAndThread)
{
    Start();

    const std::vector<std::string> messages = m_trace.Messages();
    ASSERT_GE(messages.size(), 3U);
    EXPECT_EQ(messages[0], "3 Status = [0x1]");
    EXPECT_EQ(messages[1], "2 dtOIEx-aWorkThread-Semaphore-WorkPending-x64");
    EXPECT_EQ(messages[2].rfind("2 Create work thread-work succeed. ThreadID=", 0), 0U);
    EXPECT_NE(messages[2].find(" HThread="), std::string::npos);
}

TEST_F(WorkQueueingTest, SemaphoreIsOpenToOtherProcessesUnderItsName)
{
    Start();

    const CHandle semaphore(OpenSemaphoreW(SYNCHRONIZE, FALSE, kSemaphoreName));

    EXPECT_TRUE(static_cast<bool>(semaphore));
}

TEST_F(WorkQueueingTest, EmptyWakeUpDoesNothing)
{
    StartReady();
    const CHandle semaphore(OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, kSemaphoreName));
    m_trace.Clear();

    ReleaseSemaphore(semaphore.Get(), 1, nullptr);
    Flush();

    EXPECT_EQ(m_script.Calls().size(), 2U);
    EXPECT_EQ(m_trace.Messages().front(), "3 PushPendingWork tasktype[20]");
}

TEST_F(WorkQueueingTest, UnknownTypeGoesOnNoListButWakesTheThreadAllTheSame)
{
    StartReady();
    Block();
    const CHandle semaphore(OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, kSemaphoreName));

    Queue(static_cast<TaskType>(23));

    LONG count = 0;
    EXPECT_NE(ReleaseSemaphore(semaphore.Get(), 1, &count), FALSE);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(m_trace.Has(3, "PushPendingWork tasktype[23]"));
    Unblock();
    Flush();
    EXPECT_EQ(m_trace.Count("PopPendingWork tasktype[23]"), 0U);
}

TEST_F(WorkQueueingTest, LastOf256PushesWithoutAConsumerTriesFourTimesAndKeepsTheTask)
{
    StartReady();
    Block();
    m_script.keepsNotes = false;
    int deleted = 0;
    m_script.deleteMsgInfo = [&deleted](WString&) -> ULONG {
        deleted++;
        return 0;
    };
    for (int i = 0; i < 255; i++)
    {
        Queue(TaskType::DeleteAppt);
    }
    EXPECT_EQ(m_trace.Count("ReleaseSemaphore-work failed, Error Code=298, count=4"), 0U);
    const DWORD before = GetTickCount();

    Queue(TaskType::DeleteAppt);

    EXPECT_GE(GetTickCount() - before, 140U);
    EXPECT_EQ(m_trace.Count("ReleaseSemaphore-work failed, Error Code=298, count=4"), 1U);
    EXPECT_TRUE(m_trace.Has(0, "ReleaseSemaphore-work failed, Error Code=298, count=4"));
    Unblock();
    Flush();
    EXPECT_EQ(deleted, 256);
}

TEST_F(WorkQueueingTest, FirstListRunsBeforeTheLowList)
{
    StartReady();
    Block();
    Queue(TaskType::GetPersonalContact, 1);
    Queue(TaskType::GetAppointment, 2);
    Queue(TaskType::ResolveByUri, 3);
    Queue(TaskType::GetRecentEmail, 4);
    Unblock();

    std::vector<WPARAM> order;
    for (int i = 0; i < 5; i++)
    {
        order.push_back(m_inbox.Next().wParam);
    }
    EXPECT_EQ(order, (std::vector<WPARAM>{0xB10C, 2, 4, 1, 3}));
}

TEST_F(WorkQueueingTest, HundredThousandTasksOfFourThreadsAllRunAndGiveTheirMemoryBack)
{
    constexpr int kProducers = 4;
    constexpr int kTasksEach = 25000;
    StartReady();
    m_script.keepsNotes = false;
    std::atomic<int> ran{0};
    const CSignal allRan;
    m_script.deleteMsgInfo = [&](WString&) -> ULONG {
        if (++ran == kProducers * kTasksEach)
        {
            allRan.Set();
        }
        return 0;
    };
    ITraceRoute* const capture = SetTraceRoute(nullptr); // its lines would be the memory that grows
    const auto produce = [](int count) {
        CStartLine start(kProducers);
        std::vector<std::thread> producers;
        for (int p = 0; p < kProducers; p++)
        {
            producers.emplace_back([&start, count] {
                start.ArriveAndWait();
                for (int i = 0; i < count; i++)
                {
                    WorkTask task = Task(TaskType::DeleteAppt);
                    task.Param2 = TaskText(WTEXT("0102030405060708"));
                    task.Param3 = TaskText(WTEXT("A1A2A3A4A5A6A7A8"));
                    Queue(task);
                }
            });
        }
        for (std::thread& producer : producers)
        {
            producer.join();
        }
    };
    const long before = LiveBlocks();

    produce(kTasksEach);
    allRan.Wait();

    EXPECT_EQ(ran.load(), kProducers * kTasksEach);
    // The last task's texts are freed behind the signal; the next task comes after that.
    const CSignal behind;
    m_script.getMsgInfo = [&behind](WString&) -> ULONG {
        behind.Set();
        return 0;
    };
    Queue(TaskType::AddAppt);
    behind.Wait();
    SetTraceRoute(capture);
    EXPECT_LT(LiveBlocks() - before, 100);
}

TEST_F(WorkQueueingTest, FailedPostLeavesNoBlockBehind)
{
    StartReady();
    Flush();
    const CSignal withoutWindow;
    const CSignal withDeadWindow;
    const CSignal* signal = &withoutWindow;
    m_script.deleteMsgInfo = [&signal](WString&) -> ULONG {
        signal->Set();
        return 0;
    };
    m_script.keepsNotes = false;
    ITraceRoute* const capture = SetTraceRoute(nullptr);
    const auto runHundred = [this, &signal] {
        for (int i = 0; i < 100; i++)
        {
            Queue(TaskType::GetAppointments);
        }
        Queue(TaskType::DeleteAppt);
        signal->Wait();
    };
    const long before = LiveBlocks();

    SetEventWindowProvider([]() noexcept -> HWND { return nullptr; });
    runHundred();
    SetEventWindowProvider([]() noexcept -> HWND {
        return reinterpret_cast<HWND>(static_cast<LONG_PTR>(0x7FFE)); // nobody's window
    });
    signal = &withDeadWindow;
    runHundred();

    SetTraceRoute(capture);
    EXPECT_LT(LiveBlocks() - before, 10);
}

TEST_F(WorkQueueingTest, PostedEventNeedsNotesAndAPostType)
{
    StartReady();
    const auto post = [](TaskType type, const WCHAR* key) {
        const CWorkThreadUse work;
        return work->AddPostEventWork(type, key);
    };

    EXPECT_EQ(post(TaskType::PostAdd, L"key"), E_FAIL) << "Outlook is in force";
    m_script.mailType = MailTypeNotes;
    EXPECT_EQ(post(TaskType::AddAppt, L"key"), E_FAIL);
    EXPECT_EQ(post(TaskType::PostDelete, L"key"), S_OK);
    EXPECT_EQ(post(TaskType::PostUpdate, nullptr), S_OK);
    EXPECT_EQ(post(TaskType::PostAdd, L"key"), S_OK);
    Flush();
    EXPECT_EQ(m_script.Calls().at(1), "DeleteMsgInfoByTableSink(key)");
    EXPECT_EQ(m_trace.Count("CallModifyNoteApp"), 2U);
}

TEST_F(WorkQueueingTest, PostedEventWithoutAControllerFails)
{
    const MailSwitchFactory scripted = SetMailSwitchFactory(nullptr);
    Start();
    SetMailSwitchFactory(scripted);

    EXPECT_EQ(CWorkThreadUse()->AddPostEventWork(TaskType::PostAdd, L"key"), E_FAIL);
}

TEST_F(WorkQueueingTest, ProfileIsAskedOnTheCallersThreadOnceReady)
{
    m_script.getProfile = [](BSTR* profile) -> ULONG {
        *profile = SysAllocString(L"<CurrentOLProfile/>");
        return 0;
    };
    BSTR profile = nullptr;
    Start();

    CWorkThreadUse()->GetProfileInfo(&profile);
    EXPECT_EQ(profile, nullptr) << "before the bring-up the value stays";

    StartReady();
    CWorkThreadUse()->GetProfileInfo(&profile);
    EXPECT_STREQ(profile, L"<CurrentOLProfile/>");
    EXPECT_EQ(m_script.ThreadOfCall(1), GetCurrentThreadId());
    SysFreeString(profile);
}

TEST_F(WorkQueueingTest, DroppedFolderTakesItsWaitingNotificationsAlong)
{
    StartReady();
    Block();
    auto* const gone = reinterpret_cast<IMAPIFolder*>(0x100);
    for (const std::uint64_t folder : {0x100ULL, 0x200ULL})
    {
        WorkTask task = Task(TaskType::AddAppt);
        task.Param1 = folder;
        task.Param2 = Text(WTEXT("E"));
        task.Param3 = Text(WTEXT("I"));
        Queue(task);
    }

    CWorkThreadUse()->DropTableWork(gone);
    Unblock();
    Flush();

    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)",
                                        "ListAppointment(0, 0)",
                                        "GetMsgInfoByTableSink(512, E, I)",
                                        "SearchContacts(flush, 0)"}));
}

TEST(WorkThreadFunc, WithoutItsObjectItTracesAndEnds)
{
    CTraceCapture trace;

    EXPECT_EQ(WorkThreadFunc(nullptr), 0U);

    EXPECT_EQ(trace.Messages(), (std::vector<std::string>{"0 WorkThreadFunc, pWorkThread==NULL"}));
}
