#pragma once

#include <cstdint>
#include <optional>

#include "PlatformTypes.h"

/// What an ordinal rule asks for in its month: the second Tuesday, the last working day.
struct OrdinalRule
{
    std::uint32_t mask; ///< weekdays as stored
    std::uint32_t week; ///< 1 to 4, 5 for the last; others run through the formulas as they stand

    /// False for masks that mean nothing.
    [[nodiscard]] bool IsKnown() const noexcept;
};

/// How the n-th working day is counted: monthly rules skip weekends, yearly ones count on.
enum class WorkingDayCount
{
    SkipWeekends,
    CountOn,
};

/// The day to hit. `minutes` is the midnight of `time`, or 0 with a day that does not exist.
struct OrdinalTarget
{
    SYSTEMTIME time{};
    std::uint32_t minutes = 0;
};

/// The day of `rule` in the month of `monthFirst`, the midnight of the first.
///
/// `cursor` is the day that the loop stands on: a target of the fourth week or later that is not in
/// the cursor's month goes back a week.
///
/// `function` names the handler in the trace of an unknown week number.
OrdinalTarget FindOrdinalDay(const OrdinalRule& rule,
                             const SYSTEMTIME& monthFirst,
                             const SYSTEMTIME& cursor,
                             WorkingDayCount workingDays,
                             const char* function);

/// The first of a month of `year`, with its weekday.
SYSTEMTIME FirstOfMonth(std::uint32_t year, std::uint32_t month) noexcept;
