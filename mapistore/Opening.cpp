#include "Opening.h"

#include <cstring>

#include "FolderRow.h"
#include "MapiTags64.h"

namespace mapistore
{

IUnknown* OpenStoreEntry(const StorePtr& store,
                         ULONG cb,
                         const ENTRYID* entryId,
                         const IID* iid,
                         ULONG flags,
                         ULONG* objectType,
                         Operation madeBy)
{
    Document& document = store->folder->Data();
    const Store* data = document.FindStore(store->store);
    if (data == nullptr)
    {
        throw CMapiError(MAPI_E_OBJECT_DELETED, L"the store is gone from the document");
    }
    ULONG type = MAPI_FOLDER;
    std::uint64_t id = 0;
    if (cb == 0)
    {
        for (const Folder& folder : data->folders)
        {
            id = folder.parent == 0 ? folder.id : id;
        }
    }
    else
    {
        const std::optional<EntryName> name = ReadEntryId(cb, entryId);
        if (!name)
        {
            throw CMapiError(MAPI_E_INVALID_ENTRYID, L"no identifier of this library");
        }
        if (name->uid != store->uid)
        {
            throw CMapiError(MAPI_E_UNKNOWN_ENTRYID, L"an identifier of another store");
        }
        type = name->objectType;
        id = name->id;
    }
    IUnknown* object = nullptr;
    if (type == MAPI_FOLDER)
    {
        object = OpenFolderObject(store, id, iid, flags, madeBy);
    }
    else if (type == MAPI_MESSAGE)
    {
        object = OpenMessageObject(store, id, iid, flags, madeBy);
    }
    else
    {
        throw CMapiError(MAPI_E_INVALID_ENTRYID, L"an identifier of neither folder nor message");
    }
    if (objectType != nullptr)
    {
        *objectType = type;
    }
    return object;
}

bool IsBookEntry(CStoreFolder& folder, ULONG cb, const ENTRYID* entryId)
{
    if (entryId == nullptr)
    {
        return false;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(entryId), cb);
    const std::optional<EntryName> name = ReadEntryId(bytes);
    return ReadOneOff(bytes).has_value() ||
           (name && name->uid == folder.Data().addressBook.uid && name->objectType != MAPI_STORE &&
            name->objectType != MAPI_FOLDER && name->objectType != MAPI_MESSAGE);
}

bool SameEntry(ULONG cbFirst, const ENTRYID* first, ULONG cbSecond, const ENTRYID* second)
{
    if (first == nullptr || second == nullptr)
    {
        throw CMapiError(MAPI_E_INVALID_ENTRYID, L"an identifier is missing");
    }
    const std::string_view a(reinterpret_cast<const char*>(first), cbFirst);
    const std::string_view b(reinterpret_cast<const char*>(second), cbSecond);
    const std::optional<EntryName> left = ReadEntryId(a);
    const std::optional<EntryName> right = ReadEntryId(b);
    if ((!left && !ReadOneOff(a)) || (!right && !ReadOneOff(b)))
    {
        throw CMapiError(MAPI_E_INVALID_ENTRYID, L"no identifier of this library");
    }
    if (left && right)
    {
        return left->uid == right->uid && left->objectType == right->objectType &&
               left->id == right->id;
    }
    return a == b;
}

ENTRYID* GiveEntryId(const std::string& id, ULONG* cb, Operation operation)
{
    CBuffer buffer(id.size(), operation);
    std::memcpy(buffer.Data(), id.data(), id.size());
    *cb = static_cast<ULONG>(id.size());
    return static_cast<ENTRYID*>(buffer.Detach());
}

std::vector<ULONG> ContentsColumns()
{
    return {PR_ENTRYID,
            PR_INSTANCE_KEY,
            PR_RECORD_KEY,
            PR_PARENT_ENTRYID,
            PR_STORE_ENTRYID,
            PR_OBJECT_TYPE,
            PR_MESSAGE_CLASS_W,
            PR_SUBJECT_W,
            PR_DISPLAY_TO_W,
            PR_SENDER_NAME_W,
            PR_CLIENT_SUBMIT_TIME,
            PR_MESSAGE_DELIVERY_TIME,
            PR_LAST_MODIFICATION_TIME,
            PR_MESSAGE_FLAGS,
            PR_MESSAGE_SIZE,
            PR_IMPORTANCE,
            PR_SENSITIVITY,
            PR_HASATTACH};
}

} // namespace mapistore
