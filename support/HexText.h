#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "PlatformTypes.h"

/// Bytes as text: two upper-case hexadecimal digits a byte, high half first, no separators.

/// Sets `text` to the digits of `count` bytes. A null `bytes` leaves `text` alone; a count of 0
/// empties it.
void BinToHexText(const std::uint8_t* bytes, WString& text, std::uint32_t count);

/// Reads pairs of digits into `bytes`, which has room for half as many bytes as `text` has
/// characters, and sets `count` to the bytes written. An odd last character is ignored, and
/// whatever is no digit or upper-case letter A to F counts as 0, lower-case letters included. A
/// null `bytes` returns at once.
void HexTextToBin(WStringView text, std::uint8_t* bytes, std::uint32_t& count);

/// Writes the digits of `bytes` to `out`, which has room for two units a byte; no terminator.
void WriteHexText(std::span<const std::uint8_t> bytes, WCHAR* out) noexcept;

/// Appends the digits of `bytes` to `text`.
void AppendHexText(WString& text, std::span<const std::uint8_t> bytes);

/// The digits of `bytes`.
WString HexTextOf(std::span<const std::uint8_t> bytes);

/// The bytes of `text`, read as HexTextToBin reads them.
std::vector<std::uint8_t> BytesOfHexText(WStringView text);

/// Whether `text` is exactly what HexTextOf gives for `bytes`.
bool IsHexTextOf(WStringView text, std::span<const std::uint8_t> bytes) noexcept;
