#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Bytes of hexadecimal text of either case. Strict, other than what the server reads: an odd digit
/// or a character that is none is an error of the one who typed it.
/// Errors: nothing.
std::optional<std::vector<std::uint8_t>> BytesOfHex(std::string_view text);
