#pragma once

#include <cstddef>

#include "PlatformTypes.h"

/// The position of the first "&", "<" or ">" in `text`, or npos.
std::size_t FindXmlMarkup(WStringView text) noexcept;

/// `text` with "&", "<" and ">" as entities; quotes stay as they are.
///
/// The documents use it inside CDATA sections as well, so a parser hands the client the escaped
/// form, and no value can end a section.
WString EscapeXmlText(WStringView text);
