#pragma once

#include "PlatformTypes.h"

/// Text without regard to case, by the platform's invariant tables and not by any locale.
///
/// Thread: any. Errors: none; a text longer than the platform counts compares as different.

/// Whether the two texts are equal when case is ignored, code unit by code unit.
[[nodiscard]] bool EqualIgnoringCase(WStringView first, WStringView second) noexcept;

/// `text` in lower case.
[[nodiscard]] WString LowerCaseText(WStringView text);
