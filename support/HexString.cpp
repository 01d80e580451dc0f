#include "HexString.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace
{

constexpr std::size_t kBytesALine = 16;
constexpr std::size_t kTextColumn = 60;
constexpr std::string_view kDigits = "0123456789abcdef";

char* WriteByte(std::uint8_t byte, char* out) noexcept
{
    *out++ = kDigits[byte >> 4];
    *out++ = kDigits[byte & 15];
    return out;
}

char* WriteAddress(const void* address, char* out) noexcept
{
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        out = WriteByte(static_cast<std::uint8_t>(value >> shift & 0xFF), out);
    }
    constexpr std::string_view kBehind = " : ";
    return std::copy(kBehind.begin(), kBehind.end(), out);
}

char* WriteLine(std::span<const std::uint8_t> bytes, char* out) noexcept
{
    char* const line = out;
    out = WriteAddress(bytes.data(), out);
    for (const std::uint8_t byte : bytes)
    {
        out = WriteByte(byte, out);
        *out++ = ' ';
    }
    out = std::fill_n(out, kTextColumn - static_cast<std::size_t>(out - line), ' ');
    for (const std::uint8_t byte : bytes)
    {
        *out++ = byte == 0 || byte == '\n' ? ' ' : static_cast<char>(byte);
    }
    *out++ = '\n';
    return out;
}

} // namespace

CHexString::CHexString(const void* start, std::size_t length)
    : m_text(std::make_unique<char[]>((length + 20) * 5)) // 77 characters for each 16 bytes
{
    std::span<const std::uint8_t> rest(static_cast<const std::uint8_t*>(start), length);
    char* out = m_text.get();
    while (!rest.empty())
    {
        const auto line = rest.first(std::min(kBytesALine, rest.size()));
        out = WriteLine(line, out);
        rest = rest.subspan(line.size());
    }
    *out = '\0';
}

CHexString::CHexString(const void* start, const void* end)
    : CHexString(
          start,
          static_cast<std::size_t>(static_cast<const char*>(end) - static_cast<const char*>(start)))
{
}
