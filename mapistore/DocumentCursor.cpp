#include "DocumentCursor.h"

#include <algorithm>

namespace mapistore
{

std::string CPlace::Path() const
{
    if (m_above == nullptr)
    {
        return {};
    }
    const std::string above = m_above->Path();
    if (m_index >= 0)
    {
        return above + "[" + std::to_string(m_index) + "]";
    }
    return above.empty() ? std::string(m_node->key) : above + "." + std::string(m_node->key);
}

void CPlace::Fail(const std::string& text) const
{
    throw CDocumentError(m_node->begin, Path(), text);
}

void CPlace::FailAtKey(const std::string& text) const
{
    throw CDocumentError(m_node->keyBegin, Path(), text);
}

void CPlace::RequireObject() const
{
    if (!m_node->IsObject())
    {
        Fail("expected an object");
    }
}

void CPlace::RequireArray() const
{
    if (!m_node->IsArray())
    {
        Fail("expected an array");
    }
}

std::string_view CPlace::Text() const
{
    if (!m_node->IsText())
    {
        Fail("expected text");
    }
    return m_node->text;
}

bool CPlace::Truth() const
{
    if (m_node->kind != JsonNode::Kind::Boolean)
    {
        Fail("expected true or false");
    }
    return m_node->truth;
}

std::int64_t CPlace::Whole(std::int64_t least, std::int64_t most) const
{
    if (m_node->kind != JsonNode::Kind::Integer || m_node->integer < least ||
        m_node->integer > most)
    {
        Fail("expected a whole number from " + std::to_string(least) + " to " +
             std::to_string(most));
    }
    return m_node->integer;
}

void CPlace::AllowKeys(std::initializer_list<std::string_view> keys) const
{
    RequireObject();
    for (const JsonNode* member = m_node->first; member != nullptr; member = member->next)
    {
        if (member->key != "comment" &&
            std::find(keys.begin(), keys.end(), member->key) == keys.end())
        {
            CPlace(*this, *member).FailAtKey("unknown key");
        }
    }
}

const JsonNode& CPlace::Need(std::string_view key) const
{
    RequireObject();
    const JsonNode* member = m_node->Find(key);
    if (member == nullptr)
    {
        Fail("the key \"" + std::string(key) + "\" is missing");
    }
    return *member;
}

std::string CPlace::TextOf(std::string_view key) const
{
    return std::string(CPlace(*this, Need(key)).Text());
}

std::string CPlace::TextOr(std::string_view key, std::string_view otherwise) const
{
    const JsonNode* member = m_node->Find(key);
    return std::string(member != nullptr ? CPlace(*this, *member).Text() : otherwise);
}

bool CPlace::TruthOr(std::string_view key, bool otherwise) const
{
    const JsonNode* member = m_node->Find(key);
    return member != nullptr ? CPlace(*this, *member).Truth() : otherwise;
}

std::int64_t CPlace::WholeOf(std::string_view key, std::int64_t least, std::int64_t most) const
{
    return CPlace(*this, Need(key)).Whole(least, most);
}

std::int64_t CPlace::WholeOr(std::string_view key,
                             std::int64_t otherwise,
                             std::int64_t least,
                             std::int64_t most) const
{
    const JsonNode* member = m_node->Find(key);
    return member != nullptr ? CPlace(*this, *member).Whole(least, most) : otherwise;
}

} // namespace mapistore
