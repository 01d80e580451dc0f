#include "LocalTime.h"

#include <windows.h>

namespace dtclient
{
namespace
{
CalendarTime FromSystem(const SYSTEMTIME& system)
{
    return {system.wYear, system.wMonth, system.wDay, system.wHour, system.wMinute, system.wSecond};
}
} // namespace

CalendarTime LocalFromUtc(const CalendarTime& utc)
{
    SYSTEMTIME system{};
    system.wYear = static_cast<WORD>(utc.year);
    system.wMonth = static_cast<WORD>(utc.month);
    system.wDay = static_cast<WORD>(utc.day);
    system.wHour = static_cast<WORD>(utc.hour);
    system.wMinute = static_cast<WORD>(utc.minute);
    system.wSecond = static_cast<WORD>(utc.second);
    SYSTEMTIME local{};
    if (SystemTimeToTzSpecificLocalTime(nullptr, &system, &local) == 0)
    {
        return utc;
    }
    return FromSystem(local);
}

CalendarTime LocalNow()
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return FromSystem(now);
}
} // namespace dtclient
