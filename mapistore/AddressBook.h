#pragma once

#include "Opening.h"

namespace mapistore
{

/// IAddrBook over the address book of the document, which is read only.
class CAddressBook final : public CPropObject<mapi64::IAddrBook>
{
public:
    CAddressBook(std::shared_ptr<CStoreFolder> folder, Lifeline life, Operation madeBy);

    bool Supports(REFIID iid) const override;

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
    HRESULT WINAPI CreateOneOff(LPTSTR name,
                                LPTSTR addressType,
                                LPTSTR address,
                                ULONG flags,
                                ULONG* cbEntryId,
                                ENTRYID** entryId) override;
    HRESULT WINAPI NewEntry(ULONG_PTR window,
                            ULONG flags,
                            ULONG cbContainer,
                            ENTRYID* container,
                            ULONG cbTemplate,
                            ENTRYID* entryTemplate,
                            ULONG* cbNew,
                            ENTRYID** newEntry) override;
    HRESULT WINAPI ResolveName(ULONG_PTR window, ULONG flags, LPTSTR title, ADRLIST* list) override;
    HRESULT WINAPI Address(ULONG_PTR* window, ADRPARM* parameters, ADRLIST** list) override;
    HRESULT WINAPI Details(ULONG_PTR* window,
                           LPFNDISMISS dismiss,
                           void* dismissContext,
                           ULONG cbEntryId,
                           ENTRYID* entryId,
                           LPFNBUTTON button,
                           void* buttonContext,
                           LPTSTR buttonText,
                           ULONG flags) override;
    HRESULT WINAPI RecipOptions(ULONG_PTR window, ULONG flags, ADRENTRY* recipient) override;
    HRESULT WINAPI QueryDefaultRecipOpt(LPTSTR addressType,
                                        ULONG flags,
                                        ULONG* count,
                                        SPropValue** options) override;
    HRESULT WINAPI GetPAB(ULONG* cbEntryId, ENTRYID** entryId) override;
    HRESULT WINAPI SetPAB(ULONG cbEntryId, ENTRYID* entryId) override;
    HRESULT WINAPI GetDefaultDir(ULONG* cbEntryId, ENTRYID** entryId) override;
    HRESULT WINAPI SetDefaultDir(ULONG cbEntryId, ENTRYID* entryId) override;
    HRESULT WINAPI GetSearchPath(ULONG flags, SRowSet** path) override;
    HRESULT WINAPI SetSearchPath(ULONG flags, SRowSet* path) override;
    HRESULT WINAPI PrepareRecips(ULONG flags, SPropTagArray* tags, ADRLIST* list) override;

protected:
    void Dispose() noexcept override;
    const CValue* FindValue(ULONG id, CValue& scratch) override;
    void AddTags(std::vector<ULONG>& tags) override;

private:
    HRESULT GiveContainer(Operation operation, bool global, ULONG* cb, ENTRYID** entryId) noexcept;
    HRESULT NoSupport(Operation operation) noexcept;
};

} // namespace mapistore
