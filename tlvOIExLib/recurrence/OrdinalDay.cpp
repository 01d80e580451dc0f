#include "OrdinalDay.h"

#include "CalendarDays.h"
#include "Minutes1601.h"
#include "Trace.h"

namespace
{

constexpr std::uint32_t kMinutesPerDay = 1440;
constexpr std::uint32_t kSunday = 0;
constexpr std::uint32_t kSaturday = 6;

constexpr std::uint32_t kMaskWorkingDay = 62;
constexpr std::uint32_t kMaskWeekendDay = 65;
constexpr std::uint32_t kMaskAnyDay = 127;
/// A second mask for Saturday, written by some clients.
constexpr std::uint32_t kMaskOtherSaturday = 78;

std::optional<std::uint32_t> WeekdayOfMask(std::uint32_t mask) noexcept
{
    switch (mask)
    {
    case 1:
        return 0;
    case 2:
        return 1;
    case 4:
        return 2;
    case 8:
        return 3;
    case 16:
        return 4;
    case 32:
        return 5;
    case 64:
    case kMaskOtherSaturday:
        return kSaturday;
    default:
        return std::nullopt;
    }
}

bool IsWeekend(std::uint32_t weekday) noexcept
{
    return weekday == kSaturday || weekday == kSunday;
}

/// One month, seen from its first.
struct Month
{
    explicit Month(const SYSTEMTIME& monthFirst) noexcept
        : first(monthFirst), minutes(MinutesFromSystemTime(monthFirst)),
          days(DaysInMonth(monthFirst.wMonth, monthFirst.wYear))
    {
    }

    [[nodiscard]] std::uint32_t WeekdayOf(std::uint32_t day) const noexcept
    {
        return (first.wDayOfWeek + day - 1U) % 7U;
    }

    [[nodiscard]] OrdinalTarget Target(std::uint32_t day) const noexcept
    {
        OrdinalTarget target;
        target.time = first;
        target.time.wDay = static_cast<WORD>(day);
        target.minutes = MinutesFromSystemTime(target.time);
        return target;
    }

    const SYSTEMTIME& first;
    std::uint32_t minutes;
    std::uint32_t days;
};

OrdinalTarget TargetOfMinutes(std::uint32_t minutes) noexcept
{
    return {SystemTimeFromMinutes(minutes), minutes};
}

bool HasLeftMonth(const SYSTEMTIME& target, const SYSTEMTIME& cursor) noexcept
{
    return target.wMonth + (target.wYear - cursor.wYear) * 12 != cursor.wMonth;
}

OrdinalTarget WeekdayTarget(const Month& month,
                            std::uint32_t weekday,
                            std::uint32_t week,
                            const SYSTEMTIME& cursor) noexcept
{
    const std::uint32_t days = (week - 1) * 7 + (weekday + 7 - month.first.wDayOfWeek) % 7;
    OrdinalTarget target = TargetOfMinutes(month.minutes + days * kMinutesPerDay);
    if (week >= 4 && HasLeftMonth(target.time, cursor))
    {
        target = TargetOfMinutes(target.minutes - 7 * kMinutesPerDay);
    }
    return target;
}

std::uint32_t WorkingDay(const Month& month,
                         std::uint32_t week,
                         WorkingDayCount workingDays) noexcept
{
    if (week >= 5)
    {
        const std::uint32_t weekday = month.WeekdayOf(month.days);
        return IsWeekend(weekday) ? month.days - (weekday + 2) % 7 : month.days;
    }
    const std::uint32_t onFirst = month.first.wDayOfWeek;
    const std::uint32_t base = IsWeekend(onFirst) ? 1 + (8 - onFirst) % 7 : 1;
    if (workingDays == WorkingDayCount::CountOn)
    {
        return base + week - 1;
    }
    const std::uint32_t weekday = month.WeekdayOf(base);
    const std::uint32_t modulo = (weekday - 1 + week) % 5;
    const std::uint32_t wanted = modulo == 0 ? 5 : modulo;
    return base - weekday + wanted + (wanted < weekday ? 7 : 0);
}

/// The day of the month, or nothing for an unknown week number.
std::optional<std::uint32_t> WeekendDay(const Month& month, std::uint32_t week) noexcept
{
    const std::uint32_t onFirst = month.first.wDayOfWeek;
    const bool isSunday = onFirst == kSunday;
    const std::uint32_t toSaturday = 6 - onFirst;
    switch (week)
    {
    case 1:
        return isSunday ? 1 : 1 + toSaturday;
    case 2:
        return isSunday ? 7 : 2 + toSaturday;
    case 3:
        return isSunday ? 8 : 8 + toSaturday;
    case 4:
        return isSunday ? 14 : 9 + toSaturday;
    case 5: {
        const std::uint32_t onLast = month.WeekdayOf(month.days);
        return onLast == kSaturday ? month.days : month.days - onLast;
    }
    default:
        return std::nullopt;
    }
}

} // namespace

bool OrdinalRule::IsKnown() const noexcept
{
    return mask == kMaskWorkingDay || mask == kMaskWeekendDay || mask == kMaskAnyDay ||
           WeekdayOfMask(mask).has_value();
}

OrdinalTarget FindOrdinalDay(const OrdinalRule& rule,
                             const SYSTEMTIME& monthFirst,
                             const SYSTEMTIME& cursor,
                             WorkingDayCount workingDays,
                             const char* function)
{
    const Month month(monthFirst);
    if (rule.mask == kMaskWorkingDay)
    {
        return month.Target(WorkingDay(month, rule.week, workingDays));
    }
    if (rule.mask == kMaskWeekendDay)
    {
        if (const std::optional<std::uint32_t> day = WeekendDay(month, rule.week))
        {
            return month.Target(*day);
        }
        SEND_TRACE(1, function, "Unknown uWeekNumber type");
        SEND_TRACE(1, function, "Unknown uWeekNumber type");
        return {};
    }
    if (rule.mask == kMaskAnyDay)
    {
        return month.Target(rule.week >= 5 ? month.days : rule.week);
    }
    return WeekdayTarget(month, WeekdayOfMask(rule.mask).value_or(0), rule.week, cursor);
}

SYSTEMTIME FirstOfMonth(std::uint32_t year, std::uint32_t month) noexcept
{
    SYSTEMTIME first{};
    first.wYear = static_cast<WORD>(year);
    first.wMonth = static_cast<WORD>(month);
    first.wDay = 1;
    first.wDayOfWeek = static_cast<WORD>(
        calendar::WeekdayOfDay1601(calendar::Day1601FromDate(first.wYear, month, 1)));
    return first;
}
