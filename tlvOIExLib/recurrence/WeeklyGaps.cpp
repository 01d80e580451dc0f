#include "WeeklyGaps.h"

WeeklyGaps MakeWeeklyGaps(std::uint32_t weekdayMask, std::uint32_t periodWeeks) noexcept
{
    WeeklyGaps gaps{};
    if ((weekdayMask & 0x7F) == 0 || periodWeeks == 0)
    {
        return gaps;
    }
    std::int32_t highest = -1;
    std::int32_t next = -1; // the selected day above; the lowest one in the end
    for (std::int32_t day = 6; day >= 0; --day)
    {
        if ((weekdayMask & (1U << day)) == 0)
        {
            continue;
        }
        if (highest < 0)
        {
            highest = day;
        }
        else
        {
            gaps[static_cast<std::size_t>(day)] = next - day;
        }
        next = day;
    }
    const std::uint32_t toNextWeek =
        periodWeeks * 7 - static_cast<std::uint32_t>(highest) + static_cast<std::uint32_t>(next);
    gaps[static_cast<std::size_t>(highest)] = static_cast<std::int32_t>(toNextWeek);
    return gaps;
}
