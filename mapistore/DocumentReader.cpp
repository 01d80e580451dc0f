#include "DocumentReader.h"

#include <set>

#include "PropertyNames.h"

namespace mapistore
{

std::unique_ptr<Document> CDocumentReader::Read()
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

void CDocumentReader::ReadHead()
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

void CDocumentReader::ReadNames()
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

void CDocumentReader::ReadKnownNames()
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

void CDocumentReader::Gather(const CPlace& place,
                             std::string_view key,
                             ObjectKind kind,
                             const Uid& uid)
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

void CDocumentReader::GatherIds()
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

void CDocumentReader::ReadProfile(const CPlace& place)
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

std::unique_ptr<Document> ReadDocument(std::string_view text,
                                       const std::wstring& folderPath,
                                       const CNameMap* known)
{
    CJsonTree tree;
    return CDocumentReader(tree.Parse(text), folderPath, known).Read();
}

} // namespace mapistore
