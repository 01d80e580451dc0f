#include <windows.h>

#include <utility>

#include "ContactRecord.h"
#include "ContactXml.h"
#include "EventMessages.h"
#include "EventPost.h"
#include "MailRecord.h"
#include "MailXml.h"
#include "MapiDataStore.h"
#include "ResolveNameXml.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr ULONG kStatusNotInitialised = 1;
constexpr DWORD kFailurePauseMs = 3000;

} // namespace

void CWorkThread::CallInitMapi(ULONG sequence, ULONG mailType, ULONG initType)
{
    SEND_TRACE(3, "CWorkThread::CallInitMapi", "Status = [0x%x]", static_cast<unsigned>(Status()));
    if (m_pMailCtrl != nullptr)
    {
        m_dwStatus = m_pMailCtrl->Init(mailType, initType);
    }
    if (MapiDataStore().IsReleasing())
    {
        return;
    }
    SEND_TRACE(3, "CWorkThread::CallInitMapi", "Post message");
    PostEventStatus(WM_EVENT_INITIALIZE, sequence, Status());
    if (Status() == 0)
    {
        return;
    }
    // The thread's own handle never gets signalled here: a pause in which the failed answer reaches
    // the client, before the release silences everything.
    WaitForSingleObject(m_hThread, kFailurePauseMs);
    ReleaseMAPI(true);
}

void CWorkThread::CallReleaseMapi(bool endThread)
{
    SEND_TRACE(3, "CWorkThread::CallReleaseMapi", "CallReleaseMapi");
    m_dwStatus = kStatusNotInitialised;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->FreeLib();
    }
    if (endThread)
    {
        m_bRunning = false;
    }
}

void CWorkThread::CallSendMail(const WorkTask& task)
{
    if (IsReady())
    {
        m_pMailCtrl->SendMail(
            TextOfParam(task.Param1), TextOfParam(task.Param2), TextOfParam(task.Param3), 0);
    }
}

void CWorkThread::CallGetSMTPAddress(const WorkTask& task)
{
    const WString name = TextOfParam(task.Param1);
    WString smtp;
    const bool success = IsReady() && m_pMailCtrl->GetSMTPFromDispName(name, smtp) != 0;
    PostEventText(WM_EVENT_RESOLVE_NAME,
                  task.ulSequenceID,
                  BuildResolveNameXml(success, name, smtp),
                  "CWorkThread::CallGetSMTPAddress");
}

void CWorkThread::CallGetAppointments(const WorkTask& task)
{
    CEventText xml;
    if (IsReady())
    {
        m_pMailCtrl->ListAppointment(TimeOfParam(task.Param1), TimeOfParam(task.Param2), xml);
    }
    PostEventText(WM_EVENT_LIST_APPOINTMENT,
                  task.ulSequenceID,
                  std::move(xml),
                  "CWorkThread::CallGetAppointments");
}

void CWorkThread::CallGetRecurrentInstances(const WorkTask& task)
{
    WString xml;
    if (IsReady())
    {
        const FILETIME start = TimeOfParam(task.Param1);
        const FILETIME end = TimeOfParam(task.Param2);
        m_pMailCtrl->ListRecurrentInstance(TextOfParam(task.Param3), &start, &end, xml);
    }
    // This handler and the next speak of CallGetAppointments when memory is short.
    PostEventText(
        WM_EVENT_LIST_RECURRENT, task.ulSequenceID, xml, "CWorkThread::CallGetAppointments");
}

void CWorkThread::CallGetRecentEmail(const WorkTask& task)
{
    std::vector<MailRecord> mails;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->ListRecentEmail(
            LowHalf(task.Param1), TextOfParam(task.Param2), HighHalf(task.Param1), mails);
    }
    PostEventText(WM_EVENT_RECENT_EMAILS,
                  task.ulSequenceID,
                  BuildMailsXml(mails),
                  "CWorkThread::CallGetAppointments");
}

void CWorkThread::CallGetAppointment(const WorkTask& task)
{
    WString xml;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->GetAppointment(TextOfParam(task.Param1), xml);
    }
    PostEventText(
        WM_EVENT_GET_APPOINTMENT, task.ulSequenceID, xml, "CWorkThread::CallGetAppointment");
}

void CWorkThread::CallGetPersonalContact(const WorkTask& task)
{
    std::vector<ContactRecord> contacts;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->GetPersonalContact(contacts);
    }
    PostEventText(WM_EVENT_PERSONAL_CONTACT,
                  task.ulSequenceID,
                  BuildContactsXml(contacts),
                  "CWorkThread::CallGetPersonalContact");
}

void CWorkThread::CallSearchForContacts(const WorkTask& task)
{
    std::vector<ContactRecord> contacts;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->SearchContacts(TextOfParam(task.Param1), contacts, LowHalf(task.Param2));
    }
    PostEventText(
        WM_EVENT_SEARCH_CONTACTS, task.ulSequenceID, BuildContactsImXml(contacts), nullptr);
}

void CWorkThread::CallResolveByUri(const WorkTask& task)
{
    std::vector<ContactRecord> contacts;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->ResolveContacts(TextOfParam(task.Param1), contacts, ResolveUri);
    }
    PostEventText(
        WM_EVENT_RESOLVE_BY_URI, task.ulSequenceID, BuildContactsImXml(contacts), nullptr);
}

void CWorkThread::CallResolveByPhoneNumber(const WorkTask& task)
{
    std::vector<ContactRecord> contacts;
    if (m_pMailCtrl != nullptr)
    {
        m_pMailCtrl->ResolveContacts(TextOfParam(task.Param1), contacts, ResolvePhone);
    }
    PostEventText(
        WM_EVENT_RESOLVE_BY_PHONE, task.ulSequenceID, BuildContactsImXml(contacts), nullptr);
}
