#pragma once

#include "PlatformTypes.h"

/// Whether the first "@" of `text` stands behind at least one other character.
[[nodiscard]] bool IsValidEmailAddress(WStringView text) noexcept;
