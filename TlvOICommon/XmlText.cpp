#include "XmlText.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace
{

constexpr WStringView kAmpersand = WTEXT("&amp;");
constexpr WStringView kLess = WTEXT("&lt;");
constexpr WStringView kGreater = WTEXT("&gt;");

/// "<" and ">" differ in this bit alone, so that one test does for both.
constexpr std::uint16_t kAngleBit = '<' ^ '>';

/// Units that are looked at together: a short run of text without markup is copied at once.
constexpr std::size_t kRun = 32;

constexpr bool IsMarkup(WCHAR unit) noexcept
{
    return unit == WTEXT('&') || (unit | kAngleBit) == WTEXT('>');
}

/// Whether any of kRun units is markup, without a branch, so that the compiler looks at many at once.
bool HasMarkup(const WCHAR* run) noexcept
{
    std::uint16_t any = 0;
    for (std::size_t i = 0; i < kRun; ++i)
    {
        any = static_cast<std::uint16_t>(any | (IsMarkup(run[i]) ? 1 : 0));
    }
    return any != 0;
}

WCHAR* WriteEntity(WCHAR markup, WCHAR* out) noexcept
{
    switch (markup)
    {
    case WTEXT('&'):
        return std::copy(kAmpersand.begin(), kAmpersand.end(), out);
    case WTEXT('<'):
        return std::copy(kLess.begin(), kLess.end(), out);
    default:
        return std::copy(kGreater.begin(), kGreater.end(), out);
    }
}

/// Four code units in one word; the first is the lowest.
using Word = std::uint64_t;
constexpr std::size_t kWordUnits = sizeof(Word) / sizeof(WCHAR);
static_assert(std::endian::native == std::endian::little);

constexpr Word InEveryUnit(Word unit) noexcept
{
    return unit * 0x0001000100010001ULL;
}

/// Has the lowest set bit in the first unit of `units` that is zero, and no bit when none is.
constexpr Word ZeroUnits(Word units) noexcept
{
    return (units - InEveryUnit(1)) & ~units & InEveryUnit(0x8000);
}

/// How many units of `units` stand before the first markup, kWordUnits when there is none.
std::size_t UnitsBeforeMarkup(Word units) noexcept
{
    const Word markup = ZeroUnits(units ^ InEveryUnit('&')) |
                        ZeroUnits((units | InEveryUnit(kAngleBit)) ^ InEveryUnit('>'));
    return static_cast<std::size_t>(std::countr_zero(markup)) / 16;
}

/// Writes a text that has markup in it. Escaped text is never shorter than the text itself, so a
/// whole word may always be stored while a whole word is left to read.
WCHAR* WriteMarkedRun(WStringView text, WCHAR* out) noexcept
{
    while (text.size() >= kWordUnits)
    {
        Word units = 0;
        std::memcpy(&units, text.data(), sizeof(units));
        std::memcpy(out, &units, sizeof(units));
        const std::size_t plain = UnitsBeforeMarkup(units);
        out += plain;
        if (plain == kWordUnits)
        {
            text.remove_prefix(kWordUnits);
            continue;
        }
        out = WriteEntity(text[plain], out);
        text.remove_prefix(plain + 1);
    }
    for (const WCHAR unit : text)
    {
        if (IsMarkup(unit))
        {
            out = WriteEntity(unit, out);
        }
        else
        {
            *out++ = unit;
        }
    }
    return out;
}

} // namespace

WString EscapeXmlText(WStringView text)
{
    const std::size_t length = EscapedXmlLength(text);
    if (length == text.size())
    {
        return WString(text);
    }
    WString escaped(length, WCHAR{});
    WriteEscapedXml(text, escaped.data());
    return escaped;
}

std::size_t EscapedXmlLength(WStringView text) noexcept
{
    // The counts of a block fit into 16 bits, the width of a code unit, and each has a loop body
    // without a choice, so that the compiler counts many units at once.
    constexpr std::size_t kBlock = 8192;
    std::size_t length = text.size();
    while (!text.empty())
    {
        const WStringView block = text.substr(0, kBlock);
        std::uint16_t ampersands = 0;
        std::uint16_t angles = 0;
        for (const WCHAR unit : block)
        {
            ampersands = static_cast<std::uint16_t>(ampersands + (unit == WTEXT('&')));
            angles = static_cast<std::uint16_t>(angles + ((unit | kAngleBit) == WTEXT('>')));
        }
        length += ampersands * (kAmpersand.size() - 1) + angles * (kLess.size() - 1);
        text.remove_prefix(block.size());
    }
    return length;
}

WCHAR* WriteEscapedXml(WStringView text, WCHAR* out) noexcept
{
    for (; text.size() >= kRun; text.remove_prefix(kRun))
    {
        if (!HasMarkup(text.data()))
        {
            std::memcpy(out, text.data(), kRun * sizeof(WCHAR));
            out += kRun;
            continue;
        }
        out = WriteMarkedRun(text.substr(0, kRun), out);
    }
    return WriteMarkedRun(text, out);
}
