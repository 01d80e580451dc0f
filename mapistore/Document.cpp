#include "Document.h"

#include <algorithm>

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

} // namespace mapistore
