#include "WorkFixture.h"

#include "EventMessages.h"

void WorkThreadTest::TearDown()
{
    ReleaseWorkThread(false);
    EXPECT_EQ(g_pWorkThread.load(), nullptr) << "the work thread did not end";
}

void WorkThreadTest::Start()
{
    ASSERT_TRUE(EnsureWorkThread());
}

void WorkThreadTest::StartReady()
{
    Start();
    {
        const CWorkThreadUse work;
        work->AddInitWork(111, MailTypeOutlook, InitTypeCalendar);
    }
    const InboxMessage answer = m_inbox.Next();
    ASSERT_EQ(answer.message, static_cast<UINT>(WM_EVENT_INITIALIZE));
    ASSERT_EQ(answer.lParam, 0);
}

WorkTask WorkThreadTest::Task(TaskType type, ULONG sequence)
{
    WorkTask task;
    task.eTaskType = type;
    task.ulSequenceID = sequence;
    return task;
}

void WorkThreadTest::Queue(const WorkTask& task)
{
    const CWorkThreadUse work;
    ASSERT_TRUE(static_cast<bool>(work));
    work->AddWork(task);
}

void WorkThreadTest::Flush()
{
    const CSignal done;
    m_script.searchContacts = [&done](std::vector<ContactRecord>&) -> ULONG {
        done.Set();
        return 0;
    };
    WorkTask task = Task(TaskType::SearchForContacts, 0xF105);
    task.Param1 = TaskText(WTEXT("flush"));
    Queue(task);
    done.Wait();
    while (m_inbox.Next().wParam != 0xF105)
    {
    }
    m_script.searchContacts = nullptr;
}
