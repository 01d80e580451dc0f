#include "Minutes1601.h"
#include "OrdinalText.h"
#include "RecurrenceFrame.h"
#include "RecurrentRule.h"
#include "Trace.h"
#include "WeeklyGaps.h"

namespace
{

constexpr std::uint32_t kMinutesPerDay = 1440;

/// Which days of the rule's weeks are instances.
class CWeekGrid
{
public:
    CWeekGrid(std::uint32_t weekdayMask,
              std::uint32_t periodWeeks,
              std::uint32_t startDate) noexcept
        : m_gaps(MakeWeeklyGaps(weekdayMask, periodWeeks)), m_cycleDays(periodWeeks * 7),
          m_startDate(startDate), m_firstDay(WeekdayOfMinutes(startDate))
    {
    }

    [[nodiscard]] bool IsEmpty() const noexcept { return m_gaps == WeeklyGaps{}; }

    /// Days from `day` to the next instance day; 0 when `day` is none itself.
    [[nodiscard]] std::uint32_t StepFrom(std::uint32_t day) const noexcept
    {
        const std::uint32_t weekday = WeekdayOfMinutes(day);
        if (m_gaps[weekday] < 1 || DaysToSameWeek(day, weekday) % m_cycleDays != 0)
        {
            return 0;
        }
        return static_cast<std::uint32_t>(m_gaps[weekday]);
    }

private:
    /// Days since the start, brought to the start's own weekday over the gaps between.
    [[nodiscard]] std::uint32_t DaysToSameWeek(std::uint32_t day,
                                               std::uint32_t weekday) const noexcept
    {
        std::uint32_t days = (day - m_startDate) / kMinutesPerDay;
        for (std::uint32_t d = m_firstDay; d < weekday; ++d)
        {
            days -= static_cast<std::uint32_t>(m_gaps[d]);
        }
        for (std::uint32_t d = weekday; d < m_firstDay; ++d)
        {
            days += static_cast<std::uint32_t>(m_gaps[d]);
        }
        return days;
    }

    WeeklyGaps m_gaps;
    std::uint32_t m_cycleDays;
    std::uint32_t m_startDate;
    std::uint32_t m_firstDay;
};

} // namespace

bool CRecurrentRule::KeepsAll() const
{
    if (m_settings == nullptr)
    {
        return false;
    }
    const WString site = LowerCaseText(m_settings->SiteName());
    const WString wanted = LowerCaseText(m_settings->KeepAllSiteName());
    // An empty text would be found in any site.
    return !wanted.empty() && site.find(wanted) != WString::npos;
}

bool CRecurrentRule::ParseWeekly(std::uint32_t& outCount, InstanceList& instances)
{
    constexpr const char* kFunction = "CRecurrentRule::ParseWeekly";
    SEND_TRACE(2, kFunction, "CRecurrentRule::ParseWeekly");
    if (!HasHead(4, kFunction))
    {
        return false;
    }
    m_weeklyPeriod = HeadU32(14);
    m_weekdayMask = HeadU16(22) & 0xFFU;
    TakeEnd(26, 2);

    CRecurrenceFrame frame(*this, instances, kFunction);
    frame.Open(34);
    const bool keepAll = KeepsAll();
    const CWeekGrid grid(m_weekdayMask, m_weeklyPeriod, m_tail.startDate);
    if (!grid.IsEmpty() &&
        frame.Begin("CRecurrentRule::ParseWeekly - m_uRecurrentType.byte_acc.b1[0x "))
    {
        while (frame.NextRound())
        {
            const std::uint32_t step = grid.StepFrom(frame.Day());
            if (step != 0 && (keepAll || frame.IsSlotFree()))
            {
                frame.Emit();
            }
            frame.MoveTo(frame.Day() + (step != 0 ? step : 1) * kMinutesPerDay);
        }
    }
    return frame.Finish(outCount);
}
