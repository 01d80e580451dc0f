#include "PauseCounter.h"

std::vector<DWORD>& PausesOfThisThread()
{
    static thread_local std::vector<DWORD> s_pauses;
    return s_pauses;
}

namespace
{

void WINAPI NotedSleep(DWORD pauseMs)
{
    PausesOfThisThread().push_back(pauseMs);
    SleepEx(pauseMs, FALSE);
}

} // namespace

// The place through which every object file of this program calls the system's function.
extern "C"
{
    extern decltype(&NotedSleep) const __imp_Sleep;
    decltype(&NotedSleep) const __imp_Sleep = &NotedSleep;
}
