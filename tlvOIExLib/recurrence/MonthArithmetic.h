#pragma once

#include <cstdint>

#include "PlatformTypes.h"

/// Months of a pattern, counted in minutes since 1601 that wrap in 32 bits.

/// The months from the month of `first` to the month of `time`, as unsigned 32 bits.
[[nodiscard]] std::uint32_t MonthsBetween(const SYSTEMTIME& first, const SYSTEMTIME& time) noexcept;

/// The first minute of the month that is `months` behind the month of `time`.
[[nodiscard]] std::uint32_t FirstMinuteOfMonthAfter(const SYSTEMTIME& time,
                                                    std::uint32_t months) noexcept;

/// A midnight; the year is cut to the 16 bits of a SYSTEMTIME.
/// Errors: 0 for a date that does not exist.
[[nodiscard]] std::uint32_t MinutesOfDate(std::uint32_t year,
                                          std::uint32_t month,
                                          std::uint32_t day) noexcept;

/// The month of a yearly rule: the one that begins `firstDateTime` minutes after its year, judged in
/// the year of `first`. January, whose offset is 0, and any offset that is no month's fall back on
/// the month of `first`.
[[nodiscard]] std::uint32_t MonthOfYearly(std::uint32_t firstDateTime,
                                          const SYSTEMTIME& first) noexcept;
