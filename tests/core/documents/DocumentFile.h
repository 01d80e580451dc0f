#pragma once

#include <string>
#include <string_view>

#include "PlatformTypes.h"

/// The document that a builder has to give, out of tests/data/documents.
///
/// Shape: UTF-8. Lines that begin with "#" are comments; the other lines are joined without a line
///        break. "\t", "\r", "\n" stand for those characters, "\s" for a blank that would otherwise
///        end a line, "\\" for a backslash.
WString ExpectedDocument(const std::string& name);

/// UTF-16 from UTF-8 that is known to be well formed.
WString WideFromUtf8(std::string_view text);

/// UTF-8 from UTF-16, so that a failing comparison can be read; an unpaired surrogate becomes "?".
std::string Utf8FromWide(WStringView text);
