#pragma once

#include "Object.h"
#include "Opening.h"

namespace mapistore
{

/// IMAPISession: one logon to one profile.
class CSession final : public CObject<mapi64::IMAPISession>
{
public:
    CSession(std::shared_ptr<CStoreFolder> folder, std::wstring profile, Operation madeBy);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) override;
    HRESULT WINAPI GetMsgStoresTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI OpenMsgStore(ULONG_PTR window,
                                ULONG cbEntryId,
                                ENTRYID* entryId,
                                const IID* iid,
                                ULONG flags,
                                ::IMsgStore** out) override;
    HRESULT WINAPI OpenAddressBook(ULONG_PTR window,
                                   const IID* iid,
                                   ULONG flags,
                                   ::IAddrBook** out) override;
    HRESULT WINAPI OpenProfileSection(MAPIUID* uid,
                                      const IID* iid,
                                      ULONG flags,
                                      IProfSect** out) override;
    HRESULT WINAPI GetStatusTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                             ENTRYID* entryId,
                             const IID* iid,
                             ULONG flags,
                             ULONG* objectType,
                             IUnknown** out) override;
    HRESULT WINAPI CompareEntryIDs(ULONG cbFirst,
                                   ENTRYID* first,
                                   ULONG cbSecond,
                                   ENTRYID* second,
                                   ULONG flags,
                                   ULONG* result) override;
    HRESULT WINAPI Advise(ULONG cbEntryId,
                          ENTRYID* entryId,
                          ULONG eventMask,
                          IMAPIAdviseSink* sink,
                          mapi64::Connection* out) override;
    HRESULT WINAPI Unadvise(mapi64::Connection connection) override;
    HRESULT WINAPI MessageOptions(ULONG_PTR window,
                                  ULONG flags,
                                  LPTSTR addressType,
                                  IMessage* message) override;
    HRESULT WINAPI QueryDefaultMessageOpt(LPTSTR addressType,
                                          ULONG flags,
                                          ULONG* count,
                                          SPropValue** options) override;
    HRESULT WINAPI EnumAdrTypes(ULONG flags, ULONG* count, LPTSTR** types) override;
    HRESULT WINAPI QueryIdentity(ULONG* cbEntryId, ENTRYID** entryId) override;
    HRESULT WINAPI Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) override;
    HRESULT WINAPI SetDefaultStore(ULONG flags, ULONG cbEntryId, ENTRYID* entryId) override;
    HRESULT WINAPI AdminServices(ULONG flags, IMsgServiceAdmin** out) override;
    HRESULT WINAPI ShowForm(ULONG_PTR window,
                            ::IMsgStore* store,
                            IMAPIFolder* parent,
                            const IID* iid,
                            ULONG_PTR messageToken,
                            IMessage* message,
                            ULONG flags,
                            ULONG status,
                            ULONG messageFlags,
                            ULONG access,
                            LPSTR messageClass) override;
    HRESULT WINAPI PrepareForm(const IID* iid, IMessage* message, ULONG_PTR* token) override;

protected:
    void Dispose() noexcept override;

private:
    CSession(std::shared_ptr<CStoreFolder> folder,
             std::wstring profile,
             Operation madeBy,
             const std::shared_ptr<CLifeline>& life);

    StorePtr OpenContext(const Uid& uid, ULONG type);
    const Profile& ProfileOf() const;
    HRESULT NoSupport(Operation operation) noexcept;

    std::shared_ptr<CStoreFolder> m_folder;
    std::wstring m_profile;
    std::shared_ptr<CLifeline> m_life; // of the session and its children: ends with the logoff
};

} // namespace mapistore
