#include "Trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#endif

namespace
{

constexpr std::size_t kLineBytes = 4096; // with the terminator
constexpr const char* kHeartbeatText = "##dtOIEx##process##exist##";

std::atomic<ITraceRoute*> g_route{nullptr};

} // namespace

ITraceRoute* SetTraceRoute(ITraceRoute* route) noexcept
{
    return g_route.exchange(route);
}

bool IsTraceOpen() noexcept
{
    ITraceRoute* const route = g_route.load();
    return route != nullptr && route->IsOpen();
}

extern "C" void SendTrace(TL_SDK::TLLoggerLevel level,
                          const char* file,
                          int line,
                          const char* function,
                          const char* format,
                          ...) noexcept
{
#ifdef _WIN32
    const DWORD lastError = GetLastError();
#endif
    ITraceRoute* const route = g_route.load();
    if (route != nullptr && route->IsOpen())
    {
        char message[kLineBytes];
        va_list arguments;
        va_start(arguments, format);
        if (std::vsnprintf(message, sizeof message, format, arguments) < 0)
        {
            message[0] = '\0';
        }
        va_end(arguments);

        char text[kLineBytes];
        std::snprintf(text, sizeof text, "[%s:%d][%s]:%s", file, line, function, message);
        if (std::strstr(text, kHeartbeatText) != nullptr)
        {
            route->SendHeartbeat(text);
        }
        else
        {
            route->Write(level, text);
        }
    }
#ifdef _WIN32
    SetLastError(lastError);
#endif
}
