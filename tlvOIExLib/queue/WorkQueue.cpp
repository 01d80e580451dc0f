#include "WorkQueue.h"

#include "AtMemory.h"
#include "Trace.h"

namespace
{

constexpr std::int32_t kLastTaskType = 22;

bool IsKnown(TaskType type)
{
    const auto number = static_cast<std::int32_t>(type);
    return number >= 0 && number <= kLastTaskType;
}

bool IsLow(TaskType type)
{
    switch (type)
    {
    case TaskType::GetSmtpAddress:
    case TaskType::GetPersonalContact:
    case TaskType::SearchForContacts:
    case TaskType::ResolveByUri:
    case TaskType::ResolveByPhoneNumber:
        return true;
    default:
        return false;
    }
}

bool IsTableWork(TaskType type)
{
    switch (type)
    {
    case TaskType::DeleteAppt:
    case TaskType::ModifyAppt:
    case TaskType::AddAppt:
    case TaskType::DeleteContact:
    case TaskType::ModifyContact:
    case TaskType::AddContact:
        return true;
    default:
        return false;
    }
}

void FreeClearedTask(WorkTask& task)
{
    if (IsTableWork(task.eTaskType))
    {
        // The folder is a reference, and the instance key text stays behind.
        task.Param1 = 0;
        at_mem_free(reinterpret_cast<void*>(task.Param2));
        return;
    }
    FreeTaskTexts(task);
}

} // namespace

void CWorkQueue::Push(const WorkTask& task)
{
    const std::scoped_lock hold(m_Lock);
    if (IsKnown(task.eTaskType))
    {
        (IsLow(task.eTaskType) ? m_LowPendingWork : m_PendingWork).push_back(task);
    }
    SEND_TRACE(3,
               "CWorkThread::PushPendingWork",
               "PushPendingWork tasktype[%d]",
               static_cast<int>(task.eTaskType));
}

bool CWorkQueue::Pop(WorkTask& task)
{
    const std::scoped_lock hold(m_Lock);
    std::list<WorkTask>& list = !m_PendingWork.empty() ? m_PendingWork : m_LowPendingWork;
    if (list.empty())
    {
        return false;
    }
    task = list.front();
    list.pop_front();
    SEND_TRACE(3,
               "CWorkThread::PopPendingWork",
               "PopPendingWork tasktype[%d]",
               static_cast<int>(task.eTaskType));
    return true;
}

void CWorkQueue::Clear()
{
    SEND_TRACE(3, "CWorkThread::ClearPendingWork", "ClearPendingWork");
    const std::scoped_lock hold(m_Lock);
    for (WorkTask& task : m_PendingWork)
    {
        FreeClearedTask(task);
    }
    for (WorkTask& task : m_LowPendingWork)
    {
        if (task.eTaskType == TaskType::GetSmtpAddress)
        {
            FreeTaskTexts(task);
        }
    }
    m_PendingWork.clear();
    m_LowPendingWork.clear();
}

std::size_t CWorkQueue::DropFolder(std::uint64_t folder)
{
    const std::scoped_lock hold(m_Lock);
    return m_PendingWork.remove_if([folder](WorkTask& task) {
        if (!IsTableWork(task.eTaskType) || task.Param1 != folder)
        {
            return false;
        }
        FreeTaskTexts(task);
        return true;
    });
}
