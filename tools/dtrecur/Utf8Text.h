#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PlatformTypes.h"

/// UTF-8 on the outside, UTF-16 code units on the inside, the same on every platform.

/// Half of a surrogate pair, encoded by itself in three bytes, becomes that unit.
/// Errors: nothing for bytes that are no UTF-8.
std::optional<WString> WideOfUtf8(std::string_view text);

/// Appends the text with a backslash, tab, line feed and carriage return written "\\", "\t", "\n" and
/// "\r", and any other unit below U+0020, U+007F and an unpaired surrogate as "\uXXXX".
void AppendEscaped(std::string& out, WStringView text);

std::string EscapedUtf8(WStringView text);

/// Plain UTF-8; an unpaired surrogate is encoded by itself.
std::string Utf8OfWide(WStringView text);
