#include <set>

#include "DocumentReader.h"
#include "MapiTags64.h"
#include "MessageRow.h"

namespace mapistore
{
namespace
{

constexpr ULONG kIdAttachMethod = PROP_ID(PR_ATTACH_METHOD);

} // namespace

void CDocumentReader::ReadStore(const CPlace& place, CPropertyReader& reader)
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

Folder CDocumentReader::ReadFolder(const CPlace& place, CPropertyReader& reader)
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

void CDocumentReader::CheckFolders(const CPlace& place, const Store& store) const
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

std::shared_ptr<const MessageBody> CDocumentReader::ReadBody(const CPlace& place,
                                                             CPropertyReader& reader)
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

void CDocumentReader::ReadMessage(const CPlace& place, Store& store, CPropertyReader& reader)
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

} // namespace mapistore
