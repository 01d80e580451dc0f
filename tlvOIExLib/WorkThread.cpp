#include "WorkThread.h"

#include <mutex>
#include <utility>

#include "CloseDialogs.h"
#include "Handle.h"
#include "MapiDataStore.h"
#include "Trace.h"

namespace
{

constexpr const wchar_t* kSemaphoreName = L"dtOIEx-aWorkThread-Semaphore-WorkPending-x64";
constexpr const char* kSemaphoreNameText = "dtOIEx-aWorkThread-Semaphore-WorkPending-x64";
constexpr LONG kSemaphoreMaximum = 255;
constexpr int kReleaseTries = 4;
constexpr DWORD kReleasePauseMs = 50;
constexpr DWORD kReleaseWaitMs = 10000;

/// Calls under way on the work thread object, of all threads. The end of the object waits for them.
std::atomic<unsigned> g_uses{0};

/// Counts one call for as long as it lives.
class CUseCount final
{
public:
    CUseCount() noexcept { g_uses.fetch_add(1); }
    CUseCount(const CUseCount&) = delete;
    CUseCount& operator=(const CUseCount&) = delete;
    ~CUseCount() { g_uses.fetch_sub(1); }
};

} // namespace

std::atomic<CWorkThread*> g_pWorkThread{nullptr};

CWorkThreadUse::CWorkThreadUse() noexcept
{
    // The count first: whoever takes the pointer out waits for the count afterwards.
    g_uses.fetch_add(1);
    m_object = g_pWorkThread.load();
}

CWorkThreadUse::~CWorkThreadUse()
{
    g_uses.fetch_sub(1);
}

CWorkThread::CWorkThread()
{
    SEND_TRACE(3, "CWorkThread::CWorkThread", "Status = [0x%x]", static_cast<unsigned>(Status()));
    m_pMailCtrl = MakeMailSwitch();
    if (m_pMailCtrl == nullptr)
    {
        SEND_TRACE(0, "CWorkThread::CWorkThread", "new CMapiCtrl failed");
    }
    m_bRunning = true;
    // The only place where the flag is ever cleared: a new work thread lets events through again.
    MapiDataStore().SetReleasing(0);
    CreateSemaphoreAndThread();
}

void CWorkThread::CreateSemaphoreAndThread()
{
    SEND_TRACE(2, "CWorkThread::CWorkThread", "%s", kSemaphoreNameText);
    m_hWorkPending = CreateSemaphoreW(nullptr, 0, kSemaphoreMaximum, kSemaphoreName);
    if (m_hWorkPending == nullptr)
    {
        SEND_TRACE(0,
                   "CWorkThread::CWorkThread",
                   "create semphore-WorkPending failed, Error Code=%d",
                   static_cast<int>(GetLastError()));
    }

    // Suspended until its handle and id are stored, which the thread itself reads.
    m_hThread = CreateThread(nullptr, 0, WorkThreadFunc, this, CREATE_SUSPENDED, &m_dwThreadId);
    if (m_hThread == nullptr)
    {
        SEND_TRACE(0,
                   "CWorkThread::CWorkThread",
                   "Create thread-work failed. Error Code=%d",
                   static_cast<int>(GetLastError()));
        return;
    }
    SEND_TRACE(2,
               "CWorkThread::CWorkThread",
               "Create work thread-work succeed. ThreadID=%d HThread=%d",
               static_cast<int>(m_dwThreadId),
               static_cast<int>(reinterpret_cast<INT_PTR>(m_hThread)));
    ResumeThread(m_hThread);
}

CWorkThread::~CWorkThread()
{
    ClearPendingWork();
    if (m_hThread != nullptr)
    {
        CloseHandle(m_hThread);
        m_hThread = nullptr;
        m_dwThreadId = 0;
    }
    if (m_hWorkPending != nullptr)
    {
        CloseHandle(m_hWorkPending);
        m_hWorkPending = nullptr;
    }
    m_pMailCtrl.reset();
}

void CWorkThread::AddWork(const WorkTask& task)
{
    // Once the task is on its list the thread may run it, end, and want to destroy this object.
    const CUseCount hold;
    m_queue.Push(task);
    DWORD error = 0;
    for (int tries = 1; tries <= kReleaseTries; tries++)
    {
        if (ReleaseSemaphore(m_hWorkPending, 1, nullptr) != FALSE)
        {
            return;
        }
        error = GetLastError();
        if (tries < kReleaseTries)
        {
            Sleep(kReleasePauseMs);
        }
    }
    SEND_TRACE(0,
               "CWorkThread::AddWork",
               "ReleaseSemaphore-work failed, Error Code=%d, count=%d",
               static_cast<int>(error),
               kReleaseTries);
}

HRESULT CWorkThread::AddInitWork(ULONG sequence, ULONG mailType, ULONG initType)
{
    WorkTask task;
    task.ulSequenceID = sequence;
    task.eTaskType = TaskType::InitMapi;
    task.Param1 = TaskHalves(mailType, initType);
    AddWork(task);
    return S_OK;
}

HRESULT
CWorkThread::AddListAppointmentWork(const FILETIME& start, const FILETIME& end, ULONG sequence)
{
    WorkTask task;
    task.ulSequenceID = sequence;
    task.eTaskType = TaskType::GetAppointments;
    task.Param1 = TaskTime(start);
    task.Param2 = TaskTime(end);
    AddWork(task);
    return S_OK;
}

HRESULT CWorkThread::AddTableWork(const WorkTask& task)
{
    AddWork(task);
    return S_OK;
}

HRESULT CWorkThread::AddPostEventWork(TaskType type, const WCHAR* key)
{
    const bool isPostType =
        type == TaskType::PostDelete || type == TaskType::PostUpdate || type == TaskType::PostAdd;
    if (m_pMailCtrl == nullptr || m_pMailCtrl->GetMailType() != MailTypeNotes || !isPostType)
    {
        return E_FAIL;
    }
    WorkTask task;
    task.eTaskType = type;
    task.Param2 = TaskText(key != nullptr ? WStringView(key) : WStringView());
    if (task.Param2 == 0)
    {
        return E_FAIL;
    }
    AddWork(task);
    return S_OK;
}

void CWorkThread::DropTableWork(IMAPIFolder* folder)
{
    m_queue.DropFolder(reinterpret_cast<std::uint64_t>(folder));
}

void CWorkThread::GetProfileInfo(BSTR* profile)
{
    if (IsReady())
    {
        m_pMailCtrl->GetCurProfileInfo(profile);
    }
}

bool CWorkThread::IsReady() const noexcept
{
    return m_pMailCtrl != nullptr && Status() == 0;
}

DWORD CWorkThread::ReleaseMAPI(bool hibernate)
{
    WaitForEnd(CHandle(QueueRelease(hibernate)).Get());
    return 0;
}

HANDLE CWorkThread::QueueRelease(bool hibernate)
{
    const CUseCount hold;
    MapiDataStore().SetReleasing(1);
    auto spared = std::make_unique<std::list<DWORD>>(1, GetCurrentThreadId());
    CloseDlgInProcess(GetCurrentProcessId(), std::move(spared));
    ClearPendingWork();
    if (m_pMailCtrl != nullptr)
    {
        // On this thread, before the work thread frees the library: it touches the store alone.
        m_pMailCtrl->ClearDataStore();
    }

    // A handle of our own: the thread closes the object's when it ends. The work thread itself comes
    // here after a crash, and would wait for its own end.
    HANDLE thread = nullptr;
    if (!hibernate && m_hThread != nullptr && GetCurrentThreadId() != m_dwThreadId)
    {
        DuplicateHandle(
            GetCurrentProcess(), m_hThread, GetCurrentProcess(), &thread, SYNCHRONIZE, FALSE, 0);
    }
    // Once the end was asked for it stays asked for: the hibernate that follows a failed bring-up has
    // just dropped that task from the lists, and somebody may be waiting for the thread.
    if (!hibernate)
    {
        m_isEndWanted = true;
    }
    WorkTask task;
    task.eTaskType = m_isEndWanted ? TaskType::Release : TaskType::Hibernate;
    AddWork(task);
    return thread;
}

void CWorkThread::WaitForEnd(HANDLE thread)
{
    if (thread != nullptr && WaitForSingleObject(thread, kReleaseWaitMs) == WAIT_TIMEOUT)
    {
        SEND_TRACE(1, "CWorkThread::ReleaseMAPI", "Time out when ReleaseMAPI not hibernate");
    }
}

bool EnsureWorkThread() noexcept
try
{
    static std::mutex s_creating;
    const std::scoped_lock hold(s_creating);
    if (g_pWorkThread.load() == nullptr)
    {
        g_pWorkThread = new CWorkThread;
    }
    return true;
}
catch (...)
{
    return false;
}

void ReleaseWorkThread(bool hibernate) noexcept
try
{
    CHandle thread;
    {
        const CWorkThreadUse workThread;
        if (!workThread)
        {
            return;
        }
        thread.Reset(workThread->QueueRelease(hibernate));
    }
    CWorkThread::WaitForEnd(thread.Get());
}
catch (...)
{
    // Out of memory: the release is not queued, and the process ends without it.
    SEND_TRACE(0, "ReleaseWorkThread", "no memory to queue the release");
}

void EndWorkThreadObject(CWorkThread* object) noexcept
{
    CWorkThread* expected = object;
    if (!g_pWorkThread.compare_exchange_strong(expected, nullptr))
    {
        return; // taken out at process end, or never the process's own
    }
    while (g_uses.load() != 0)
    {
        Sleep(1);
    }
    delete object;
}

void DestroyWorkThreadAtExit() noexcept
{
    CWorkThread* const object = g_pWorkThread.exchange(nullptr);
    if (object == nullptr)
    {
        return;
    }
    if (object->m_hThread != nullptr && WaitForSingleObject(object->m_hThread, 0) == WAIT_TIMEOUT)
    {
        return;
    }
    delete object;
}
