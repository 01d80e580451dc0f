#include <algorithm>
#include <cstring>
#include <set>

#include "Document.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "PropertyNames.h"
#include "PropertyReader.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr std::string_view kRoles[] = {"",
                                       "root",
                                       "ipmSubtree",
                                       "inbox",
                                       "outbox",
                                       "sentItems",
                                       "deletedItems",
                                       "calendar",
                                       "contacts",
                                       "drafts",
                                       "journal",
                                       "notes",
                                       "tasks",
                                       "commonViews",
                                       "views",
                                       "finder"};

constexpr ULONG kIdAttachMethod = PROP_ID(PR_ATTACH_METHOD);

template <class Read>
void ForEach(const CPlace& place, std::string_view key, const Read& read)
{
    const JsonNode* member = place.Node().Find(key);
    if (member == nullptr)
    {
        return;
    }
    const CPlace list(place, *member);
    list.RequireArray();
    size_t index = 0;
    for (const JsonNode* item = member->first; item != nullptr; item = item->next)
    {
        read(CPlace(list, *item, index++));
    }
}

Uid ReadUid(const CPlace& place)
{
    std::string bytes;
    Uid uid{};
    if (!ParseHex(place.Text(), bytes) || bytes.size() != uid.size())
    {
        place.Fail("expected 32 hexadecimal digits");
    }
    std::memcpy(uid.data(), bytes.data(), uid.size());
    return uid;
}

std::uint64_t ReadId(const CPlace& place, std::string_view key)
{
    return static_cast<std::uint64_t>(place.WholeOf(key, 1, kMaxId));
}

/// The parent's identifier, 0 for null.
std::uint64_t ReadParent(const CPlace& place)
{
    const CPlace parent(place, place.Need("parent"));
    if (parent.Node().kind == JsonNode::Kind::Null)
    {
        return 0;
    }
    return static_cast<std::uint64_t>(parent.Whole(1, kMaxId));
}

TextRange RangeOf(const JsonNode& node)
{
    return {node.begin, node.end};
}

/// Reads the parts of a document in turn. What comes later in the text may be named earlier, so the
/// identifiers are gathered first.
class CReader
{
public:
    CReader(const JsonNode& root, std::wstring folderPath, const CNameMap* known)
        : m_root(root), m_folderPath(std::move(folderPath)), m_known(known),
          m_document(std::make_unique<Document>())
    {
    }

    std::unique_ptr<Document> Read();
    std::shared_ptr<const MessageBody> ReadBody(const CPlace& place, CPropertyReader& reader);

private:
    void ReadHead();
    void ReadNames();
    void ReadKnownNames();
    void GatherIds();
    void Gather(const CPlace& place, std::string_view key, ObjectKind kind, const Uid& uid);
    void ReadProfile(const CPlace& place);
    void ReadStore(const CPlace& place, CPropertyReader& reader);
    Folder ReadFolder(const CPlace& place, CPropertyReader& reader);
    void ReadMessage(const CPlace& place, Store& store, CPropertyReader& reader);
    void CheckFolders(const CPlace& place, const Store& store) const;
    void ReadAddressBook(const CPlace& place, CPropertyReader& reader);
    void CheckContainers(const CPlace& place) const;

    CPlace m_root;
    std::wstring m_folderPath;
    const CNameMap* m_known;
    std::unique_ptr<Document> m_document;
    IdDirectory m_ids;
    std::uint64_t m_order = 0;
};

std::unique_ptr<Document> CReader::Read()
{
    ReadHead();
    ReadNames();
    ReadKnownNames();
    GatherIds();
    CPropertyReader reader(m_document->names, m_ids, m_folderPath);
    ForEach(m_root, "stores", [&](const CPlace& store) { ReadStore(store, reader); });
    if (const JsonNode* book = m_root.Node().Find("addressBook"))
    {
        ReadAddressBook(CPlace(m_root, *book), reader);
    }
    ForEach(m_root, "profiles", [&](const CPlace& profile) { ReadProfile(profile); });
    return std::move(m_document);
}

void CReader::ReadHead()
{
    m_root.AllowKeys({"format",
                      "version",
                      "revision",
                      "nextId",
                      "options",
                      "namedIds",
                      "profiles",
                      "stores",
                      "addressBook"});
    if (m_root.TextOf("format") != "mapistore")
    {
        CPlace(m_root, m_root.Need("format")).Fail("expected \"mapistore\"");
    }
    m_root.WholeOf("version", 1, 1);
    Document& document = *m_document;
    document.rootBegin = m_root.Node().begin;
    document.revision = static_cast<std::uint64_t>(m_root.WholeOf("revision", 0, kMaxId));
    document.nextId = static_cast<std::uint64_t>(m_root.WholeOf("nextId", 1, kMaxId));
    document.revisionRange = RangeOf(m_root.Need("revision"));
    document.nextIdRange = RangeOf(m_root.Need("nextId"));
    m_root.Need("profiles");
    m_root.Need("stores");
    if (const JsonNode* options = m_root.Node().Find("options"))
    {
        const CPlace at(m_root, *options);
        at.AllowKeys({"largeValueBytes", "sendDelayMs"});
        document.largeValueBytes =
            static_cast<std::uint64_t>(at.WholeOr("largeValueBytes", 32768, 1, kMaxId));
        document.sendDelayMs =
            static_cast<std::uint64_t>(at.WholeOr("sendDelayMs", 0, 0, INT32_MAX));
    }
}

void CReader::ReadNames()
{
    const JsonNode* map = m_root.Node().Find("namedIds");
    if (map == nullptr)
    {
        return;
    }
    const CPlace place(m_root, *map);
    place.RequireObject();
    m_document->namedIdsRange = RangeOf(*map);
    for (const JsonNode* member = map->first; member != nullptr; member = member->next)
    {
        if (member->key == "comment")
        {
            continue;
        }
        const CPlace at(place, *member);
        std::string problem;
        const std::optional<PropertyName> name = ReadPropertyName(member->key, problem);
        if (!name)
        {
            at.FailAtKey(problem);
        }
        const std::string text(at.Text());
        char* end = nullptr;
        const unsigned long id = std::strtoul(text.c_str(), &end, 16);
        if (text.compare(0, 2, "0x") != 0 || *end != '\0' || id < CNameMap::kFirst ||
            id > CNameMap::kLast)
        {
            at.Fail("expected an identifier from \"0x8000\" to \"0xFFFE\"");
        }
        if (!m_document->names.Set(*name, static_cast<ULONG>(id)))
        {
            at.Fail("the name or its identifier stands here twice");
        }
    }
    m_document->namesInText = m_document->names.All().size();
}

void CReader::ReadKnownNames()
{
    if (m_known == nullptr)
    {
        return;
    }
    for (const auto& [name, id] : m_known->All())
    {
        // Another process may have given the identifier away since; then its word counts.
        m_document->names.Set(name, id);
    }
}

void CReader::Gather(const CPlace& place, std::string_view key, ObjectKind kind, const Uid& uid)
{
    ForEach(place, key, [&](const CPlace& object) {
        const std::uint64_t id = ReadId(object, "id");
        const CPlace at(object, object.Need("id"));
        if (id >= m_document->nextId)
        {
            at.Fail("\"nextId\" has to be above every identifier");
        }
        const bool isList = kind == ObjectKind::Entry && object.TextOr("type", "") == "distList";
        if (!m_ids.ids.emplace(id, IdDirectory::Known{kind, uid, isList}).second)
        {
            at.Fail("the identifier " + std::to_string(id) + " is used twice");
        }
    });
}

void CReader::GatherIds()
{
    m_ids.ids.reserve(1024);
    std::set<Uid> uids;
    const auto addUid = [&](const CPlace& place) {
        const CPlace at(place, place.Need("uid"));
        const Uid uid = ReadUid(at);
        if (!uids.insert(uid).second)
        {
            at.Fail("two stores or address books have this uid");
        }
        return uid;
    };
    ForEach(m_root, "stores", [&](const CPlace& store) {
        store.RequireObject();
        const Uid uid = addUid(store);
        const std::uint64_t id = ReadId(store, "id");
        const CPlace at(store, store.Need("id"));
        if (id >= m_document->nextId ||
            !m_ids.ids.emplace(id, IdDirectory::Known{ObjectKind::Store, uid, false}).second)
        {
            at.Fail("the identifier is used twice, or not below \"nextId\"");
        }
        Gather(store, "folders", ObjectKind::Folder, uid);
        Gather(store, "messages", ObjectKind::Message, uid);
    });
    if (const JsonNode* book = m_root.Node().Find("addressBook"))
    {
        const CPlace place(m_root, *book);
        place.RequireObject();
        const Uid uid = addUid(place);
        m_document->addressBook.uid = uid;
        Gather(place, "containers", ObjectKind::Container, uid);
        Gather(place, "entries", ObjectKind::Entry, uid);
    }
}

void CReader::ReadProfile(const CPlace& place)
{
    place.AllowKeys({"name", "default", "identity", "stores"});
    Profile profile;
    profile.name = FromUtf8(place.TextOf("name"));
    if (profile.name.empty())
    {
        CPlace(place, place.Need("name")).Fail("a profile has a name");
    }
    for (const Profile& other : m_document->profiles)
    {
        if (EqualText(other.name, profile.name))
        {
            CPlace(place, place.Need("name")).Fail("two profiles have this name");
        }
    }
    profile.isDefault = place.TruthOr("default", false);
    const auto check = [&](const CPlace& at, ObjectKind kind, const char* what) {
        const auto id = static_cast<std::uint64_t>(at.Whole(1, kMaxId));
        const auto known = m_ids.ids.find(id);
        if (known == m_ids.ids.end() || known->second.kind != kind)
        {
            at.Fail(std::string("expected the identifier of ") + what);
        }
        return id;
    };
    if (const JsonNode* identity = place.Node().Find("identity"))
    {
        profile.identity =
            check(CPlace(place, *identity), ObjectKind::Entry, "an entry of the address book");
    }
    place.Need("stores");
    ForEach(place, "stores", [&](const CPlace& store) {
        profile.stores.push_back(check(store, ObjectKind::Store, "a store"));
    });
    m_document->profiles.push_back(std::move(profile));
}

void CReader::ReadStore(const CPlace& place, CPropertyReader& reader)
{
    place.AllowKeys({"id",
                     "name",
                     "uid",
                     "default",
                     "personal",
                     "tableIdentifiers",
                     "properties",
                     "folders",
                     "messages"});
    Store store;
    auto identity = std::make_shared<StoreIdentity>();
    identity->id = ReadId(place, "id");
    identity->uid = ReadUid(CPlace(place, place.Need("uid")));
    store.name = FromUtf8(place.TextOf("name"));
    store.isDefault = place.TruthOr("default", false);
    store.isPersonal = place.TruthOr("personal", false);
    const std::string form =
        place.TextOr("tableIdentifiers", store.isPersonal ? "longTerm" : "table");
    if (form != "longTerm" && form != "table")
    {
        CPlace(place, place.Need("tableIdentifiers")).Fail("expected \"longTerm\" or \"table\"");
    }
    identity->tableForm = form == "table";
    store.identity = std::move(identity);
    if (const JsonNode* properties = place.Node().Find("properties"))
    {
        store.props = reader.ReadBag(CPlace(place, *properties));
    }
    place.Need("folders");
    place.Need("messages");
    ForEach(place, "folders", [&](const CPlace& folder) {
        store.folders.push_back(ReadFolder(folder, reader));
    });
    CheckFolders(place, store);
    m_document->messageArrays[store.identity->id] = RangeOf(place.Need("messages"));
    m_document->folderArrays[store.identity->id] = RangeOf(place.Need("folders"));
    store.messages.reserve(place.Need("messages").count);
    ForEach(place, "messages", [&](const CPlace& message) { ReadMessage(message, store, reader); });
    m_document->stores.push_back(std::move(store));
}

Folder CReader::ReadFolder(const CPlace& place, CPropertyReader& reader)
{
    place.AllowKeys({"id", "parent", "name", "class", "hidden", "role", "advise", "properties"});
    Folder folder;
    folder.id = ReadId(place, "id");
    folder.parent = ReadParent(place);
    folder.order = ++m_order;
    folder.advise = place.TruthOr("advise", true);
    if (const JsonNode* role = place.Node().Find("role"))
    {
        const CPlace at(place, *role);
        folder.role = RoleOf(at.Text());
        if (folder.role == FolderRole::None)
        {
            at.Fail("unknown role");
        }
    }
    if (const JsonNode* properties = place.Node().Find("properties"))
    {
        folder.props = reader.ReadBag(CPlace(place, *properties));
    }
    const auto set = [&](CValue value) {
        if (folder.props.Find(value.Id()) == nullptr)
        {
            folder.props.Set(std::move(value));
        }
    };
    set(CValue::Text(PR_DISPLAY_NAME_W, FromUtf8(place.TextOf("name"))));
    set(CValue::Boolean(kTagAttrHidden, place.TruthOr("hidden", false)));
    if (place.Node().Find("class") != nullptr)
    {
        set(CValue::Text(kTagContainerClassW, FromUtf8(place.TextOf("class"))));
    }
    m_document->folderRanges[folder.id] = RangeOf(place.Node());
    return folder;
}

void CReader::CheckFolders(const CPlace& place, const Store& store) const
{
    const CPlace list(place, place.Need("folders"));
    std::set<FolderRole> roles;
    size_t roots = 0;
    size_t index = 0;
    const JsonNode* node = list.Node().first;
    for (const Folder& folder : store.folders)
    {
        const CPlace at(list, *node, index++);
        node = node->next;
        roots += folder.parent == 0 ? 1 : 0;
        if (folder.role != FolderRole::None && !roles.insert(folder.role).second)
        {
            CPlace(at, at.Need("role")).Fail("two folders of the store have this role");
        }
        // A chain of parents as long as the list has a ring in it.
        std::uint64_t above = folder.parent;
        for (size_t steps = 0; above != 0; ++steps)
        {
            const Folder* parent = FindFolder(store, above);
            if (parent == nullptr || steps > store.folders.size())
            {
                CPlace(at, at.Need("parent"))
                    .Fail(parent == nullptr ? "the store has no such folder"
                                            : "the folders contain each other");
            }
            above = parent->parent;
        }
    }
    if (roots != 1)
    {
        list.Fail("a store has one folder without a parent");
    }
}

std::shared_ptr<const MessageBody> CReader::ReadBody(const CPlace& place, CPropertyReader& reader)
{
    auto body = std::make_shared<MessageBody>();
    if (const JsonNode* properties = place.Node().Find("properties"))
    {
        body->props = reader.ReadBag(CPlace(place, *properties));
    }
    if (body->props.Find(PROP_ID(PR_MESSAGE_CLASS_W)) == nullptr)
    {
        body->props.Set(CValue::Text(PR_MESSAGE_CLASS_W, FromUtf8(place.TextOf("class"))));
    }
    if (body->props.Find(PROP_ID(PR_OBJECT_TYPE)) != nullptr)
    {
        CPlace(place, place.Need("properties")).Fail("PR_OBJECT_TYPE is computed");
    }
    ForEach(place, "recipients", [&](const CPlace& recipient) {
        CPropertyBag bag = reader.ReadBag(recipient, "recipient");
        if (bag.Find(PROP_ID(PR_RECIPIENT_TYPE)) == nullptr)
        {
            recipient.Fail("a recipient has PR_RECIPIENT_TYPE");
        }
        if (const JsonNode* entry = recipient.Node().Find("recipient"))
        {
            bag.Set(reader.ReadBinary(CPlace(recipient, *entry), PR_ENTRYID));
        }
        else if (!bag.TextOf(PROP_ID(PR_ADDRTYPE_W)).empty() &&
                 !bag.TextOf(PROP_ID(PR_EMAIL_ADDRESS_W)).empty())
        {
            bag.Set(CValue::Binary(PR_ENTRYID,
                                   MakeOneOff({bag.TextOf(PROP_ID(PR_DISPLAY_NAME_W)),
                                               bag.TextOf(PROP_ID(PR_ADDRTYPE_W)),
                                               bag.TextOf(PROP_ID(PR_EMAIL_ADDRESS_W))})));
        }
        bag.Set(CValue::Long(PR_ROWID, static_cast<LONG>(body->recipients.size())));
        body->recipients.push_back(std::move(bag));
    });
    ForEach(place, "attachments", [&](const CPlace& at) {
        at.AllowKeys({"properties", "message"});
        Attachment attachment;
        attachment.props = reader.ReadBag(CPlace(at, at.Need("properties")));
        const LONG method = attachment.props.LongOf(kIdAttachMethod, -1);
        const JsonNode* message = at.Node().Find("message");
        if (method < 0 || (method == ATTACH_EMBEDDED_MSG) != (message != nullptr))
        {
            at.Fail("an attachment has PR_ATTACH_METHOD, and \"message\" only and always with 5");
        }
        attachment.props.Set(
            CValue::Long(PR_ATTACH_NUM, static_cast<LONG>(body->attachments.size())));
        if (message != nullptr)
        {
            const CPlace embedded(at, *message);
            embedded.AllowKeys({"class", "properties", "recipients", "attachments"});
            attachment.message = ReadBody(embedded, reader);
        }
        body->attachments.push_back(std::move(attachment));
    });
    return body;
}

void CReader::ReadMessage(const CPlace& place, Store& store, CPropertyReader& reader)
{
    place.AllowKeys(
        {"id", "folder", "class", "associated", "properties", "recipients", "attachments"});
    const std::uint64_t id = ReadId(place, "id");
    const std::uint64_t folderId = ReadId(place, "folder");
    Folder* folder = FindFolder(store, folderId);
    if (folder == nullptr)
    {
        CPlace(place, place.Need("folder")).Fail("the store has no such folder");
    }
    place.Need("class");
    auto row = std::make_shared<const CMessageRow>(store.identity,
                                                   id,
                                                   folderId,
                                                   place.TruthOr("associated", false),
                                                   ++m_order,
                                                   ReadBody(place, reader));
    m_document->messageRanges[id] = RangeOf(place.Node());
    folder->messages.push_back(row);
    store.messages.emplace(id, std::move(row));
}

void CReader::ReadAddressBook(const CPlace& place, CPropertyReader& reader)
{
    place.AllowKeys({"uid", "containers", "entries"});
    AddressBook& book = m_document->addressBook;
    ForEach(place, "containers", [&](const CPlace& at) {
        at.AllowKeys({"id", "parent", "properties"});
        Container container;
        container.id = ReadId(at, "id");
        container.parent = ReadParent(at);
        container.props = reader.ReadBag(CPlace(at, at.Need("properties")));
        book.containers.push_back(std::move(container));
    });
    CheckContainers(place);
    const auto check = [&](const CPlace& at, ObjectKind kind, const char* what) {
        const auto id = static_cast<std::uint64_t>(at.Whole(1, kMaxId));
        const auto known = m_ids.ids.find(id);
        if (known == m_ids.ids.end() || known->second.kind != kind)
        {
            at.Fail(what);
        }
        return id;
    };
    ForEach(place, "entries", [&](const CPlace& at) {
        at.AllowKeys({"id", "containers", "type", "members", "properties"});
        Entry entry;
        entry.id = ReadId(at, "id");
        const std::string type = at.TextOr("type", "mailUser");
        if (type != "mailUser" && type != "distList")
        {
            CPlace(at, at.Need("type")).Fail("expected \"mailUser\" or \"distList\"");
        }
        entry.isList = type == "distList";
        at.Need("containers");
        ForEach(at, "containers", [&](const CPlace& container) {
            entry.containers.push_back(
                check(container, ObjectKind::Container, "expected the identifier of a container"));
        });
        if (at.Node().Find("members") != nullptr && !entry.isList)
        {
            CPlace(at, at.Need("members")).FailAtKey("only a distribution list has members");
        }
        ForEach(at, "members", [&](const CPlace& member) {
            entry.members.push_back(
                check(member, ObjectKind::Entry, "expected the identifier of an entry"));
        });
        entry.props = reader.ReadBag(CPlace(at, at.Need("properties")));
        book.entries.push_back(std::move(entry));
    });
}

void CReader::CheckContainers(const CPlace& place) const
{
    const std::vector<Container>& containers = m_document->addressBook.containers;
    size_t index = 0;
    ForEach(place, "containers", [&](const CPlace& at) {
        std::uint64_t above = containers[index++].parent;
        for (size_t steps = 0; above != 0; ++steps)
        {
            const Container* parent = m_document->FindContainer(above);
            if (parent == nullptr || steps > containers.size())
            {
                CPlace(at, at.Need("parent"))
                    .Fail(parent == nullptr ? "there is no such container"
                                            : "the containers contain each other");
            }
            above = parent->parent;
        }
    });
}

} // namespace

FolderRole RoleOf(std::string_view name)
{
    const auto found = std::find(std::begin(kRoles) + 1, std::end(kRoles), name);
    return found == std::end(kRoles) ? FolderRole::None
                                     : static_cast<FolderRole>(found - std::begin(kRoles));
}

const Folder* FindFolder(const Store& store, std::uint64_t id)
{
    const auto found = std::find_if(store.folders.begin(),
                                    store.folders.end(),
                                    [id](const Folder& folder) { return folder.id == id; });
    return found != store.folders.end() ? &*found : nullptr;
}

Folder* FindFolder(Store& store, std::uint64_t id)
{
    const auto found = std::find_if(store.folders.begin(),
                                    store.folders.end(),
                                    [id](const Folder& folder) { return folder.id == id; });
    return found != store.folders.end() ? &*found : nullptr;
}

const Folder* FindRole(const Store& store, FolderRole role)
{
    const auto found = std::find_if(store.folders.begin(),
                                    store.folders.end(),
                                    [role](const Folder& folder) { return folder.role == role; });
    return found != store.folders.end() ? &*found : nullptr;
}

Store* Document::FindStore(std::uint64_t id)
{
    for (Store& store : stores)
    {
        if (store.identity->id == id)
        {
            return &store;
        }
    }
    return nullptr;
}

Store* Document::FindStore(const Uid& uid)
{
    for (Store& store : stores)
    {
        if (store.identity->uid == uid)
        {
            return &store;
        }
    }
    return nullptr;
}

const Entry* Document::FindEntry(std::uint64_t id) const
{
    for (const Entry& entry : addressBook.entries)
    {
        if (entry.id == id)
        {
            return &entry;
        }
    }
    return nullptr;
}

const Container* Document::FindContainer(std::uint64_t id) const
{
    for (const Container& container : addressBook.containers)
    {
        if (container.id == id)
        {
            return &container;
        }
    }
    return nullptr;
}

std::unique_ptr<Document> ReadDocument(std::string_view text,
                                       const std::wstring& folderPath,
                                       const CNameMap* known)
{
    CJsonTree tree;
    return CReader(tree.Parse(text), folderPath, known).Read();
}

} // namespace mapistore
