#pragma once

#include "PlatformTypes.h"

/// Time zones for tests. Switch dates tell month, week of the month (5 is the last) and hour; the
/// weekday is Sunday unless it is named.
namespace zones
{

struct Switch
{
    WORD month;
    WORD week;
    WORD hour;
};

inline TIME_ZONE_INFORMATION Make(
    LONG bias, LONG standardBias, LONG daylightBias, Switch standard, Switch daylight)
{
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = bias;
    zone.StandardBias = standardBias;
    zone.DaylightBias = daylightBias;
    zone.StandardDate.wMonth = standard.month;
    zone.StandardDate.wDay = standard.week;
    zone.StandardDate.wHour = standard.hour;
    zone.DaylightDate.wMonth = daylight.month;
    zone.DaylightDate.wDay = daylight.week;
    zone.DaylightDate.wHour = daylight.hour;
    return zone;
}

inline TIME_ZONE_INFORMATION UsEastern()
{
    return Make(300, 0, -60, {11, 1, 2}, {3, 2, 2});
}

inline TIME_ZONE_INFORMATION Berlin()
{
    return Make(-60, 0, -60, {10, 5, 3}, {3, 5, 2});
}

inline TIME_ZONE_INFORMATION Sydney()
{
    return Make(-600, 0, -60, {4, 1, 3}, {10, 1, 2});
}

inline TIME_ZONE_INFORMATION Kolkata()
{
    return Make(-330, 0, 0, {0, 0, 0}, {0, 0, 0});
}

} // namespace zones
