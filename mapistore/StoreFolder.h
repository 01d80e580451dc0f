#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Document.h"
#include "TableView.h"
#include "TextEdit.h"

namespace mapistore
{

/// Which open tables a change concerns.
struct ViewKey
{
    enum class Kind
    {
        Contents,
        Associated,
        Hierarchy
    };
    Kind kind;
    std::uint64_t id; // of the folder

    bool operator==(const ViewKey& other) const { return kind == other.kind && id == other.id; }
};

/// A connection to a store's or an object's events.
struct ObjectAdvise
{
    mapi64::Connection connection = 0;
    std::uint64_t store = 0;
    std::uint64_t object = 0; // 0: every object of the store
    ULONG mask = 0;
};

/// Properties to set and identifiers to remove, of a change to one object.
struct PropertyChange
{
    std::vector<CValue> set;
    std::vector<ULONG> removed;
};

/// A store folder in use: the document in memory, the open tables that follow it, and the way back
/// to the disk.
///
/// Thread: `Lock()` is held by whoever touches the document or a view. Changes on the disk arrive on
///         a thread of its own, mail leaves on another.
class CStoreFolder : public std::enable_shared_from_this<CStoreFolder>
{
public:
    explicit CStoreFolder(std::wstring path);
    ~CStoreFolder();

    /// Reads the document. Throws CMapiError MAPI_E_CORRUPT_STORE with the line that tells why.
    void Open(bool watch);
    /// Ends the threads. What is in memory stays for whoever still holds it.
    void Close();

    std::recursive_mutex& Lock() { return m_lock; }
    Document& Data() { return *m_document; }
    const std::wstring& Path() const { return m_path; }

    void Register(const ViewKey& key, const std::shared_ptr<CTableView>& view);
    void Advise(const ObjectAdvise& advise);
    bool Unadvise(mapi64::Connection connection);

    /// Reads the document again when it is another than the one in memory, and tells the tables.
    void Refresh();

    // Changes: each is on the disk when it returns, and the tables have heard of it. They throw
    // CMapiError: MAPI_E_OBJECT_DELETED when the object is gone, MAPI_E_DISK_ERROR when the disk
    // refuses.
    std::shared_ptr<const CMessageRow> CreateMessage(std::uint64_t store,
                                                     std::uint64_t folder,
                                                     bool associated,
                                                     MessageBody body);
    /// `body` is the whole new content; `change` what of its properties is new. Recipients and
    /// attachments are written when they differ from what the document has.
    std::shared_ptr<const CMessageRow> ChangeMessage(std::uint64_t message,
                                                     const MessageBody& body,
                                                     const PropertyChange& change,
                                                     bool recipients,
                                                     bool attachments);
    void DeleteMessage(std::uint64_t message);
    /// Deletes all that are still there, with one change of the disk, and gives how many those were.
    size_t DeleteMessages(const std::vector<std::uint64_t>& messages);
    std::shared_ptr<const CMessageRow> MoveMessage(std::uint64_t message, std::uint64_t folder);
    std::uint64_t CreateFolder(std::uint64_t store,
                               std::uint64_t parent,
                               const std::wstring& name,
                               const std::wstring& comment);
    void ChangeFolder(std::uint64_t folder, const PropertyChange& change);
    void DeleteFolder(std::uint64_t folder);

    /// Puts a message of the outbox on its way to sent items.
    void Send(std::uint64_t message);
    /// Takes it back while it still waits. False when it is gone.
    bool Recall(std::uint64_t message);

    std::shared_ptr<const CMessageRow> FindMessage(std::uint64_t id);
    /// The store that holds the message or folder; null when it is gone.
    Store* StoreOfMessage(std::uint64_t id);
    Store* StoreOfFolder(std::uint64_t id);

private:
    using Edit = std::function<void(CTextEdit&)>;

    void Transact(const Edit& edit);
    std::unique_ptr<Document> Read(std::string_view text, const CNameMap* known) const;
    void Adopt(std::unique_ptr<Document> next);
    void AdoptStore(Store* before, Store* after);
    TextRange WriteNames(CTextEdit& text) const;
    void WriteFile(const std::string& text) const;

    void PublishMessage(const std::shared_ptr<const CMessageRow>& before,
                        const std::shared_ptr<const CMessageRow>& after);
    void PublishFolder(std::uint64_t parent, const RowPtr& before, const RowPtr& after);
    void RemoveRows(const std::vector<std::uint64_t>& messages);
    void PublishTo(const ViewKey& key, const RowChange& change);
    void PublishObject(std::uint64_t store, ULONG event, NotifyEvent notification);
    bool HasView(const ViewKey& key) const;
    /// By value: the store's own reference to a row goes meanwhile.
    void ReplaceRow(Store& store,
                    std::shared_ptr<const CMessageRow> before,
                    std::shared_ptr<const CMessageRow> after);

    void Watch();
    void Transport();
    void Deliver(std::uint64_t message);

    std::wstring m_path;

    std::recursive_mutex m_lock; // guards the members down to the advises
    std::unique_ptr<Document> m_document;
    std::uint64_t m_hash = 0;
    std::uint64_t m_lastOrder = 0;
    std::vector<TextRange> m_appended; // by the change made last
    std::string m_lastProblem;         // so that a broken document is told once
    std::vector<std::pair<ViewKey, std::weak_ptr<CTableView>>> m_views;
    std::vector<ObjectAdvise> m_advises;

    HANDLE m_stopEvent = nullptr;
    std::thread m_watchThread;

    std::mutex m_sendLock; // guards the queue and the flag
    std::condition_variable m_sendWake;
    std::deque<std::uint64_t> m_sendQueue;
    bool m_sendStopping = false;
    std::thread m_sendThread;
};

std::uint64_t HashText(std::string_view text);

} // namespace mapistore
