#include "Days1601.h"

namespace mapistore
{
namespace
{

bool IsLeap(int year)
{
    return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
}

} // namespace

int DaysInMonthOf(int year, int month)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

std::uint32_t DaysFrom1601(int year, int month, int day)
{
    const int past = year - 1601;
    int days = past * 365 + past / 4 - past / 100 + past / 400;
    for (int i = 1; i < month; ++i)
    {
        days += DaysInMonthOf(year, i);
    }
    return static_cast<std::uint32_t>(days + day - 1);
}

void DateFrom1601(std::uint32_t days, int& year, int& month, int& day)
{
    year = 1601 + static_cast<int>(days / 366);
    while (DaysFrom1601(year + 1, 1, 1) <= days)
    {
        ++year;
    }
    month = 1;
    while (month < 12 && DaysFrom1601(year, month + 1, 1) <= days)
    {
        ++month;
    }
    day = static_cast<int>(days - DaysFrom1601(year, month, 1)) + 1;
}

} // namespace mapistore
