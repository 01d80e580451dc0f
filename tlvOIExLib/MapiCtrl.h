#pragma once

#include <atomic>
#include <memory>

#include "MailInterface.h"

class CNotesCtrl;
class COutlookCtrl;

/// The switch between the mail systems. Holds at most one of them, made on demand; an operation
/// without a controller of the type in force answers 0.
///
/// Owner:  both controllers. A controller is freed with FreeLib and then deleted, so that the next
///         Init starts with a new one.
/// Thread: the work thread. GetMailType, GetCurProfileInfo and ClearDataStore from any thread: they
///         never touch a controller, which the work thread may be deleting, and answer from the data
///         store alone.
class CMapiCtrl final : public IMailSwitch
{
public:
    CMapiCtrl() noexcept;
    /// Frees what is left on the work thread. On any other thread the controllers are left behind:
    /// their objects belong to a thread that still may use them.
    ~CMapiCtrl() override;

    ULONG Init() override { return 0; }
    void FreeLib() override;
    ULONG SendMail(WString subject, WString recipients, WString body, ULONG flag) override;
    ULONG GetSMTPFromDispName(const WString& name, WString& smtp) override;
    ULONG ListAppointment(FILETIME start, FILETIME end, CEventText& xml) override;
    ULONG ListRecurrentInstance(const WString& entryId,
                                const FILETIME* start,
                                const FILETIME* end,
                                WString& xml) override;
    ULONG ListRecentEmail(ULONG number,
                          const WString& contact,
                          ULONG folderType,
                          std::vector<MailRecord>& mails) override;
    ULONG GetAppointment(const WString& entryId, WString& xml) override;
    ULONG GetPersonalContact(std::vector<ContactRecord>& contacts) override;
    ULONG GetContactDetail(const WString& key, ContactRecord& contact) override;
    ULONG GetCurProfileInfo(BSTR* profile) override;
    void ClearDataStore() override;

    ULONG Init(ULONG mailType, ULONG initType) override;
    [[nodiscard]] ULONG GetMailType() const override { return m_ulMailType.load(); }
    ULONG GetMsgInfoByTableSink(IMAPIFolder* folder,
                                const WString& entryHex,
                                const WString& instanceHex,
                                WString& xml) override;
    ULONG DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml) override;
    ULONG GetContactInfoByTableSink(IMAPIFolder* folder,
                                    const WString& entryHex,
                                    const WString& instanceHex,
                                    ContactRecord& contact) override;
    ULONG SearchContacts(const WString& text,
                         std::vector<ContactRecord>& contacts,
                         ULONG maxResults) override;
    ULONG ResolveContacts(const WString& text,
                          std::vector<ContactRecord>& contacts,
                          ULONG kind) override;

private:
    [[nodiscard]] CMailInterface* InForce() const noexcept;
    [[nodiscard]] COutlookCtrl* OutlookInForce() const noexcept;
    /// E_FAIL with a Notes controller in force, else 0.
    [[nodiscard]] ULONG WithoutOutlook() const noexcept;
    void FreeOutlook();
    void FreeNotes();

    std::unique_ptr<COutlookCtrl> m_pOutlook;
    std::unique_ptr<CNotesCtrl> m_pNotes;
    std::atomic<ULONG> m_ulMailType{MailTypeNone}; ///< of the last Init that was understood
    std::atomic<bool> m_hasOutlook{false};         ///< whether m_pOutlook is set, for other threads
    DWORD m_workThreadId = 0;                      ///< the thread of the first Init
};

/// Makes the switch of the product, for SetMailSwitchFactory.
/// Errors: null without memory.
std::unique_ptr<IMailSwitch> MakeMapiCtrl() noexcept;
