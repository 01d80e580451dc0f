#pragma once

#include <cstdint>
#include <span>

#include "PlatformTypes.h"

/// The identifier that an invitation from elsewhere carries inside PidLidGlobalObjectId.
///
/// Shape:  more than 53 bytes: 32-bit length at 36, "vCal-Uid" at 40, and from 52 on narrow text in
///         the thread's code page, 12 bytes shorter than that length, ended early by a zero byte. A
///         length that reaches beyond the block is cut at its end.
/// Errors: anything else gives an empty text.
/// Source: [MS-OXOCAL] 2.2.1.27 PidLidGlobalObjectId.
[[nodiscard]] WString GetUidFromGlobalObjectId(std::span<const std::uint8_t> value);
