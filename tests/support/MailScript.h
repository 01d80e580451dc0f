#pragma once

#include <windows.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "ContactRecord.h"
#include "MailInterface.h"
#include "MailRecord.h"

/// What stands in for a mail system in tests of the work thread: each operation notes its call and runs
/// what the test put in its place, or answers 0.
///
/// While a script lives, new work threads get a switch that follows it. One at a time.
/// Owner:  the script outlives every work thread made meanwhile.
/// Thread: operations run on the thread that calls them; the notes are locked.
class CMailScript final
{
public:
    CMailScript();
    CMailScript(const CMailScript&) = delete;
    CMailScript& operator=(const CMailScript&) = delete;
    ~CMailScript();

    std::function<ULONG(ULONG mailType, ULONG initType)> init;
    std::function<void()> freeLib;
    std::function<ULONG(WString& smtp)> getSmtp;
    std::function<ULONG(WString& xml)> listAppointment;
    std::function<ULONG(WString& xml)> listRecurrentInstance;
    std::function<ULONG(std::vector<MailRecord>& mails)> listRecentEmail;
    std::function<ULONG(WString& xml)> getAppointment;
    std::function<ULONG(std::vector<ContactRecord>& contacts)> getPersonalContact;
    std::function<ULONG(ContactRecord& contact)> getContactDetail;
    std::function<ULONG(BSTR* profile)> getProfile;
    std::function<void()> clearDataStore;
    std::function<ULONG(WString& xml)> getMsgInfo;
    std::function<ULONG(WString& xml)> deleteMsgInfo;
    std::function<ULONG(ContactRecord& contact)> getContactInfo;
    std::function<ULONG(std::vector<ContactRecord>& contacts)> searchContacts;
    std::function<ULONG(std::vector<ContactRecord>& contacts)> resolveContacts;
    ULONG mailType = MailTypeOutlook;
    bool keepsNotes = true; ///< false for tests that count memory

    /// Each call as "Operation(argument, ...)", in order.
    std::vector<std::string> Calls() const;
    /// The thread that a call came from, for the call at this place.
    DWORD ThreadOfCall(std::size_t index) const;
    void Note(const std::string& call);

private:
    struct NotedCall
    {
        std::string text;
        DWORD threadId;
    };

    mutable std::mutex m_callsLock; // guards m_calls
    std::vector<NotedCall> m_calls;
    MailSwitchFactory m_before;
};
