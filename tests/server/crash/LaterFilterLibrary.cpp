// A library that wants to be the one who handles crashes, as runtimes and mail providers do.

#include <windows.h>

namespace
{

LONG WINAPI MyFilter(EXCEPTION_POINTERS* /*pointers*/)
{
    TerminateProcess(GetCurrentProcess(), 77);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

extern "C" void* TakeFilter()
{
    return reinterpret_cast<void*>(SetUnhandledExceptionFilter(MyFilter));
}
