#include "MonthCalendar.h"

#include <algorithm>
#include <set>
#include <utility>

#include "CalendarDays.h"
#include "Minutes1601.h"
#include "WeekdayNames.h"

namespace
{

constexpr std::size_t kMostMonths = 36;

struct MarkLook
{
    char sign;
    const char* color; // of a terminal
};

MarkLook LookOf(DayMark mark)
{
    switch (mark)
    {
    case DayMark::MovedAway:
        return {'<', "\033[33m"};
    case DayMark::Deleted:
        return {'x', "\033[31m"};
    case DayMark::Instance:
        return {'*', "\033[32m"};
    case DayMark::Changed:
        return {'>', "\033[36m"};
    case DayMark::Cancelled:
        return {'x', "\033[31m"};
    }
    return {'?', ""};
}

std::string DrawDay(std::uint32_t day, const DayMark* mark, bool withColor)
{
    const std::string number = (day < 10 ? " " : "") + std::to_string(day);
    if (mark == nullptr)
    {
        return " " + number + " ";
    }
    const MarkLook look = LookOf(*mark);
    return " " + (withColor ? look.color + number + look.sign + "\033[0m" : number + look.sign);
}

} // namespace

void CMonthCalendar::Mark(std::uint32_t day1601, DayMark mark)
{
    const auto [entry, isNew] = m_days.emplace(day1601, mark);
    if (!isNew)
    {
        entry->second = std::max(entry->second, mark);
    }
}

std::string CMonthCalendar::Draw(bool withColor) const
{
    std::set<std::pair<std::int64_t, std::uint32_t>> months;
    for (const auto& [day, mark] : m_days)
    {
        const calendar::Date date = calendar::DateFromDay1601(day);
        months.emplace(date.year, date.month);
    }
    std::string out;
    std::size_t drawn = 0;
    for (const auto& [year, month] : months)
    {
        if (drawn++ == kMostMonths)
        {
            out += "\n... and " + std::to_string(months.size() - kMostMonths) + " more months\n";
            break;
        }
        out += "\n" + std::string(MonthName(month)) + " " + std::to_string(year) +
               "\n  Mo  Tu  We  Th  Fr  Sa  Su\n";
        const auto first = static_cast<std::uint32_t>(calendar::Day1601FromDate(year, month, 1));
        const std::uint32_t days = DaysInMonth(month, static_cast<std::uint32_t>(year));
        std::uint32_t column = (calendar::WeekdayOfDay1601(first) + 6) % 7;
        std::string line(4UL * column, ' ');
        for (std::uint32_t day = 1; day <= days; ++day)
        {
            const auto mark = m_days.find(first + day - 1);
            line += DrawDay(day, mark == m_days.end() ? nullptr : &mark->second, withColor);
            if (++column == 7 || day == days)
            {
                line.erase(line.find_last_not_of(' ') + 1);
                out += line + "\n";
                line.clear();
                column = 0;
            }
        }
    }
    return out;
}
