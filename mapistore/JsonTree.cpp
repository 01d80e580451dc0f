#include "JsonTree.h"

#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

namespace mapistore
{
namespace
{

constexpr size_t kNodesAtOnce = 4096;
constexpr size_t kTextAtOnce = size_t{64} * 1024;
constexpr size_t kMaxDepth = 200;

/// Reads a text and tells how far the reader got: the library itself keeps no positions.
class CCountingIterator
{
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CCountingIterator(const char* at, const char** reached) : m_at(at), m_reached(reached) {}
    reference operator*() const { return *m_at; }
    CCountingIterator& operator++()
    {
        ++m_at;
        *m_reached = m_at;
        return *this;
    }
    CCountingIterator operator++(int)
    {
        CCountingIterator before(*this);
        ++*this;
        return before;
    }
    bool operator==(const CCountingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const CCountingIterator& other) const { return m_at != other.m_at; }

private:
    const char* m_at;
    const char** m_reached;
};

std::string CleanMessage(const std::string& what)
{
    // "[json.exception.parse_error.101] parse error at line 1, column 5: syntax error ...": the
    // numbers are given in front of the line already.
    const size_t syntax = what.find(": ");
    return syntax == std::string::npos ? what : what.substr(syntax + 2);
}

} // namespace

class CTreeBuilder
{
public:
    CTreeBuilder(CJsonTree& tree, std::string_view text, const char** reached)
        : m_tree(tree), m_text(text), m_reached(reached)
    {
    }

    bool null() { return Add(JsonNode::Kind::Null) != nullptr; }
    bool boolean(bool truth)
    {
        Add(JsonNode::Kind::Boolean)->truth = truth;
        return true;
    }
    bool number_integer(std::int64_t value)
    {
        AddNumber(JsonNode::Kind::Integer)->integer = value;
        return true;
    }
    bool number_unsigned(std::uint64_t value)
    {
        const bool fits = value <= INT64_MAX;
        AddNumber(fits ? JsonNode::Kind::Integer : JsonNode::Kind::Unsigned)->natural = value;
        return true;
    }
    bool number_float(double value, const std::string&)
    {
        AddNumber(JsonNode::Kind::Real)->real = value;
        return true;
    }
    bool string(const std::string& text)
    {
        Add(JsonNode::Kind::Text)->text = m_tree.Copy(text);
        return true;
    }
    bool binary(const std::vector<std::uint8_t>&) { return false; }
    bool start_object(std::size_t) { return Open(JsonNode::Kind::Object); }
    bool end_object() { return Close(); }
    bool start_array(std::size_t) { return Open(JsonNode::Kind::Array); }
    bool end_array() { return Close(); }
    bool key(const std::string& name)
    {
        m_keyBegin = Begin();
        m_last = Reached();
        m_key = m_tree.Copy(name);
        if (!IsNewKey(m_open.back()))
        {
            throw CDocumentError(m_keyBegin, "", "the key \"" + name + "\" stands here twice");
        }
        return true;
    }
    template <class Exception>
    bool parse_error(std::size_t, const std::string&, const Exception& error)
    {
        const std::uint64_t at = Reached() > 0 ? Reached() - 1 : 0;
        throw CDocumentError(at, "", CleanMessage(error.what()));
    }

private:
    struct Level
    {
        JsonNode* node;
        JsonNode* lastChild;
        std::set<std::string_view> keys;
    };

    /// Looks along the members while they are few, which is the rule.
    bool IsNewKey(Level& level) const
    {
        constexpr std::uint32_t kFew = 32;
        if (level.node->count < kFew)
        {
            return level.node->Find(m_key) == nullptr;
        }
        if (level.keys.empty())
        {
            for (const JsonNode* one = level.node->first; one != nullptr; one = one->next)
            {
                level.keys.insert(one->key);
            }
        }
        return level.keys.insert(m_key).second;
    }

    std::uint64_t Reached() const { return static_cast<std::uint64_t>(*m_reached - m_text.data()); }

    /// Where the token that was just read begins: behind the last one and what separates them.
    std::uint64_t Begin() const
    {
        std::uint64_t at = m_last;
        while (at < m_text.size() &&
               std::string_view(" \t\r\n,:").find(m_text[at]) != std::string_view::npos)
        {
            ++at;
        }
        return at;
    }

    JsonNode* Add(JsonNode::Kind kind)
    {
        JsonNode* node = m_tree.NewNode();
        node->kind = kind;
        node->begin = Begin();
        node->end = Reached();
        m_last = node->end;
        Link(node);
        return node;
    }

    /// A number is followed by a character that had to be read to see its end.
    JsonNode* AddNumber(JsonNode::Kind kind)
    {
        JsonNode* node = Add(kind);
        std::uint64_t end = node->begin;
        while (end < m_text.size() &&
               std::string_view("+-.0123456789eE").find(m_text[end]) != std::string_view::npos)
        {
            ++end;
        }
        node->end = end;
        m_last = end;
        return node;
    }

    void Link(JsonNode* node)
    {
        if (m_open.empty())
        {
            m_tree.m_root = node;
            return;
        }
        Level& level = m_open.back();
        if (level.node->IsObject())
        {
            node->key = m_key;
            node->keyBegin = m_keyBegin;
        }
        if (level.lastChild == nullptr)
        {
            level.node->first = node;
        }
        else
        {
            level.lastChild->next = node;
        }
        level.lastChild = node;
        ++level.node->count;
    }

    bool Open(JsonNode::Kind kind)
    {
        JsonNode* node = Add(kind);
        if (m_open.size() >= kMaxDepth)
        {
            throw CDocumentError(node->begin, "", "nested too deeply");
        }
        m_open.push_back(Level{node, nullptr, {}});
        return true;
    }

    bool Close()
    {
        m_last = Reached();
        m_open.back().node->end = m_last;
        m_open.pop_back();
        return true;
    }

    CJsonTree& m_tree;
    std::string_view m_text;
    const char** m_reached;
    std::vector<Level> m_open;
    std::string_view m_key;
    std::uint64_t m_keyBegin = 0;
    std::uint64_t m_last = 0;
};

const JsonNode* JsonNode::Find(std::string_view name) const
{
    if (IsObject())
    {
        for (const JsonNode* member = first; member != nullptr; member = member->next)
        {
            if (member->key == name)
            {
                return member;
            }
        }
    }
    return nullptr;
}

std::string CDocumentError::Line(std::string_view file, std::string_view document) const
{
    const std::string_view before =
        document.substr(0, std::min<std::uint64_t>(m_offset, document.size()));
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const size_t lineBegin = before.rfind('\n');
    const size_t column =
        lineBegin == std::string_view::npos ? before.size() : before.size() - lineBegin - 1;
    std::string line = std::string(file) + ":" + std::to_string(lines + 1) + ":" +
                       std::to_string(column + 1) + ": ";
    if (!m_path.empty())
    {
        line += m_path + ": ";
    }
    return line + m_text;
}

JsonNode* CJsonTree::NewNode()
{
    if (m_nodes.empty() || m_nodes.back().size() == kNodesAtOnce)
    {
        m_nodes.emplace_back();
        m_nodes.back().reserve(kNodesAtOnce);
    }
    return &m_nodes.back().emplace_back();
}

std::string_view CJsonTree::Copy(std::string_view text)
{
    if (m_texts.empty() || m_texts.back().capacity() - m_texts.back().size() < text.size())
    {
        m_texts.emplace_back();
        m_texts.back().reserve(std::max(kTextAtOnce, text.size()));
    }
    std::vector<char>& block = m_texts.back();
    const size_t at = block.size();
    block.insert(block.end(), text.begin(), text.end());
    return {block.data() + at, text.size()};
}

const JsonNode& CJsonTree::Parse(std::string_view text)
{
    const char* reached = text.data();
    CTreeBuilder builder(*this, text, &reached);
    const CCountingIterator begin(text.data(), &reached);
    const CCountingIterator end(text.data() + text.size(), &reached);
    if (!nlohmann::json::sax_parse(begin, end, &builder) || m_root == nullptr)
    {
        throw CDocumentError(0, "", "no JSON");
    }
    return *m_root;
}

} // namespace mapistore
