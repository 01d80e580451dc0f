#pragma once

#include <cstdint>

namespace mapistore
{

/// 0 for January 1 of 1601. Exact for every Gregorian date from then on.
std::uint32_t DaysFrom1601(int year, int month, int day);
void DateFrom1601(std::uint32_t days, int& year, int& month, int& day);
int DaysInMonthOf(int year, int month);

} // namespace mapistore
