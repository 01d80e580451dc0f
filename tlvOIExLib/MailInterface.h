#pragma once

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <vector>

#include "EventText.h"
#include "PlatformTypes.h"

struct ContactRecord;
struct MailRecord;
struct IMAPIFolder;

/// The one table of operations through which the work thread reaches a mail system.
///
/// Shape:  13 virtual operations in this order. Times are UTC; entry identifiers and keys are
///         uppercase hexadecimal text.
/// Owner:  out texts and lists are filled by the callee and belong to the caller.
/// Thread: the work thread, except GetCurProfileInfo and ClearDataStore, which other threads call as
///         well and which therefore touch nothing but the data store: the work thread may be
///         deleting a controller meanwhile.
/// Errors: the operations from SendMail to GetCurProfileInfo answer an unsigned 32-bit value, a
///         status or a truth value as each of them says.
class CMailInterface
{
public:
    CMailInterface() = default;
    CMailInterface(const CMailInterface&) = delete;
    CMailInterface& operator=(const CMailInterface&) = delete;
    virtual ~CMailInterface() = default;

    virtual ULONG Init() { return 0; }
    virtual void FreeLib() {}

    /// `flag` is 0 and unused.
    virtual ULONG SendMail(WString subject, WString recipients, WString body, ULONG flag) = 0;
    /// Answers 1 when `smtp` was set, else 0.
    virtual ULONG GetSMTPFromDispName(const WString& name, WString& smtp) = 0;
    virtual ULONG ListAppointment(FILETIME start, FILETIME end, CEventText& xml) = 0;
    virtual ULONG ListRecurrentInstance(const WString& entryId,
                                        const FILETIME* start,
                                        const FILETIME* end,
                                        WString& xml) = 0;
    /// `folderType` 1 is the inbox, 3 the sent items.
    virtual ULONG ListRecentEmail(ULONG number,
                                  const WString& contact,
                                  ULONG folderType,
                                  std::vector<MailRecord>& mails) = 0;
    virtual ULONG GetAppointment(const WString& entryId, WString& xml) = 0;
    virtual ULONG GetPersonalContact(std::vector<ContactRecord>& contacts) = 0;
    /// Takes one contact out of the data store; non-zero when it was there.
    virtual ULONG GetContactDetail(const WString& key, ContactRecord& contact) = 0;
    /// Owner: the caller frees the text that `profile` receives.
    virtual ULONG GetCurProfileInfo(BSTR* profile) = 0;
    /// Empties the four maps of the data store.
    virtual void ClearDataStore() = 0;
};

/// Mail types as the client names them.
enum MailType : ULONG
{
    MailTypeNone = 0, ///< before the first Init
    MailTypeOutlook = 1,
    MailTypeNotes = 16,
};

/// What a client asked to be brought up.
enum InitType : ULONG
{
    InitTypeNone = 0,
    InitTypeCalendar = 1,
    InitTypeContacts = 2,
};

/// Kinds of IMailSwitch::ResolveContacts.
enum ResolveKind : ULONG
{
    ResolveUri = 1,
    ResolvePhone = 2,
};

/// What the work thread owns: a mail interface with a switch between mail systems, and the plain
/// operations that only the switch has.
///
/// Thread: Init, GetMailType aside, and all others run on the work thread. GetMailType: any thread.
class IMailSwitch : public CMailInterface
{
public:
    using CMailInterface::Init;

    /// Selects the mail system and brings it up; 0 is ready, anything else a result code for the
    /// client.
    virtual ULONG Init(ULONG mailType, ULONG initType) = 0;
    /// The mail type of the last Init that was understood.
    [[nodiscard]] virtual ULONG GetMailType() const = 0;

    /// The three answers of a changed row: non-zero when the client is to be told.
    /// Owner: `folder` is borrowed from the subscription that queued the task.
    virtual ULONG GetMsgInfoByTableSink(IMAPIFolder* folder,
                                        const WString& entryHex,
                                        const WString& instanceHex,
                                        WString& xml) = 0;
    virtual ULONG DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml) = 0;
    virtual ULONG GetContactInfoByTableSink(IMAPIFolder* folder,
                                            const WString& entryHex,
                                            const WString& instanceHex,
                                            ContactRecord& contact) = 0;

    virtual ULONG SearchContacts(const WString& text,
                                 std::vector<ContactRecord>& contacts,
                                 ULONG maxResults) = 0;
    virtual ULONG ResolveContacts(const WString& text,
                                  std::vector<ContactRecord>& contacts,
                                  ULONG kind) = 0;
};

/// Makes the switch that a new work thread owns. Null means that it could not be made.
using MailSwitchFactory = std::unique_ptr<IMailSwitch> (*)() noexcept;

/// Installs the factory and returns the one before it. Without a factory nothing is made.
/// Thread: before the work thread object is created.
MailSwitchFactory SetMailSwitchFactory(MailSwitchFactory factory) noexcept;

/// A new switch from the installed factory, null without one.
std::unique_ptr<IMailSwitch> MakeMailSwitch() noexcept;
