#pragma once

#include "Opening.h"

namespace mapistore
{

/// IMAPIFolder. Changes of its properties are saved at once.
class CFolderObject final : public CPropObject<IMAPIFolder>
{
public:
    CFolderObject(StorePtr store, std::uint64_t id, bool writable, Operation madeBy);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI GetContentsTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI GetHierarchyTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                             ENTRYID* entryId,
                             const IID* iid,
                             ULONG flags,
                             ULONG* objectType,
                             IUnknown** out) override;
    HRESULT WINAPI SetSearchCriteria(SRestriction* res,
                                     ENTRYLIST* containers,
                                     ULONG flags) override;
    HRESULT WINAPI GetSearchCriteria(ULONG flags,
                                     SRestriction** res,
                                     ENTRYLIST** containers,
                                     ULONG* state) override;
    HRESULT WINAPI CreateMessage(const IID* iid, ULONG flags, IMessage** out) override;
    HRESULT WINAPI CopyMessages(ENTRYLIST* messages,
                                const IID* iid,
                                void* target,
                                ULONG window,
                                IMAPIProgress* progress,
                                ULONG flags) override;
    HRESULT WINAPI DeleteMessages(ENTRYLIST* messages,
                                  ULONG window,
                                  IMAPIProgress* progress,
                                  ULONG flags) override;
    HRESULT WINAPI CreateFolder(ULONG type,
                                LPTSTR name,
                                LPTSTR comment,
                                const IID* iid,
                                ULONG flags,
                                IMAPIFolder** out) override;
    HRESULT WINAPI CopyFolder(ULONG cbEntryId,
                              ENTRYID* entryId,
                              const IID* iid,
                              void* target,
                              LPTSTR name,
                              ULONG window,
                              IMAPIProgress* progress,
                              ULONG flags) override;
    HRESULT WINAPI DeleteFolder(ULONG cbEntryId,
                                ENTRYID* entryId,
                                ULONG window,
                                IMAPIProgress* progress,
                                ULONG flags) override;
    HRESULT WINAPI SetReadFlags(ENTRYLIST* messages,
                                ULONG window,
                                IMAPIProgress* progress,
                                ULONG flags) override;
    HRESULT WINAPI GetMessageStatus(ULONG cbEntryId,
                                    ENTRYID* entryId,
                                    ULONG flags,
                                    ULONG* status) override;
    HRESULT WINAPI SetMessageStatus(
        ULONG cbEntryId, ENTRYID* entryId, ULONG status, ULONG mask, ULONG* oldStatus) override;
    HRESULT WINAPI SaveContentsSort(SSortOrderSet* order, ULONG flags) override;
    HRESULT WINAPI EmptyFolder(ULONG window, IMAPIProgress* progress, ULONG flags) override;

    std::uint64_t Id() const { return m_id; }
    const StorePtr& StoreOf() const { return m_store; }

protected:
    void Dispose() noexcept override;
    const CValue* FindValue(ULONG id, CValue& scratch) override;
    void AddTags(std::vector<ULONG>& tags) override;
    void Change(const PropertyChange& change) override;
    bool Writable() const override { return m_writable; }
    SCODE ProblemOf(ULONG id) const override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags) override;

private:
    const Store& StoreData() const;
    const Folder& Data() const;
    ::IMAPITable* ContentsTable(bool associated, bool unicode, Operation operation) const;
    ::IMAPITable* HierarchyTable(bool deep, bool unicode, Operation operation) const;
    void RequireWrite() const;
    /// The message that an identifier names; it has to lie in this folder.
    std::shared_ptr<const CMessageRow> MessageOf(const SBinary& id) const;
    void DeleteAll(std::uint64_t folder, bool messages, bool folders, bool associated);
    HRESULT NoSupport(Operation operation) noexcept;

    StorePtr m_store;
    std::uint64_t m_id;
    bool m_writable;
};

} // namespace mapistore
