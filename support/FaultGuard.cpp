#include "FaultGuard.h"

#include <windows.h>

#include <excpt.h>
#include <malloc.h>

// The compiler has no __try. What the headers offer in its place are two pieces of assembly with fixed
// labels: one pair a file, in a function that is not inlined and holds no object with a destructor.
// Behind the second piece comes both who had a fault and who had none.

namespace
{

constexpr DWORD kGccThrow = 0x20474343;

thread_local DWORD g_faultCode;

} // namespace

/// Named from assembly alone.
extern "C" __attribute__((used)) LONG CALLBACK FaultGuardFilter(EXCEPTION_POINTERS* pointers)
{
    const DWORD code = pointers->ExceptionRecord->ExceptionCode;
    if (code == kGccThrow)
    {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    g_faultCode = code;
    return EXCEPTION_EXECUTE_HANDLER;
}

namespace
{

__attribute__((noinline)) bool RunToEnd(void (*work)(void*), void* context)
{
    volatile bool isDone = false;
    __try1(FaultGuardFilter)
    {
        work(context);
        isDone = true;
    }
    __except1 return isDone;
}

} // namespace

DWORD RunGuarded(void (*work)(void* context), void* context)
{
    // Touched here once, since the first touch on a thread allocates, which the filter should not.
    g_faultCode = 0;
    if (RunToEnd(work, context))
    {
        return 0;
    }
    const DWORD code = g_faultCode;
    if (code == EXCEPTION_STACK_OVERFLOW)
    {
        // Puts the guard page back, without which the next overflow would end the process.
        _resetstkoflw();
    }
    return code;
}
