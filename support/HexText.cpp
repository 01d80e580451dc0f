#include "HexText.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace
{

using DigitPair = std::array<WCHAR, 2>;

constexpr std::array<DigitPair, 256> MakeDigitPairs()
{
    constexpr WStringView kDigits = WTEXT("0123456789ABCDEF");
    std::array<DigitPair, 256> pairs{};
    for (std::size_t value = 0; value < pairs.size(); ++value)
    {
        pairs[value] = {kDigits[value >> 4], kDigits[value & 15]};
    }
    return pairs;
}

constexpr std::array<std::uint8_t, 128> MakeDigitValues()
{
    std::array<std::uint8_t, 128> values{};
    for (std::size_t digit = 0; digit < 10; ++digit)
    {
        values[static_cast<std::size_t>('0') + digit] = static_cast<std::uint8_t>(digit);
    }
    for (std::size_t letter = 0; letter < 6; ++letter)
    {
        values[static_cast<std::size_t>('A') + letter] = static_cast<std::uint8_t>(10 + letter);
    }
    return values;
}

constexpr std::array<DigitPair, 256> kDigitPairs = MakeDigitPairs();
constexpr std::array<std::uint8_t, 128> kDigitValues = MakeDigitValues();

constexpr std::uint8_t DigitValue(WCHAR unit) noexcept
{
    return unit < kDigitValues.size() ? kDigitValues[unit] : std::uint8_t{0};
}

void ReadDigits(WStringView text, std::uint8_t* out, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned value = DigitValue(text[2 * i]) * 16U + DigitValue(text[2 * i + 1]);
        out[i] = static_cast<std::uint8_t>(value);
    }
}

} // namespace

void BinToHexText(const std::uint8_t* bytes, WString& text, std::uint32_t count)
{
    if (bytes == nullptr)
    {
        return;
    }
    text.clear();
    AppendHexText(text, {bytes, count});
}

void HexTextToBin(WStringView text, std::uint8_t* bytes, std::uint32_t& count)
{
    if (bytes == nullptr)
    {
        return;
    }
    count = static_cast<std::uint32_t>(text.size() / 2);
    ReadDigits(text, bytes, count);
}

void WriteHexText(std::span<const std::uint8_t> bytes, WCHAR* out) noexcept
{
    for (const std::uint8_t byte : bytes)
    {
        std::memcpy(out, kDigitPairs[byte].data(), sizeof(DigitPair));
        out += 2;
    }
}

void AppendHexText(WString& text, std::span<const std::uint8_t> bytes)
{
    const std::size_t before = text.size();
    text.resize(before + 2 * bytes.size());
    WriteHexText(bytes, text.data() + before);
}

WString HexTextOf(std::span<const std::uint8_t> bytes)
{
    WString text;
    AppendHexText(text, bytes);
    return text;
}

std::vector<std::uint8_t> BytesOfHexText(WStringView text)
{
    std::vector<std::uint8_t> bytes(text.size() / 2);
    ReadDigits(text, bytes.data(), bytes.size());
    return bytes;
}

bool IsHexTextOf(WStringView text, std::span<const std::uint8_t> bytes) noexcept
{
    if (text.size() != 2 * bytes.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        const DigitPair& pair = kDigitPairs[bytes[i]];
        if (text[2 * i] != pair[0] || text[2 * i + 1] != pair[1])
        {
            return false;
        }
    }
    return true;
}
