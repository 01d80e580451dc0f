#include "DocumentFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <fstream>

#include "TestPaths.h"

namespace
{

std::string Unescaped(std::string_view line)
{
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at)
    {
        if (line[at] != '\\' || at + 1 == line.size())
        {
            text += line[at];
            continue;
        }
        ++at;
        constexpr std::string_view kLetters = "trns\\";
        constexpr std::string_view kMeanings = "\t\r\n \\";
        const std::size_t letter = kLetters.find(line[at]);
        EXPECT_NE(letter, std::string_view::npos) << "unknown escape in: " << line;
        text += letter != std::string_view::npos ? kMeanings[letter] : '?';
    }
    return text;
}

std::uint32_t Bits(char byte, std::uint32_t mask)
{
    return static_cast<std::uint8_t>(byte) & mask;
}

void AppendUtf8(std::string& text, std::uint32_t point)
{
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    if (point < 0x80)
    {
        text += byte(point);
    }
    else if (point < 0x800)
    {
        text += {byte(0xC0 | point >> 6), byte(0x80 | (point & 63))};
    }
    else if (point < 0x10000)
    {
        text +=
            {byte(0xE0 | point >> 12), byte(0x80 | (point >> 6 & 63)), byte(0x80 | (point & 63))};
    }
    else
    {
        text += {byte(0xF0 | point >> 18),
                 byte(0x80 | (point >> 12 & 63)),
                 byte(0x80 | (point >> 6 & 63)),
                 byte(0x80 | (point & 63))};
    }
}

} // namespace

WString ExpectedDocument(const std::string& name)
{
    const std::string path = std::string(DT_SOURCE_DIR) + "/tests/data/documents/" + name;
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::string document;
    std::string line;
    while (std::getline(file, line))
    {
        if (!line.starts_with('#'))
        {
            document += Unescaped(line);
        }
    }
    EXPECT_FALSE(document.empty()) << path;
    return WideFromUtf8(document);
}

WString WideFromUtf8(std::string_view text)
{
    WString wide;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::uint32_t lead = Bits(text[at++], 0xFF);
        const std::size_t more = lead < 0x80 ? 0U : lead < 0xE0 ? 1U : lead < 0xF0 ? 2U : 3U;
        constexpr std::array<std::uint32_t, 4> kLeadMasks = {0x7F, 0x1F, 0x0F, 0x07};
        std::uint32_t point = lead & kLeadMasks[more];
        for (std::size_t i = 0; i < more && at < text.size(); ++i)
        {
            point = point << 6 | Bits(text[at++], 63);
        }
        if (point >= 0x10000)
        {
            wide += static_cast<WCHAR>(0xD7C0 + (point >> 10));
            wide += static_cast<WCHAR>(0xDC00 | (point & 0x3FF));
        }
        else
        {
            wide += static_cast<WCHAR>(point);
        }
    }
    return wide;
}

std::string Utf8FromWide(WStringView text)
{
    std::string narrow;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        std::uint32_t point = text[at];
        if ((point & 0xFC00) == 0xD800 && at + 1 < text.size() && (text[at + 1] & 0xFC00) == 0xDC00)
        {
            point = 0x10000 + ((point & 0x3FF) << 10) + (text[++at] & 0x3FFU);
        }
        else if ((point & 0xF800) == 0xD800)
        {
            point = '?';
        }
        AppendUtf8(narrow, point);
    }
    return narrow;
}
