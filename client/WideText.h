#pragma once

#include <string>
#include <string_view>

namespace dtclient
{
/// UTF-16 to UTF-8. Half of a surrogate pair becomes U+FFFD, so the result is always valid.
std::string Utf8FromUtf16(std::u16string_view text);

#ifdef _WIN32
/// The same for the platform's own wide texts.
std::string Utf8FromWide(std::wstring_view text);

/// UTF-8 to the platform's wide text; what is no UTF-8 becomes U+FFFD.
std::wstring WideFromUtf8(std::string_view text);
#endif
} // namespace dtclient
