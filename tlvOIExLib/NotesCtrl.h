#pragma once

#include "MailCtrl.h"

/// The mail system that can be selected and does nothing: it answers, and that is all.
///
/// Thread: the work thread.
class CNotesCtrl final : public CMailCtrl
{
public:
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
    void ClearDataStore() override {}
};
