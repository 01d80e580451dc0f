#include "Text.h"

#include "Mapi64.h"

namespace mapistore
{
namespace
{

std::wstring Widen(UINT codePage, std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    const int cb = static_cast<int>(text.size());
    const int cch = MultiByteToWideChar(codePage, 0, text.data(), cb, nullptr, 0);
    std::wstring wide(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), cb, wide.data(), cch);
    return wide;
}

std::string Narrow(UINT codePage, std::wstring_view text)
{
    if (text.empty())
    {
        return {};
    }
    const int cch = static_cast<int>(text.size());
    const int cb = WideCharToMultiByte(codePage, 0, text.data(), cch, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(cb), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), cch, narrow.data(), cb, nullptr, nullptr);
    return narrow;
}

bool IsAscii(std::wstring_view text)
{
    for (const wchar_t unit : text)
    {
        if (unit >= 0x80)
        {
            return false;
        }
    }
    return true;
}

wchar_t LowerAscii(wchar_t unit)
{
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + 0x20) : unit;
}

std::wstring RemoveMarks(std::wstring_view text)
{
    const int cch = static_cast<int>(text.size());
    const int needed = FoldStringW(MAP_COMPOSITE, text.data(), cch, nullptr, 0);
    std::wstring parts(static_cast<size_t>(needed), L'\0');
    FoldStringW(MAP_COMPOSITE, text.data(), cch, parts.data(), needed);
    std::wstring kept;
    kept.reserve(parts.size());
    for (const wchar_t unit : parts)
    {
        WORD type = 0;
        GetStringTypeW(CT_CTYPE3, &unit, 1, &type);
        // A lone combining mark has no base to belong to and still counts as one.
        if ((type & C3_NONSPACING) == 0)
        {
            kept.push_back(unit);
        }
    }
    return kept;
}

} // namespace

std::wstring FromUtf8(std::string_view text)
{
    return Widen(CP_UTF8, text);
}

std::string ToUtf8(std::wstring_view text)
{
    return Narrow(CP_UTF8, text);
}

std::wstring FromAnsi(std::string_view text)
{
    return Widen(CP_ACP, text);
}

std::string ToAnsi(std::wstring_view text)
{
    return Narrow(CP_ACP, text);
}

std::wstring Fold(std::wstring_view text, bool ignoreCase, bool ignoreMarks)
{
    if (text.empty())
    {
        return {};
    }
    if (IsAscii(text))
    {
        std::wstring folded(text);
        if (ignoreCase)
        {
            for (wchar_t& unit : folded)
            {
                unit = LowerAscii(unit);
            }
        }
        return folded;
    }
    std::wstring folded = ignoreMarks ? RemoveMarks(text) : std::wstring(text);
    if (ignoreCase && !folded.empty())
    {
        const int cch = static_cast<int>(folded.size());
        std::wstring lower(folded.size(), L'\0');
        LCMapStringEx(LOCALE_NAME_INVARIANT,
                      LCMAP_LOWERCASE,
                      folded.data(),
                      cch,
                      lower.data(),
                      cch,
                      nullptr,
                      nullptr,
                      0);
        folded.swap(lower);
    }
    return folded;
}

int CompareText(std::wstring_view left, std::wstring_view right)
{
    int order = 0;
    if (IsAscii(left) && IsAscii(right))
    {
        const size_t common = left.size() < right.size() ? left.size() : right.size();
        for (size_t i = 0; i < common; ++i)
        {
            const wchar_t a = LowerAscii(left[i]);
            const wchar_t b = LowerAscii(right[i]);
            if (a != b)
            {
                return a < b ? -1 : 1;
            }
        }
        order = left.size() < right.size() ? -1 : (left.size() > right.size() ? 1 : 0);
    }
    else
    {
        const int compared = Fold(left, true, false).compare(Fold(right, true, false));
        order = compared < 0 ? -1 : (compared > 0 ? 1 : 0);
    }
    return order;
}

bool EqualText(std::wstring_view left, std::wstring_view right)
{
    return CompareText(left, right) == 0;
}

bool ContentMatches(std::wstring_view text, std::wstring_view pattern, ULONG fuzzyLevel)
{
    // FL_LOOSE leaves the amount of looseness to the store: here it ignores case and marks.
    const bool loose = (fuzzyLevel & FL_LOOSE) != 0;
    const bool ignoreCase = loose || (fuzzyLevel & FL_IGNORECASE) != 0;
    const bool ignoreMarks = loose || (fuzzyLevel & FL_IGNORENONSPACE) != 0;
    std::wstring foldedText;
    std::wstring foldedPattern;
    if (ignoreCase || ignoreMarks)
    {
        foldedText = Fold(text, ignoreCase, ignoreMarks);
        foldedPattern = Fold(pattern, ignoreCase, ignoreMarks);
        text = foldedText;
        pattern = foldedPattern;
    }
    switch (fuzzyLevel & 0xFFFF)
    {
    case FL_SUBSTRING:
        return text.find(pattern) != std::wstring_view::npos;
    case FL_PREFIX:
        return text.substr(0, pattern.size()) == pattern;
    default:
        return text == pattern;
    }
}

std::string HexText(const void* bytes, size_t cb)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto* data = static_cast<const unsigned char*>(bytes);
    std::string text;
    text.reserve(cb * 2);
    for (size_t i = 0; i < cb; ++i)
    {
        text.push_back(kDigits[data[i] >> 4]);
        text.push_back(kDigits[data[i] & 15]);
    }
    return text;
}

bool ParseHex(std::string_view text, std::string& bytes)
{
    bytes.clear();
    int high = -1;
    for (const char c : text)
    {
        int digit = 0;
        if (c >= '0' && c <= '9')
        {
            digit = c - '0';
        }
        else if (c >= 'a' && c <= 'f')
        {
            digit = c - 'a' + 10;
        }
        else if (c >= 'A' && c <= 'F')
        {
            digit = c - 'A' + 10;
        }
        else
        {
            return false;
        }
        if (high < 0)
        {
            high = digit;
        }
        else
        {
            bytes.push_back(static_cast<char>(high * 16 + digit));
            high = -1;
        }
    }
    return high < 0;
}

} // namespace mapistore
