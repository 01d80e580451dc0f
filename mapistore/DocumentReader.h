#pragma once

#include <cstring>

#include "Document.h"
#include "PropertyReader.h"
#include "Text.h"

namespace mapistore
{

template <class Read>
void ForEach(const CPlace& place, std::string_view key, const Read& read)
{
    const JsonNode* member = place.Node().Find(key);
    if (member == nullptr)
    {
        return;
    }
    const CPlace list(place, *member);
    list.RequireArray();
    size_t index = 0;
    for (const JsonNode* item = member->first; item != nullptr; item = item->next)
    {
        read(CPlace(list, *item, index++));
    }
}

inline Uid ReadUid(const CPlace& place)
{
    std::string bytes;
    Uid uid{};
    if (!ParseHex(place.Text(), bytes) || bytes.size() != uid.size())
    {
        place.Fail("expected 32 hexadecimal digits");
    }
    std::memcpy(uid.data(), bytes.data(), uid.size());
    return uid;
}

inline std::uint64_t ReadId(const CPlace& place, std::string_view key)
{
    return static_cast<std::uint64_t>(place.WholeOf(key, 1, kMaxId));
}

/// The parent's identifier, 0 for null.
inline std::uint64_t ReadParent(const CPlace& place)
{
    const CPlace parent(place, place.Need("parent"));
    if (parent.Node().kind == JsonNode::Kind::Null)
    {
        return 0;
    }
    return static_cast<std::uint64_t>(parent.Whole(1, kMaxId));
}

inline TextRange RangeOf(const JsonNode& node)
{
    return {node.begin, node.end};
}

/// Reads the parts of a document in turn. What comes later in the text may be named earlier, so the
/// identifiers are gathered first.
class CDocumentReader
{
public:
    CDocumentReader(const JsonNode& root, std::wstring folderPath, const CNameMap* known)
        : m_root(root), m_folderPath(std::move(folderPath)), m_known(known),
          m_document(std::make_unique<Document>())
    {
    }

    std::unique_ptr<Document> Read();
    std::shared_ptr<const MessageBody> ReadBody(const CPlace& place, CPropertyReader& reader);

private:
    void ReadHead();
    void ReadNames();
    void ReadKnownNames();
    void GatherIds();
    void Gather(const CPlace& place, std::string_view key, ObjectKind kind, const Uid& uid);
    void ReadProfile(const CPlace& place);
    void ReadStore(const CPlace& place, CPropertyReader& reader);
    Folder ReadFolder(const CPlace& place, CPropertyReader& reader);
    void ReadMessage(const CPlace& place, Store& store, CPropertyReader& reader);
    void CheckFolders(const CPlace& place, const Store& store) const;
    void ReadAddressBook(const CPlace& place, CPropertyReader& reader);
    void CheckContainers(const CPlace& place) const;

    CPlace m_root;
    std::wstring m_folderPath;
    const CNameMap* m_known;
    std::unique_ptr<Document> m_document;
    IdDirectory m_ids;
    std::uint64_t m_order = 0;
};

} // namespace mapistore
