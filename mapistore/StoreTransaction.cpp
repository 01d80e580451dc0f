#include <algorithm>

#include "EditParts.h"
#include "PropertyNames.h"
#include "StoreFolder.h"
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

} // namespace mapistore
