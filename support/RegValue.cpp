#include "RegValue.h"

#include <cstring>

namespace
{

// The platform's numbers of the two types.
constexpr std::uint32_t kTypeText = 1;
constexpr std::uint32_t kTypeDword = 4;

} // namespace

bool regvalue::TakeDword(std::uint32_t type,
                         std::span<const std::uint8_t> bytes,
                         std::uint32_t& value) noexcept
{
    if (type != kTypeDword || bytes.size() > sizeof(value))
    {
        return false;
    }
    value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        value |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
    }
    return true;
}

bool regvalue::TakeText(std::uint32_t type, std::span<const std::uint8_t> bytes, WString& text)
{
    if (type != kTypeText)
    {
        return false;
    }
    text.assign(bytes.size() / sizeof(WCHAR), WCHAR{});
    if (!text.empty())
    {
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    }
    const std::size_t end = text.find(WCHAR{});
    if (end != WString::npos)
    {
        text.resize(end);
    }
    return true;
}
