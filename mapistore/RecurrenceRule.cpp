#include <algorithm>

#include "RecurrenceBlob.h"

namespace mapistore
{
namespace
{

constexpr std::uint32_t kWorkdayMask = 0x3E;
constexpr std::uint32_t kWorkdayFirstDateTime = 8640;

std::uint32_t WeekdayOf(std::uint32_t days)
{
    return (days + 1) % 7; // 1601-01-01 was a Monday
}

std::uint32_t MonthsFrom1601(std::uint32_t days)
{
    int year = 0;
    int month = 0;
    int day = 0;
    DateFrom1601(days, year, month, day);
    return static_cast<std::uint32_t>((year - 1601) * 12 + month - 1);
}

std::uint32_t FirstOfMonth(std::uint32_t months)
{
    return DaysFrom1601(1601 + static_cast<int>(months / 12), static_cast<int>(months % 12) + 1, 1);
}

std::uint32_t WeekStart(std::uint32_t days, std::uint32_t firstDayOfWeek)
{
    return days - (WeekdayOf(days) + 7 - firstDayOfWeek) % 7;
}

bool InMask(std::uint32_t mask, std::uint32_t days)
{
    return (mask & (1U << WeekdayOf(days))) != 0;
}

/// The day of a month that "the n-th such day" or "day n" means.
std::uint32_t TargetInMonth(const RecurrenceDescription& rule, std::uint32_t months)
{
    const std::uint32_t first = FirstOfMonth(months);
    const std::uint32_t last = FirstOfMonth(months + 1) - 1;
    if (rule.dayOfMonth != 0)
    {
        return std::min(first + rule.dayOfMonth - 1, last);
    }
    std::uint32_t found = 0;
    std::uint32_t seen = 0;
    for (std::uint32_t day = first; day <= last; ++day)
    {
        if (InMask(rule.dayMask, day) && (rule.week == 5 || seen < rule.week))
        {
            found = day;
            ++seen;
        }
    }
    return found;
}

bool IsInstance(const RecurrenceDescription& rule, std::uint32_t day)
{
    switch (rule.frequency)
    {
    case RecurrenceFrequency::Daily:
        return (day - rule.start) % rule.interval == 0;
    case RecurrenceFrequency::Workdays:
        return InMask(kWorkdayMask, day);
    case RecurrenceFrequency::Weekly: {
        const std::uint32_t weeks =
            (WeekStart(day, rule.firstDayOfWeek) - WeekStart(rule.start, rule.firstDayOfWeek)) / 7;
        return weeks % rule.interval == 0 && InMask(rule.dayMask, day);
    }
    default: {
        const std::uint32_t period =
            rule.frequency == RecurrenceFrequency::Yearly ? rule.interval * 12 : rule.interval;
        const std::uint32_t months = MonthsFrom1601(day);
        return (months - MonthsFrom1601(rule.start)) % period == 0 &&
               TargetInMonth(rule, months) == day;
    }
    }
}

} // namespace

std::uint32_t FirstDateTimeOf(const RecurrenceDescription& rule)
{
    const std::uint32_t period = PeriodOf(rule);
    switch (rule.frequency)
    {
    case RecurrenceFrequency::Daily:
        return static_cast<std::uint32_t>(std::uint64_t{rule.start} * kMinutesPerDay % period);
    case RecurrenceFrequency::Workdays:
        return kWorkdayFirstDateTime;
    case RecurrenceFrequency::Weekly: {
        const std::uint64_t week =
            std::uint64_t{WeekStart(rule.start, rule.firstDayOfWeek)} * kMinutesPerDay;
        return static_cast<std::uint32_t>(week % (std::uint64_t{period} * 7 * kMinutesPerDay));
    }
    default:
        return FirstOfMonth(MonthsFrom1601(rule.start) % period) * kMinutesPerDay;
    }
}

std::uint32_t PeriodOf(const RecurrenceDescription& rule)
{
    switch (rule.frequency)
    {
    case RecurrenceFrequency::Daily:
        return rule.interval * kMinutesPerDay;
    case RecurrenceFrequency::Workdays:
        return 1;
    case RecurrenceFrequency::Yearly:
        return rule.interval * 12;
    default:
        return rule.interval;
    }
}

std::uint32_t CountInstances(const RecurrenceDescription& description, std::uint32_t last)
{
    std::uint32_t count = 0;
    for (std::uint32_t day = description.start; day <= last; ++day)
    {
        count += IsInstance(description, day) ? 1U : 0U;
    }
    return count;
}

} // namespace mapistore
