#include "ServerTrace.h"

#include <windows.h>

#include <atomic>
#include <memory_resource>
#include <new>

#include "AtMemory.h"
#include "EventMessages.h"
#include "EventWindow.h"
#include "TraceLoader.h"

namespace
{

constexpr std::size_t kHeartbeatBytes = 4096;
// The longest line with a blank before and two characters and the terminator behind it.
constexpr std::size_t kLineRoom = 4095 + 4;

// Constant initialised and trivially destroyed: threads trace before all constructors and after all
// destructors of the program.
constinit CTraceLoader g_loader;

/// The way out of the server's lines.
class CServerTraceRoute final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return EventWindow() != nullptr; }

    void SendHeartbeat(std::string_view line) noexcept override
    {
        auto* const block = static_cast<char*>(at_mem_alloc(kHeartbeatBytes));
        if (block == nullptr)
        {
            return;
        }
        const std::size_t length = line.copy(block, kHeartbeatBytes - 1);
        block[length] = '\0';
        auto* const window = EventWindow();
        if (window == nullptr ||
            PostMessageW(window, WM_EVENT_TRACE, 0, reinterpret_cast<LPARAM>(block)) == FALSE)
        {
            at_mem_free(block);
        }
    }

    void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept override
    {
        const TracePair pair{nullptr, CVarAdapter(line)};
        WriteRawTrace(TraceCode(level), {}, {&pair, 1});
    }

    void Flush(unsigned timeoutMs) noexcept override { g_loader.Flush(timeoutMs); }
};

CServerTraceRoute& Route() noexcept
{
    // Never destroyed, for the same reason.
    alignas(CServerTraceRoute) static unsigned char s_room[sizeof(CServerTraceRoute)];
    static CServerTraceRoute* const s_route = new (s_room) CServerTraceRoute;
    return *s_route;
}

std::atomic<bool> g_isStarted{false};

} // namespace

void StartServerTrace() noexcept
{
    if (g_isStarted.exchange(true))
    {
        return;
    }
    OutputDebugStringA("TALVOLOGInitialize\n");
    g_loader.Load();
    SetTraceRoute(&Route());
}

void StopServerTrace() noexcept
{
    if (!g_isStarted.exchange(false))
    {
        return;
    }
    SetTraceRoute(nullptr);
    g_loader.Unload();
    OutputDebugStringA("~TALVOLOGInitialize\n");
}

void WriteRawTrace(int code, std::string_view prefix, std::span<const TracePair> pairs) noexcept
try
{
    // On the stack, where the text fits: a line is written some ten times for each appointment.
    char room[kLineRoom];
    std::pmr::monotonic_buffer_resource memory(room, sizeof room);
    const std::pmr::string text = RawTraceText(prefix, pairs, &memory);
    g_loader.LoadOnce();
    ForEachTracePiece(text, [code](const char* piece) { g_loader.Send(code, piece); });
}
catch (...)
{
    // No memory for the line: it is lost, which is no reason to fail the caller.
}
