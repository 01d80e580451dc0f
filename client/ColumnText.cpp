#include "ColumnText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace dtclient
{
namespace
{
struct CodeRange
{
    std::uint32_t first;
    std::uint32_t last;
};

// Marks that stand over or around the letter before them, and characters without an image.
constexpr std::array<CodeRange, 10> kNoColumn = {{
    {0x0300, 0x036F},
    {0x0483, 0x0489},
    {0x0591, 0x05BD},
    {0x064B, 0x065F},
    {0x200B, 0x200F},
    {0x202A, 0x202E},
    {0x2060, 0x2069},
    {0x20D0, 0x20FF},
    {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F},
}};

// East Asian wide and full-width blocks, and the pictures that terminals show two columns wide.
constexpr std::array<CodeRange, 10> kTwoColumns = {{
    {0x1100, 0x115F},
    {0x2E80, 0x303E},
    {0x3041, 0x33FF},
    {0x3400, 0x4DBF},
    {0x4E00, 0xA4CF},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFF00, 0xFF60},
    {0x1F300, 0x1FAFF},
    {0x20000, 0x3FFFD},
}};

constexpr std::uint32_t kReplacement = 0xFFFD;

template <std::size_t N>
bool Holds(const std::array<CodeRange, N>& ranges, std::uint32_t code)
{
    return std::any_of(ranges.begin(), ranges.end(), [code](const CodeRange& range) {
        return code >= range.first && code <= range.last;
    });
}

std::size_t ColumnsOfCode(std::uint32_t code)
{
    if (Holds(kNoColumn, code))
    {
        return 0;
    }
    return Holds(kTwoColumns, code) ? 2 : 1;
}

// Takes one character off the front; a byte that does not belong is taken alone.
std::uint32_t TakeCode(std::string_view& text, std::size_t& length)
{
    const auto lead = static_cast<unsigned char>(text.front());
    std::uint32_t code = lead;
    length = 1;
    std::size_t trail = 0;
    if (lead >= 0xF0 && lead < 0xF8)
    {
        trail = 3;
        code = lead & 0x07U;
    }
    else if (lead >= 0xE0)
    {
        trail = 2;
        code = lead & 0x0FU;
    }
    else if (lead >= 0xC0)
    {
        trail = 1;
        code = lead & 0x1FU;
    }
    else if (lead >= 0x80)
    {
        code = kReplacement;
    }
    if (trail >= text.size())
    {
        code = kReplacement;
        trail = 0;
    }
    for (std::size_t index = 1; index <= trail; ++index)
    {
        const auto next = static_cast<unsigned char>(text[index]);
        if ((next & 0xC0U) != 0x80U)
        {
            code = kReplacement;
            trail = 0;
            break;
        }
        code = (code << 6U) | (next & 0x3FU);
    }
    length += trail;
    return code;
}

bool IsControl(std::uint32_t code)
{
    // C0 with delete, C1, and the marks that turn the writing direction for the rest of the line.
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x2028 || code == 0x2029 ||
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

std::string OneLine(std::string_view text)
{
    std::string line;
    bool pendingBlank = false;
    while (!text.empty())
    {
        std::size_t length = 0;
        const std::uint32_t code = TakeCode(text, length);
        if (IsControl(code) || code == ' ')
        {
            pendingBlank = !line.empty();
        }
        else
        {
            if (pendingBlank)
            {
                line += ' ';
                pendingBlank = false;
            }
            line += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return line;
}
} // namespace

std::size_t ColumnsOf(std::string_view text)
{
    std::size_t columns = 0;
    while (!text.empty())
    {
        std::size_t length = 0;
        columns += ColumnsOfCode(TakeCode(text, length));
        text.remove_prefix(length);
    }
    return columns;
}

std::string CellText(std::string_view text, std::size_t maxColumns)
{
    std::string line = OneLine(text);
    if (ColumnsOf(line) <= maxColumns)
    {
        return line;
    }
    std::string cut;
    std::size_t columns = 0;
    std::string_view rest = line;
    while (!rest.empty())
    {
        std::size_t length = 0;
        const std::size_t wide = ColumnsOfCode(TakeCode(rest, length));
        if (columns + wide + 1 > maxColumns)
        {
            break;
        }
        columns += wide;
        cut += rest.substr(0, length);
        rest.remove_prefix(length);
    }
    while (!cut.empty() && cut.back() == ' ')
    {
        cut.pop_back();
    }
    return cut + "\u2026";
}

std::string TableText(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows)
    {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column)
        {
            widths[column] = std::max(widths[column], ColumnsOf(row[column]));
        }
    }

    std::string text;
    const auto appendRow = [&text, &widths](const auto& cell) {
        std::string line;
        std::size_t missing = 0;
        for (std::size_t column = 0; column < widths.size(); ++column)
        {
            const std::string content = cell(column);
            if (!content.empty())
            {
                line.append(missing, ' ');
                line += content;
                missing = 0;
            }
            missing += widths[column] - ColumnsOf(content) + 2;
        }
        text += line;
        text += '\n';
    };
    for (std::size_t index = 0; index < rows.size(); ++index)
    {
        appendRow([&row = rows[index]](std::size_t column) {
            return column < row.size() ? row[column] : std::string();
        });
        if (index == 0)
        {
            appendRow([&widths](std::size_t column) { return std::string(widths[column], '-'); });
        }
    }
    return text;
}
} // namespace dtclient
