#include "NarrowText.h"

#ifdef _WIN32

#include <algorithm>

namespace
{

/// Whether the text has nothing but ASCII, which stands at the same place in every code page. Looks at
/// all units, which the compiler can do for many at once.
bool IsAscii(WStringView text) noexcept
{
    unsigned all = 0;
    for (const WCHAR unit : text)
    {
        all |= unit;
    }
    return all < 0x80;
}

} // namespace

std::string NarrowText(WStringView text)
{
    if (IsAscii(text))
    {
        std::string narrow(text.size(), '\0');
        std::transform(text.begin(), text.end(), narrow.begin(), [](WCHAR unit) {
            return static_cast<char>(unit);
        });
        return narrow;
    }
    const int cch = static_cast<int>(text.size());
    const int cb = WideCharToMultiByte(CP_ACP, 0, text.data(), cch, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(cb), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), cch, narrow.data(), cb, nullptr, nullptr);
    return narrow;
}

namespace
{

WString WidenBy(UINT codePage, std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    const int cb = static_cast<int>(text.size());
    const int cch = MultiByteToWideChar(codePage, 0, text.data(), cb, nullptr, 0);
    WString wide(static_cast<std::size_t>(cch), WTEXT('\0'));
    MultiByteToWideChar(codePage, 0, text.data(), cb, wide.data(), cch);
    return wide;
}

} // namespace

WString WidenText(std::string_view text)
{
    return WidenBy(CP_ACP, text);
}

WString WidenThreadText(std::string_view text)
{
    return WidenBy(CP_THREAD_ACP, text);
}

#else

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c)
{
    const auto put = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
    if (c < 0x80)
    {
        put(c);
    }
    else if (c < 0x800)
    {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    else
    {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

bool IsHighSurrogate(char32_t c)
{
    return c >= 0xD800 && c < 0xDC00;
}

bool IsLowSurrogate(char32_t c)
{
    return c >= 0xDC00 && c < 0xE000;
}

/// Reads one code point at `at` and moves past it; a malformed sequence gives the replacement
/// character and moves one byte.
char32_t TakeUtf8(std::string_view text, std::size_t& at)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at++);
    if (first < 0x80)
    {
        return first;
    }
    std::size_t more = 0;
    char32_t c = 0;
    char32_t least = 0;
    if ((first & 0xE0) == 0xC0)
    {
        more = 1;
        c = first & 0x1FU;
        least = 0x80;
    }
    else if ((first & 0xF0) == 0xE0)
    {
        more = 2;
        c = first & 0x0FU;
        least = 0x800;
    }
    else if ((first & 0xF8) == 0xF0)
    {
        more = 3;
        c = first & 0x07U;
        least = 0x10000;
    }
    else
    {
        return kReplacement;
    }
    if (text.size() - at < more)
    {
        return kReplacement;
    }
    for (std::size_t i = 0; i < more; i++)
    {
        if ((byte(at + i) & 0xC0) != 0x80)
        {
            return kReplacement;
        }
        c = (c << 6) | (byte(at + i) & 0x3FU);
    }
    if (c < least || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
    {
        return kReplacement;
    }
    at += more;
    return c;
}

} // namespace

std::string NarrowText(WStringView text)
{
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); i++)
    {
        char32_t c = text[i];
        if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
        }
        else if (IsHighSurrogate(c) || IsLowSurrogate(c))
        {
            c = kReplacement;
        }
        AppendUtf8(narrow, c);
    }
    return narrow;
}

WString WidenText(std::string_view text)
{
    WString wide;
    wide.reserve(text.size());
    for (std::size_t at = 0; at < text.size();)
    {
        const char32_t c = TakeUtf8(text, at);
        if (c < 0x10000)
        {
            wide.push_back(static_cast<WCHAR>(c));
        }
        else
        {
            wide.push_back(static_cast<WCHAR>(0xD800 + ((c - 0x10000) >> 10)));
            wide.push_back(static_cast<WCHAR>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        }
    }
    return wide;
}

WString WidenThreadText(std::string_view text)
{
    return WidenText(text);
}

#endif
