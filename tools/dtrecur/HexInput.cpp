#include "HexInput.h"

#include <array>

namespace
{

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeDigits()
{
    std::array<std::uint8_t, 256> digits{};
    for (std::uint8_t& digit : digits)
    {
        digit = kNoDigit;
    }
    for (std::uint8_t value = 0; value < 16; ++value)
    {
        digits[static_cast<unsigned char>("0123456789ABCDEF"[value])] = value;
        digits[static_cast<unsigned char>("0123456789abcdef"[value])] = value;
    }
    return digits;
}

constexpr std::array<std::uint8_t, 256> kDigits = MakeDigits();

} // namespace

std::optional<std::vector<std::uint8_t>> BytesOfHex(std::string_view text)
{
    if (text.size() % 2 != 0)
    {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(text.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        const std::uint8_t high = kDigits[static_cast<unsigned char>(text[2 * i])];
        const std::uint8_t low = kDigits[static_cast<unsigned char>(text[2 * i + 1])];
        if (high == kNoDigit || low == kNoDigit)
        {
            return std::nullopt;
        }
        bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return bytes;
}
