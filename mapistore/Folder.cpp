#include "Folder.h"

#include <algorithm>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "Table.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPIFolder", method);
}

constexpr ULONG kTableFlags = MAPI_UNICODE | MAPI_DEFERRED_ERRORS;

std::vector<ULONG> HierarchyColumns()
{
    return {PR_ENTRYID,
            PR_DISPLAY_NAME_W,
            PR_INSTANCE_KEY,
            PR_RECORD_KEY,
            PR_PARENT_ENTRYID,
            PR_OBJECT_TYPE,
            PR_FOLDER_TYPE,
            PR_SUBFOLDERS,
            PR_CONTENT_COUNT,
            PR_CONTENT_UNREAD,
            kTagContainerClassW,
            kTagAttrHidden,
            PR_STATUS};
}

TableSetup SetupOf(const char* kind,
                   bool unicode,
                   bool advises,
                   const std::shared_ptr<CStoreFolder>& folder,
                   Operation operation)
{
    TableSetup setup;
    setup.kind = kind;
    setup.unicode = unicode;
    setup.advises = advises;
    setup.madeBy = operation;
    setup.keepAlive = folder;
    setup.sharedLock = &folder->Lock();
    return setup;
}

void AddDescendants(const Store& store, std::uint64_t parent, LONG depth, std::vector<RowPtr>& rows)
{
    for (const Folder& folder : store.folders)
    {
        if (folder.parent == parent)
        {
            CPropertyBag bag = FolderProperties(store, folder);
            bag.Set(CValue::Long(PR_DEPTH, depth));
            rows.push_back(std::make_shared<CBagRow>(rows.size() + 1, std::move(bag)));
            AddDescendants(store, folder.id, depth + 1, rows);
        }
    }
}

} // namespace

CFolderObject::CFolderObject(StorePtr store, std::uint64_t id, bool writable, Operation madeBy)
    : CPropObject("IMAPIFolder", Op("GetLastError"), madeBy, store->folder, store->life),
      m_store(std::move(store)), m_id(id), m_writable(writable)
{
}

bool CFolderObject::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IMAPIContainer ||
           iid == IID_IMAPIFolder || iid == kOwnFolder;
}

void CFolderObject::Dispose() noexcept
{
    m_store.reset();
    DropFolder();
}

const Store& CFolderObject::StoreData() const
{
    const Store* store = m_store->folder->Data().FindStore(m_store->store);
    if (store == nullptr)
    {
        throw CMapiError(MAPI_E_OBJECT_DELETED, L"the store is gone from the document");
    }
    return *store;
}

const Folder& CFolderObject::Data() const
{
    const Folder* folder = FindFolder(StoreData(), m_id);
    if (folder == nullptr)
    {
        throw CMapiError(MAPI_E_OBJECT_DELETED, L"the folder is gone from the store");
    }
    return *folder;
}

void CFolderObject::RequireWrite() const
{
    if (!m_writable)
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the folder is open for reading only");
    }
}

const CValue* CFolderObject::FindValue(ULONG id, CValue& scratch)
{
    const CPropertyBag bag = FolderProperties(StoreData(), Data());
    const CValue* value = bag.Find(id);
    if (value == nullptr)
    {
        return nullptr;
    }
    scratch = *value;
    return &scratch;
}

void CFolderObject::AddTags(std::vector<ULONG>& tags)
{
    for (const CValue& value : FolderProperties(StoreData(), Data()))
    {
        tags.push_back(value.Tag());
    }
}

SCODE CFolderObject::ProblemOf(ULONG id) const
{
    switch (id)
    {
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_PARENT_ENTRYID):
    case PROP_ID(PR_STORE_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_STORE_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
    case PROP_ID(PR_OBJECT_TYPE):
    case PROP_ID(PR_FOLDER_TYPE):
    case PROP_ID(PR_SUBFOLDERS):
    case PROP_ID(PR_CONTENT_COUNT):
    case PROP_ID(PR_CONTENT_UNREAD):
        return MAPI_E_COMPUTED;
    default:
        return S_OK;
    }
}

void CFolderObject::Change(const PropertyChange& change)
{
    m_store->folder->ChangeFolder(m_id, change);
}

::IMAPITable* CFolderObject::ContentsTable(bool associated, bool unicode, Operation operation) const
{
    const std::shared_ptr<CStoreFolder> folder = m_store->folder;
    const std::uint64_t storeId = m_store->store;
    const std::uint64_t id = m_id;
    auto view = std::make_shared<CTableView>(
        [folder, storeId, id, associated] {
            std::vector<RowPtr> rows;
            const Store* store = folder->Data().FindStore(storeId);
            const Folder* data = store != nullptr ? FindFolder(*store, id) : nullptr;
            if (data != nullptr)
            {
                rows.reserve(data->messages.size());
                for (const auto& message : data->messages)
                {
                    if (message->Associated() == associated)
                    {
                        rows.push_back(message);
                    }
                }
            }
            return rows;
        },
        ColumnsInWidth(ContentsColumns(), unicode));
    folder->Register({associated ? ViewKey::Kind::Associated : ViewKey::Kind::Contents, id}, view);
    auto* table = new CTable(
        SetupOf(associated ? "associated" : "contents", unicode, Data().advise, folder, operation),
        std::move(view),
        Life());
    return reinterpret_cast<::IMAPITable*>(table);
}

::IMAPITable* CFolderObject::HierarchyTable(bool deep, bool unicode, Operation operation) const
{
    const std::shared_ptr<CStoreFolder> folder = m_store->folder;
    const std::uint64_t storeId = m_store->store;
    const std::uint64_t id = m_id;
    if (deep)
    {
        std::vector<RowPtr> rows;
        AddDescendants(StoreData(), id, 1, rows);
        std::vector<ULONG> columns = HierarchyColumns();
        columns.push_back(PR_DEPTH);
        return reinterpret_cast<::IMAPITable*>(MakeStaticTable(
            "hierarchy", std::move(rows), std::move(columns), unicode, operation, Life()));
    }
    auto view = std::make_shared<CTableView>(
        [folder, storeId, id] {
            std::vector<RowPtr> rows;
            const Store* store = folder->Data().FindStore(storeId);
            if (store != nullptr)
            {
                for (const Folder& child : store->folders)
                {
                    if (child.parent == id)
                    {
                        rows.push_back(MakeFolderRow(*store, child));
                    }
                }
            }
            return rows;
        },
        ColumnsInWidth(HierarchyColumns(), unicode));
    folder->Register({ViewKey::Kind::Hierarchy, id}, view);
    auto* table = new CTable(
        SetupOf("hierarchy", unicode, Data().advise, folder, operation), std::move(view), Life());
    return reinterpret_cast<::IMAPITable*>(table);
}

IUnknown* CFolderObject::OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG)
{
    constexpr Operation kOp = Op("OpenProperty");
    if (iid != IID_IMAPITable)
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
    const bool unicode = (interfaceFlags & MAPI_UNICODE) != 0;
    switch (tag)
    {
    case PR_CONTAINER_HIERARCHY:
        CheckFlags(kOp, interfaceFlags, kTableFlags | CONVENIENT_DEPTH);
        return HierarchyTable((interfaceFlags & CONVENIENT_DEPTH) != 0, unicode, kOp);
    case PR_CONTAINER_CONTENTS:
        CheckFlags(kOp, interfaceFlags, kTableFlags | MAPI_ASSOCIATED);
        return ContentsTable((interfaceFlags & MAPI_ASSOCIATED) != 0, unicode, kOp);
    case PR_FOLDER_ASSOCIATED_CONTENTS:
        CheckFlags(kOp, interfaceFlags, kTableFlags);
        return ContentsTable(true, unicode, kOp);
    default:
        throw CMapiError(MAPI_E_NOT_FOUND);
    }
}

HRESULT CFolderObject::GetContentsTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetContentsTable");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, kTableFlags | MAPI_ASSOCIATED);
        RequireOut(out);
        *out = ContentsTable((flags & MAPI_ASSOCIATED) != 0, (flags & MAPI_UNICODE) != 0, kOp);
        return S_OK;
    });
}

HRESULT CFolderObject::GetHierarchyTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetHierarchyTable");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, kTableFlags | CONVENIENT_DEPTH);
        RequireOut(out);
        *out = HierarchyTable((flags & CONVENIENT_DEPTH) != 0, (flags & MAPI_UNICODE) != 0, kOp);
        return S_OK;
    });
}

HRESULT CFolderObject::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* objectType, IUnknown** out)
{
    ClearOut(objectType);
    ClearOut(out);
    constexpr Operation kOp = Op("OpenEntry");
    const std::optional<EntryName> name = ReadEntryId(cb, entryId);
    const char* subject = name && name->objectType == MAPI_MESSAGE ? "message" : "folder";
    return Run(kOp,
               [&]() -> HRESULT {
                   const std::scoped_lock hold(m_store->folder->Lock());
                   CheckFlags(kOp, flags, kOpenFlags);
                   RequireOut(out);
                   *out = OpenStoreEntry(m_store, cb, entryId, iid, flags, objectType, kOp);
                   return S_OK;
               },
               {subject});
}

IUnknown* OpenFolderObject(
    const StorePtr& store, std::uint64_t id, const IID* iid, ULONG flags, Operation madeBy)
{
    const Store* data = store->folder->Data().FindStore(store->store);
    if (data == nullptr || FindFolder(*data, id) == nullptr)
    {
        throw CMapiError(MAPI_E_NOT_FOUND, L"the store has no such folder");
    }
    const bool writable = (flags & (MAPI_MODIFY | MAPI_BEST_ACCESS)) != 0;
    auto* folder = new CFolderObject(store, id, writable, madeBy);
    CheckInterface(folder, iid);
    return folder;
}

} // namespace mapistore
