#include "MapiCtrl.h"

#include <new>
#include <utility>

#include "BringUpResult.h"
#include "MapiDataStore.h"
#include "NotesCtrl.h"
#include "OutlookCtrl.h"

CMapiCtrl::CMapiCtrl() noexcept = default;

CMapiCtrl::~CMapiCtrl()
{
    if (m_workThreadId == GetCurrentThreadId())
    {
        FreeOutlook();
        FreeNotes();
        return;
    }
    (void)m_pOutlook.release();
    (void)m_pNotes.release();
}

CMailInterface* CMapiCtrl::InForce() const noexcept
{
    switch (m_ulMailType.load())
    {
    case MailTypeOutlook:
        return m_pOutlook.get();
    case MailTypeNotes:
        return m_pNotes.get();
    default:
        return nullptr;
    }
}

COutlookCtrl* CMapiCtrl::OutlookInForce() const noexcept
{
    return m_ulMailType.load() == MailTypeOutlook ? m_pOutlook.get() : nullptr;
}

ULONG CMapiCtrl::WithoutOutlook() const noexcept
{
    return m_ulMailType.load() == MailTypeNotes && m_pNotes ? static_cast<ULONG>(E_FAIL) : 0;
}

void CMapiCtrl::FreeOutlook()
{
    if (m_pOutlook)
    {
        m_pOutlook->FreeLib();
        m_hasOutlook = false;
        m_pOutlook.reset();
    }
}

void CMapiCtrl::FreeNotes()
{
    if (m_pNotes)
    {
        m_pNotes->FreeLib();
        m_pNotes.reset();
    }
}

ULONG CMapiCtrl::Init(ULONG mailType, ULONG initType)
{
    ULONG result = 0;
    m_workThreadId = GetCurrentThreadId();
    if (mailType == MailTypeOutlook)
    {
        if (!m_pOutlook)
        {
            m_pOutlook = std::make_unique<COutlookCtrl>();
            m_hasOutlook = true;
        }
        if (m_pOutlook->RegisterInitType(initType) == 0)
        {
            result = m_pOutlook->Init(initType);
        }
        FreeNotes();
    }
    else if (mailType == MailTypeNotes)
    {
        if (!m_pNotes)
        {
            m_pNotes = std::make_unique<CNotesCtrl>();
        }
        if (m_pNotes->RegisterInitType(initType) == 0)
        {
            result = BringUpNotesSelected;
        }
        FreeOutlook();
    }
    else
    {
        return BringUpRefused;
    }
    m_ulMailType = mailType;
    return result;
}

void CMapiCtrl::FreeLib()
{
    FreeOutlook();
    FreeNotes();
}

ULONG CMapiCtrl::SendMail(WString subject, WString recipients, WString body, ULONG flag)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr
               ? mail->SendMail(std::move(subject), std::move(recipients), std::move(body), flag)
               : 0;
}

ULONG CMapiCtrl::GetSMTPFromDispName(const WString& name, WString& smtp)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->GetSMTPFromDispName(name, smtp) : 0;
}

ULONG CMapiCtrl::ListAppointment(FILETIME start, FILETIME end, CEventText& xml)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->ListAppointment(start, end, xml) : 0;
}

ULONG CMapiCtrl::ListRecurrentInstance(const WString& entryId,
                                       const FILETIME* start,
                                       const FILETIME* end,
                                       WString& xml)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->ListRecurrentInstance(entryId, start, end, xml) : 0;
}

ULONG CMapiCtrl::ListRecentEmail(ULONG number,
                                 const WString& contact,
                                 ULONG folderType,
                                 std::vector<MailRecord>& mails)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->ListRecentEmail(number, contact, folderType, mails) : 0;
}

ULONG CMapiCtrl::GetAppointment(const WString& entryId, WString& xml)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr ? outlook->GetAppointment(entryId, xml) : 0;
}

ULONG CMapiCtrl::GetPersonalContact(std::vector<ContactRecord>& contacts)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->GetPersonalContact(contacts) : 0;
}

ULONG CMapiCtrl::GetContactDetail(const WString& key, ContactRecord& contact)
{
    CMailInterface* const mail = InForce();
    return mail != nullptr ? mail->GetContactDetail(key, contact) : 0;
}

ULONG CMapiCtrl::GetCurProfileInfo(BSTR* profile)
{
    if (m_ulMailType.load() != MailTypeOutlook || !m_hasOutlook.load())
    {
        return 0;
    }
    return COutlookCtrl::ProfileInfoFromStore(profile);
}

void CMapiCtrl::ClearDataStore()
{
    if (m_hasOutlook.load())
    {
        MapiDataStore().ClearDataStore();
    }
}

ULONG CMapiCtrl::GetMsgInfoByTableSink(IMAPIFolder* folder,
                                       const WString& entryHex,
                                       const WString& instanceHex,
                                       WString& xml)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr ? outlook->GetMsgInfoByTableSink(folder, entryHex, instanceHex, xml)
                              : 0;
}

ULONG CMapiCtrl::DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr ? outlook->DeleteMsgInfoByTableSink(instanceHex, xml) : 0;
}

ULONG CMapiCtrl::GetContactInfoByTableSink(IMAPIFolder* folder,
                                           const WString& entryHex,
                                           const WString& instanceHex,
                                           ContactRecord& contact)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr
               ? outlook->GetContactInfoByTableSink(folder, entryHex, instanceHex, contact)
               : 0;
}

ULONG CMapiCtrl::SearchContacts(const WString& text,
                                std::vector<ContactRecord>& contacts,
                                ULONG maxResults)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr ? outlook->SearchContacts(text, contacts, maxResults)
                              : WithoutOutlook();
}

ULONG CMapiCtrl::ResolveContacts(const WString& text,
                                 std::vector<ContactRecord>& contacts,
                                 ULONG kind)
{
    COutlookCtrl* const outlook = OutlookInForce();
    return outlook != nullptr ? outlook->ResolveContacts(text, contacts, kind) : WithoutOutlook();
}

std::unique_ptr<IMailSwitch> MakeMapiCtrl() noexcept
{
    return std::unique_ptr<IMailSwitch>(new (std::nothrow) CMapiCtrl());
}
