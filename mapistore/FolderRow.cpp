#include "FolderRow.h"

#include <algorithm>

#include "MapiTags64.h"
#include "MessageRow.h"
#include "Text.h"

namespace mapistore
{
namespace
{

// PR_MDB_PROVIDER of a personal store, and of any other.
constexpr unsigned char kPersonalProvider[16] = {
    0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01, 0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x00};
constexpr unsigned char kOtherProvider[16] = {
    0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01, 0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x01};

constexpr LONG kStoreSupport =
    static_cast<LONG>(STORE_ENTRYID_UNIQUE | STORE_SEARCH_OK | STORE_MODIFY_OK | STORE_CREATE_OK |
                      STORE_ATTACH_OK | STORE_SUBMIT_OK | STORE_NOTIFY_OK | STORE_MV_PROPS_OK |
                      STORE_RESTRICTION_OK | STORE_SORT_OK | 0x00040000); // STORE_UNICODE_OK
constexpr LONG kFolderAccess = MAPI_ACCESS_MODIFY | MAPI_ACCESS_READ | MAPI_ACCESS_DELETE |
                               MAPI_ACCESS_CREATE_HIERARCHY | MAPI_ACCESS_CREATE_CONTENTS |
                               MAPI_ACCESS_CREATE_ASSOCIATED;
constexpr ULONG kContainerAbsentFlags = AB_RECIPIENTS | AB_UNMODIFIABLE;
constexpr LONG kDisplayTypeModifiable = 0x100;

/// Keeps what the document says.
void SetIfAbsent(CPropertyBag& bag, CValue value)
{
    if (bag.Find(value.Id()) == nullptr)
    {
        bag.Set(std::move(value));
    }
}

class CFolderRow final : public IRow
{
public:
    CFolderRow(std::uint64_t id, std::uint64_t order, CPropertyBag bag)
        : m_id(id), m_order(order), m_bag(std::move(bag))
    {
    }
    std::uint64_t Id() const override { return m_id; }
    std::uint64_t Order() const override { return m_order; }
    const CValue* Find(ULONG id, CValue&) const override { return m_bag.Find(id); }
    const std::vector<CPropertyBag>* SubRows(ULONG) const override { return nullptr; }
    void AddTags(std::vector<ULONG>& tags) const override
    {
        for (const CValue& value : m_bag)
        {
            tags.push_back(value.Tag());
        }
    }

private:
    std::uint64_t m_id;
    std::uint64_t m_order;
    CPropertyBag m_bag;
};

void CountMessages(const Folder& folder, LONG& contents, LONG& unread, LONG& associated)
{
    for (const auto& message : folder.messages)
    {
        if (message->Associated())
        {
            ++associated;
            continue;
        }
        ++contents;
        CValue scratch;
        const CValue* flags = message->Find(PROP_ID(PR_MESSAGE_FLAGS), scratch);
        if (flags != nullptr && flags->Type() == PT_LONG &&
            (static_cast<ULONG>(flags->AsLong()) & MSGFLAG_READ) == 0)
        {
            ++unread;
        }
    }
}

} // namespace

std::string FolderEntryId(const StoreIdentity& store, std::uint64_t folder)
{
    return MakeEntryId({store.uid, MAPI_FOLDER, folder, false});
}

std::string MessageEntryId(const StoreIdentity& store, std::uint64_t message)
{
    return MakeEntryId({store.uid, MAPI_MESSAGE, message, false});
}

std::string StoreEntryId(const StoreIdentity& store)
{
    return MakeEntryId({store.uid, MAPI_STORE, store.id, false});
}

std::string EntryEntryId(const AddressBook& book, const Entry& entry)
{
    return MakeEntryId({book.uid, entry.isList ? MAPI_DISTLIST : MAPI_MAILUSER, entry.id, false});
}

std::string ContainerEntryId(const AddressBook& book, std::uint64_t container)
{
    // The root has the empty identifier, which IAddrBook::OpenEntry takes for it.
    return container == 0 ? std::string() : MakeEntryId({book.uid, MAPI_ABCONT, container, false});
}

CPropertyBag FolderProperties(const Store& store, const Folder& folder)
{
    CPropertyBag bag = folder.props;
    LONG contents = 0;
    LONG unread = 0;
    LONG associated = 0;
    CountMessages(folder, contents, unread, associated);
    const bool hasChildren =
        std::any_of(store.folders.begin(), store.folders.end(), [&](const Folder& other) {
            return other.parent == folder.id;
        });
    const StoreIdentity& identity = *store.identity;
    const std::string entryId = FolderEntryId(identity, folder.id);
    bag.Set(CValue::Binary(PR_ENTRYID, entryId));
    bag.Set(
        CValue::Binary(PR_PARENT_ENTRYID,
                       FolderEntryId(identity, folder.parent != 0 ? folder.parent : folder.id)));
    bag.Set(CValue::Binary(PR_STORE_ENTRYID, StoreEntryId(identity)));
    bag.Set(CValue::Binary(PR_RECORD_KEY, entryId));
    bag.Set(MakeStoreRecordKey(identity.uid));
    bag.Set(MakeStoreRecordKey(identity.uid).WithTag(PR_MAPPING_SIGNATURE));
    bag.Set(MakeInstanceKey(folder.id));
    bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_FOLDER));
    SetIfAbsent(bag,
                CValue::Long(PR_FOLDER_TYPE,
                             static_cast<LONG>(folder.parent == 0 ? FOLDER_ROOT : FOLDER_GENERIC)));
    SetIfAbsent(bag, CValue::Boolean(PR_SUBFOLDERS, hasChildren));
    SetIfAbsent(bag, CValue::Long(PR_CONTENT_COUNT, contents));
    SetIfAbsent(bag, CValue::Long(PR_CONTENT_UNREAD, unread));
    SetIfAbsent(bag, CValue::Long(PR_ASSOC_CONTENT_COUNT, associated));
    SetIfAbsent(bag, CValue::Long(PR_ACCESS, kFolderAccess));
    SetIfAbsent(bag, CValue::Long(PR_ACCESS_LEVEL, MAPI_MODIFY));
    SetIfAbsent(bag, CValue::Long(PR_STATUS, 0));
    return bag;
}

RowPtr MakeFolderRow(const Store& store, const Folder& folder)
{
    return std::make_shared<CFolderRow>(folder.id, folder.order, FolderProperties(store, folder));
}

CPropertyBag StoreRowProperties(const Store& store)
{
    const StoreIdentity& identity = *store.identity;
    CPropertyBag bag = store.props;
    const unsigned char* provider = store.isPersonal ? kPersonalProvider : kOtherProvider;
    SetIfAbsent(bag, CValue::Binary(PR_ENTRYID, StoreEntryId(identity)));
    SetIfAbsent(bag, CValue::Text(PR_DISPLAY_NAME_W, store.name));
    SetIfAbsent(bag, CValue::Boolean(PR_DEFAULT_STORE, store.isDefault));
    SetIfAbsent(bag, CValue::Binary(PR_MDB_PROVIDER, provider, sizeof(kPersonalProvider)));
    SetIfAbsent(bag, MakeStoreRecordKey(identity.uid).WithTag(PR_RECORD_KEY));
    SetIfAbsent(bag, MakeInstanceKey(identity.id));
    SetIfAbsent(bag, CValue::Long(PR_OBJECT_TYPE, MAPI_STORE));
    SetIfAbsent(bag, CValue::Long(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER));
    SetIfAbsent(bag,
                CValue::Long(PR_RESOURCE_FLAGS,
                             static_cast<LONG>(store.isDefault ? STATUS_DEFAULT_STORE : 0)));
    SetIfAbsent(bag, CValue::Text(PR_PROVIDER_DISPLAY_W, L"mapistore"));
    return bag;
}

CPropertyBag StoreProperties(const Store& store)
{
    struct RoleId
    {
        FolderRole role;
        ULONG tag;
        ULONG bit;
    };
    static constexpr RoleId kRoleIds[] = {
        {FolderRole::IpmSubtree, PR_IPM_SUBTREE_ENTRYID, FOLDER_IPM_SUBTREE_VALID},
        {FolderRole::Inbox, 0, FOLDER_IPM_INBOX_VALID},
        {FolderRole::Outbox, PR_IPM_OUTBOX_ENTRYID, FOLDER_IPM_OUTBOX_VALID},
        {FolderRole::DeletedItems, PR_IPM_WASTEBASKET_ENTRYID, FOLDER_IPM_WASTEBASKET_VALID},
        {FolderRole::SentItems, PR_IPM_SENTMAIL_ENTRYID, FOLDER_IPM_SENTMAIL_VALID},
        {FolderRole::Views, PR_VIEWS_ENTRYID, FOLDER_VIEWS_VALID},
        {FolderRole::CommonViews, PR_COMMON_VIEWS_ENTRYID, FOLDER_COMMON_VIEWS_VALID},
        {FolderRole::Finder, PR_FINDER_ENTRYID, FOLDER_FINDER_VALID}};
    CPropertyBag bag = StoreRowProperties(store);
    ULONG mask = 0;
    for (const RoleId& one : kRoleIds)
    {
        const Folder* folder = FindRole(store, one.role);
        if (folder != nullptr)
        {
            mask |= one.bit;
            if (one.tag != 0)
            {
                SetIfAbsent(bag,
                            CValue::Binary(one.tag, FolderEntryId(*store.identity, folder->id)));
            }
        }
    }
    SetIfAbsent(bag, CValue::Long(PR_VALID_FOLDER_MASK, static_cast<LONG>(mask)));
    SetIfAbsent(bag, CValue::Long(PR_STORE_SUPPORT_MASK, kStoreSupport));
    SetIfAbsent(bag, CValue::Binary(PR_STORE_ENTRYID, StoreEntryId(*store.identity)));
    SetIfAbsent(bag, MakeStoreRecordKey(store.identity->uid));
    SetIfAbsent(bag, MakeStoreRecordKey(store.identity->uid).WithTag(PR_MAPPING_SIGNATURE));
    SetIfAbsent(bag, CValue::Long(PR_ACCESS_LEVEL, MAPI_MODIFY));
    return bag;
}

CPropertyBag ContainerProperties(const AddressBook& book, const Container& container)
{
    CPropertyBag bag = container.props;
    const bool hasChildren =
        std::any_of(book.containers.begin(), book.containers.end(), [&](const Container& other) {
            return other.parent == container.id;
        });
    const ULONG flags = kContainerAbsentFlags | (hasChildren ? AB_SUBCONTAINERS : 0);
    bag.Set(CValue::Binary(PR_ENTRYID, ContainerEntryId(book, container.id)));
    bag.Set(CValue::Binary(PR_RECORD_KEY, ContainerEntryId(book, container.id)));
    bag.Set(MakeInstanceKey(container.id));
    SetIfAbsent(bag, CValue::Long(PR_OBJECT_TYPE, MAPI_ABCONT));
    SetIfAbsent(bag, CValue::Long(PR_CONTAINER_FLAGS, static_cast<LONG>(flags)));
    SetIfAbsent(bag, CValue::Long(PR_DISPLAY_TYPE, kDisplayTypeModifiable));
    return bag;
}

CPropertyBag RootContainerProperties(const AddressBook& book)
{
    CPropertyBag bag;
    const bool hasChildren = !book.containers.empty();
    bag.Set(CValue::Text(PR_DISPLAY_NAME_W, L""));
    bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_ABCONT));
    bag.Set(
        CValue::Long(PR_CONTAINER_FLAGS,
                     static_cast<LONG>(AB_UNMODIFIABLE | (hasChildren ? AB_SUBCONTAINERS : 0))));
    bag.Set(CValue::Long(PR_DISPLAY_TYPE, kDisplayTypeModifiable));
    return bag;
}

CPropertyBag EntryProperties(const AddressBook& book, const Entry& entry)
{
    CPropertyBag bag = entry.props;
    const std::string id = EntryEntryId(book, entry);
    bag.Set(CValue::Binary(PR_ENTRYID, id));
    bag.Set(CValue::Binary(PR_RECORD_KEY, id));
    bag.Set(MakeInstanceKey(entry.id));
    SetIfAbsent(bag,
                CValue::Long(PR_OBJECT_TYPE,
                             static_cast<LONG>(entry.isList ? MAPI_DISTLIST : MAPI_MAILUSER)));
    SetIfAbsent(
        bag,
        CValue::Long(PR_DISPLAY_TYPE, static_cast<LONG>(entry.isList ? DT_DISTLIST : DT_MAILUSER)));
    const std::wstring type = bag.TextOf(PROP_ID(PR_ADDRTYPE_W));
    const std::wstring address = bag.TextOf(PROP_ID(PR_EMAIL_ADDRESS_W));
    if (!type.empty() && !address.empty())
    {
        const std::string key = ToAnsi(Fold(type + L":" + address, true, false));
        SetIfAbsent(bag, CValue::Binary(PR_SEARCH_KEY, key.c_str(), key.size() + 1));
    }
    return bag;
}

CPropertyBag OneOffProperties(const OneOff& oneOff, std::string_view entryId)
{
    CPropertyBag bag;
    bag.Set(CValue::Binary(PR_ENTRYID, entryId));
    bag.Set(CValue::Binary(PR_RECORD_KEY, entryId));
    bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_MAILUSER));
    bag.Set(CValue::Long(PR_DISPLAY_TYPE, static_cast<LONG>(DT_MAILUSER)));
    bag.Set(CValue::Text(PR_DISPLAY_NAME_W, oneOff.name));
    bag.Set(CValue::Text(PR_ADDRTYPE_W, oneOff.addressType));
    bag.Set(CValue::Text(PR_EMAIL_ADDRESS_W, oneOff.address));
    if (EqualText(oneOff.addressType, L"SMTP"))
    {
        bag.Set(CValue::Text(kTagSmtpAddressW, oneOff.address));
    }
    return bag;
}

} // namespace mapistore
