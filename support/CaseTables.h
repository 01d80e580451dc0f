#pragma once

#include <cstdint>

/// One UTF-16 code unit in the other case, where the platform has no invariant tables of its own.
/// A unit without another case, half of a surrogate pair included, comes back as it is.
[[nodiscard]] std::uint16_t LowerCaseUnit(std::uint16_t unit) noexcept;
[[nodiscard]] std::uint16_t UpperCaseUnit(std::uint16_t unit) noexcept;
