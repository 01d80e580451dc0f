// A program that dies on purpose, as the server would: with the work thread, the event window and the
// crash capture of the server. The first argument says how; what it prints tells the test what to look
// for in the dump.

#include <windows.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "CrashCapture.h"
#include "CrashFiles.h"
#include "DebuggerText.h"
#include "EventWindow.h"
#include "MailScript.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr DWORD kOwnCode = 0xE1234567;

HWND g_window = nullptr;

HWND ProvideWindow() noexcept
{
    return g_window;
}

void Release() noexcept
{
    ReleaseWorkThread(false);
}

/// Null would do on Windows, but some Wine set-ups map that page.
volatile int* ForbiddenAddress()
{
    return static_cast<int*>(VirtualAlloc(nullptr, 4096, MEM_RESERVE, PAGE_NOACCESS));
}

void Fault()
{
    *ForbiddenAddress() = 1;
}

void Raise()
{
    RaiseException(kOwnCode, 0, 0, nullptr);
}

void Throw()
{
    throw std::runtime_error("nobody catches this");
}

void ThrowThroughNoexcept() noexcept
{
    Throw();
}

void PrintThread()
{
    std::printf("%lu\n", GetCurrentThreadId());
    std::fflush(stdout);
}

/// Dies when the filter writes its line.
class CFaultingRoute final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view /*line*/) noexcept override {}
    void Write(TL_SDK::TLLoggerLevel /*level*/, std::string_view line) noexcept override
    {
        if (line.find("CRASH!!!") != std::string_view::npos)
        {
            Raise();
        }
    }
};

bool IsFile(const wchar_t* name) noexcept
{
    CrashPath path;
    FindCrashDirectory(path);
    return GetFileAttributesW(path.With(name)) != INVALID_FILE_ATTRIBUTES;
}

/// Prints what the filter tells, in the order in which it does.
class CTellingRoute final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view /*line*/) noexcept override {}
    void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept override
    {
        for (const std::string& text : m_debugger.Texts())
        {
            std::printf("debugger %s\n", text.c_str());
        }
        const std::string message(line.substr(line.find("]:") + 2));
        std::printf("%d %s\n", static_cast<int>(level), message.c_str());
    }
    void Flush(unsigned timeoutMs) noexcept override
    {
        std::printf("flush %u %s the copy\n",
                    timeoutMs,
                    IsFile(L"strato_mapi_last_crash.txt") ? "behind" : "before");
    }

private:
    CDebuggerText m_debugger;
};

void TellRelease() noexcept
{
    std::printf("release %s the dump\n", IsFile(L"dtOIEx64.exe.300.dmp") ? "behind" : "before");
    std::fflush(stdout);
}

void TakeFilterFromLibrary()
{
    const HMODULE library = LoadLibraryW(L"later_filter.dll");
    const auto take = reinterpret_cast<void* (*)()>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "TakeFilter")));
    std::printf("%s\n", take() == nullptr ? "null" : "a filter");
    std::fflush(stdout);
}

void RunOnWorker(CMailScript& script, void (*die)())
{
    script.listAppointment = [die](WString&) -> ULONG {
        PrintThread();
        die();
        return 0;
    };
    EnsureWorkThread();
    {
        const CWorkThreadUse work;
        work->AddInitWork(1, MailTypeOutlook, InitTypeCalendar);
        work->AddListAppointmentWork({}, {}, 2);
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        DispatchMessageW(&message);
    }
}

void DieAs(const std::wstring& mode)
{
    CMailScript script;
    CFaultingRoute route;
    if (mode == L"told-fault")
    {
        CTellingRoute telling;
        SetTraceRoute(&telling);
        Fault();
    }
    else if (mode == L"worker-fault")
    {
        RunOnWorker(script, Fault);
    }
    else if (mode == L"worker-throw")
    {
        RunOnWorker(script, Throw);
    }
    else if (mode == L"worker-release-fault")
    {
        script.clearDataStore = Fault;
        RunOnWorker(script, Raise);
    }
    else if (mode == L"filter-fault")
    {
        SetTraceRoute(&route);
        RunOnWorker(script, Fault);
    }
    else if (mode == L"later-filter")
    {
        TakeFilterFromLibrary();
        PrintThread();
        Fault();
    }
    else if (mode == L"main-fault")
    {
        EnsureWorkThread();
        PrintThread();
        Fault();
    }
    else if (mode == L"main-throw")
    {
        PrintThread();
        Throw();
    }
    else if (mode == L"noexcept-throw")
    {
        PrintThread();
        ThrowThroughNoexcept();
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring mode = argc > 1 ? argv[1] : L"";
    g_window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    SetEventWindowProvider(ProvideWindow);
    InstallCrashCapture(mode == L"told-fault" ? TellRelease : Release);
    DieAs(mode);
    return 99;
}
