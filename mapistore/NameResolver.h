#pragma once

#include "Object.h"
#include "StoreFolder.h"

namespace mapistore
{

/// Fills recipients of an address list in from the address book.
///
/// A name in the form of an SMTP address is the entry with that address, or else a one-off; any
/// other name is the one entry that answers to it, an entry with exactly that display name before
/// others.
/// Thread: the store folder's lock is held.
class CNameResolver
{
public:
    CNameResolver(CStoreFolder& folder, bool unicode, Operation operation)
        : m_folder(folder), m_unicode(unicode), m_operation(operation)
    {
    }

    /// Looks only into the entries of one container; 0 for all.
    void Within(std::uint64_t container) { m_container = container; }

    /// S_OK, also for an entry that is resolved already; MAPI_E_NOT_FOUND, or MAPI_E_AMBIGUOUS_RECIP
    /// when more than one entry answers. `tags` are the properties wanted; null for the usual ones.
    ///
    /// Owner: the values of a resolved entry are allocated as they were: as a head of their own, or
    ///        linked to the list. The old ones are freed when they were a head.
    HRESULT Resolve(ADRLIST& list, ADRENTRY& entry, const SPropTagArray* tags);

    /// Adds what the address book knows of an entry that has an identifier.
    void Complete(ADRLIST& list, ADRENTRY& entry, const SPropTagArray* tags);

private:
    const Entry* Find(const std::wstring& name, HRESULT& hr) const;
    void Fill(ADRLIST& list, ADRENTRY& entry, const CPropertyBag& found, const SPropTagArray* tags);

    CStoreFolder& m_folder;
    bool m_unicode;
    Operation m_operation;
    std::uint64_t m_container = 0;
};

} // namespace mapistore
