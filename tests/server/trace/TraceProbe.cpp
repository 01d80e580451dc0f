// A program that traces as the server does, for tests that put a trace library beside it.
//
// trace_probe lines   one line of each level, a heartbeat line, a line of 3000 bytes
// trace_probe flush   one line, and has the library write it out
// trace_probe flood   10,000 lines from eight threads; prints by how many blocks the heap grew

#include <windows.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "EventWindow.h"
#include "LiveBlocks.h"
#include "ServerTrace.h"

namespace
{

constexpr DWORD kLastError = 4711;
constexpr int kThreads = 8;
constexpr int kLinesEach = 1250;

HWND g_window = nullptr;

HWND ProvideWindow() noexcept
{
    return g_window;
}

void TraceLines()
{
    for (int level = 0; level <= 3; level++)
    {
        SendTrace(
            static_cast<TL_SDK::TLLoggerLevel>(level), "probe.cpp", 10, "P::F", "level %d", level);
    }
    SendTrace(TL_SDK::TLLoggerLevelMilestone,
              "probe.cpp",
              11,
              "P::F",
              "%s",
              "##dtOIEx##process##exist##");
    const std::string body(3000 - std::string("[probe.cpp:12][P::F]:").size(), 'x');
    SendTrace(TL_SDK::TLLoggerLevelDetail, "probe.cpp", 12, "P::F", "%s", body.c_str());
}

void TraceFromThreads(int linesEach)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; thread++)
    {
        threads.emplace_back([thread, linesEach] {
            const std::string body(static_cast<std::size_t>(40 + 200 * thread),
                                   static_cast<char>('a' + thread));
            for (int i = 0; i < linesEach; i++)
            {
                SEND_TRACE(3, "P::F", "<%d:%d:%s>", thread, i, body.c_str());
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring mode = argc > 1 ? argv[1] : L"";
    g_window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetEventWindowProvider(ProvideWindow);
    StartServerTrace();
    if (mode == L"lines")
    {
        TraceLines();
    }
    else if (mode == L"flush")
    {
        SendTrace(TL_SDK::TLLoggerLevelDetail, "probe.cpp", 13, "P::F", "last");
        SetLastError(kLastError);
        FlushTrace(kTraceFlushMs);
        return GetLastError() == kLastError ? 0 : 1;
    }
    else if (mode == L"flood")
    {
        TraceFromThreads(1); // what a thread keeps for good is made here
        const long before = LiveBlocks();
        TraceFromThreads(kLinesEach);
        std::printf("%ld\n", LiveBlocks() - before);
    }
    StopServerTrace();
    return 0;
}
