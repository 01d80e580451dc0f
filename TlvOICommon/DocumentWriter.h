#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "PlatformTypes.h"

/// The name of an element, known when the code is compiled.
template <std::size_t Length>
struct ElementName
{
    // Not explicit: the name is written as a plain literal between angle brackets.
    // NOLINTNEXTLINE(google-explicit-constructor)
    consteval ElementName(const char (&literal)[Length]) { std::copy_n(literal, Length, text); }

    char text[Length]{};
};

/// The tags around the value of element `Name`, with `Inside` directly around the value.
template <ElementName Name>
struct ElementTags
{
    static constexpr std::size_t kNameLength = sizeof(Name.text) - 1;

    template <std::size_t Length>
    static constexpr std::array<WCHAR, Length> Join(WStringView before, WStringView behind) noexcept
    {
        std::array<WCHAR, Length> joined{};
        auto out = std::copy(before.begin(), before.end(), joined.begin());
        out = std::transform(Name.text, Name.text + kNameLength, out, [](char unit) {
            return static_cast<WCHAR>(unit);
        });
        std::copy(behind.begin(), behind.end(), out);
        return joined;
    }

    static constexpr auto kOpen = Join<kNameLength + 2>(WTEXT("<"), WTEXT(">"));
    static constexpr auto kClose = Join<kNameLength + 3>(WTEXT("</"), WTEXT(">"));
    static constexpr auto kOpenCdata = Join<kNameLength + 11>(WTEXT("<"), WTEXT("><![CDATA["));
    static constexpr auto kCloseCdata = Join<kNameLength + 6>(WTEXT("]]></"), WTEXT(">"));
};

/// Builds the text of one document by appending.
///
/// Owner:  owns the text until Take().
/// Thread: one.
/// Errors: std::bad_alloc when memory runs out, std::length_error beyond what a string can hold.
class CDocumentWriter
{
public:
    /// Appends `text` as it stands.
    void Raw(WStringView text) { std::copy_n(text.data(), text.size(), Room(text.size())); }
    /// Appends `text` with its markup characters as entities.
    void Escaped(WStringView text);
    /// Appends the value in decimal, as a signed number.
    void Decimal(std::int32_t value);
    /// Appends two upper-case hexadecimal digits a byte.
    void Hex(std::span<const std::uint8_t> bytes);
    /// Appends month/day/year hour:minute:second, of whatever the record holds.
    void Time(const SYSTEMTIME& time);

    /// <name><![CDATA[value]]></name>, the value escaped as well.
    template <ElementName Name>
    void CdataElement(WStringView value)
    {
        Raw(View(ElementTags<Name>::kOpenCdata));
        Escaped(value);
        Raw(View(ElementTags<Name>::kCloseCdata));
    }
    /// <name>value</name>, the value not escaped.
    template <ElementName Name>
    void RawElement(WStringView value)
    {
        Open<Name>();
        Raw(value);
        Close<Name>();
    }
    /// <name>value</name>, the value escaped.
    template <ElementName Name>
    void EscapedElement(WStringView value)
    {
        Open<Name>();
        Escaped(value);
        Close<Name>();
    }
    /// A number. Unsigned values go out as the signed number of the same bits.
    template <ElementName Name>
    void NumberElement(std::int32_t value)
    {
        Open<Name>();
        Decimal(value);
        Close<Name>();
    }
    template <ElementName Name>
    void NumberElement(std::uint32_t value)
    {
        NumberElement<Name>(static_cast<std::int32_t>(value));
    }
    /// TRUE or FALSE.
    template <ElementName Name>
    void FlagElement(bool value)
    {
        RawElement<Name>(value ? WTEXT("TRUE") : WTEXT("FALSE"));
    }
    template <ElementName Name>
    void TimeElement(const SYSTEMTIME& time)
    {
        Open<Name>();
        Time(time);
        Close<Name>();
    }
    template <ElementName Name>
    void HexElement(std::span<const std::uint8_t> bytes)
    {
        Open<Name>();
        Hex(bytes);
        Close<Name>();
    }
    template <ElementName Name>
    void Open()
    {
        Raw(View(ElementTags<Name>::kOpen));
    }
    template <ElementName Name>
    void Close()
    {
        Raw(View(ElementTags<Name>::kClose));
    }

    /// Hands out the text and starts anew.
    WString Take();

private:
    template <std::size_t Length>
    static constexpr WStringView View(const std::array<WCHAR, Length>& text) noexcept
    {
        return {text.data(), text.size()};
    }

    /// The next `count` code units, to be filled by the caller.
    WCHAR* Room(std::size_t count)
    {
        if (m_text.size() - m_used < count)
        {
            Grow(count);
        }
        WCHAR* const room = m_text.data() + m_used;
        m_used += count;
        return room;
    }
    void Grow(std::size_t count);

    WString m_text;         // the document, and behind it room for more
    std::size_t m_used = 0; // how much of m_text is the document
};
