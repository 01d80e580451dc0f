#pragma once

#include "Opening.h"

namespace mapistore
{

/// IMsgStore.
class CStoreObject final : public CPropObject<mapi64::IMsgStore>
{
public:
    CStoreObject(StorePtr store, bool bestAccess, Operation madeBy);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI Advise(ULONG cbEntryId,
                          ENTRYID* entryId,
                          ULONG eventMask,
                          IMAPIAdviseSink* sink,
                          mapi64::Connection* out) override;
    HRESULT WINAPI Unadvise(mapi64::Connection connection) override;
    HRESULT WINAPI CompareEntryIDs(ULONG cbFirst,
                                   ENTRYID* first,
                                   ULONG cbSecond,
                                   ENTRYID* second,
                                   ULONG flags,
                                   ULONG* result) override;
    HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                             ENTRYID* entryId,
                             const IID* iid,
                             ULONG flags,
                             ULONG* objectType,
                             IUnknown** out) override;
    HRESULT WINAPI SetReceiveFolder(LPTSTR messageClass,
                                    ULONG flags,
                                    ULONG cbEntryId,
                                    ENTRYID* entryId) override;
    HRESULT WINAPI GetReceiveFolder(LPTSTR messageClass,
                                    ULONG flags,
                                    ULONG* cbEntryId,
                                    ENTRYID** entryId,
                                    LPTSTR* explicitClass) override;
    HRESULT WINAPI GetReceiveFolderTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI StoreLogoff(ULONG* flags) override;
    HRESULT WINAPI AbortSubmit(ULONG cbEntryId, ENTRYID* entryId, ULONG flags) override;
    HRESULT WINAPI GetOutgoingQueue(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI SetLockState(IMessage* message, ULONG state) override;
    HRESULT WINAPI FinishedMsg(ULONG flags, ULONG cbEntryId, ENTRYID* entryId) override;
    HRESULT WINAPI NotifyNewMail(NOTIFICATION* notification) override;

protected:
    void Dispose() noexcept override;
    const CValue* FindValue(ULONG id, CValue& scratch) override;
    void AddTags(std::vector<ULONG>& tags) override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags) override;

private:
    const Store& Data() const;
    ::IMAPITable* ReceiveFolders(bool unicode, Operation operation) const;
    HRESULT NoSupport(Operation operation) noexcept;

    StorePtr m_store;
    bool m_bestAccess;
    std::map<mapi64::Connection, CLedger::Ticket> m_tickets;
};

} // namespace mapistore
