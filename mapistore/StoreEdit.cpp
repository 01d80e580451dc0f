#include <algorithm>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "PropertyNames.h"
#include "PropertyWriter.h"
#include "Runtime.h"
#include "StoreFolder.h"
#include "Text.h"
#include "ValueFile.h"

namespace mapistore
{
namespace
{

/// An exclusive lock of the store for every process, from construction to destruction.
class CFileLock
{
public:
    explicit CFileLock(const std::wstring& path)
        : m_file(CreateFileW(path.c_str(),
                             GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr,
                             OPEN_ALWAYS,
                             0,
                             nullptr))
    {
        if (m_file == INVALID_HANDLE_VALUE ||
            !LockFileEx(m_file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &m_range))
        {
            if (m_file != INVALID_HANDLE_VALUE)
            {
                CloseHandle(m_file);
            }
            throw CMapiError(MAPI_E_DISK_ERROR, L"the store's lock cannot be had");
        }
    }
    ~CFileLock()
    {
        UnlockFileEx(m_file, 0, 1, 0, &m_range);
        CloseHandle(m_file);
    }
    CFileLock(const CFileLock&) = delete;
    CFileLock& operator=(const CFileLock&) = delete;

private:
    OVERLAPPED m_range{}; // byte 0
    HANDLE m_file;
};

[[noreturn]] void Gone()
{
    throw CMapiError(MAPI_E_OBJECT_DELETED, L"the object is gone from the store");
}

Json ParsePart(std::string_view text, const TextRange& range)
{
    return Json::parse(text.substr(range.begin, range.end - range.begin));
}

std::string Dump(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::uint64_t Now()
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
}

/// Where an object stands, moved in as far as its first line is.
std::string InPlace(std::string_view text, const TextRange& range, const Json& json)
{
    std::uint64_t lineBegin = range.begin;
    while (lineBegin > 0 && text[lineBegin - 1] == ' ')
    {
        --lineBegin;
    }
    const bool ownLine = lineBegin == 0 || text[lineBegin - 1] == '\n';
    const std::string blanks(ownLine ? range.begin - lineBegin : 8, ' ');
    std::string out;
    for (const char c : Dump(json))
    {
        out.push_back(c);
        if (c == '\n')
        {
            out += blanks;
        }
    }
    return out;
}

} // namespace

/// Writes the names that the text lacks. Where there was no map yet, gives the place of the new one
/// in the text to come: it stands before everything else that changes.
TextRange CStoreFolder::WriteNames(CTextEdit& text) const
{
    const auto& names = m_document->names.All();
    if (names.size() == m_document->namesInText)
    {
        return m_document->namedIdsRange;
    }
    Json known = Json::object();
    if (m_document->namedIdsRange.end != 0)
    {
        known = ParsePart(text.Text(), m_document->namedIdsRange);
    }
    Json fresh = Json::object();
    for (const auto& [name, id] : names)
    {
        const std::string key = KeyOfName(name);
        char number[16];
        std::snprintf(number, sizeof(number), "0x%04lX", id);
        bool isKnown = false;
        for (const auto& member : known.items())
        {
            std::string problem;
            const std::optional<PropertyName> other = ReadPropertyName(member.key(), problem);
            isKnown = isKnown || (other && !(*other < name) && !(name < *other));
        }
        if (!isKnown)
        {
            fresh[key] = number;
        }
    }
    if (fresh.empty())
    {
        return m_document->namedIdsRange;
    }
    std::string members;
    for (const auto& member : fresh.items())
    {
        members += members.empty() ? "" : ",\n";
        members += "    " + Json(member.key()).dump() + ": " + member.value().dump();
    }
    if (m_document->namedIdsRange.end != 0)
    {
        text.AddMembers(m_document->namedIdsRange, members);
        return m_document->namedIdsRange;
    }
    const std::uint64_t at = m_document->rootBegin + 1;
    const std::string head = "\n  \"namedIds\": ";
    const std::string object = "{\n" + members + "\n  }";
    text.Replace({at, at}, head + object + ",");
    return {at + head.size(), at + head.size() + object.size()};
}

void CStoreFolder::WriteFile(const std::string& text) const
{
    if (!WriteAndRename(m_path + L"\\store.json", text))
    {
        throw CMapiError(MAPI_E_DISK_ERROR, L"the store's document cannot be written");
    }
}

void CStoreFolder::Transact(const Edit& edit)
{
    const CFileLock lock(m_path + L"\\store.lock");
    std::string text;
    DWORD error = 0;
    if (!ReadWholeFile(m_path + L"\\store.json", text, error))
    {
        throw CMapiError(MAPI_E_DISK_ERROR, L"the store's document cannot be read");
    }
    const std::uint64_t hash = HashText(text);
    if (hash != m_hash)
    {
        Adopt(Read(text, &m_document->names));
        m_hash = hash;
    }
    // What the edit counts up in the document is taken back when the disk refuses.
    const std::uint64_t nextId = m_document->nextId;
    const bool hadNames = m_document->namedIdsRange.end != 0;
    try
    {
        CTextEdit changes(text, *m_document);
        edit(changes);
        const TextRange names = WriteNames(changes);
        const std::uint64_t revision = m_document->revision + 1;
        changes.Replace(m_document->revisionRange, std::to_string(revision));
        changes.Replace(m_document->nextIdRange, std::to_string(m_document->nextId));
        const std::string written = changes.Finish();
        WriteFile(written);
        m_document->revision = revision;
        m_hash = HashText(written);
        if (!hadNames)
        {
            m_document->namedIdsRange = names;
        }
        m_document->namesInText = m_document->names.All().size();
        m_appended = changes.Appended();
    }
    catch (...)
    {
        // The places in the text may have been moved already: only reading it again is sure.
        std::unique_ptr<Document> again = ReadDocument(text, m_path, &m_document->names);
        again->nextId = std::max(again->nextId, nextId);
        Adopt(std::move(again));
        throw;
    }
}

std::shared_ptr<const CMessageRow> CStoreFolder::CreateMessage(std::uint64_t storeId,
                                                               std::uint64_t folderId,
                                                               bool associated,
                                                               MessageBody body)
{
    const std::scoped_lock hold(m_lock);
    std::uint64_t id = 0;
    const std::uint64_t now = Now();
    for (const ULONG tag : {PR_CREATION_TIME, PR_LAST_MODIFICATION_TIME})
    {
        if (body.props.Find(PROP_ID(tag)) == nullptr)
        {
            body.props.Set(CValue::Time(tag, now));
        }
    }
    Transact([&](CTextEdit& text) {
        const Store* store = m_document->FindStore(storeId);
        if (store == nullptr || FindFolder(*store, folderId) == nullptr)
        {
            Gone();
        }
        id = m_document->nextId++;
        Json message = Json::object();
        message["id"] = id;
        message["folder"] = folderId;
        if (associated)
        {
            message["associated"] = true;
        }
        const CPropertyWriter writer(m_document->names, m_path);
        writer.WriteBody(message, body);
        text.Append(m_document->messageArrays.at(storeId), Dump(message));
    });
    m_document->messageRanges[id] = m_appended.front();
    Store& store = *m_document->FindStore(storeId);
    auto row =
        std::make_shared<const CMessageRow>(store.identity,
                                            id,
                                            folderId,
                                            associated,
                                            ++m_lastOrder,
                                            std::make_shared<const MessageBody>(std::move(body)));
    ReplaceRow(store, nullptr, row);
    return row;
}

std::shared_ptr<const CMessageRow> CStoreFolder::ChangeMessage(std::uint64_t id,
                                                               const MessageBody& body,
                                                               const PropertyChange& change,
                                                               bool recipients,
                                                               bool attachments)
{
    const std::scoped_lock hold(m_lock);
    MessageBody merged;
    PropertyChange full = change;
    full.set.push_back(CValue::Time(PR_LAST_MODIFICATION_TIME, Now()));
    Transact([&](CTextEdit& text) {
        const std::shared_ptr<const CMessageRow> row = FindMessage(id);
        if (!row)
        {
            Gone();
        }
        // Another process may have changed other properties since; those stay.
        merged = *row->Body();
        for (const ULONG tag : full.removed)
        {
            merged.props.Remove(tag);
        }
        for (const CValue& value : full.set)
        {
            merged.props.Set(value);
        }
        const CPropertyWriter writer(m_document->names, m_path);
        const TextRange range = m_document->messageRanges.at(id);
        Json message = ParsePart(text.Text(), range);
        if (message.count("properties") == 0)
        {
            message["properties"] = Json::object();
        }
        PropertyChange rest = full;
        for (const CValue& value : full.set)
        {
            if (value.Tag() == PR_MESSAGE_CLASS_W)
            {
                message["class"] = ToUtf8(value.AsText());
                rest.set.erase(std::find(rest.set.begin(), rest.set.end(), value));
                rest.removed.push_back(value.Id());
            }
        }
        writer.Change(message["properties"], rest.set, rest.removed);
        if (recipients)
        {
            merged.recipients = body.recipients;
            message["recipients"] = writer.RecipientsOf(body);
        }
        if (attachments)
        {
            merged.attachments = body.attachments;
            message["attachments"] = writer.AttachmentsOf(body);
        }
        text.Replace(range, InPlace(text.Text(), range, message));
    });
    Store& store = *StoreOfMessage(id);
    const std::shared_ptr<const CMessageRow> before = store.messages.at(id);
    auto after =
        std::make_shared<const CMessageRow>(store.identity,
                                            id,
                                            before->FolderId(),
                                            before->Associated(),
                                            before->Order(),
                                            std::make_shared<const MessageBody>(std::move(merged)));
    ReplaceRow(store, before, after);
    return after;
}

void CStoreFolder::DeleteMessage(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    Transact([&](CTextEdit& text) {
        if (!FindMessage(id))
        {
            Gone();
        }
        text.Remove(m_document->messageRanges.at(id));
        m_document->messageRanges.erase(id);
    });
    Store& store = *StoreOfMessage(id);
    ReplaceRow(store, store.messages.at(id), nullptr);
}

std::shared_ptr<const CMessageRow> CStoreFolder::MoveMessage(std::uint64_t id,
                                                             std::uint64_t folderId)
{
    const std::scoped_lock hold(m_lock);
    Transact([&](CTextEdit& text) {
        const Store* store = StoreOfMessage(id);
        if (store == nullptr || FindFolder(*store, folderId) == nullptr)
        {
            Gone();
        }
        const TextRange range = m_document->messageRanges.at(id);
        Json message = ParsePart(text.Text(), range);
        message["folder"] = folderId;
        text.Replace(range, InPlace(text.Text(), range, message));
    });
    Store& store = *StoreOfMessage(id);
    const std::shared_ptr<const CMessageRow> before = store.messages.at(id);
    auto after = std::make_shared<const CMessageRow>(
        store.identity, id, folderId, before->Associated(), ++m_lastOrder, before->Body());
    ReplaceRow(store, before, after);
    return after;
}

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
            Gone();
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
            Gone();
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
            Gone();
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

void CStoreFolder::Send(std::uint64_t message)
{
    {
        const std::scoped_lock hold(m_sendLock);
        m_sendQueue.push_back(message);
    }
    m_sendWake.notify_one();
}

bool CStoreFolder::Recall(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    const std::shared_ptr<const CMessageRow> row = FindMessage(id);
    const ULONG flags =
        row ? static_cast<ULONG>(row->Body()->props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0)) : 0;
    if ((flags & MSGFLAG_SUBMIT) == 0)
    {
        return false;
    }
    PropertyChange change;
    change.set.push_back(CValue::Long(
        PR_MESSAGE_FLAGS, static_cast<LONG>((flags & ~MSGFLAG_SUBMIT) | MSGFLAG_UNSENT)));
    ChangeMessage(id, *row->Body(), change, false, false);
    return true;
}

void CStoreFolder::Transport()
{
    std::unique_lock hold(m_sendLock);
    while (true)
    {
        m_sendWake.wait(hold, [this] { return m_sendStopping || !m_sendQueue.empty(); });
        if (m_sendStopping)
        {
            return;
        }
        const std::uint64_t message = m_sendQueue.front();
        m_sendQueue.pop_front();
        hold.unlock();
        std::uint64_t delayMs = 0;
        {
            const std::scoped_lock document(m_lock);
            delayMs = m_document->sendDelayMs;
        }
        const bool stopped =
            WaitForSingleObject(m_stopEvent, static_cast<DWORD>(delayMs)) == WAIT_OBJECT_0;
        if (!stopped)
        {
            try
            {
                Deliver(message);
            }
            catch (const CMapiError& error)
            {
                Runtime().Say("a submitted message could not leave: " + ToUtf8(error.Text()));
            }
            catch (...)
            {
                Runtime().Say("a submitted message could not leave: out of memory");
            }
        }
        hold.lock();
    }
}

void CStoreFolder::Deliver(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    const std::shared_ptr<const CMessageRow> row = FindMessage(id);
    if (!row)
    {
        return; // deleted before it left
    }
    const CPropertyBag& props = row->Body()->props;
    if ((static_cast<ULONG>(props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0)) & MSGFLAG_SUBMIT) == 0)
    {
        return; // taken back
    }
    if (props.BoolOf(PROP_ID(PR_DELETE_AFTER_SUBMIT)))
    {
        DeleteMessage(id);
        return;
    }
    std::uint64_t target = 0;
    const CValue* sentId = props.Find(PROP_ID(PR_SENTMAIL_ENTRYID));
    const std::optional<EntryName> sent = sentId != nullptr && sentId->Type() == PT_BINARY
                                              ? ReadEntryId(sentId->Bytes())
                                              : std::nullopt;
    if (sent && sent->objectType == MAPI_FOLDER &&
        FindFolder(*StoreOfMessage(id), sent->id) != nullptr)
    {
        target = sent->id;
    }
    const ULONG flags = static_cast<ULONG>(props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0));
    PropertyChange change;
    change.set.push_back(CValue::Long(
        PR_MESSAGE_FLAGS,
        static_cast<LONG>((flags & ~(MSGFLAG_SUBMIT | MSGFLAG_UNSENT)) | MSGFLAG_READ)));
    change.set.push_back(CValue::Time(PR_MESSAGE_DELIVERY_TIME, Now()));
    ChangeMessage(id, *row->Body(), change, false, false);
    // Without PR_SENTMAIL_ENTRYID a sent message stays where it is.
    if (target != 0)
    {
        MoveMessage(id, target);
    }
}

} // namespace mapistore
