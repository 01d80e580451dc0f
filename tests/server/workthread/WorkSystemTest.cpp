// What the work thread asks of the system: the trim behind each task, the wait between the tasks, its own
// start.

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>

#include "AtMemory.h"
#include "EventMessages.h"
#include "SystemCalls.h"
#include "WorkFixture.h"

extern "C" void __real_at_mem_free(void* block) noexcept; // NOLINT
extern "C" void __wrap_at_mem_free(void* block) noexcept; // NOLINT

namespace
{

constexpr SIZE_T kEverything = static_cast<SIZE_T>(-1);

std::atomic<void*> g_watchedBlock{nullptr};
CMailScript* g_notes = nullptr;

class WorkSystemTest : public WorkThreadTest
{
protected:
    void SetUp() override { g_notes = &m_script; }
    void TearDown() override
    {
        WorkThreadTest::TearDown();
        g_watchedBlock = nullptr;
        g_notes = nullptr;
    }

    /// Brings the mail system up and waits until the thread is back at its wait.
    void StartIdle()
    {
        m_script.init = [this](ULONG, ULONG) -> ULONG {
            m_workThread = GetCurrentThreadId();
            m_waits = m_calls.WaitsOf(m_workThread);
            return 0;
        };
        StartReady();
        m_idle = m_calls.NextWaitOf(m_workThread, m_waits++);
    }

    /// Waits until the thread has gone round once more.
    void WaitForPass() { m_calls.NextWaitOf(m_workThread, m_waits++); }

    /// Notes trims between the calls of the mail system, as "Trim()".
    void NoteTrims()
    {
        m_calls.trimContext = &m_script;
        m_calls.onTrim = [](void* script) { static_cast<CMailScript*>(script)->Note("Trim()"); };
    }

    /// A text whose release is noted as "Free()".
    static std::uint64_t WatchedText(WStringView text)
    {
        const std::uint64_t param = TaskText(text);
        g_watchedBlock = reinterpret_cast<void*>(param);
        return param;
    }

    CSystemCalls m_calls;
    DWORD m_workThread = 0;
    std::size_t m_waits = 0;     ///< how many the thread had begun when it was seen last
    CSystemCalls::Wait m_idle{}; ///< that of the idle thread
};

} // namespace

void __wrap_at_mem_free(void* block) noexcept
{
    if (block != nullptr && g_watchedBlock.load() == block)
    {
        g_watchedBlock = nullptr;
        g_notes->Note("Free()");
    }
    __real_at_mem_free(block);
}

TEST_F(WorkSystemTest, WorkingSetIsTrimmedBehindEveryTaskOnTheWorkThread)
{
    StartReady();
    constexpr std::size_t kTypes = 23;
    for (int type = 1; type < static_cast<int>(kTypes); type++)
    {
        if (type != static_cast<int>(TaskType::Release))
        {
            Queue(static_cast<TaskType>(type));
        }
    }
    m_calls.TrimsOnce(kTypes - 1);

    ReleaseWorkThread(false);

    const std::vector<CSystemCalls::Trim> trims = m_calls.TrimsOnce(kTypes);
    EXPECT_EQ(trims.size(), kTypes) << "one trim a task, the last of them behind the release";
    for (const CSystemCalls::Trim& trim : trims)
    {
        EXPECT_EQ(trim.process, GetCurrentProcess());
        EXPECT_EQ(trim.minimum, kEverything);
        EXPECT_EQ(trim.maximum, kEverything);
        EXPECT_EQ(trim.threadId, m_script.ThreadOfCall(0));
    }
}

TEST_F(WorkSystemTest, TaskIsRunThenFreedThenTrimmedBehindBeforeTheNextOneBegins)
{
    NoteTrims();
    StartReady();
    m_calls.TrimsOnce(1);
    const CSignal running;
    const CSignal goOn;
    m_script.listAppointment = [&](WString&) -> ULONG {
        running.Set();
        goOn.Wait();
        return 0;
    };
    Queue(TaskType::GetAppointments);
    running.Wait();
    WorkTask task = Task(TaskType::GetAppointment);
    task.Param1 = WatchedText(WTEXT("00AB"));
    Queue(task);
    Queue(TaskType::GetPersonalContact);
    goOn.Set();
    m_calls.TrimsOnce(4);

    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)",
                                        "Trim()",
                                        "ListAppointment(0, 0)",
                                        "Trim()",
                                        "GetAppointment(00AB)",
                                        "Free()",
                                        "Trim()",
                                        "GetPersonalContact()",
                                        "Trim()"}));
}

TEST_F(WorkSystemTest, PassWithoutATaskTrimsNothing)
{
    StartIdle();
    ASSERT_EQ(m_calls.TrimsOnce(1).size(), 1U);

    ReleaseSemaphore(m_idle.first, 1, nullptr);
    WaitForPass();

    EXPECT_EQ(m_calls.TrimsOnce(1).size(), 1U);
}

TEST_F(WorkSystemTest, ThreadWaitsForItsSemaphoreOrAnyInputOrFiveSeconds)
{
    StartIdle();

    EXPECT_EQ(m_idle.count, 1U);
    EXPECT_NE(ReleaseSemaphore(m_idle.first, 1, nullptr), FALSE);
    EXPECT_EQ(m_idle.waitsForAll, FALSE);
    EXPECT_EQ(m_idle.timeoutMs, 5000U);
    EXPECT_EQ(m_idle.wakeMask, 0x4FFU);
}

TEST_F(WorkSystemTest, InputOrTheEndOfTheWaitTakesNoTaskEvenIfOneWaits)
{
    StartIdle();
    {
        const CWorkThreadUse work;
        work->PushPendingWork(Task(TaskType::GetAppointments, 2)); // and the semaphore stays down
    }

    EXPECT_NE(PostThreadMessageW(m_workThread, WM_APP, 0, 0), FALSE);
    WaitForPass();
    EXPECT_EQ(m_script.Calls().back(), "Init(1, 1)") << "a message is no reason to run tasks";

    WaitForPass();
    EXPECT_EQ(m_script.Calls().back(), "Init(1, 1)") << "nor is the end of the wait";

    ReleaseSemaphore(m_idle.first, 1, nullptr);
    EXPECT_EQ(m_inbox.Next().wParam, 2U);
    EXPECT_EQ(m_script.Calls().back(), "ListAppointment(0, 0)");
}

TEST_F(WorkSystemTest, ThreadThatCannotBeStartedIsTracedAndTheTasksPileUp)
{
    m_calls.threadError = ERROR_NOT_ENOUGH_MEMORY;
    Start();
    m_calls.threadError = 0;

    EXPECT_TRUE(m_trace.Has(0, "Create thread-work failed. Error Code=8"));
    Queue(TaskType::GetAppointments, 7);
    ReleaseWorkThread(false); // has nobody to wait for
    EXPECT_EQ(m_trace.Count("Time out when ReleaseMAPI not hibernate"), 0U);
    EXPECT_EQ(m_trace.Count("PopPendingWork tasktype[3]"), 0U);
    EXPECT_TRUE(m_inbox.TakeAll().empty());

    EXPECT_NE(g_pWorkThread.load(), nullptr);
    DestroyWorkThreadAtExit();
    EXPECT_EQ(m_script.Calls(), (std::vector<std::string>{"ClearDataStore()", "Destroy()"}));
}

TEST_F(WorkSystemTest, TaskBehindTheEndIsFreedAndNotRun)
{
    StartReady();
    m_script.freeLib = [] {
        WorkTask task = Task(TaskType::GetAppointment, 9);
        task.Param1 = WatchedText(WTEXT("late"));
        Queue(task);
    };

    ReleaseWorkThread(false);

    EXPECT_EQ(m_trace.Count("PopPendingWork tasktype[6]"), 1U);
    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{
                  "Init(1, 1)", "ClearDataStore()", "FreeLib()", "Free()", "Destroy()"}));
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}
