#include <algorithm>

#include "EditParts.h"
#include "FolderRow.h"
#include "MapiTags64.h"
#include "PropertyWriter.h"
#include "StoreFolder.h"
#include "Text.h"

namespace mapistore
{

std::uint64_t CStoreFolder::CreateFolder(std::uint64_t storeId,
                                         std::uint64_t parent,
                                         const std::wstring& name,
                                         const std::wstring& comment)
{
    const std::scoped_lock hold(m_lock);
    Folder folder;
    folder.parent = parent;
    folder.props.Set(CValue::Text(PR_DISPLAY_NAME_W, name));
    folder.props.Set(CValue::Boolean(kTagAttrHidden, false));
    Transact([&](CTextEdit& text) {
        const Store* store = m_document->FindStore(storeId);
        if (store == nullptr || FindFolder(*store, parent) == nullptr)
        {
            ThrowGone();
        }
        folder.id = m_document->nextId++;
        Json json = Json::object();
        json["id"] = folder.id;
        json["parent"] = parent;
        json["name"] = ToUtf8(name);
        // A folder takes the class of the one above it, as a mail client's does.
        const std::wstring inherited =
            FindFolder(*store, parent)->props.TextOf(PROP_ID(kTagContainerClassW));
        if (!inherited.empty())
        {
            json["class"] = ToUtf8(inherited);
            folder.props.Set(CValue::Text(kTagContainerClassW, inherited));
        }
        if (!comment.empty())
        {
            json["properties"] = Json{{"PR_COMMENT_W", ToUtf8(comment)}};
            folder.props.Set(CValue::Text(PR_COMMENT_W, comment));
        }
        text.Append(m_document->folderArrays.at(storeId), Dump(json));
    });
    m_document->folderRanges[folder.id] = m_appended.front();
    Store& store = *m_document->FindStore(storeId);
    folder.order = ++m_lastOrder;
    const std::uint64_t id = folder.id;
    store.folders.push_back(std::move(folder));
    PublishFolder(parent, nullptr, MakeFolderRow(store, store.folders.back()));
    return id;
}

void CStoreFolder::ChangeFolder(std::uint64_t id, const PropertyChange& change)
{
    const std::scoped_lock hold(m_lock);
    Transact([&](CTextEdit& text) {
        if (StoreOfFolder(id) == nullptr)
        {
            ThrowGone();
        }
        const CPropertyWriter writer(m_document->names, m_path);
        const TextRange range = m_document->folderRanges.at(id);
        Json json = ParsePart(text.Text(), range);
        PropertyChange rest = change;
        for (const CValue& value : change.set)
        {
            const bool isName = value.Tag() == PR_DISPLAY_NAME_W;
            if (isName || value.Tag() == kTagContainerClassW)
            {
                json[isName ? "name" : "class"] = ToUtf8(value.AsText());
                rest.set.erase(std::find(rest.set.begin(), rest.set.end(), value));
                rest.removed.push_back(value.Id());
            }
            else if (value.Tag() == kTagAttrHidden)
            {
                json["hidden"] = value.AsBool();
                rest.set.erase(std::find(rest.set.begin(), rest.set.end(), value));
                rest.removed.push_back(value.Id());
            }
        }
        Json properties = json.count("properties") != 0 ? json["properties"] : Json::object();
        writer.Change(properties, rest.set, rest.removed);
        if (!properties.empty())
        {
            json["properties"] = properties;
        }
        else
        {
            json.erase("properties");
        }
        if (std::find(change.removed.begin(), change.removed.end(), PROP_ID(kTagContainerClassW)) !=
            change.removed.end())
        {
            json.erase("class");
        }
        text.Replace(range, InPlace(text.Text(), range, json));
    });
    Store& store = *StoreOfFolder(id);
    Folder& folder = *FindFolder(store, id);
    const RowPtr before = MakeFolderRow(store, folder);
    for (const ULONG removed : change.removed)
    {
        folder.props.Remove(removed);
    }
    for (const CValue& value : change.set)
    {
        folder.props.Set(value);
    }
    PublishFolder(folder.parent, before, MakeFolderRow(store, folder));
}

void CStoreFolder::DeleteFolder(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    Transact([&](CTextEdit& text) {
        const Store* store = StoreOfFolder(id);
        const Folder* folder = store != nullptr ? FindFolder(*store, id) : nullptr;
        if (folder == nullptr)
        {
            ThrowGone();
        }
        const bool hasFolders =
            std::any_of(store->folders.begin(), store->folders.end(), [id](const Folder& other) {
                return other.parent == id;
            });
        if (hasFolders || !folder->messages.empty())
        {
            throw CMapiError(hasFolders ? MAPI_E_HAS_FOLDERS : MAPI_E_HAS_MESSAGES);
        }
        text.Remove(m_document->folderRanges.at(id));
        m_document->folderRanges.erase(id);
    });
    Store& store = *StoreOfFolder(id);
    Folder& folder = *FindFolder(store, id);
    const RowPtr before = MakeFolderRow(store, folder);
    const std::uint64_t parent = folder.parent;
    store.folders.erase(std::find_if(store.folders.begin(),
                                     store.folders.end(),
                                     [id](const Folder& other) { return other.id == id; }));
    PublishFolder(parent, before, nullptr);
}

} // namespace mapistore
