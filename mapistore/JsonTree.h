#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mapistore
{

/// One value of a JSON text with its place there. Borrowed from a CJsonTree.
struct JsonNode
{
    enum class Kind : std::uint8_t
    {
        Null,
        Boolean,
        Integer,  // fits std::int64_t
        Unsigned, // only when it does not
        Real,
        Text,
        Array,
        Object
    };

    Kind kind = Kind::Null;
    std::uint32_t count = 0;
    std::uint64_t begin = 0; // offset of the first byte
    std::uint64_t end = 0;   // behind the last
    std::uint64_t keyBegin = 0;
    std::string_view key;  // of a member
    std::string_view text; // of Text
    union {
        std::int64_t integer;
        std::uint64_t natural;
        double real;
        bool truth;
        JsonNode* first;
    };
    JsonNode* next = nullptr;

    JsonNode() : first(nullptr) {}

    bool IsObject() const { return kind == Kind::Object; }
    bool IsArray() const { return kind == Kind::Array; }
    bool IsText() const { return kind == Kind::Text; }
    const JsonNode* Find(std::string_view name) const;
};

/// What is wrong with a document, and where.
class CDocumentError
{
public:
    CDocumentError(std::uint64_t offset, std::string path, std::string text)
        : m_offset(offset), m_path(std::move(path)), m_text(std::move(text))
    {
    }
    std::uint64_t Offset() const { return m_offset; }
    const std::string& Path() const { return m_path; }
    const std::string& Text() const { return m_text; }

    /// "store.json:212:17: stores[0].name: expected text"; lines and columns from 1, columns in
    /// bytes.
    std::string Line(std::string_view file, std::string_view document) const;

private:
    std::uint64_t m_offset;
    std::string m_path;
    std::string m_text;
};

/// A JSON text as a tree that knows where everything stands.
///
/// Errors: `Parse` throws CDocumentError for text that is no JSON, with the offset of the fault,
///         and for an object with one key twice.
class CJsonTree
{
public:
    const JsonNode& Parse(std::string_view text);

private:
    friend class CTreeBuilder;

    JsonNode* NewNode();
    std::string_view Copy(std::string_view text);

    std::deque<std::vector<JsonNode>> m_nodes;
    std::deque<std::vector<char>> m_texts;
    JsonNode* m_root = nullptr;
};

} // namespace mapistore
