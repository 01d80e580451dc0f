#pragma once

#include <windows.h>

/// Stands in for GetTickCount in this test program: 0 until it is set, and `stepMs` more with every
/// call.
struct TickClock
{
    DWORD nowMs = 0;
    DWORD stepMs = 0;
};

extern TickClock g_tickClock;
