#pragma once

#include <cstddef>

#include "PlatformTypes.h"

/// `text` with "&", "<" and ">" as entities; quotes stay as they are.
///
/// The documents use it inside CDATA sections as well, so a parser hands the client the escaped form,
/// and no value can end a section.
WString EscapeXmlText(WStringView text);

/// The length of EscapeXmlText(text), without building it.
std::size_t EscapedXmlLength(WStringView text) noexcept;

/// Writes EscapeXmlText(text) to `out`, which has room for it, and gives the position behind it.
WCHAR* WriteEscapedXml(WStringView text, WCHAR* out) noexcept;
