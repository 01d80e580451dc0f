#pragma once

#include <cstdint>
#include <span>

#include "PlatformTypes.h"

/// What the bytes of a registry value mean. They come from whoever may write there, so neither their
/// number nor their type is taken on trust.
///
/// Thread: any. Errors: false for a value of another type, which counts as absent; the out value is
///         left alone then.
namespace regvalue
{

/// A REG_DWORD of at most four bytes, the lowest first; bytes that are missing are zero.
[[nodiscard]] bool TakeDword(std::uint32_t type,
                             std::span<const std::uint8_t> bytes,
                             std::uint32_t& value) noexcept;

/// A REG_SZ up to its first zero, or to its end when it was stored without one. An odd last byte is
/// no part of the text.
[[nodiscard]] bool TakeText(std::uint32_t type, std::span<const std::uint8_t> bytes, WString& text);

} // namespace regvalue
