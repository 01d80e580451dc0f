#include "StoreFolder.h"

#include <algorithm>
#include <cstring>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "Runtime.h"
#include "Text.h"
#include "ValueFile.h"

namespace mapistore
{

std::uint64_t HashText(std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325ULL ^ text.size();
    while (text.size() >= sizeof(std::uint64_t))
    {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof(word));
        hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
        hash ^= hash >> 29;
        text.remove_prefix(sizeof(word));
    }
    for (const char c : text)
    {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
    }
    return hash;
}

CStoreFolder::CStoreFolder(std::wstring path) : m_path(std::move(path))
{
    while (!m_path.empty() && (m_path.back() == L'\\' || m_path.back() == L'/'))
    {
        m_path.pop_back();
    }
}

CStoreFolder::~CStoreFolder()
{
    Close();
}

void CStoreFolder::Open(bool watch)
{
    const std::scoped_lock hold(m_lock);
    std::string text;
    DWORD error = 0;
    if (!ReadWholeFile(m_path + L"\\store.json", text, error))
    {
        const std::string line =
            "store.json: cannot be read, error " + std::to_string(error) + ", in " + ToUtf8(m_path);
        Runtime().Say(line);
        throw CMapiError(MAPI_E_CORRUPT_STORE, FromUtf8(line));
    }
    m_document = Read(text, nullptr);
    m_hash = HashText(text);
    for (const Store& store : m_document->stores)
    {
        for (const Folder& folder : store.folders)
        {
            m_lastOrder = std::max(m_lastOrder, folder.order);
        }
        for (const auto& [id, message] : store.messages)
        {
            m_lastOrder = std::max(m_lastOrder, message->Order());
        }
    }
    m_stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (watch)
    {
        m_watchThread = std::thread([this] { Watch(); });
    }
    m_sendThread = std::thread([this] { Transport(); });
}

void CStoreFolder::Close()
{
    if (m_stopEvent == nullptr)
    {
        return;
    }
    SetEvent(m_stopEvent);
    {
        const std::scoped_lock hold(m_sendLock);
        m_sendStopping = true;
    }
    m_sendWake.notify_all();
    for (std::thread* thread : {&m_watchThread, &m_sendThread})
    {
        if (thread->joinable())
        {
            thread->join();
        }
    }
    CloseHandle(m_stopEvent);
    m_stopEvent = nullptr;
}

std::unique_ptr<Document> CStoreFolder::Read(std::string_view text, const CNameMap* known) const
{
    try
    {
        return ReadDocument(text, m_path, known);
    }
    catch (const CDocumentError& problem)
    {
        const std::string line = problem.Line("store.json", text);
        Runtime().Say(line);
        throw CMapiError(MAPI_E_CORRUPT_STORE, FromUtf8(line));
    }
}

void CStoreFolder::Register(const ViewKey& key, const std::shared_ptr<CTableView>& view)
{
    m_views.erase(std::remove_if(m_views.begin(),
                                 m_views.end(),
                                 [](const auto& one) { return one.second.expired(); }),
                  m_views.end());
    m_views.emplace_back(key, view);
}

void CStoreFolder::Advise(const ObjectAdvise& advise)
{
    m_advises.push_back(advise);
}

bool CStoreFolder::Unadvise(mapi64::Connection connection)
{
    const auto found =
        std::find_if(m_advises.begin(), m_advises.end(), [connection](const ObjectAdvise& one) {
            return one.connection == connection;
        });
    if (found == m_advises.end())
    {
        return false;
    }
    m_advises.erase(found);
    return true;
}

bool CStoreFolder::HasView(const ViewKey& key) const
{
    return std::any_of(m_views.begin(), m_views.end(), [&](const auto& one) {
        return one.first == key && !one.second.expired();
    });
}

void CStoreFolder::PublishTo(const ViewKey& key, const RowChange& change)
{
    for (const auto& [viewKey, weak] : m_views)
    {
        const std::shared_ptr<CTableView> view = viewKey == key ? weak.lock() : nullptr;
        if (view)
        {
            view->Apply(change);
        }
    }
}

void CStoreFolder::PublishFolder(std::uint64_t parent, const RowPtr& before, const RowPtr& after)
{
    PublishTo({ViewKey::Kind::Hierarchy, parent}, {before, after});
}

void CStoreFolder::PublishObject(std::uint64_t store, ULONG event, NotifyEvent notification)
{
    const std::optional<EntryName> name = ReadEntryId(notification.entryId);
    notification.eventType = event;
    for (const ObjectAdvise& advise : m_advises)
    {
        const bool about = advise.object == 0 || (name && advise.object == name->id);
        if (advise.store == store && about && (advise.mask & event) != 0)
        {
            Runtime().Notifier().Post(advise.connection, notification);
        }
    }
}

void CStoreFolder::PublishMessage(const std::shared_ptr<const CMessageRow>& before,
                                  const std::shared_ptr<const CMessageRow>& after)
{
    const auto keyOf = [](const CMessageRow& row) {
        return ViewKey{row.Associated() ? ViewKey::Kind::Associated : ViewKey::Kind::Contents,
                       row.FolderId()};
    };
    if (before && after && keyOf(*before) == keyOf(*after))
    {
        PublishTo(keyOf(*after), {before, after});
    }
    else
    {
        if (before)
        {
            PublishTo(keyOf(*before), {before, nullptr});
        }
        if (after)
        {
            PublishTo(keyOf(*after), {nullptr, after});
        }
    }
    const CMessageRow& row = after ? *after : *before;
    NotifyEvent event;
    event.objectType = MAPI_MESSAGE;
    event.entryId = MessageEntryId(*row.StoreOf(), row.Id());
    event.parentId = FolderEntryId(*row.StoreOf(), row.FolderId());
    ULONG kind = fnevObjectModified;
    if (!before || !after)
    {
        kind = after ? fnevObjectCreated : fnevObjectDeleted;
    }
    else if (before->FolderId() != after->FolderId())
    {
        kind = fnevObjectMoved;
        event.oldEntryId = event.entryId;
        event.oldParentId = FolderEntryId(*row.StoreOf(), before->FolderId());
    }
    PublishObject(row.StoreOf()->id, kind, event);
    Store* store = m_document->FindStore(row.StoreOf()->id);
    const Folder* inbox = store != nullptr ? FindRole(*store, FolderRole::Inbox) : nullptr;
    if (kind == fnevObjectCreated && inbox != nullptr && inbox->id == row.FolderId())
    {
        CValue scratch;
        const CValue* flags = row.Find(PROP_ID(PR_MESSAGE_FLAGS), scratch);
        event.messageClass = row.Body()->props.TextOf(PROP_ID(PR_MESSAGE_CLASS_W));
        event.messageFlags = static_cast<ULONG>(flags != nullptr ? flags->AsLong() : 0);
        PublishObject(row.StoreOf()->id, fnevNewMail, event);
    }
}

void CStoreFolder::ReplaceRow(Store& store,
                              std::shared_ptr<const CMessageRow> before,
                              std::shared_ptr<const CMessageRow> after)
{
    const auto placeOf = [](const auto& list, const auto& row) {
        return std::lower_bound(
            list.begin(), list.end(), row, [](const auto& left, const auto& right) {
                return left->Order() < right->Order();
            });
    };
    // A folder's own row changes with its counts.
    std::vector<std::uint64_t> touched;
    if (before)
    {
        touched.push_back(before->FolderId());
    }
    if (after && (!before || before->FolderId() != after->FolderId()))
    {
        touched.push_back(after->FolderId());
    }
    std::vector<std::pair<const Folder*, RowPtr>> folderRows;
    for (const std::uint64_t id : touched)
    {
        const Folder* folder = FindFolder(store, id);
        if (folder != nullptr && HasView({ViewKey::Kind::Hierarchy, folder->parent}))
        {
            folderRows.emplace_back(folder, MakeFolderRow(store, *folder));
        }
    }
    if (before)
    {
        Folder* folder = FindFolder(store, before->FolderId());
        auto& list = folder->messages;
        list.erase(placeOf(list, before));
        store.messages.erase(before->Id());
    }
    if (after)
    {
        auto& list = FindFolder(store, after->FolderId())->messages;
        list.insert(placeOf(list, after), after);
        store.messages[after->Id()] = after;
    }
    PublishMessage(before, after);
    for (const auto& [folder, row] : folderRows)
    {
        PublishFolder(folder->parent, row, MakeFolderRow(store, *folder));
    }
}

std::shared_ptr<const CMessageRow> CStoreFolder::FindMessage(std::uint64_t id)
{
    Store* store = StoreOfMessage(id);
    return store != nullptr ? store->messages.at(id) : nullptr;
}

Store* CStoreFolder::StoreOfMessage(std::uint64_t id)
{
    for (Store& store : m_document->stores)
    {
        if (store.messages.count(id) != 0)
        {
            return &store;
        }
    }
    return nullptr;
}

Store* CStoreFolder::StoreOfFolder(std::uint64_t id)
{
    for (Store& store : m_document->stores)
    {
        if (FindFolder(store, id) != nullptr)
        {
            return &store;
        }
    }
    return nullptr;
}

} // namespace mapistore
