#pragma once

#include <nlohmann/json.hpp>

#include "Document.h"

namespace mapistore
{

using Json = nlohmann::ordered_json;

/// Writes values as a document has them. What a document cannot hold throws CMapiError
/// MAPI_E_BAD_VALUE; a disk that refuses a large value's file throws MAPI_E_DISK_ERROR.
class CPropertyWriter
{
public:
    CPropertyWriter(const CNameMap& names, std::wstring folderPath)
        : m_names(names), m_folderPath(std::move(folderPath))
    {
    }

    /// Empty for a property that is computed and never stored.
    std::string KeyOf(ULONG tag) const;
    Json ValueOf(const CValue& value) const;
    Json BagOf(const CPropertyBag& bag) const;
    /// "class", "properties", "recipients" and "attachments" of a message.
    void WriteBody(Json& out, const MessageBody& body) const;
    Json RecipientsOf(const MessageBody& body) const;
    Json AttachmentsOf(const MessageBody& body) const;

    /// Sets and removes properties of an object that a document already has, whatever forms its
    /// other values were written in.
    void Change(Json& properties,
                const std::vector<CValue>& set,
                const std::vector<ULONG>& removed) const;

private:
    Json LargeValue(const std::string& bytes, const char* ending) const;
    /// Removes whatever key names the property.
    void RemoveId(Json& properties, ULONG id) const;

    const CNameMap& m_names;
    std::wstring m_folderPath;
};

/// "2026-11-02T09:00:00Z"; throws CMapiError MAPI_E_BAD_VALUE past the year 9999.
std::string TimeText(std::uint64_t time);

/// The first 32 digits of the SHA-256, in lower case.
std::string ContentName(std::string_view bytes);

/// Writes a file beside its place, flushes it and renames it there. False when the disk refuses.
bool WriteAndRename(const std::wstring& path, std::string_view content);

} // namespace mapistore
