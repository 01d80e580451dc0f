#pragma once

#include <vector>

#include "ABbase.h"
#include "AppointmentRecords.h"
#include "LoadedModule.h"
#include "MailCtrl.h"
#include "MAPIFolderBase.h"
#include "MAPIMessageBase.h"
#include "MAPITblSinkInfo.h"
#include "MessageStoreBase.h"
#include "RecurInstance.h"

/// The working mail system: brings up the mail client's MAPI library, logs on to the default
/// profile, watches its calendar and contact folders and reads what is in them.
///
/// Owner:  library, session, store, address book and subscriptions. They go with FreeLib alone; the
///         destructor only destroys what FreeLib left empty. After FreeLib the object is not brought
///         up again.
/// Thread: the work thread. MAPI objects never leave it.
/// Errors: operations answer as CMailInterface tells; a status other than 0 refuses those that test
///         it. A failed step of a subscription or listing is traced and passed over.
class COutlookCtrl : public CMailCtrl,
                     public CABbase,
                     public CMessageStoreBase,
                     public CMAPIFolderBase,
                     public CMAPIMessageBase
{
public:
    COutlookCtrl();
    ~COutlookCtrl() override = default;

    /// Brings up the mail system on the first call and subscribes the folders of the init type on
    /// each. The result is that of the bring-up; failed subscriptions do not reach it.
    using CMailCtrl::Init;
    ULONG Init(ULONG initType);
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
    ULONG GetCurProfileInfo(BSTR* profile) override { return ProfileInfoFromStore(profile); }
    void ClearDataStore() override;

    ULONG GetMsgInfoByTableSink(IMAPIFolder* folder,
                                const WString& entryHex,
                                const WString& instanceHex,
                                WString& xml);
    ULONG DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml);
    ULONG GetContactInfoByTableSink(IMAPIFolder* folder,
                                    const WString& entryHex,
                                    const WString& instanceHex,
                                    ContactRecord& contact);
    ULONG
    SearchContacts(const WString& text, std::vector<ContactRecord>& contacts, ULONG maxResults);
    ULONG ResolveContacts(const WString& text, std::vector<ContactRecord>& contacts, ULONG kind);

    /// The profile document, made from the session facts alone. Answers 1 always.
    /// Owner:  the caller frees the text; a null `profile` is allowed.
    /// Thread: any.
    static ULONG ProfileInfoFromStore(BSTR* profile);

protected:
    bool LogonDefaultMAPIProfile() override;
    ULONG OpenAddressbook() override;
    ULONG Logoff();

    // The library, in the order of the bring-up.
    bool SetStub();
    bool LoadLib();
    bool MAPIXInit();
    void MAPIUninit();
    /// Writes this program's entry in the list of programs and the mail client that each wants.
    /// Errors: false for an empty file name alone; a list that cannot be written is not noticed.
    bool WriteStub(WStringView fileName) const;

    /// The names of the default profiles; in practice at most one.
    static void GetProfiles(std::vector<WString>& profiles);

    // The subscriptions.
    void InitAppTbl();
    void InitContactTbl();
    void UnAdviceTableSink();
    void UnAdviceContactTableSink();

    ULONG bMAPIX = 0;       ///< 1 once the library is about to be brought up
    ULONG bMAPIXInited = 0; ///< 1 between MAPIInitialize and MAPIUninitialize
    WString m_strStubKey = L"SOFTWARE\\Microsoft\\Windows Messaging Subsystem\\MSMapiApps";
    WString m_strMailClient = L"Microsoft Outlook";
    CLoadedModule m_hMAPIDll;
    std::vector<MAPI_TBLSinkInfo> m_CalendarSinks;
    std::vector<MAPI_TBLSinkInfo> m_ContactSinks;
    ULONG m_bNoDefaultProfile = 0; ///< the last logon found no profile to use

private:
    /// Lists the appointments of one folder that touch the window. Units: UTC.
    /// Errors: a folder that cannot be rewound empties `list` and leaves the error marker in it.
    ULONG ListAppointmentFromFolder(IMAPIFolder* folder,
                                    IMAPITable* table,
                                    std::vector<SharedMeeting>& list,
                                    const FILETIME& start,
                                    const FILETIME& end);
    /// Appends what one row of a listing gives; how many records that were.
    ULONG ListReference(IMAPIFolder* folder,
                        MapiItemRef reference,
                        std::vector<SharedMeeting>& list,
                        const FILETIME& start,
                        const FILETIME& end);
    /// The appointment that the reference in `meeting` names: from the data store, else read into
    /// `meeting` from its message and put into the data store. Null when it cannot be read.
    SharedMeeting GetAppointmentInfo(IMAPIFolder* folder, MeetingInfo meeting);
    /// The same by key, through the default store. Answers 0 for a key that the data store holds.
    ULONG GetAppointmentInfoByKey(const WString& key, MeetingInfo& meeting);
    ULONG ReadAppointmentFromMessage(IMessage* message, MeetingInfo& meeting);
    /// Gives the meeting a host and its attendees usable addresses.
    void CheckAppointmentAttendees(MeetingInfo& meeting) const;

    /// Appends the instances of a series that start in the window, both ends included; false when
    /// there are none. Units: UTC.
    bool GetRecItem(const MeetingInfo& master,
                    const FILETIME& start,
                    const FILETIME& end,
                    std::vector<MeetingInfo>& list);
    MeetingInfo MakeInstance(const MeetingInfo& master,
                             const WString& key,
                             const RecurInstance& found);
    /// Reads the changed instance that lies where `found` does, and once the recipients of all.
    bool ReadException(const MeetingInfo& master,
                       const WString& key,
                       const RecurInstance& found,
                       MeetingInfo& current);

    ULONG BringUp();
    ULONG FailBringUp(const char* message, ULONG result);
    bool LoadCandidate(const WString& path);
    void SubscribeFolders(std::vector<MapiFolderInfo> folders, ULONG kind);
};

/// The part of `path` behind the last slash, backslash or colon.
WStringView FileNameOfPath(WStringView path) noexcept;
