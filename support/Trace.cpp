#include "Trace.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
#endif

namespace
{

constexpr std::size_t kLineBytes = 4096; // with the terminator
constexpr std::string_view kHeartbeatText = "##dtOIEx##process##exist##";

std::atomic<ITraceRoute*> g_route{nullptr};

/// As much of a text as fits before `end`.
char* Put(char* out, char* end, std::string_view text) noexcept
{
    return std::copy_n(text.data(), std::min<std::ptrdiff_t>(std::ssize(text), end - out), out);
}

/// A name that its caller left out, as printf would show it.
std::string_view NameOf(const char* text) noexcept
{
    return text != nullptr ? text : "(null)";
}

/// Whether the line goes to the client alone.
bool IsHeartbeat(std::string_view line) noexcept
{
    // Hardly any line has the letter at all, and without a way out of the loop the compiler looks at many
    // at once: a search in each line would cost as much as its head.
    bool hasMark = false;
    for (const char letter : line)
    {
        hasMark |= letter == kHeartbeatText.front();
    }
    return hasMark && line.find(kHeartbeatText) != std::string_view::npos;
}

char* PutNumber(char* out, char* end, int number) noexcept
{
    char digits[16];
    char* const behind = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return Put(out, end, {digits, static_cast<std::size_t>(behind - digits)});
}

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

void FlushTrace(unsigned timeoutMs) noexcept
{
#ifdef _WIN32
    const DWORD lastError = GetLastError();
#endif
    if (ITraceRoute* const route = g_route.load())
    {
        route->Flush(timeoutMs);
    }
#ifdef _WIN32
    SetLastError(lastError);
#endif
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
        // The head is put together by hand and the message printed behind it: printing each line
        // twice would cost more than all else. Cut at the room's end, the line is the same.
        char text[kLineBytes];
        char* const end = text + sizeof text - 1;
        char* out = text;
        out = Put(out, end, "[");
        out = Put(out, end, NameOf(file));
        out = Put(out, end, ":");
        out = PutNumber(out, end, line);
        out = Put(out, end, "][");
        out = Put(out, end, NameOf(function));
        out = Put(out, end, "]:");
        *out = '\0';
        va_list arguments;
        va_start(arguments, format);
        const int length =
            std::vsnprintf(out, static_cast<std::size_t>(end - out) + 1, format, arguments);
        va_end(arguments);
        out += std::clamp<std::ptrdiff_t>(length, 0, end - out); // negative when it failed
        *out = '\0';
        const std::string_view written(text, static_cast<std::size_t>(out - text));
        if (IsHeartbeat(written))
        {
            route->SendHeartbeat(written);
        }
        else
        {
            route->Write(level, written);
        }
    }
#ifdef _WIN32
    SetLastError(lastError);
#endif
}
