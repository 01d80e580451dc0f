#include "XmlText.h"

#include <algorithm>
#include <array>
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

/// Units that are looked at together, one bit of a mask each.
constexpr std::size_t kRun = 32;

/// Units that are copied at once, whether they are all wanted or not: what is too much is overwritten
/// by what follows. Two of the widest stores that every processor of the platform has.
constexpr std::size_t kCopied = 16;

constexpr bool IsMarkup(WCHAR unit) noexcept
{
    return unit == WTEXT('&') || (unit | kAngleBit) == WTEXT('>');
}

/// A bit for each of kRun units, set for markup; the first unit has the lowest.
std::uint32_t MarkupMask(const WCHAR* run) noexcept
{
    // Without a choice in the loop the compiler looks at many units at once.
    std::array<std::uint8_t, kRun> marks;
    for (std::size_t i = 0; i < kRun; ++i)
    {
        marks[i] = static_cast<std::uint8_t>((run[i] == WTEXT('&')) |
                                             ((run[i] | kAngleBit) == WTEXT('>')));
    }
    static_assert(std::endian::native == std::endian::little);
    std::uint32_t mask = 0;
    for (std::size_t i = 0; i < kRun; i += 8)
    {
        // The multiplication gathers eight bytes of 0 or 1 in the highest byte.
        std::uint64_t eight = 0;
        std::memcpy(&eight, marks.data() + i, sizeof(eight));
        mask |= static_cast<std::uint32_t>((eight * 0x0102040810204080ULL) >> 56) << i;
    }
    return mask;
}

/// The entities by bits 1 to 3 of their character, in which the three differ, each with room to copy
/// eight units at once.
struct Entity
{
    WCHAR text[8];
};

constexpr std::size_t EntityNumber(WCHAR markup) noexcept
{
    return (markup >> 1) & 7U;
}

constexpr auto kEntities = [] {
    std::array<Entity, 8> entities{};
    std::copy(kAmpersand.begin(), kAmpersand.end(), entities[EntityNumber(WTEXT('&'))].text);
    std::copy(kLess.begin(), kLess.end(), entities[EntityNumber(WTEXT('<'))].text);
    std::copy(kGreater.begin(), kGreater.end(), entities[EntityNumber(WTEXT('>'))].text);
    return entities;
}();

constexpr std::size_t EntityLength(WCHAR markup) noexcept
{
    return kLess.size() + (markup == WTEXT('&') ? 1 : 0);
}

/// Copies `length` units, and some more: up to kCopied units behind them are read and written.
WCHAR* CopyRoughly(const WCHAR* text, std::size_t length, WCHAR* out) noexcept
{
    for (std::size_t done = 0;; done += kCopied)
    {
        std::memcpy(out + done, text + done, kCopied * sizeof(WCHAR));
        if (done + kCopied >= length)
        {
            return out + length;
        }
    }
}

/// Writes kRun units, behind which at least kCopied more units of the text stand: escaped text is
/// never shorter than the text itself, so what is read too far is also never written too far.
WCHAR* WriteRun(const WCHAR* run, WCHAR* out) noexcept
{
    static_assert(sizeof(Entity) <= kCopied * sizeof(WCHAR));
    std::size_t done = 0;
    for (std::uint32_t mask = MarkupMask(run); mask != 0; mask &= mask - 1)
    {
        const auto at = static_cast<std::size_t>(std::countr_zero(mask));
        out = CopyRoughly(run + done, at - done, out);
        const WCHAR markup = run[at];
        std::memcpy(out, kEntities[EntityNumber(markup)].text, sizeof(Entity));
        out += EntityLength(markup);
        done = at + 1;
    }
    return CopyRoughly(run + done, kRun - done, out);
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
    for (; text.size() >= kRun + kCopied; text.remove_prefix(kRun))
    {
        out = WriteRun(text.data(), out);
    }
    for (const WCHAR unit : text)
    {
        if (IsMarkup(unit))
        {
            std::copy_n(kEntities[EntityNumber(unit)].text, EntityLength(unit), out);
            out += EntityLength(unit);
        }
        else
        {
            *out++ = unit;
        }
    }
    return out;
}
