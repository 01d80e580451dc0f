#pragma once

#include <string_view>

/// The trace of the whole system: one call, four levels, one road out.
///
/// A line has the form "[" file ":" line "][" function "]:" message. Where it goes is decided by
/// the installed ITraceRoute: in the server the trace library beside the executable, and for the
/// heartbeat line the client; in tests a capture.

namespace TL_SDK
{

/// Level of a trace call.
enum TLLoggerLevel : int
{
    TLLoggerLevelFailure = 0,
    TLLoggerLevelWarning = 1,
    TLLoggerLevelMilestone = 2,
    TLLoggerLevelDetail = 3,
};

} // namespace TL_SDK

/// Where finished lines go: installed once at start, in the server by StartServerTrace.
///
/// Thread: every operation is called from any thread and must not trace.
class ITraceRoute
{
public:
    ITraceRoute() = default;
    ITraceRoute(const ITraceRoute&) = delete;
    ITraceRoute& operator=(const ITraceRoute&) = delete;
    virtual ~ITraceRoute() = default;

    /// False while there is nothing to trace through (the event window does not exist): the line is
    /// dropped, also when it would not have gone to the window.
    virtual bool IsOpen() noexcept = 0;

    /// Takes a heartbeat line, which goes to the client and nowhere else.
    virtual void SendHeartbeat(std::string_view line) noexcept = 0;

    /// Takes any other line.
    /// Shape: at most 4095 bytes, no line ending, terminated behind its end.
    virtual void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept = 0;

    /// Waits until the lines so far stand where they are kept, at most so long. For a process about to
    /// end without a farewell; a route that keeps nothing back has nothing to do.
    virtual void Flush(unsigned /*timeoutMs*/) noexcept {}
};

/// Installs the route and returns the one before it; null closes the trace.
/// Owner:  the caller keeps the route alive until it is replaced.
/// Thread: any; a line under way on another thread may still reach the old route.
ITraceRoute* SetTraceRoute(ITraceRoute* route) noexcept;

/// False while a line would be dropped: lets a caller spare the making of a costly text.
[[nodiscard]] bool IsTraceOpen() noexcept;

/// How long a process that is about to end waits for its last lines.
constexpr unsigned kTraceFlushMs = 500;

/// Has the route write what it keeps back. Keeps GetLastError.
/// Thread: any, also one that has crashed.
void FlushTrace(unsigned timeoutMs) noexcept;

#if defined(__GNUC__)
#if defined(__MINGW32__) && !defined(__clang__)
#define DT_PRINTF_FORMAT(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define DT_PRINTF_FORMAT(text, first) __attribute__((format(printf, text, first)))
#endif
#else
#define DT_PRINTF_FORMAT(text, first)
#endif

/// Writes one trace line. Keeps GetLastError, never throws, never fails.
///
/// Shape:  all texts narrow and terminated; `%s` is narrow text, and a text of a mail or a name is never
///         the format itself. The message is cut at 4095 bytes, and so is the finished line, through
///         whatever character that goes.
/// Thread: any.
extern "C" void SendTrace(TL_SDK::TLLoggerLevel level,
                          const char* file,
                          int line,
                          const char* function,
                          const char* format,
                          ...) noexcept DT_PRINTF_FORMAT(5, 6);

/// SEND_TRACE(level, "Class::Method", "format", ...): adds the base name of the source and the
/// line. The function is named by hand, since the compiler's own name lacks the class.
#define SEND_TRACE(level, function, ...)                                                           \
    SendTrace(                                                                                     \
        static_cast<TL_SDK::TLLoggerLevel>(level), __FILE_NAME__, __LINE__, function, __VA_ARGS__)
