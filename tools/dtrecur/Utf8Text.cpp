#include "Utf8Text.h"

namespace
{

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Length of a sequence by its first byte; 0 when none begins with it.
std::size_t SequenceLength(unsigned char first)
{
    if (first < 0x80)
    {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0)
    {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0)
    {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

void AppendUtf8(std::string& out, char32_t c)
{
    const auto put = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
    if (c < 0x80)
    {
        put(c);
        return;
    }
    if (c < 0x800)
    {
        put(0xC0 | (c >> 6));
    }
    else
    {
        if (c < 0x10000)
        {
            put(0xE0 | (c >> 12));
        }
        else
        {
            put(0xF0 | (c >> 18));
            put(0x80 | ((c >> 12) & 0x3F));
        }
        put(0x80 | ((c >> 6) & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

void AppendHexEscape(std::string& out, char32_t unit)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
    {
        out.push_back(kDigits[unit >> shift & 15]);
    }
}

/// The letter behind the backslash; 0 for a unit without one.
char ShortEscape(char32_t unit)
{
    switch (unit)
    {
    case U'\\':
        return '\\';
    case U'\t':
        return 't';
    case U'\n':
        return 'n';
    case U'\r':
        return 'r';
    default:
        return 0;
    }
}

} // namespace

std::optional<WString> WideOfUtf8(std::string_view text)
{
    WString wide;
    wide.reserve(text.size());
    for (std::size_t at = 0; at < text.size();)
    {
        const auto first = static_cast<unsigned char>(text[at]);
        const std::size_t length = SequenceLength(first);
        if (length == 0 || text.size() - at < length)
        {
            return std::nullopt;
        }
        char32_t c = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t i = 1; i < length; ++i)
        {
            const auto next = static_cast<unsigned char>(text[at + i]);
            if ((next & 0xC0) != 0x80)
            {
                return std::nullopt;
            }
            c = (c << 6) | (next & 0x3FU);
        }
        if ((length == 3 && c < 0x800) || (length == 4 && (c < 0x10000 || c > 0x10FFFF)))
        {
            return std::nullopt;
        }
        if (c < 0x10000)
        {
            wide.push_back(static_cast<WCHAR>(c));
        }
        else
        {
            wide.push_back(static_cast<WCHAR>(0xD800 + ((c - 0x10000) >> 10)));
            wide.push_back(static_cast<WCHAR>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        }
        at += length;
    }
    return wide;
}

std::string Utf8OfWide(WStringView text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char32_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
        {
            const char32_t low = text[++i];
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        AppendUtf8(out, unit);
    }
    return out;
}

void AppendEscaped(std::string& out, WStringView text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char32_t unit = text[i];
        if (unit >= 0x20 && unit < 0x7F && unit != U'\\')
        {
            out.push_back(static_cast<char>(unit));
        }
        else if (const char letter = ShortEscape(unit))
        {
            out.push_back('\\');
            out.push_back(letter);
        }
        else if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
        {
            const char32_t low = text[++i];
            AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
        }
        else if (unit < 0x20 || unit == 0x7F || IsHighSurrogate(unit) || IsLowSurrogate(unit))
        {
            AppendHexEscape(out, unit);
        }
        else
        {
            AppendUtf8(out, unit);
        }
    }
}

std::string EscapedUtf8(WStringView text)
{
    std::string out;
    AppendEscaped(out, text);
    return out;
}
