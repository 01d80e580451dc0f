#include <gtest/gtest.h>

#include <functional>

#include "RuleRun.h"
#include "ZoneSamples.h"

// Well-formed rules without any oddity, over a wide grid, against a calendar that is walked day by day
// and knows nothing of minutes, windows or gaps.

namespace
{

/// One day of the walk.
struct Day
{
    int year = 0;
    int month = 0;
    int day = 0;
    int weekday = 0; // 0 is Sunday
    int number = 0;  // since the beginning of the walk, a Sunday
};

int LengthOf(int year, int month)
{
    static constexpr int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 && isLeap ? 29 : kLengths[month - 1];
}

/// All days from Sunday, January 2, 2022 through 2031.
const std::vector<Day>& Walk()
{
    static const std::vector<Day> s_days = [] {
        std::vector<Day> days;
        Day at{2022, 1, 2, 0, 0};
        while (at.year < 2032)
        {
            days.push_back(at);
            at.weekday = (at.weekday + 1) % 7;
            ++at.number;
            if (++at.day > LengthOf(at.year, at.month))
            {
                at.day = 1;
                at.month = at.month == 12 ? 1 : at.month + 1;
                at.year += at.month == 1 ? 1 : 0;
            }
        }
        return days;
    }();
    return s_days;
}

std::string TextOf(const Day& day)
{
    char text[16];
    std::snprintf(text,
                  sizeof text,
                  "%04u-%02u-%02u",
                  static_cast<unsigned>(day.year) % 10000U,
                  static_cast<unsigned>(day.month) % 100U,
                  static_cast<unsigned>(day.day) % 100U);
    return text;
}

bool IsWeekend(const Day& day)
{
    return day.weekday == 0 || day.weekday == 6;
}

/// Whether the day is the n-th of its month (5 is the last) among those that fit.
bool IsOrdinal(const Day& day, unsigned week, const std::function<bool(const Day&)>& fits)
{
    if (!fits(day))
    {
        return false;
    }
    unsigned before = 0;
    unsigned after = 0;
    for (int other = 1; other <= LengthOf(day.year, day.month); ++other)
    {
        Day at = day;
        at.day = other;
        at.weekday = ((day.weekday + other - day.day) % 7 + 7) % 7;
        before += other < day.day && fits(at);
        after += other > day.day && fits(at);
    }
    return week == 5 ? after == 0 : before == week - 1;
}

/// New York by its printed rule.
bool IsDaylightNoon(const Day& day)
{
    if (day.month != 3 && day.month != 11)
    {
        return day.month > 3 && day.month < 11;
    }
    int sundays = 0;
    for (int other = 1; other <= day.day; ++other)
    {
        sundays += (day.weekday + other - day.day + 70) % 7 == 0;
    }
    return day.month == 3 ? sundays >= 2 : sundays < 1;
}

using Fits = std::function<bool(const Day& start, const Day& day)>;

/// Holds one rule from the given first instance to the end of the walk, or 1001 rounds' worth of it.
void Hold(const Day& start, const pattern::Pattern& pattern, const Fits& fits, int days)
{
    RuleRun run;
    run.blob = pattern.Write();
    run.zone = pattern::Zone(zones::UsEastern());
    run.from = TextOf(start) + "T05:00:00";
    const auto last = std::min(static_cast<std::size_t>(start.number + days), Walk().size() - 2);
    run.to = TextOf(Walk()[last]) + "T23:00:00";
    Dates expected;
    for (auto at = static_cast<std::size_t>(start.number); at <= last; ++at)
    {
        if (fits(start, Walk()[at]))
        {
            expected.push_back(TextOf(Walk()[at]) +
                               (IsDaylightNoon(Walk()[at]) ? "T13:00:00" : "T14:00:00"));
        }
    }
    ASSERT_EQ(run.Expand().Starts(), expected) << "from " << TextOf(start);
    ASSERT_FALSE(expected.empty());
}

/// First days all over the week, the month and the leap years.
template <class Body>
void ForManyStarts(const Body& body)
{
    for (std::size_t at = 700; at < 1600; at += 23)
    {
        body(Walk()[at]);
    }
}

/// The first day from `from` on that fits.
Day FirstFitting(const Day& from, const std::function<bool(const Day&)>& fits)
{
    auto at = static_cast<std::size_t>(from.number);
    while (!fits(Walk()[at]))
    {
        ++at;
    }
    return Walk()[at];
}

int MonthsBetween(const Day& start, const Day& day)
{
    return (day.year - start.year) * 12 + day.month - start.month;
}

TEST(RoundTrip, EveryNumberOfDays)
{
    ForManyStarts([](const Day& start) {
        for (const int days : {1, 2, 3, 5, 7, 10, 28, 31, 100})
        {
            Hold(
                start,
                pattern::Daily(TextOf(start), static_cast<std::uint32_t>(days)),
                [days](const Day& from, const Day& day) {
                    return (day.number - from.number) % days == 0;
                },
                1000);
        }
    });
}

TEST(RoundTrip, WorkingDays)
{
    ForManyStarts([](const Day& start) {
        Hold(
            start,
            pattern::WorkingDays(TextOf(start)),
            [](const Day&, const Day& day) { return !IsWeekend(day); },
            1000);
    });
}

TEST(RoundTrip, EveryMaskOfWeekdaysEveryNumberOfWeeks)
{
    for (const int weeks : {1, 2, 3, 4, 9})
    {
        for (unsigned mask = 1; mask < 128; ++mask)
        {
            const auto isSelected = [mask](const Day& day) {
                return (mask >> day.weekday & 1) != 0;
            };
            const Day start = FirstFitting(Walk()[700 + mask * 3], isSelected);
            Hold(
                start,
                pattern::Weekly(TextOf(start), mask, static_cast<std::uint32_t>(weeks)),
                [&isSelected, weeks](const Day& from, const Day& day) {
                    return isSelected(day) && (day.number / 7 - from.number / 7) % weeks == 0;
                },
                800);
        }
    }
}

TEST(RoundTrip, EveryDayOfTheMonthEveryNumberOfMonths)
{
    for (const int months : {1, 2, 3, 5, 12, 18})
    {
        for (int wanted = 1; wanted <= 31; ++wanted)
        {
            const auto isDay = [wanted](const Day& day) {
                return day.day == std::min(wanted, LengthOf(day.year, day.month));
            };
            const Day start =
                FirstFitting(Walk()[static_cast<std::size_t>(700 + wanted * 7)], isDay);
            Hold(
                start,
                pattern::MonthlyDay(TextOf(start),
                                    static_cast<std::uint32_t>(wanted),
                                    static_cast<std::uint32_t>(months)),
                [&isDay, months](const Day& from, const Day& day) {
                    return isDay(day) && MonthsBetween(from, day) % months == 0;
                },
                2000);
        }
    }
}

struct Mask
{
    std::uint32_t value;
    std::function<bool(const Day&)> fits;
};

std::vector<Mask> Masks()
{
    std::vector<Mask> masks = {{62, [](const Day& day) { return !IsWeekend(day); }},
                               {65, IsWeekend},
                               {127, [](const Day&) { return true; }}};
    for (int weekday = 0; weekday < 7; ++weekday)
    {
        masks.push_back(
            {1U << weekday, [weekday](const Day& day) { return day.weekday == weekday; }});
    }
    return masks;
}

TEST(RoundTrip, EveryOrdinalDayEveryNumberOfMonths)
{
    for (const Mask& mask : Masks())
    {
        for (unsigned week = 1; week <= 5; ++week)
        {
            for (const int months : {1, 2, 3, 12})
            {
                const auto isDay = [&mask, week](const Day& day) {
                    return IsOrdinal(day, week, mask.fits);
                };
                const Day start = FirstFitting(Walk()[700 + week * 31], isDay);
                Hold(
                    start,
                    pattern::MonthlyOrdinal(
                        TextOf(start), mask.value, week, static_cast<std::uint32_t>(months)),
                    [&isDay, months](const Day& from, const Day& day) {
                        return isDay(day) && MonthsBetween(from, day) % months == 0;
                    },
                    1500);
            }
        }
    }
}

TEST(RoundTrip, EveryDayOfTheYearThatAllYearsHave)
{
    for (const int years : {1, 2, 3})
    {
        for (int number = 0; number < 366; ++number)
        {
            const Day start = Walk()[static_cast<std::size_t>(700 + number)];
            if (start.month == 2 && start.day == 29)
            {
                continue;
            }
            Hold(
                start,
                pattern::YearlyDay(TextOf(start),
                                   static_cast<std::uint32_t>(start.day),
                                   static_cast<std::uint32_t>(years)),
                [years](const Day& from, const Day& day) {
                    return day.month == from.month && day.day == from.day &&
                           (day.year - from.year) % years == 0;
                },
                2500);
        }
    }
}

TEST(RoundTrip, EveryOrdinalDayOfEveryMonthOfTheYear)
{
    for (const Mask& mask : Masks())
    {
        for (unsigned week = 1; week <= 5; ++week)
        {
            if (mask.value == 62 && week > 1 && week < 5)
            {
                continue; // yearly working days are counted on over the weekend
            }
            for (int month = 1; month <= 12; ++month)
            {
                const auto isDay = [&mask, week, month](const Day& day) {
                    return day.month == month && IsOrdinal(day, week, mask.fits);
                };
                const Day start = FirstFitting(Walk()[730], isDay);
                Hold(
                    start,
                    pattern::YearlyOrdinal(TextOf(start), mask.value, week, 2),
                    [&isDay](const Day& from, const Day& day) {
                        return isDay(day) && (day.year - from.year) % 2 == 0;
                    },
                    2500);
            }
        }
    }
}

} // namespace
