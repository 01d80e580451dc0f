#pragma once

#include "Opening.h"

namespace mapistore
{

/// What IABContainer and IDistList have in common: a read-only container of entries.
template <class Interface>
class CContainerBase : public CPropObject<Interface>
{
public:
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
    HRESULT WINAPI CreateEntry(ULONG cbEntryId,
                               ENTRYID* entryId,
                               ULONG flags,
                               IMAPIProp** out) override;
    HRESULT WINAPI CopyEntries(ENTRYLIST* entries,
                               ULONG window,
                               IMAPIProgress* progress,
                               ULONG flags) override;
    HRESULT WINAPI DeleteEntries(ENTRYLIST* entries, ULONG flags) override;
    HRESULT WINAPI ResolveNames(SPropTagArray* tags,
                                ULONG flags,
                                ADRLIST* list,
                                FlagList* results) override;

protected:
    /// `ops` is the first operation of the interface; its others follow in operations.txt.
    CContainerBase(const char* name,
                   Operation ops,
                   std::uint64_t id,
                   CPropertyBag bag,
                   std::shared_ptr<CStoreFolder> folder,
                   Lifeline life,
                   Operation madeBy)
        : CPropObject<Interface>(name, ops, madeBy, std::move(folder), std::move(life)),
          m_firstOp(ops), m_id(id), m_bag(std::move(bag))
    {
    }
    void Dispose() noexcept override
    {
        m_bag.Clear();
        this->DropFolder();
    }
    const CValue* FindValue(ULONG id, CValue&) override { return m_bag.Find(id); }
    void AddTags(std::vector<ULONG>& tags) override
    {
        for (const CValue& value : m_bag)
        {
            tags.push_back(value.Tag());
        }
    }
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags) override;

    /// The entries that a contents table shows, in the order of the document.
    virtual std::vector<const Entry*> Entries() const = 0;
    virtual bool HasContainers() const = 0;

    std::uint64_t Id() const { return m_id; }

private:
    Operation OpAt(int index) const { return static_cast<Operation>(m_firstOp + index); }
    ::IMAPITable* Contents(bool unicode, Operation operation) const;
    ::IMAPITable* Hierarchy(bool deep, bool unicode, Operation operation) const;
    HRESULT NoSupport(int index) noexcept;

    Operation m_firstOp;
    std::uint64_t m_id; // 0: the root
    CPropertyBag m_bag;
};

} // namespace mapistore
