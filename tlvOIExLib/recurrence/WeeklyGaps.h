#pragma once

#include <array>
#include <cstdint>

/// Days from each selected weekday to the next one of the rule, by wDayOfWeek; 0 for a weekday that
/// is not selected. The last of the week leads to the first of the next active week.
using WeeklyGaps = std::array<std::int32_t, 7>;

/// `weekdayMask` has bit 0 for Sunday. All gaps are 0 for an empty mask or a period of 0.
WeeklyGaps MakeWeeklyGaps(std::uint32_t weekdayMask, std::uint32_t periodWeeks) noexcept;
