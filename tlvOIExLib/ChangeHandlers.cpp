// The handlers of table notifications: what changed in a watched folder is read on the work thread,
// and goes to all clients when the controller finds it worth telling.

#include <windows.h>

#include "ContactRecord.h"
#include "ContactXml.h"
#include "EventMessages.h"
#include "EventPost.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

IMAPIFolder* FolderOf(const WorkTask& task)
{
    return reinterpret_cast<IMAPIFolder*>(task.Param1);
}

/// Where Lotus Notes would be asked to look at a changed appointment and to answer through the
/// callback. Nothing stands behind it in this system.
using ModifyCallback = void (*)(TaskType type, const WString& xml);

ULONG AskNotesForModification(const WString& /*key*/, TaskType /*type*/, ModifyCallback /*answer*/)
{
    return 0;
}

} // namespace

void CWorkThread::CallDeleteAppt(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallDeleteAppt", "CallDeleteAppt");
    // A posted deletion carries its key where a notification carries the entry id.
    const bool isPosted = task.eTaskType == TaskType::PostDelete;
    const WString instanceHex = TextOfParam(isPosted ? task.Param2 : task.Param3);
    WString xml;
    if (m_pMailCtrl != nullptr && m_pMailCtrl->DeleteMsgInfoByTableSink(instanceHex, xml) != 0)
    {
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeDeleted, xml, "CWorkThread::CallDeleteAppt");
    }
}

void CWorkThread::CallModifyApp(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallModifyApp", "CallModifyApp");
    WString xml;
    if (m_pMailCtrl != nullptr &&
        m_pMailCtrl->GetMsgInfoByTableSink(
            FolderOf(task), TextOfParam(task.Param2), TextOfParam(task.Param3), xml) != 0)
    {
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeModified, xml, "CWorkThread::CallModifyApp");
    }
}

void CWorkThread::CallAddApp(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallAddApp", "CallAddApp");
    WString xml;
    if (m_pMailCtrl != nullptr &&
        m_pMailCtrl->GetMsgInfoByTableSink(
            FolderOf(task), TextOfParam(task.Param2), TextOfParam(task.Param3), xml) != 0)
    {
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeAdded, xml, "CWorkThread::CallAddApp");
    }
}

void CWorkThread::CallModifyNoteApp(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallModifyNoteApp", "CallModifyNoteApp");
    AskNotesForModification(TextOfParam(task.Param2), task.eTaskType, SendModifyMessage);
}

void CWorkThread::SendModifyMessage(TaskType type, const WString& xml)
{
    constexpr const char* kName = "CWorkThread::CallModifyNoteApp SendModifyMessage";
    switch (type)
    {
    case TaskType::PostUpdate:
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeModified, xml, kName);
        break;
    case TaskType::PostAdd:
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeAdded, xml, kName);
        break;
    case TaskType::PostDelete:
        PostEventText(WM_EVENT_CALENDAR_UPDATED, ChangeDeleted, xml, kName);
        break;
    default:
        break;
    }
}

void CWorkThread::CallDeleteContact(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallDeleteContact", "CallDeleteContact");
    ContactRecord contact;
    if (m_pMailCtrl != nullptr &&
        m_pMailCtrl->GetContactDetail(TextOfParam(task.Param3), contact) != 0)
    {
        PostEventText(WM_EVENT_CONTACT_UPDATED,
                      ChangeDeleted,
                      BuildContactInfoXml(contact),
                      "CWorkThread::CallDeleteContact");
    }
}

void CWorkThread::CallModifyContact(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallModifyContact", "CallModifyContact");
    ContactRecord contact;
    if (m_pMailCtrl != nullptr &&
        m_pMailCtrl->GetContactInfoByTableSink(
            FolderOf(task), TextOfParam(task.Param2), TextOfParam(task.Param3), contact) != 0)
    {
        PostEventText(WM_EVENT_CONTACT_UPDATED,
                      ChangeModified,
                      BuildContactInfoXml(contact),
                      "CWorkThread::CallModifyContact");
    }
}

void CWorkThread::CallAddContact(const WorkTask& task)
{
    SEND_TRACE(3, "CWorkThread::CallAddContact", "CallAddContact");
    ContactRecord contact;
    if (m_pMailCtrl != nullptr &&
        m_pMailCtrl->GetContactInfoByTableSink(
            FolderOf(task), TextOfParam(task.Param2), TextOfParam(task.Param3), contact) != 0)
    {
        PostEventText(WM_EVENT_CONTACT_UPDATED,
                      ChangeAdded,
                      BuildContactInfoXml(contact),
                      "CWorkThread::CallAddContact");
    }
}
