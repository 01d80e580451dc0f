#pragma once

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <memory>

#include "MailInterface.h"
#include "WorkQueue.h"
#include "WorkTask.h"

/// Everything that reaches the mail system: a queue of tasks, the one thread that drains it, and
/// the mail switch through which that thread speaks.
///
/// Owner:  the process holds at most one, in g_pWorkThread. It ends itself: the task of
///         ReleaseMAPI(false) ends the loop, and the thread then destroys the object. Whoever calls
///         an operation through g_pWorkThread holds a CWorkThreadUse meanwhile.
/// Thread: AddWork and its kin, ClearPendingWork, GetProfileInfo and ReleaseMAPI from any thread. Of
///         the mail switch these reach GetMailType, GetCurProfileInfo and ClearDataStore; all else of
///         it is the work thread's alone.
/// Errors: construction throws for want of memory alone. What else is missing is traced, and the tasks
///         then wait or answer with empty documents.
class CWorkThread
{
public:
    CWorkThread();
    CWorkThread(const CWorkThread&) = delete;
    CWorkThread& operator=(const CWorkThread&) = delete;
    ~CWorkThread();

    /// Queues the task and wakes the thread. The semaphore counts to 255: while it is full the call
    /// tries four times, 50 ms apart, and then leaves the task for the next wake-up.
    void AddWork(const WorkTask& task);
    void PushPendingWork(const WorkTask& task) { m_queue.Push(task); }
    bool PopPendingWork(WorkTask& task) { return m_queue.Pop(task); }
    void ClearPendingWork() { m_queue.Clear(); }

    HRESULT AddInitWork(ULONG sequence, ULONG mailType, ULONG initType);
    HRESULT AddListAppointmentWork(const FILETIME& start, const FILETIME& end, ULONG sequence);
    /// Takes a record filled in by a table sink, with its texts.
    HRESULT AddTableWork(const WorkTask& task);
    /// E_FAIL unless the mail type in force is Notes and `type` is one of the three Post types. A
    /// null key counts as an empty text.
    HRESULT AddPostEventWork(TaskType type, const WCHAR* key);

    /// Drops the waiting notifications of a folder whose subscription ends.
    /// Thread: the work thread, after Unadvise.
    void DropTableWork(IMAPIFolder* folder);

    /// The profile document. Does nothing before the mail system is ready, and `profile` then keeps
    /// what it holds.
    void GetProfileInfo(BSTR* profile);

    /// Silences all events, drops the waiting work and queues the release of the mail system. With
    /// `hibernate` the thread lives on and the call returns at once; without, the thread ends, and
    /// the call waits for that at most ten seconds, unless the work thread itself is the caller.
    /// Does not touch the object once the release is queued. Returns 0.
    DWORD ReleaseMAPI(bool hibernate);

    [[nodiscard]] ULONG Status() const noexcept { return m_dwStatus.load(); }

    /// What Lotus Notes would answer a changed appointment with: posts the document under the change
    /// type that belongs to a Post task, and nothing for any other task.
    static void SendModifyMessage(TaskType type, const WString& xml);

private:
    friend DWORD WINAPI WorkThreadFunc(void* parameter);
    friend void ReleaseWorkThread(bool hibernate) noexcept;
    friend void DestroyWorkThreadAtExit() noexcept;

    void CreateSemaphoreAndThread();
    HANDLE QueueRelease(bool hibernate);
    static void WaitForEnd(HANDLE thread);

    void RunLoop();
    bool WaitForWork();
    void PumpOneMessage();
    void DrainQueue();
    void RunTask(const WorkTask& task);
    void RunChangeTask(const WorkTask& task);

    void CallInitMapi(ULONG sequence, ULONG mailType, ULONG initType);
    void CallReleaseMapi(bool endThread);
    void CallSendMail(const WorkTask& task);
    void CallGetSMTPAddress(const WorkTask& task);
    void CallGetAppointments(const WorkTask& task);
    void CallGetRecurrentInstances(const WorkTask& task);
    void CallGetRecentEmail(const WorkTask& task);
    void CallGetAppointment(const WorkTask& task);
    void CallDeleteAppt(const WorkTask& task);
    void CallModifyApp(const WorkTask& task);
    void CallAddApp(const WorkTask& task);
    void CallModifyNoteApp(const WorkTask& task);
    void CallDeleteContact(const WorkTask& task);
    void CallModifyContact(const WorkTask& task);
    void CallAddContact(const WorkTask& task);
    void CallGetPersonalContact(const WorkTask& task);
    void CallSearchForContacts(const WorkTask& task);
    void CallResolveByUri(const WorkTask& task);
    void CallResolveByPhoneNumber(const WorkTask& task);
    [[nodiscard]] bool IsReady() const noexcept;

    std::unique_ptr<IMailSwitch> m_pMailCtrl;
    std::atomic<ULONG> m_dwStatus{1}; ///< 1 not initialised, 0 ready, else what Init answered
    CWorkQueue m_queue;
    HANDLE m_hThread = nullptr;
    DWORD m_dwThreadId = 0;
    std::atomic<bool> m_bRunning{false};
    std::atomic<bool> m_isEndWanted{false}; ///< a release without hibernate was asked for
    HANDLE m_hWorkPending = nullptr;
};

/// The thread procedure of a CWorkThread, which is its argument. Its last act is to destroy the
/// object, if that is still the process's own.
DWORD WINAPI WorkThreadFunc(void* parameter);

/// Destroys `object` if it is g_pWorkThread, after the last use of it has ended.
/// Thread: the work thread, at its end.
void EndWorkThreadObject(CWorkThread* object) noexcept;

/// The one work thread object of the process, null before the first client and after its end.
extern std::atomic<CWorkThread*> g_pWorkThread;

/// Borrows g_pWorkThread for a few calls: the object is not destroyed while a use of it is alive.
/// Thread: any. Never keep one while waiting for the work thread, which waits for it at its end.
class CWorkThreadUse final
{
public:
    CWorkThreadUse() noexcept;
    CWorkThreadUse(const CWorkThreadUse&) = delete;
    CWorkThreadUse& operator=(const CWorkThreadUse&) = delete;
    ~CWorkThreadUse();

    explicit operator bool() const noexcept { return m_object != nullptr; }
    CWorkThread* operator->() const noexcept { return m_object; }

private:
    CWorkThread* m_object;
};

/// Makes g_pWorkThread if it is null; false when that failed. The caller traces the failure.
bool EnsureWorkThread() noexcept;

/// ReleaseMAPI on g_pWorkThread if it exists. This is the form that the module, the monitor and the
/// crash filter use.
void ReleaseWorkThread(bool hibernate) noexcept;

/// Process end, on the main thread: takes g_pWorkThread out and destroys it, unless its thread
/// still runs. A hung thread keeps its object, since neither may go without the other.
void DestroyWorkThreadAtExit() noexcept;
