#pragma once

#include <windows.h>

#include <vector>

/// Every pause that code of this test program asked for, in milliseconds, on the thread that asks.
std::vector<DWORD>& PausesOfThisThread();
