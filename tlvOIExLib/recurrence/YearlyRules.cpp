#include <algorithm>

#include "CalendarType.h"
#include "Minutes1601.h"
#include "MonthArithmetic.h"
#include "OrdinalDay.h"
#include "RecurrenceFrame.h"
#include "RecurrentRule.h"
#include "Trace.h"

namespace
{

constexpr std::uint16_t kDayOfMonth = 2;
constexpr std::uint16_t kOrdinalDay = 3;

constexpr const char* kYearly02 = "CRecurrentRule::ParseYearly02";
constexpr const char* kYearly03 = "CRecurrentRule::ParseYearly03";

constexpr CalendarTexts kYearly02Calendar = {
    kYearly02,
    "CRecurrentRule::ParseYearly02-luni-solar not support!",
    "CRecurrentRule::ParseYearly02-neither Gregorian calendar nor luni-solar calendar!"};
// The second text names the other form; whoever searches traces knows it by this text.
constexpr CalendarTexts kYearly03Calendar = {
    kYearly03,
    "CRecurrentRule::ParseYearly03-luni-solar not support!",
    "CRecurrentRule::ParseYearly02-neither Gregorian calendar nor luni-solar calendar!"};

/// The active years of a rule. A year before the first is an unsigned number of years behind it.
struct YearGrid
{
    YearGrid(const SYSTEMTIME& start, std::uint32_t periodMonths) noexcept
        : firstYear(start.wYear), years(periodMonths / 12)
    {
    }

    [[nodiscard]] bool IsActive(std::uint32_t year) const noexcept
    {
        return (year - firstYear) % years == 0;
    }

    /// The first active year behind `year`.
    [[nodiscard]] std::uint32_t NextActive(std::uint32_t year) const noexcept
    {
        return ((year - firstYear) / years + 1) * years + firstYear;
    }

    std::uint32_t firstYear;
    std::uint32_t years;
};

} // namespace

bool CRecurrentRule::ParseYearly(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, "CRecurrentRule::ParseYearly", "CRecurrentRule::ParseYearly");
    switch (HeadU16(6))
    {
    case kDayOfMonth:
        return ParseYearly02(outCount, instances);
    case kOrdinalDay:
        return ParseYearly03(outCount, instances);
    default:
        return false;
    }
}

/// A fixed day of a fixed month. In a year that lacks the day the loop stays on the last day of the
/// month until its patience ends, and a leap day is the last instance of its rule.
bool CRecurrentRule::ParseYearly02(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, kYearly02, "CRecurrentRule::ParseYearly02");
    if (!HasHead(4, kYearly02) || !IsGregorian(HeadU16(8), kYearly02Calendar))
    {
        return false;
    }
    const std::uint32_t firstDateTime = HeadU32(10);
    m_period = HeadU32(14); // months
    const std::uint32_t wantedDay = HeadU32(22);
    TakeEnd(26, 4);

    CRecurrenceFrame frame(*this, instances, kYearly02);
    frame.Open(34);
    const SYSTEMTIME first = SystemTimeFromMinutes(m_tail.startDate);
    const std::uint32_t month = MonthOfYearly(firstDateTime, first);
    const YearGrid grid(first, m_period);
    if (!frame.Begin("CRecurrentRule::ParseYearly02-m_uRecurrentType.byte_acc.b1 [0x") ||
        !frame.HasPeriod(grid.years))
    {
        return frame.Finish(outCount);
    }
    while (frame.NextRound())
    {
        const SYSTEMTIME day = SystemTimeFromMinutes(frame.Day());
        const bool isActive = grid.IsActive(day.wYear);
        if (isActive && day.wMonth == month && day.wDay == wantedDay)
        {
            frame.EmitIfFree();
            // 0 for a leap day that the year does not have: the loop goes on in 1601.
            frame.MoveTo(MinutesOfDate(day.wYear + grid.years, month, wantedDay));
            continue;
        }
        const std::uint32_t year = isActive ? day.wYear : grid.NextActive(day.wYear);
        const std::uint32_t dayInMonth =
            std::min(wantedDay, DaysInMonth(month, static_cast<WORD>(year)));
        std::uint32_t target = MinutesOfDate(year, month, dayInMonth);
        if (target < frame.Day())
        {
            target = MinutesOfDate(year + grid.years, month, dayInMonth);
        }
        frame.MoveTo(target);
    }
    return frame.Finish(outCount);
}

/// The n-th weekday, working day, weekend day or day of a fixed month.
bool CRecurrentRule::ParseYearly03(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, kYearly03, "CRecurrentRule::ParseYearly03");
    if (!HasHead(8, kYearly03) || !IsGregorian(HeadU16(8), kYearly03Calendar))
    {
        return false;
    }
    const std::uint32_t firstDateTime = HeadU32(10);
    m_period = HeadU32(14); // months
    const OrdinalRule ordinal{HeadU32(22), HeadU32(26)};
    TakeEnd(30, 4);

    CRecurrenceFrame frame(*this, instances, kYearly03);
    frame.Open(38);
    const SYSTEMTIME first = SystemTimeFromMinutes(m_tail.startDate);
    const std::uint32_t month = MonthOfYearly(firstDateTime, first);
    const YearGrid grid(first, m_period);
    // This text, too, names the other form.
    if (!frame.Begin("CRecurrentRule::ParseYearly02 - m_uRecurrentType.byte_acc.b1[0x ") ||
        !ordinal.IsKnown() || !frame.HasPeriod(grid.years))
    {
        return frame.Finish(outCount);
    }
    while (frame.NextRound())
    {
        const SYSTEMTIME day = SystemTimeFromMinutes(frame.Day());
        if (!grid.IsActive(day.wYear))
        {
            frame.MoveTo(MinutesOfDate(grid.NextActive(day.wYear), 1, 1));
            continue;
        }
        const SYSTEMTIME monthFirst = FirstOfMonth(day.wYear, month);
        const OrdinalTarget target =
            FindOrdinalDay(ordinal, monthFirst, day, WorkingDayCount::CountOn, kYearly03);
        if (frame.Day() < target.minutes)
        {
            frame.MoveTo(target.minutes);
            continue;
        }
        if (frame.Day() == target.minutes)
        {
            frame.EmitIfFree();
        }
        frame.MoveTo(MinutesOfDate(day.wYear + grid.years, month, 1));
    }
    return frame.Finish(outCount);
}
