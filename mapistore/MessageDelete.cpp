#include <algorithm>
#include <unordered_set>

#include "FolderRow.h"
#include "MessageRow.h"
#include "StoreFolder.h"

namespace mapistore
{

void CStoreFolder::DeleteMessage(std::uint64_t id)
{
    if (DeleteMessages({id}) == 0)
    {
        throw CMapiError(MAPI_E_OBJECT_DELETED, L"the object is gone from the store");
    }
}

size_t CStoreFolder::DeleteMessages(const std::vector<std::uint64_t>& messages)
{
    const std::scoped_lock hold(m_lock);
    const auto isGone = [this](std::uint64_t id) { return StoreOfMessage(id) == nullptr; };
    if (std::all_of(messages.begin(), messages.end(), isGone))
    {
        return 0;
    }
    std::vector<std::uint64_t> there;
    Transact([&](CTextEdit& text) {
        // Another process may have deleted some since.
        there = messages;
        there.erase(std::remove_if(there.begin(), there.end(), isGone), there.end());
        std::vector<TextRange> places;
        for (const std::uint64_t id : there)
        {
            places.push_back(m_document->messageRanges.at(id));
            m_document->messageRanges.erase(id);
        }
        text.Remove(std::move(places));
    });
    RemoveRows(there);
    return there.size();
}

/// Takes the rows out of the folders in one pass, and then tells of each.
void CStoreFolder::RemoveRows(const std::vector<std::uint64_t>& messages)
{
    const std::unordered_set<std::uint64_t> ids(messages.begin(), messages.end());
    std::vector<std::shared_ptr<const CMessageRow>> rows;
    for (const std::uint64_t id : messages)
    {
        rows.push_back(FindMessage(id));
    }
    struct FolderChange
    {
        const Store* store;
        const Folder* folder;
        RowPtr before;
    };
    std::vector<FolderChange> changes;
    for (Store& store : m_document->stores)
    {
        for (Folder& folder : store.folders)
        {
            const auto isAmong = [&](const auto& row) { return ids.count(row->Id()) != 0; };
            auto& list = folder.messages;
            if (std::none_of(list.begin(), list.end(), isAmong))
            {
                continue;
            }
            // A folder's own row changes with its counts.
            if (HasView({ViewKey::Kind::Hierarchy, folder.parent}))
            {
                changes.push_back({&store, &folder, MakeFolderRow(store, folder)});
            }
            list.erase(std::remove_if(list.begin(), list.end(), isAmong), list.end());
        }
        for (const std::uint64_t id : messages)
        {
            store.messages.erase(id);
        }
    }
    for (const auto& row : rows)
    {
        PublishMessage(row, nullptr);
    }
    for (const FolderChange& change : changes)
    {
        PublishFolder(
            change.folder->parent, change.before, MakeFolderRow(*change.store, *change.folder));
    }
}

} // namespace mapistore
