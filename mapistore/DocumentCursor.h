#pragma once

#include <initializer_list>
#include <string>

#include "JsonTree.h"

namespace mapistore
{

/// A node of a document with the way that led to it, so that an error can say where it is.
///
/// Owner: borrows the node and the place above; lives on the stack of the reader.
class CPlace
{
public:
    explicit CPlace(const JsonNode& root) : m_node(&root) {}
    CPlace(const CPlace& above, const JsonNode& node) : m_above(&above), m_node(&node) {}
    CPlace(const CPlace& above, const JsonNode& node, size_t index)
        : m_above(&above), m_node(&node), m_index(static_cast<std::int64_t>(index))
    {
    }

    const JsonNode& Node() const { return *m_node; }
    std::string Path() const;

    [[noreturn]] void Fail(const std::string& text) const;
    /// Fails at the key of a member instead of its value.
    [[noreturn]] void FailAtKey(const std::string& text) const;

    void RequireObject() const;
    void RequireArray() const;
    std::string_view Text() const;
    bool Truth() const;
    std::int64_t Whole(std::int64_t least, std::int64_t most) const;

    /// Refuses members that are not named here. "comment" is always allowed.
    void AllowKeys(std::initializer_list<std::string_view> keys) const;
    /// Fails when there is no such member.
    const JsonNode& Need(std::string_view key) const;

    std::string TextOf(std::string_view key) const;
    std::string TextOr(std::string_view key, std::string_view otherwise) const;
    bool TruthOr(std::string_view key, bool otherwise) const;
    std::int64_t WholeOf(std::string_view key, std::int64_t least, std::int64_t most) const;
    std::int64_t WholeOr(std::string_view key,
                         std::int64_t otherwise,
                         std::int64_t least,
                         std::int64_t most) const;

private:
    const CPlace* m_above = nullptr;
    const JsonNode* m_node;
    std::int64_t m_index = -1;
};

/// Identifiers of objects: whole numbers that every JSON reader keeps exact.
constexpr std::int64_t kMaxId = (std::int64_t{1} << 53) - 1;

} // namespace mapistore
