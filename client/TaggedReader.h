#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dtclient
{
/// The text between the two tags of one element.
struct TaggedValue
{
    std::string_view text; ///< As it stands, without the CDATA wrapper.
    bool inCData = false;
};

/// Reads the server's documents: nested elements without attributes, whose values stand in a CDATA
/// section or as plain text.
///
/// They look like XML, but a general XML parser is the wrong tool: a few plain values are written
/// without escaping, so "AT&T" stands there as it is. A value therefore ends at its own end tag and
/// nowhere else.
///
/// Shape:  UTF-8, as converted from the event's text.
/// Owner:  borrows the text, which outlives the reader and every value taken from it.
/// Errors: a Take that returns false has consumed nothing but white space; Offset says where the
///         text stopped making sense.
class CTaggedReader
{
public:
    explicit CTaggedReader(std::string_view text);

    /// Name of the start tag that comes next; false when something else does.
    bool PeekStart(std::string_view& name);

    /// Takes "<name>".
    bool TakeStart(std::string_view name);

    /// Takes "</name>".
    bool TakeEnd(std::string_view name);

    /// Takes "<name>value</name>" or "<name/>".
    bool TakeElement(std::string_view name, TaggedValue& value);

    /// Takes an element that nobody here knows, with all that is in it.
    bool SkipElement(std::string_view name);

    /// True when only white space is left.
    bool AtEnd();

    [[nodiscard]] std::size_t Offset() const { return m_offset; }

private:
    void SkipSpace();
    bool TakeLiteral(std::string_view before, std::string_view name, std::string_view after);

    std::string_view m_text;
    std::size_t m_offset = 0;
};

/// Undoes the server's escaping: "&amp;", "&lt;" and "&gt;", in one pass. Anything else stands for
/// itself.
std::string UnescapeText(std::string_view text);
} // namespace dtclient
