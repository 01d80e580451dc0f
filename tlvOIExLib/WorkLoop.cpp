#include <windows.h>

#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr const char* kHeartbeatText = "##dtOIEx##process##exist##";
constexpr DWORD kWaitMs = 5000;
constexpr DWORD kHeartbeatSeconds = 5;
/// Posted and sent messages, input, timers, hot keys: every queue event but the later QS_ flags, which
/// today's QS_ALLINPUT would add.
constexpr DWORD kWakeMask = 0x4FF;

} // namespace

DWORD WINAPI WorkThreadFunc(void* parameter)
{
    auto* const workThread = static_cast<CWorkThread*>(parameter);
    if (workThread == nullptr)
    {
        SEND_TRACE(0, "WorkThreadFunc", "WorkThreadFunc, pWorkThread==NULL");
        return 0;
    }
    workThread->RunLoop();
    EndWorkThreadObject(workThread);
    SEND_TRACE(2, "WorkThreadFunc", "work thread end!");
    return 0;
}

void CWorkThread::RunLoop()
{
    DWORD mark = GetTickCount();
    while (m_bRunning)
    {
        const bool woken = WaitForWork();
        PumpOneMessage();
        // The heartbeat belongs to this thread, so that it stops when the thread is stuck.
        if ((GetTickCount() - mark) / 1000 >= kHeartbeatSeconds)
        {
            SEND_TRACE(2, "WorkThreadFunc", "%s", kHeartbeatText);
            mark = GetTickCount();
        }
        if (woken)
        {
            DrainQueue();
        }
    }
}

/// True when the semaphore ended the wait. Without a semaphore there is only input to wait for, and
/// tasks wait for ever.
bool CWorkThread::WaitForWork()
{
    const DWORD count = m_hWorkPending != nullptr ? 1 : 0;
    const DWORD result =
        MsgWaitForMultipleObjects(count, &m_hWorkPending, FALSE, kWaitMs, kWakeMask);
    return count == 1 && result == WAIT_OBJECT_0;
}

/// One message a pass: the mail system needs a thread that pumps, and this is all the pump it gets.
void CWorkThread::PumpOneMessage()
{
    MSG message;
    if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void CWorkThread::DrainQueue()
{
    WorkTask task;
    while (PopPendingWork(task))
    {
        if (!m_bRunning)
        {
            FreeTaskTexts(task);
            return;
        }
        RunTask(task);
        FreeTaskTexts(task);
        // The server idles beside a desktop client for long: the pages go back after every task.
        SetProcessWorkingSetSize(
            GetCurrentProcess(), static_cast<SIZE_T>(-1), static_cast<SIZE_T>(-1));
    }
}

void CWorkThread::RunTask(const WorkTask& task)
{
    switch (task.eTaskType)
    {
    case TaskType::InitMapi:
        CallInitMapi(task.ulSequenceID, LowHalf(task.Param1), HighHalf(task.Param1));
        break;
    case TaskType::SendMail:
        CallSendMail(task);
        break;
    case TaskType::GetSmtpAddress:
        CallGetSMTPAddress(task);
        break;
    case TaskType::GetAppointments:
        CallGetAppointments(task);
        break;
    case TaskType::GetRecurrentInstances:
        CallGetRecurrentInstances(task);
        break;
    case TaskType::GetRecentEmail:
        CallGetRecentEmail(task);
        break;
    case TaskType::GetAppointment:
        CallGetAppointment(task);
        break;
    case TaskType::DroppedText:
        // Nothing handles this type: the text goes with the task.
        break;
    case TaskType::Hibernate:
        CallReleaseMapi(false);
        break;
    case TaskType::Release:
        CallReleaseMapi(true);
        break;
    case TaskType::PostUpdate:
    case TaskType::PostAdd:
        CallModifyNoteApp(task);
        break;
    case TaskType::GetPersonalContact:
        CallGetPersonalContact(task);
        break;
    case TaskType::SearchForContacts:
        CallSearchForContacts(task);
        break;
    case TaskType::ResolveByUri:
        CallResolveByUri(task);
        break;
    case TaskType::ResolveByPhoneNumber:
        CallResolveByPhoneNumber(task);
        break;
    default:
        RunChangeTask(task);
        break;
    }
}

void CWorkThread::RunChangeTask(const WorkTask& task)
{
    switch (task.eTaskType)
    {
    case TaskType::DeleteAppt:
    case TaskType::PostDelete:
        CallDeleteAppt(task);
        break;
    case TaskType::ModifyAppt:
        CallModifyApp(task);
        break;
    case TaskType::AddAppt:
        CallAddApp(task);
        break;
    case TaskType::DeleteContact:
        CallDeleteContact(task);
        break;
    case TaskType::ModifyContact:
        CallModifyContact(task);
        break;
    case TaskType::AddContact:
        CallAddContact(task);
        break;
    default:
        break;
    }
}
