#include <windows.h>

#include <gtest/gtest.h>

#include <thread>

#include "EventMessages.h"
#include "MapiDataStore.h"
#include "WorkFixture.h"

namespace
{

using WorkReleaseTest = WorkThreadTest;

} // namespace

TEST_F(WorkReleaseTest, EndingClearsTheStoreOnTheCallersThreadAndFreesTheLibraryOnTheWorkThread)
{
    StartReady();

    ReleaseWorkThread(false);

    EXPECT_EQ(
        m_script.Calls(),
        (std::vector<std::string>{"Init(1, 1)", "ClearDataStore()", "FreeLib()", "Destroy()"}));
    EXPECT_EQ(m_script.ThreadOfCall(1), GetCurrentThreadId());
    EXPECT_EQ(m_script.ThreadOfCall(2), m_script.ThreadOfCall(0));
    EXPECT_EQ(m_script.ThreadOfCall(3), m_script.ThreadOfCall(0));
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_TRUE(MapiDataStore().IsReleasing());
    EXPECT_TRUE(m_inbox.TakeAll().empty()) << "no event announces the end";
}

TEST_F(WorkReleaseTest, ReturnsWhenTheThreadHasEnded)
{
    StartReady();
    m_trace.Clear();
    const CHandle thread(
        OpenThread(SYNCHRONIZE | THREAD_QUERY_INFORMATION, FALSE, m_script.ThreadOfCall(0)));

    ReleaseWorkThread(false);

    EXPECT_EQ(WaitForSingleObject(thread.Get(), 0), WAIT_OBJECT_0);
    DWORD exitCode = STILL_ACTIVE;
    EXPECT_NE(GetExitCodeThread(thread.Get(), &exitCode), FALSE);
    EXPECT_EQ(exitCode, 0U);
    const std::vector<std::string> messages = m_trace.Messages();
    EXPECT_EQ(messages,
              (std::vector<std::string>{"3 ClearPendingWork",
                                        "3 PushPendingWork tasktype[9]",
                                        "3 PopPendingWork tasktype[9]",
                                        "3 CallReleaseMapi",
                                        "3 ClearPendingWork",
                                        "2 work thread end!"}));
}

TEST_F(WorkReleaseTest, EventsAreSilencedThenTheListsClearedThenTheStoreThenTheReleaseQueued)
{
    StartReady();
    m_trace.Clear();
    bool wasReleasing = false;
    std::vector<std::string> before;
    m_script.clearDataStore = [&] {
        wasReleasing = MapiDataStore().IsReleasing();
        before = m_trace.Messages();
    };

    ReleaseWorkThread(false);

    EXPECT_TRUE(wasReleasing);
    EXPECT_EQ(before, (std::vector<std::string>{"3 ClearPendingWork"}));
}

TEST_F(WorkReleaseTest, DialogThatHoldsTheWorkThreadIsClosedAndTheReleaseGoesOn)
{
    StartReady();
    const CSignal shown;
    bool wasReleasing = false;
    m_script.listAppointment = [&](WString&) -> ULONG {
        const HWND dialog = CreateWindowExW(
            0, L"STATIC", L"Logon", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        shown.Set();
        MSG message;
        while (IsWindow(dialog) && GetMessageW(&message, nullptr, 0, 0) > 0)
        {
            wasReleasing = wasReleasing || MapiDataStore().IsReleasing();
            DispatchMessageW(&message);
        }
        return 0;
    };
    Queue(TaskType::GetAppointments, 112);
    shown.Wait();
    const HWND own = CreateWindowExW(
        0, L"STATIC", L"client", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);

    ReleaseWorkThread(false);

    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_TRUE(wasReleasing) << "the event of the task that was held has to find the flag";
    EXPECT_EQ(m_trace.Count("Time out when ReleaseMAPI not hibernate"), 0U);
    m_inbox.TakeAll();
    EXPECT_TRUE(IsWindow(own)) << "windows of the caller are not its business";
    DestroyWindow(own);
}

TEST_F(WorkReleaseTest, WithoutAWorkThreadThereIsNothingToRelease)
{
    MapiDataStore().SetReleasing(0);

    ReleaseWorkThread(false);

    EXPECT_FALSE(MapiDataStore().IsReleasing());
    EXPECT_TRUE(m_trace.Lines().empty());
}

TEST_F(WorkReleaseTest, HibernateKeepsTheThreadAndTheObject)
{
    StartReady();
    CWorkThread* const object = g_pWorkThread.load();

    ReleaseWorkThread(true);
    Flush();

    EXPECT_EQ(g_pWorkThread.load(), object);
    EXPECT_EQ(CWorkThreadUse()->Status(), 1U);
    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{
                  "Init(1, 1)", "ClearDataStore()", "FreeLib()", "SearchContacts(flush, 0)"}));
    EXPECT_TRUE(m_trace.Has(3, "PushPendingWork tasktype[8]"));
}

TEST_F(WorkReleaseTest, AfterAHibernateTheThreadCanBeBroughtUpAgainButStaysMute)
{
    StartReady();
    ReleaseWorkThread(true);

    {
        const CWorkThreadUse work;
        work->AddInitWork(112, 1, 1);
    }
    Flush();

    EXPECT_EQ(CWorkThreadUse()->Status(), 0U);
    EXPECT_TRUE(MapiDataStore().IsReleasing()) << "only a new work thread lets events through";
    EXPECT_TRUE(m_inbox.TakeAll().empty()) << "no answer to the second bring-up";
}

TEST_F(WorkReleaseTest, NewWorkThreadClearsTheReleasingFlag)
{
    StartReady();
    ReleaseWorkThread(false);
    ASSERT_TRUE(MapiDataStore().IsReleasing());

    Start();

    EXPECT_FALSE(MapiDataStore().IsReleasing());
}

TEST_F(WorkReleaseTest, RunningTaskFinishesAndWaitingOnesAreDropped)
{
    StartReady();
    const CSignal running;
    const CSignal goOn;
    m_script.listAppointment = [&](WString& xml) -> ULONG {
        running.Set();
        goOn.Wait();
        xml = WTEXT("<late/>");
        return 0;
    };
    Queue(TaskType::GetAppointments, 112);
    running.Wait();
    Queue(TaskType::GetAppointments, 113);
    Queue(TaskType::GetPersonalContact, 114);

    ReleaseWorkThread(true);
    goOn.Set();
    Flush();

    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)",
                                        "ListAppointment(0, 0)",
                                        "ClearDataStore()",
                                        "FreeLib()",
                                        "SearchContacts(flush, 0)"}));
}

TEST_F(WorkReleaseTest, HungTaskIsWaitedForTenSecondsAndNoLonger)
{
    StartReady();
    const CSignal running;
    const CSignal goOn;
    m_script.listAppointment = [&](WString&) -> ULONG {
        running.Set();
        goOn.Wait();
        return 0;
    };
    Queue(TaskType::GetAppointments, 112);
    running.Wait();
    const CHandle thread(OpenThread(SYNCHRONIZE, FALSE, m_script.ThreadOfCall(0)));

    ReleaseWorkThread(false);

    EXPECT_TRUE(m_trace.Has(1, "Time out when ReleaseMAPI not hibernate"));
    EXPECT_EQ(WaitForSingleObject(thread.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    goOn.Set();
    // Nobody waits for this end any more, and the object reaches into the script until then.
    EXPECT_EQ(WaitForSingleObject(thread.Get(), 60000), WAIT_OBJECT_0);
}

TEST_F(WorkReleaseTest, FailedBringUpIsAnsweredAndThreeSecondsLaterHibernated)
{
    const CSignal freed;
    m_script.init = [](ULONG, ULONG) -> ULONG { return 0x80080004; };
    m_script.freeLib = [&freed] { freed.Set(); };
    Start();
    const DWORD before = GetTickCount();
    {
        const CWorkThreadUse work;
        work->AddInitWork(111, 1, 1);
        work->AddListAppointmentWork({}, {}, 112);
    }

    const InboxMessage answer = m_inbox.Next();
    EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_INITIALIZE));
    EXPECT_EQ(answer.wParam, 111U);
    EXPECT_EQ(static_cast<ULONG>(answer.lParam), 0x80080004U);
    freed.Wait();
    EXPECT_GE(GetTickCount() - before, 2990U);

    EXPECT_TRUE(MapiDataStore().IsReleasing());
    Flush();
    EXPECT_EQ(CWorkThreadUse()->Status(), 1U);
    EXPECT_TRUE(m_inbox.TakeAll().empty()) << "what waited behind the failure was dropped";

    // Later requests still get their empty document posted; the window drops it.
    Queue(TaskType::GetAppointments, 113);
    EXPECT_EQ(m_inbox.Next().text, WString());
}

TEST_F(WorkReleaseTest, EndAskedForDuringThePauseOfAFailureStillEndsTheThread)
{
    m_script.init = [](ULONG, ULONG) -> ULONG { return 1; };
    Start();
    {
        const CWorkThreadUse work;
        work->AddInitWork(111, 1, 1);
    }
    EXPECT_EQ(m_inbox.Next().lParam, 1);

    ReleaseWorkThread(false);

    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_EQ(m_trace.Count("Time out when ReleaseMAPI not hibernate"), 0U);
}

TEST_F(WorkReleaseTest, BringUpDuringAReleaseIsNotAnsweredEvenWhenItFails)
{
    m_script.init = [](ULONG, ULONG) -> ULONG {
        MapiDataStore().SetReleasing(1);
        return 0x80080003;
    };
    Start();
    {
        const CWorkThreadUse work;
        work->AddInitWork(111, 1, 1);
    }
    Flush();

    EXPECT_TRUE(m_inbox.TakeAll().empty());
    EXPECT_EQ(CWorkThreadUse()->Status(), 0x80080003U);
    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)", "SearchContacts(flush, 0)"}))
        << "no hibernate follows";
}

TEST_F(WorkReleaseTest, WithoutAControllerTheBringUpAnswersTheOldStatus)
{
    const MailSwitchFactory scripted = SetMailSwitchFactory(nullptr);
    Start();
    SetMailSwitchFactory(scripted);
    {
        const CWorkThreadUse work;
        work->AddInitWork(111, 1, 1);
    }

    EXPECT_EQ(m_inbox.Next().lParam, 1);
}

TEST_F(WorkReleaseTest, ManyCallersMayQueueWhileTheThreadEnds)
{
    m_script.keepsNotes = false;
    for (int round = 0; round < 20; round++)
    {
        Start();
        std::atomic<bool> stop{false};
        std::vector<std::thread> callers;
        for (int i = 0; i < 3; i++)
        {
            callers.emplace_back([&stop] {
                while (!stop)
                {
                    const CWorkThreadUse work;
                    if (work)
                    {
                        WorkTask task;
                        task.eTaskType = TaskType::DroppedText;
                        task.Param1 = TaskText(WTEXT("text"));
                        work->AddWork(task);
                    }
                }
            });
        }
        ReleaseWorkThread(false);
        stop = true;
        for (std::thread& caller : callers)
        {
            caller.join();
        }
        // A task that came behind the clearing of the lists keeps the thread busy, but it ends.
        ReleaseWorkThread(false);
        ASSERT_EQ(g_pWorkThread.load(), nullptr);
    }
}
