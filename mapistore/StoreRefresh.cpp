#include <algorithm>

#include "FolderRow.h"
#include "MessageRow.h"
#include "Runtime.h"
#include "StoreFolder.h"
#include "Text.h"
#include "ValueFile.h"

namespace mapistore
{
namespace
{

/// How long a change may go unnoticed when the system tells of none.
constexpr DWORD kPollMs = 1000;

struct Difference
{
    std::shared_ptr<const CMessageRow> before;
    std::shared_ptr<const CMessageRow> after;
};

std::shared_ptr<const CMessageRow> WithOrder(const CMessageRow& row,
                                             const std::shared_ptr<const StoreIdentity>& store,
                                             std::uint64_t order)
{
    return std::make_shared<const CMessageRow>(
        store, row.Id(), row.FolderId(), row.Associated(), order, row.Body());
}

} // namespace

void CStoreFolder::Refresh()
{
    const std::scoped_lock hold(m_lock);
    std::string text;
    DWORD error = 0;
    if (!ReadWholeFile(m_path + L"\\store.json", text, error))
    {
        return; // between two names, or gone: what is in memory stays
    }
    const std::uint64_t hash = HashText(text);
    if (hash == m_hash)
    {
        return;
    }
    std::unique_ptr<Document> next;
    try
    {
        next = ReadDocument(text, m_path, &m_document->names);
    }
    catch (const CDocumentError& problem)
    {
        // Somebody may be half way through writing it in place. What is in memory stays.
        const std::string line = problem.Line("store.json", text);
        if (line != m_lastProblem)
        {
            m_lastProblem = line;
            Runtime().Say(line);
        }
        return;
    }
    m_lastProblem.clear();
    m_hash = hash;
    Adopt(std::move(next));
}

void CStoreFolder::Adopt(std::unique_ptr<Document> next)
{
    const std::unique_ptr<Document> before = std::move(m_document);
    m_document = std::move(next);
    for (Store& store : m_document->stores)
    {
        Store* old = before->FindStore(store.identity->id);
        if (old != nullptr)
        {
            AdoptStore(old, &store);
        }
    }
}

/// Keeps the row of every message that is the same, so that open tables and messages find what they
/// hold, and tells of the others: what went, what changed, what came.
void CStoreFolder::AdoptStore(Store* before, Store* after)
{
    std::vector<Difference> differences;
    std::vector<std::shared_ptr<const CMessageRow>> fresh;
    const bool sameIdentity = before->identity->uid == after->identity->uid &&
                              before->identity->tableForm == after->identity->tableForm;
    if (sameIdentity)
    {
        after->identity = before->identity;
    }
    for (Folder& folder : after->folders)
    {
        const Folder* old = FindFolder(*before, folder.id);
        folder.order = old != nullptr ? old->order : ++m_lastOrder;
        for (auto& message : folder.messages)
        {
            const auto known = before->messages.find(message->Id());
            const bool isKnown = known != before->messages.end();
            if (isKnown && sameIdentity && known->second->SameContent(*message))
            {
                message = known->second;
                continue;
            }
            const std::uint64_t order = isKnown && known->second->FolderId() == folder.id
                                            ? known->second->Order()
                                            : ++m_lastOrder;
            message = WithOrder(*message, after->identity, order);
            differences.push_back({isKnown ? known->second : nullptr, message});
        }
        std::sort(
            folder.messages.begin(),
            folder.messages.end(),
            [](const auto& left, const auto& right) { return left->Order() < right->Order(); });
        for (const auto& message : folder.messages)
        {
            after->messages[message->Id()] = message;
        }
    }
    for (const auto& [id, message] : before->messages)
    {
        if (after->messages.count(id) == 0)
        {
            differences.push_back({message, nullptr});
        }
    }
    // Told in the order of the document, deletions first.
    std::stable_sort(differences.begin(),
                     differences.end(),
                     [](const Difference& left, const Difference& right) {
                         return left.after == nullptr && right.after != nullptr;
                     });
    for (const Difference& one : differences)
    {
        PublishMessage(one.before, one.after);
    }
    for (const Folder& folder : after->folders)
    {
        const Folder* old = FindFolder(*before, folder.id);
        const RowPtr row = MakeFolderRow(*after, folder);
        if (old == nullptr || old->parent != folder.parent)
        {
            if (old != nullptr)
            {
                PublishFolder(old->parent, MakeFolderRow(*before, *old), nullptr);
            }
            PublishFolder(folder.parent, nullptr, row);
        }
        else if (!(FolderProperties(*before, *old) == FolderProperties(*after, folder)))
        {
            PublishFolder(folder.parent, MakeFolderRow(*before, *old), row);
        }
    }
    for (const Folder& old : before->folders)
    {
        if (FindFolder(*after, old.id) == nullptr)
        {
            PublishFolder(old.parent, MakeFolderRow(*before, old), nullptr);
        }
    }
}

void CStoreFolder::Watch()
{
    HANDLE change = FindFirstChangeNotificationW(
        m_path.c_str(), FALSE, FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE);
    const bool told = change != INVALID_HANDLE_VALUE;
    HANDLE handles[2] = {m_stopEvent, told ? change : m_stopEvent};
    FILETIME lastTime{};
    // The first look is for what was written between the opening and the asking for changes.
    for (DWORD waitMs = 0;; waitMs = told ? INFINITE : kPollMs)
    {
        const DWORD woken = WaitForMultipleObjects(told ? 2 : 1, handles, FALSE, waitMs);
        if (woken == WAIT_OBJECT_0)
        {
            break;
        }
        if (woken == WAIT_OBJECT_0 + 1)
        {
            // Asked for anew before the file is read, so that no change falls between.
            FindNextChangeNotification(change);
        }
        try
        {
            WIN32_FILE_ATTRIBUTE_DATA data{};
            const std::wstring path = m_path + L"\\store.json";
            const bool known = GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
            if (told || (known && CompareFileTime(&data.ftLastWriteTime, &lastTime) != 0))
            {
                lastTime = data.ftLastWriteTime;
                Refresh();
            }
        }
        catch (...)
        {
            Runtime().Say("following the store folder: out of memory");
        }
    }
    if (told)
    {
        FindCloseChangeNotification(change);
    }
}

} // namespace mapistore
