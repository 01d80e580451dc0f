#include "WideText.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdint>

namespace dtclient
{
namespace
{
constexpr std::uint32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(std::uint32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(std::uint32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendByte(std::string& text, std::uint32_t value)
{
    text += static_cast<char>(static_cast<unsigned char>(value));
}

void AppendCode(std::string& text, std::uint32_t code)
{
    if (code < 0x80)
    {
        AppendByte(text, code);
    }
    else if (code < 0x800)
    {
        AppendByte(text, 0xC0U | (code >> 6U));
        AppendByte(text, 0x80U | (code & 0x3FU));
    }
    else if (code < 0x10000)
    {
        AppendByte(text, 0xE0U | (code >> 12U));
        AppendByte(text, 0x80U | ((code >> 6U) & 0x3FU));
        AppendByte(text, 0x80U | (code & 0x3FU));
    }
    else
    {
        AppendByte(text, 0xF0U | (code >> 18U));
        AppendByte(text, 0x80U | ((code >> 12U) & 0x3FU));
        AppendByte(text, 0x80U | ((code >> 6U) & 0x3FU));
        AppendByte(text, 0x80U | (code & 0x3FU));
    }
}

// One home for both widths of "wide": char16_t and, on Windows, the 16-bit wchar_t.
template <class Unit>
std::string ConvertUtf16(std::basic_string_view<Unit> text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        std::uint32_t code = static_cast<std::uint16_t>(text[index]);
        if (IsHighSurrogate(code))
        {
            const std::uint32_t next =
                index + 1 < text.size() ? static_cast<std::uint16_t>(text[index + 1]) : 0U;
            if (IsLowSurrogate(next))
            {
                code = 0x10000U + ((code - 0xD800U) << 10U) + (next - 0xDC00U);
                ++index;
            }
            else
            {
                code = kReplacement;
            }
        }
        else if (IsLowSurrogate(code))
        {
            code = kReplacement;
        }
        AppendCode(result, code);
    }
    return result;
}
} // namespace

std::string Utf8FromUtf16(std::u16string_view text)
{
    return ConvertUtf16(text);
}

#ifdef _WIN32
std::string Utf8FromWide(std::wstring_view text)
{
    return ConvertUtf16(text);
}

std::wstring WideFromUtf8(std::string_view text)
{
    const int length = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(units > 0 ? units : 0), L'\0');
    if (!result.empty())
    {
        MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), units);
    }
    return result;
}
#endif
} // namespace dtclient
