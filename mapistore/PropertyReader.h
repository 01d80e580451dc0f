#pragma once

#include <unordered_map>

#include "Document.h"
#include "DocumentCursor.h"

namespace mapistore
{

/// What kind of object an `id` of a document belongs to.
enum class ObjectKind
{
    Store,
    Folder,
    Message,
    Container,
    Entry
};

/// Where each identifier of a document belongs, for references inside of values.
struct IdDirectory
{
    struct Known
    {
        ObjectKind kind;
        Uid uid;
        bool isList = false; // of an entry
    };
    std::unordered_map<std::uint64_t, Known> ids;
};

/// Reads property objects.
class CPropertyReader
{
public:
    CPropertyReader(CNameMap& names, const IdDirectory& ids, std::wstring folderPath)
        : m_names(names), m_ids(ids), m_folderPath(std::move(folderPath))
    {
    }

    /// `special` names a key that is no property and is left to the caller.
    CPropertyBag ReadBag(const CPlace& place, std::string_view special = {});
    CValue ReadBinary(const CPlace& place, ULONG tag);

private:
    ULONG ReadKey(const CPlace& place);
    CValue ReadValue(const CPlace& place, ULONG tag);
    CValue ReadList(const CPlace& place, ULONG tag);
    CValue ReadFile(const CPlace& place, ULONG tag);
    std::string ReadReference(const CPlace& place, ObjectKind kind);

    CNameMap& m_names;
    const IdDirectory& m_ids;
    std::wstring m_folderPath;
    std::unordered_map<std::string, ULONG> m_keys; // what was found out before
};

/// The 40-byte head, "vCal-Uid", the text and its end, as PidLidGlobalObjectId holds it.
///
/// Source: [MS-OXOCAL] 2.2.1.27.
std::string MakeGlobalObjectId(std::string_view uid);

} // namespace mapistore
