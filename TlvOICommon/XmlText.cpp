#include "XmlText.h"

#include <cstdint>
#include <cstring>

#include "DocumentWriter.h"

namespace
{

constexpr std::size_t kUnitsAStep = sizeof(std::uint64_t) / sizeof(WCHAR);

constexpr std::uint64_t InEveryUnit(std::uint64_t unit) noexcept
{
    return unit * 0x0001000100010001ULL;
}

/// Whether one of the four 16-bit lanes is zero.
constexpr bool HasZeroUnit(std::uint64_t lanes) noexcept
{
    return ((lanes - InEveryUnit(1)) & ~lanes & InEveryUnit(0x8000)) != 0;
}

/// Whether one of four code units is markup. "<" and ">" differ in one bit, so one test does for
/// both.
constexpr bool HasMarkup(std::uint64_t units) noexcept
{
    constexpr std::uint64_t kAngleBit = '<' ^ '>';
    return HasZeroUnit(units ^ InEveryUnit('&')) ||
           HasZeroUnit((units | InEveryUnit(kAngleBit)) ^ InEveryUnit('>'));
}

constexpr bool IsMarkup(WCHAR unit) noexcept
{
    return unit == WTEXT('&') || unit == WTEXT('<') || unit == WTEXT('>');
}

} // namespace

std::size_t FindXmlMarkup(WStringView text) noexcept
{
    std::size_t at = 0;
    for (; text.size() - at >= kUnitsAStep; at += kUnitsAStep)
    {
        std::uint64_t units = 0;
        std::memcpy(&units, text.data() + at, sizeof(units));
        if (HasMarkup(units))
        {
            break;
        }
    }
    for (; at < text.size(); ++at)
    {
        if (IsMarkup(text[at]))
        {
            return at;
        }
    }
    return WStringView::npos;
}

WString EscapeXmlText(WStringView text)
{
    if (FindXmlMarkup(text) == WStringView::npos)
    {
        return WString(text);
    }
    CDocumentWriter writer;
    writer.Escaped(text);
    return writer.Take();
}
