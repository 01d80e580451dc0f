// Trace lines a second, beside a bare write of the same bytes to a file. The program is built twice: once
// beside the trace library and once in a folder without it.

#include <windows.h>

#include <cstdio>
#include <string>

#include "EventWindow.h"
#include "Figures.h"
#include "Handle.h"
#include "ServerTrace.h"

namespace
{

constexpr int kRuns = 5;
constexpr int kLines = 5000;

HWND g_window = nullptr;

HWND ProvideWindow() noexcept
{
    return g_window;
}

double BareWrites()
{
    // The text that one line of TraceLines becomes.
    const std::string line = " [TraceBench.cpp:63][TraceLines]:PushPendingWork tasktype[10],\n";
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"dtb", 0, path);
    const CFileHandle file(CreateFileW(
        path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return BestRate(kRuns, kLines, [&file, &line](int operations) {
        for (int i = 0; i < operations; i++)
        {
            DWORD written = 0;
            WriteFile(file.Get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        }
    });
}

double TraceLines()
{
    return BestRate(kRuns, kLines, [](int operations) {
        for (int i = 0; i < operations; i++)
        {
            SEND_TRACE(3, "TraceLines", "PushPendingWork tasktype[%d]", 10);
        }
    });
}

} // namespace

int wmain()
{
    const double bare = BareWrites();
    StartServerTrace();
    const bool isLoaded = GetModuleHandleW(L"tlvtraceX64.dll") != nullptr;
    PrintFigure(isLoaded ? "lines without an event window, with the library"
                         : "lines without an event window, no library",
                TraceLines(),
                "bare write of the bytes",
                bare);
    g_window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetEventWindowProvider(ProvideWindow);
    PrintFigure(isLoaded ? "trace lines with the library" : "trace lines without the library",
                TraceLines(),
                "bare write of the bytes",
                bare);
    StopServerTrace();
    return 0;
}
