#include "TickClock.h"

TickClock g_tickClock;

namespace
{

DWORD WINAPI TellTime()
{
    const DWORD now = g_tickClock.nowMs;
    g_tickClock.nowMs += g_tickClock.stepMs;
    return now;
}

} // namespace

// The place through which every object file of this program calls the system's function.
extern "C"
{
    extern decltype(&TellTime) const __imp_GetTickCount;
    decltype(&TellTime) const __imp_GetTickCount = &TellTime;
}
