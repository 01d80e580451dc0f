#include "WorkTask.h"

#include <cstring>

#include "AtMemory.h"

namespace
{

void FreeParam(std::uint64_t& param) noexcept
{
    at_mem_free(reinterpret_cast<void*>(param));
    param = 0;
}

} // namespace

std::uint64_t TaskText(WStringView text) noexcept
{
    auto* const copy = static_cast<WCHAR*>(at_mem_alloc((text.size() + 1) * sizeof(WCHAR)));
    if (copy == nullptr)
    {
        return 0;
    }
    if (!text.empty())
    {
        std::memcpy(copy, text.data(), text.size() * sizeof(WCHAR));
    }
    copy[text.size()] = 0;
    return reinterpret_cast<std::uint64_t>(copy);
}

WString TextOfParam(std::uint64_t param)
{
    return param != 0 ? WString(reinterpret_cast<const WCHAR*>(param)) : WString();
}

void FreeTaskTexts(WorkTask& task) noexcept
{
    switch (task.eTaskType)
    {
    case TaskType::SendMail:
        FreeParam(task.Param1);
        FreeParam(task.Param2);
        FreeParam(task.Param3);
        break;
    case TaskType::GetRecurrentInstances:
        FreeParam(task.Param3);
        break;
    case TaskType::GetRecentEmail:
    case TaskType::PostDelete:
    case TaskType::PostUpdate:
    case TaskType::PostAdd:
        FreeParam(task.Param2);
        break;
    case TaskType::GetSmtpAddress:
    case TaskType::GetAppointment:
    case TaskType::DroppedText:
    case TaskType::SearchForContacts:
    case TaskType::ResolveByUri:
    case TaskType::ResolveByPhoneNumber:
        FreeParam(task.Param1);
        break;
    case TaskType::DeleteAppt:
    case TaskType::ModifyAppt:
    case TaskType::AddAppt:
    case TaskType::DeleteContact:
    case TaskType::ModifyContact:
    case TaskType::AddContact:
        FreeParam(task.Param2);
        FreeParam(task.Param3);
        break;
    default:
        break;
    }
}
