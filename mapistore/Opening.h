#pragma once

#include "PropObject.h"

namespace mapistore
{

/// The store that an object belongs to, shared by everything opened through it.
struct StoreContext
{
    std::shared_ptr<CStoreFolder> folder;
    std::uint64_t store = 0;
    Uid uid{};
    std::shared_ptr<CLifeline> life;
};

using StorePtr = std::shared_ptr<const StoreContext>;

/// Interfaces that only the library's own objects have, to know them when a caller hands one in.
constexpr GUID kOwnMessage = {
    0x6B1E7A52, 0x0C9D, 0x4B6F, {0x9A, 0x41, 0x3D, 0x52, 0x77, 0xC0, 0x18, 0xE3}};
constexpr GUID kOwnFolder = {
    0x2F4C0D91, 0x7E35, 0x4A8B, {0xB6, 0x0F, 0x91, 0xD4, 0x2A, 0x6C, 0x83, 0x5E}};

/// Flags that every OpenEntry takes.
constexpr ULONG kOpenFlags = MAPI_MODIFY | MAPI_DEFERRED_ERRORS | MAPI_BEST_ACCESS | 0x200 | 0x4000;

// Each makes an object with one reference; `iid` may be null. They throw CMapiError, and hold the
// caller's promise that the store folder's lock is held.

IUnknown* OpenFolderObject(
    const StorePtr& store, std::uint64_t folder, const IID* iid, ULONG flags, Operation madeBy);
IUnknown* OpenMessageObject(
    const StorePtr& store, std::uint64_t message, const IID* iid, ULONG flags, Operation madeBy);
IMessage* NewMessageObject(
    const StorePtr& store, std::uint64_t folder, bool associated, const IID* iid, Operation madeBy);

/// Opens whatever a store's identifier names; the empty one names the root folder.
IUnknown* OpenStoreEntry(const StorePtr& store,
                         ULONG cb,
                         const ENTRYID* entryId,
                         const IID* iid,
                         ULONG flags,
                         ULONG* objectType,
                         Operation madeBy);

/// Opens an entry, a container or a one-off of the address book; the empty one names the root.
IUnknown* OpenBookEntry(const std::shared_ptr<CStoreFolder>& folder,
                        const Lifeline& life,
                        ULONG cb,
                        const ENTRYID* entryId,
                        const IID* iid,
                        ULONG flags,
                        ULONG* objectType,
                        Operation madeBy);

/// Whether the identifier is one of the address book's, a one-off included.
bool IsBookEntry(CStoreFolder& folder, ULONG cb, const ENTRYID* entryId);

/// Whether two identifiers name one object. Throws MAPI_E_INVALID_ENTRYID for one of neither kind.
bool SameEntry(ULONG cbFirst, const ENTRYID* first, ULONG cbSecond, const ENTRYID* second);

/// Copies an identifier into a buffer for the caller.
ENTRYID* GiveEntryId(const std::string& id, ULONG* cb, Operation operation);

/// Columns that contents tables begin with.
std::vector<ULONG> ContentsColumns();

} // namespace mapistore
