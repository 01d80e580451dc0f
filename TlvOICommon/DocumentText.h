#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "EventText.h"
#include "HexText.h"
#include "PlatformTypes.h"
#include "XmlText.h"

/// Documents are written twice by the same code: first into a sink that only counts, then into one
/// that fills a text of exactly that length. So a document of many megabytes is allocated once and
/// never moved.

/// The name of an element, known when the code is compiled.
template <std::size_t Length>
struct ElementName
{
    // Not explicit: the name is written as a plain literal between angle brackets.
    // NOLINTNEXTLINE(google-explicit-constructor)
    consteval ElementName(const char (&literal)[Length]) { std::copy_n(literal, Length, text); }

    char text[Length]{};
};

/// The tags around the value of element `Name`, as plain elements and as CDATA sections.
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

/// Counts the code units of a document.
class CLengthSink
{
public:
    std::size_t Length() const noexcept { return m_length; }

protected:
    void PutRaw(WStringView text) noexcept { m_length += text.size(); }
    void PutEscaped(WStringView text) noexcept { m_length += EscapedXmlLength(text); }
    void PutAscii(std::string_view text) noexcept { m_length += text.size(); }
    void PutHex(std::span<const std::uint8_t> bytes) noexcept { m_length += 2 * bytes.size(); }

private:
    std::size_t m_length = 0;
};

/// Writes a document into a text whose length the other sink gave.
class CFillSink
{
public:
    explicit CFillSink(WCHAR* room) noexcept : m_out(room) {}

protected:
    void PutRaw(WStringView text) noexcept { m_out = std::copy(text.begin(), text.end(), m_out); }
    void PutEscaped(WStringView text) noexcept { m_out = WriteEscapedXml(text, m_out); }
    void PutAscii(std::string_view text) noexcept
    {
        m_out = std::copy(text.begin(), text.end(), m_out);
    }
    void PutHex(std::span<const std::uint8_t> bytes) noexcept
    {
        WriteHexText(bytes, m_out);
        m_out += 2 * bytes.size();
    }

private:
    WCHAR* m_out;
};

/// The kinds of values that the documents know, over one of the two sinks.
template <typename Sink>
class CDocument : public Sink
{
public:
    using Sink::Sink;

    template <ElementName Name>
    void Open()
    {
        this->PutRaw(View(ElementTags<Name>::kOpen));
    }
    template <ElementName Name>
    void Close()
    {
        this->PutRaw(View(ElementTags<Name>::kClose));
    }

    /// Text between elements, as it stands.
    void Raw(WStringView text) { this->PutRaw(text); }

    /// <name><![CDATA[value]]></name>, the value escaped as well.
    template <ElementName Name>
    void Cdata(WStringView value)
    {
        this->PutRaw(View(ElementTags<Name>::kOpenCdata));
        this->PutEscaped(value);
        this->PutRaw(View(ElementTags<Name>::kCloseCdata));
    }
    /// The same around two upper-case hexadecimal digits a byte.
    template <ElementName Name>
    void CdataHex(std::span<const std::uint8_t> bytes)
    {
        this->PutRaw(View(ElementTags<Name>::kOpenCdata));
        this->PutHex(bytes);
        this->PutRaw(View(ElementTags<Name>::kCloseCdata));
    }
    /// A value that is not escaped.
    template <ElementName Name>
    void Unescaped(WStringView value)
    {
        Open<Name>();
        this->PutRaw(value);
        Close<Name>();
    }
    /// A value that is escaped, without a CDATA section.
    template <ElementName Name>
    void Escaped(WStringView value)
    {
        Open<Name>();
        this->PutEscaped(value);
        Close<Name>();
    }
    /// A number. Unsigned values go out as the signed number of the same bits.
    template <ElementName Name>
    void Number(std::int32_t value)
    {
        std::array<char, 16> digits{};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        Open<Name>();
        this->PutAscii({digits.data(), static_cast<std::size_t>(end - digits.data())});
        Close<Name>();
    }
    template <ElementName Name>
    void Number(std::uint32_t value)
    {
        Number<Name>(static_cast<std::int32_t>(value));
    }
    /// TRUE or FALSE.
    template <ElementName Name>
    void Flag(bool value)
    {
        Unescaped<Name>(value ? WTEXT("TRUE") : WTEXT("FALSE"));
    }
    /// month/day/year hour:minute:second, of whatever the record holds.
    template <ElementName Name>
    void Time(const SYSTEMTIME& time)
    {
        std::array<char, kTimeRoom> text{};
        Open<Name>();
        this->PutAscii(FormatTime(time, text));
        Close<Name>();
    }
    template <ElementName Name>
    void Hex(std::span<const std::uint8_t> bytes)
    {
        Open<Name>();
        this->PutHex(bytes);
        Close<Name>();
    }

private:
    // Six fields of at most five digits, and five separators.
    static constexpr std::size_t kTimeRoom = 40;

    template <std::size_t Length>
    static constexpr WStringView View(const std::array<WCHAR, Length>& text) noexcept
    {
        return {text.data(), text.size()};
    }

    static char* PutField(unsigned value, std::ptrdiff_t width, char* out) noexcept
    {
        std::array<char, 8> digits{};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        const std::ptrdiff_t length = end - digits.data();
        if (length < width)
        {
            out = std::fill_n(out, width - length, '0');
        }
        return std::copy_n(digits.data(), length, out);
    }

    static std::string_view FormatTime(const SYSTEMTIME& time,
                                       std::array<char, kTimeRoom>& text) noexcept
    {
        char* out = PutField(time.wMonth, 2, text.data());
        *out++ = '/';
        out = PutField(time.wDay, 2, out);
        *out++ = '/';
        out = PutField(time.wYear, 4, out);
        *out++ = ' ';
        out = PutField(time.wHour, 2, out);
        *out++ = ':';
        out = PutField(time.wMinute, 2, out);
        *out++ = ':';
        out = PutField(time.wSecond, 2, out);
        return {text.data(), static_cast<std::size_t>(out - text.data())};
    }
};

/// The units of the document that `write` writes into whatever CDocument it is given.
template <typename Write>
std::size_t DocumentLength(const Write& write)
{
    CDocument<CLengthSink> length;
    write(length);
    return length.Length();
}

/// Writes that document into room for as many units.
template <typename Write>
void FillDocument(const Write& write, WCHAR* room)
{
    CDocument<CFillSink> fill(room);
    write(fill);
}

/// The document that `write` writes; it is called twice and has to write the same both times.
/// Errors: std::bad_alloc when memory runs out, std::length_error beyond what a string can hold.
template <typename Write>
WString BuildDocument(const Write& write)
{
    WString text(DocumentLength(write), WCHAR{});
    FillDocument(write, text.data());
    return text;
}

/// The same, built where the event window takes it from.
/// Errors: a lost text when memory runs out.
template <typename Write>
CEventText BuildEventDocument(const Write& write)
{
    CEventText text(DocumentLength(write));
    if (!text.IsLost())
    {
        FillDocument(write, text.Data());
    }
    return text;
}
