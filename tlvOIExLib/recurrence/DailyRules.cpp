#include "Minutes1601.h"
#include "RecurrenceFrame.h"
#include "RecurrentRule.h"
#include "Trace.h"

namespace
{

constexpr std::uint32_t kMinutesPerDay = 1440;
constexpr std::uint8_t kEveryDays = 0;
constexpr std::uint8_t kWorkingDays = 1;
constexpr std::uint32_t kWorkingDaysFirstDateTime = 8640; // six days in minutes

bool IsWeekend(std::uint32_t minutes) noexcept
{
    const std::uint32_t weekday = WeekdayOfMinutes(minutes);
    return weekday == 6 || weekday == 0;
}

} // namespace

bool CRecurrentRule::ParseDaily(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, "CRecurrentRule::ParseDaily", "CRecurrentRule::ParseDaily");
    const auto patternType = static_cast<std::uint8_t>(HeadU16(6));
    m_firstDateTime = HeadU32(10);
    if (patternType == kEveryDays)
    {
        return ParseNonworkDaily(outCount, instances);
    }
    if (patternType == kWorkingDays && m_firstDateTime == kWorkingDaysFirstDateTime)
    {
        return ParseWorkDaily(outCount, instances);
    }
    return false;
}

/// Every so many days. The days are not moved onto the rule's grid: a window that opens off the grid
/// of a rule of several days stays off it.
bool CRecurrentRule::ParseNonworkDaily(std::uint32_t& outCount, InstanceList& instances)
{
    constexpr const char* kFunction = "CRecurrentRule::ParseNonworkDaily";
    SEND_TRACE(2, kFunction, "CRecurrentRule::ParseNonworkDaily");
    if (!HasHead(0, kFunction))
    {
        return false;
    }
    m_period = HeadU32(14); // minutes
    TakeEnd(22, 2);

    CRecurrenceFrame frame(*this, instances, kFunction);
    frame.Open(30);
    if (frame.Begin("sCRecurrentRule::ParseNonworkDaily - m_uRecurrentType.byte_acc.b1[0x ") &&
        frame.HasPeriod(m_period))
    {
        while (frame.NextRound())
        {
            if ((frame.Day() - m_tail.startDate) % m_period == 0)
            {
                frame.EmitIfFree();
            }
            frame.MoveTo(frame.Day() + m_period);
        }
    }
    return frame.Finish(outCount);
}

bool CRecurrentRule::ParseWorkDaily(std::uint32_t& outCount, InstanceList& instances)
{
    constexpr const char* kFunction = "CRecurrentRule::ParseWorkDaily";
    SEND_TRACE(2, kFunction, "CRecurrentRule::ParseWorkDaily");
    if (!HasHead(4, kFunction))
    {
        return false;
    }
    TakeEnd(26, 2);

    CRecurrenceFrame frame(*this, instances, kFunction);
    frame.Open(34);
    if (frame.Begin("CRecurrentRule::ParseWorkDaily-m_uRecurrentType.byte_acc.b1 [0x"))
    {
        while (frame.NextRound())
        {
            if (!IsWeekend(frame.Day()))
            {
                frame.EmitIfFree();
            }
            frame.MoveTo(frame.Day() + kMinutesPerDay);
        }
    }
    return frame.Finish(outCount);
}
