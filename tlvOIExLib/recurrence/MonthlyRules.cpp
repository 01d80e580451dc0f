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

constexpr std::uint32_t kMinutesPerDay = 1440;
constexpr std::uint16_t kDayOfMonth = 2;
constexpr std::uint16_t kOrdinalDay = 3;

constexpr const char* kMonthly02 = "CRecurrentRule::ParseMonthly02";
constexpr const char* kMonthly03 = "CRecurrentRule::ParseMonthly03";

constexpr CalendarTexts kMonthly02Calendar = {
    kMonthly02,
    "CRecurrentRule::ParseMonthly02-luni-solar not support!",
    "CRecurrentRule::ParseMonthly02-neither Gregorian calendar nor luni-solar calendar!"};
constexpr CalendarTexts kMonthly03Calendar = {
    kMonthly03,
    "CRecurrentRule::ParseMonthly03-luni-solar not support!",
    "CRecurrentRule::ParseMonthly03-neither Gregorian calendar nor luni-solar calendar!"};

std::uint32_t MonthNumber(const SYSTEMTIME& time) noexcept
{
    return time.wYear * 12U + time.wMonth;
}

} // namespace

bool CRecurrentRule::ParseMonthly(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, "CRecurrentRule::ParseMonthly", "CRecurrentRule::ParseMonthly");
    switch (HeadU16(6))
    {
    case kDayOfMonth:
        return ParseMonthly02(outCount, instances);
    case kOrdinalDay:
        return ParseMonthly03(outCount, instances);
    default:
        return false;
    }
}

/// Day so and so of every so many months; a month that lacks the day has it on its last one. A
/// window that opens in a month off the rule's grid ends the loop at once.
bool CRecurrentRule::ParseMonthly02(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, kMonthly02, "CRecurrentRule::ParseMonthly02");
    if (!HasHead(4, kMonthly02) || !IsGregorian(HeadU16(8), kMonthly02Calendar))
    {
        return false;
    }
    m_period = HeadU32(14); // months
    const std::uint32_t wantedDay = HeadU32(22);
    TakeEnd(26, 4);

    CRecurrenceFrame frame(*this, instances, kMonthly02);
    frame.Open(34);
    if (!frame.Begin("CRecurrentRule::ParseMonthly02 - m_uRecurrentType.byte_acc.b1[0x ") ||
        !frame.HasPeriod(m_period))
    {
        return frame.Finish(outCount);
    }
    const SYSTEMTIME first = SystemTimeFromMinutes(m_tail.startDate);
    while (frame.NextRound())
    {
        const SYSTEMTIME day = SystemTimeFromMinutes(frame.Day());
        const std::uint32_t daysInMonth = DaysInMonth(day.wMonth, day.wYear);
        const std::uint32_t dayOfMonth = day.wDay;
        if (dayOfMonth != wantedDay && !(dayOfMonth == daysInMonth && wantedDay > daysInMonth))
        {
            const std::uint32_t days = dayOfMonth < wantedDay
                                           ? std::min(wantedDay, daysInMonth) - dayOfMonth
                                           : daysInMonth - dayOfMonth + 1;
            frame.MoveTo(frame.Day() + days * kMinutesPerDay);
            continue;
        }
        if (MonthsBetween(first, day) % m_period != 0)
        {
            break;
        }
        frame.EmitIfFree();
        frame.MoveTo(FirstMinuteOfMonthAfter(day, m_period));
    }
    return frame.Finish(outCount);
}

/// The n-th weekday, working day, weekend day or day of every so many months.
bool CRecurrentRule::ParseMonthly03(std::uint32_t& outCount, InstanceList& instances)
{
    SEND_TRACE(2, kMonthly03, "CRecurrentRule::ParseMonthly03");
    if (!HasHead(8, kMonthly03) || !IsGregorian(HeadU16(8), kMonthly03Calendar))
    {
        return false;
    }
    m_period = HeadU32(14); // months
    const OrdinalRule ordinal{HeadU32(22), HeadU32(26)};
    TakeEnd(30, 4);

    CRecurrenceFrame frame(*this, instances, kMonthly03);
    frame.Open(38);
    if (!frame.Begin("CRecurrentRule::ParseMonthly03 - m_uRecurrentType.byte_acc.b1[0x ") ||
        !ordinal.IsKnown() || !frame.HasPeriod(m_period))
    {
        return frame.Finish(outCount);
    }
    const SYSTEMTIME first = SystemTimeFromMinutes(m_tail.startDate);
    while (frame.NextRound())
    {
        const SYSTEMTIME day = SystemTimeFromMinutes(frame.Day());
        if (MonthsBetween(first, day) % m_period != 0)
        {
            break;
        }
        const SYSTEMTIME monthFirst = FirstOfMonth(day.wYear, day.wMonth);
        const OrdinalTarget target =
            FindOrdinalDay(ordinal, monthFirst, day, WorkingDayCount::SkipWeekends, kMonthly03);
        const std::uint32_t nextMonth = FirstMinuteOfMonthAfter(monthFirst, m_period);
        if (MonthNumber(SystemTimeFromMinutes(nextMonth)) <= MonthNumber(monthFirst))
        {
            SEND_TRACE(0,
                       kMonthly03,
                       "CRecurrentRule::ParseMonthly03- stNextMonth is the same as stMonthFst");
            break;
        }
        // Days of the month are compared, not dates: the target may lie in another month.
        if (day.wDay < target.time.wDay)
        {
            frame.MoveTo(target.minutes);
            continue;
        }
        if (day.wDay == target.time.wDay)
        {
            frame.EmitIfFree();
        }
        frame.MoveTo(nextMonth);
    }
    return frame.Finish(outCount);
}
