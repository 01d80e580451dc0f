#pragma once

#include "BinaryBlock.h"
#include "ComRef.h"
#include "MapiHeaders.h"
#include "PlatformTypes.h"

/// The session and the default store, on which all else stands, and the user of the session.
///
/// Owner:  session, store and the two cached folders. Whoever gets a cached folder borrows it.
/// Thread: the work thread.
class CMessageStoreBase
{
public:
    CMessageStoreBase(const CMessageStoreBase&) = delete;
    CMessageStoreBase& operator=(const CMessageStoreBase&) = delete;

protected:
    CMessageStoreBase() = default;
    virtual ~CMessageStoreBase() = default;

    /// True when a new session was opened.
    virtual bool LogonDefaultMAPIProfile() = 0;

    /// Opens the default store of the session, online or by best access as the settings say. Writes
    /// the store's facts to the data store, whatever the outcome.
    /// Errors: false when there is no default store or it would not open; never tried twice.
    bool OpenDefaultMessageStore();
    void CloseMessageStore();
    void LogoffMAPISession();

    /// Finds outbox and sent items of the store. One that the store does not have stays empty.
    void GetCommonEids();

    /// Finds address and name of the session's user, and writes what it found to the data store.
    /// Errors: false unless both are known; a network error is tried once more after a second.
    bool GetCurrentUserInfo();

    /// The folder that receives mail, opened once. Owner: the cache keeps it.
    IMAPIFolder* GetInboxFolder();
    /// The folder of sent mail, for all its name, opened once. Owner: the cache keeps it.
    IMAPIFolder* GetOutboxFolder();

    /// Errors: null unless the object is a folder.
    CComRef<IMAPIFolder> OpenFolder(const BinaryBlock& entryId);
    /// Errors: null unless the object is a message.
    CComRef<IMessage> OpenMAPIMessage(const BinaryBlock& entryId);

    CComRef<IMAPISession> lpSession;
    WString m_strProfile; ///< the profile in use
    CComRef<IMsgStore> lpMsgStore;
    WString m_strStoreName;
    BinaryBlock m_StoreEid;
    WString m_strUserEmail;
    WString m_strUserName;
    CComRef<IMAPIFolder> m_pInbox;
    CComRef<IMAPIFolder> m_pSentFolder;
    BinaryBlock m_OutboxEid;
    BinaryBlock m_SentEid;
    BinaryBlock m_ReservedEid; ///< kept empty
    /// 1 when the identifiers of table rows have to be read again from the open message, because
    /// the default store is no personal one.
    ULONG m_bNeedRealEntryID = 1;

private:
    struct DefaultStore;

    bool FindDefaultStore(IMAPITable* table, DefaultStore& found) const;
    void JudgeProvider(const DefaultStore& found);
    bool OpenFoundStore(const DefaultStore& found);
    CComRef<IUnknown> OpenObject(const BinaryBlock& entryId,
                                 ULONG wantedType,
                                 HRESULT& status,
                                 ULONG& objectType);
};
