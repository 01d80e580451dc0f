#include "TaggedReader.h"

namespace dtclient
{
namespace
{
constexpr std::string_view kCDataOpen = "<![CDATA[";
constexpr std::string_view kCDataClose = "]]>";

bool IsSpace(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

bool IsNameLetter(char letter)
{
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z') ||
           (letter >= '0' && letter <= '9') || letter == '_' || letter == '-' || letter == '.';
}
} // namespace

CTaggedReader::CTaggedReader(std::string_view text) : m_text(text)
{
    SkipSpace();
    if (m_text.substr(m_offset).starts_with("<?"))
    {
        // The contact list opens with a declaration; its encoding is not that of the text.
        const std::size_t end = m_text.find("?>", m_offset);
        m_offset = end == std::string_view::npos ? m_offset : end + 2;
    }
}

void CTaggedReader::SkipSpace()
{
    while (m_offset < m_text.size() && IsSpace(m_text[m_offset]))
    {
        ++m_offset;
    }
}

bool CTaggedReader::TakeLiteral(std::string_view before,
                                std::string_view name,
                                std::string_view after)
{
    SkipSpace();
    std::string_view rest = m_text.substr(m_offset);
    for (const std::string_view piece : {before, name, after})
    {
        if (!rest.starts_with(piece))
        {
            return false;
        }
        rest.remove_prefix(piece.size());
    }
    m_offset = m_text.size() - rest.size();
    return true;
}

bool CTaggedReader::PeekStart(std::string_view& name)
{
    SkipSpace();
    if (m_offset >= m_text.size() || m_text[m_offset] != '<')
    {
        return false;
    }
    std::size_t end = m_offset + 1;
    while (end < m_text.size() && IsNameLetter(m_text[end]))
    {
        ++end;
    }
    const std::string_view found = m_text.substr(m_offset + 1, end - m_offset - 1);
    const std::string_view rest = m_text.substr(end);
    if (found.empty() || (!rest.starts_with('>') && !rest.starts_with("/>")))
    {
        return false;
    }
    name = found;
    return true;
}

bool CTaggedReader::TakeStart(std::string_view name)
{
    return TakeLiteral("<", name, ">");
}

bool CTaggedReader::TakeEnd(std::string_view name)
{
    return TakeLiteral("</", name, ">");
}

bool CTaggedReader::TakeElement(std::string_view name, TaggedValue& value)
{
    value = TaggedValue{};
    if (TakeLiteral("<", name, "/>"))
    {
        return true;
    }
    SkipSpace();
    const std::size_t start = m_offset;
    if (!TakeStart(name))
    {
        return false;
    }
    std::size_t end = std::string_view::npos;
    if (m_text.substr(m_offset).starts_with(kCDataOpen))
    {
        // An escaped value cannot hold "]]>", so the first one is the end.
        m_offset += kCDataOpen.size();
        value.inCData = true;
        end = m_text.find(kCDataClose, m_offset);
    }
    else
    {
        std::string endTag = "</";
        endTag += name;
        endTag += '>';
        end = m_text.find(endTag, m_offset);
    }
    if (end != std::string_view::npos)
    {
        value.text = m_text.substr(m_offset, end - m_offset);
        m_offset = value.inCData ? end + kCDataClose.size() : end;
        if (TakeEnd(name))
        {
            return true;
        }
    }
    m_offset = start;
    return false;
}

bool CTaggedReader::SkipElement(std::string_view name)
{
    const std::size_t start = m_offset;
    if (TakeLiteral("<", name, "/>"))
    {
        return true;
    }
    if (TakeStart(name))
    {
        std::string endTag = "</";
        endTag += name;
        endTag += '>';
        const std::size_t end = m_text.find(endTag, m_offset);
        if (end != std::string_view::npos)
        {
            m_offset = end + endTag.size();
            return true;
        }
    }
    m_offset = start;
    return false;
}

bool CTaggedReader::AtEnd()
{
    SkipSpace();
    return m_offset == m_text.size();
}

std::string UnescapeText(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty())
    {
        if (text.starts_with("&amp;"))
        {
            plain += '&';
            text.remove_prefix(5);
        }
        else if (text.starts_with("&lt;"))
        {
            plain += '<';
            text.remove_prefix(4);
        }
        else if (text.starts_with("&gt;"))
        {
            plain += '>';
            text.remove_prefix(4);
        }
        else
        {
            plain += text.front();
            text.remove_prefix(1);
        }
    }
    return plain;
}
} // namespace dtclient
