#pragma once

#include <string_view>

namespace dtclient
{
/// Makes both streams take UTF-8 as it is, without turning line ends.
void PrepareConsole();

/// Writes to standard output at once. False when the reader has gone or the disk is full, which it
/// then tells on standard error.
[[nodiscard]] bool WriteResult(std::string_view text);

/// Writes to standard error.
void WriteMessage(std::string_view text);
} // namespace dtclient
