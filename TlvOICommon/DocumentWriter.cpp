#include "DocumentWriter.h"

#include <charconv>
#include <utility>

#include "HexText.h"
#include "XmlText.h"

namespace
{

constexpr std::size_t kFirstRoom = 2048;

WStringView EntityOf(WCHAR markup) noexcept
{
    switch (markup)
    {
    case WTEXT('&'):
        return WTEXT("&amp;");
    case WTEXT('<'):
        return WTEXT("&lt;");
    default:
        return WTEXT("&gt;");
    }
}

/// Writes the value with at least `width` digits and gives the position behind it.
char* PadNumber(char* out, unsigned value, std::ptrdiff_t width) noexcept
{
    std::array<char, 16> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    const std::ptrdiff_t length = end - digits.data();
    if (length < width)
    {
        out = std::fill_n(out, width - length, '0');
    }
    return std::copy(std::as_const(digits).data(), end, out);
}

} // namespace

void CDocumentWriter::Escaped(WStringView text)
{
    std::size_t markup = FindXmlMarkup(text);
    while (markup != WStringView::npos)
    {
        Raw(text.substr(0, markup));
        Raw(EntityOf(text[markup]));
        text.remove_prefix(markup + 1);
        markup = FindXmlMarkup(text);
    }
    Raw(text);
}

void CDocumentWriter::Decimal(std::int32_t value)
{
    std::array<char, 16> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    std::copy(
        std::as_const(digits).data(), end, Room(static_cast<std::size_t>(end - digits.data())));
}

void CDocumentWriter::Hex(std::span<const std::uint8_t> bytes)
{
    WriteHexText(bytes, Room(2 * bytes.size()));
}

void CDocumentWriter::Time(const SYSTEMTIME& time)
{
    // Six fields of at most five digits and five separators.
    std::array<char, 40> text{};
    char* out = PadNumber(text.data(), time.wMonth, 2);
    *out++ = '/';
    out = PadNumber(out, time.wDay, 2);
    *out++ = '/';
    out = PadNumber(out, time.wYear, 4);
    *out++ = ' ';
    out = PadNumber(out, time.wHour, 2);
    *out++ = ':';
    out = PadNumber(out, time.wMinute, 2);
    *out++ = ':';
    out = PadNumber(out, time.wSecond, 2);
    const std::size_t length = static_cast<std::size_t>(out - text.data());
    std::copy_n(text.data(), length, Room(length));
}

WString CDocumentWriter::Take()
{
    m_text.resize(std::exchange(m_used, 0));
    return std::exchange(m_text, WString());
}

void CDocumentWriter::Grow(std::size_t count)
{
    m_text.resize(std::max({kFirstRoom, 2 * m_text.size(), m_used + count}));
}
