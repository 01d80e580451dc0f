// A program with a work thread in a state that a test program cannot get rid of again. Prints its trace.
//
// work_probe no-semaphore   the semaphore's name is taken by something else
// work_probe hung-at-exit   the process ends while the work thread hangs in a task

#include <windows.h>

#include <cstdio>
#include <string>

#include "EventWindow.h"
#include "MailScript.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr const wchar_t* kSemaphoreName = L"dtOIEx-aWorkThread-Semaphore-WorkPending-x64";

HANDLE g_heartbeat = nullptr;

class CPrintingRoute final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view line) noexcept override
    {
        Print(line);
        SetEvent(g_heartbeat);
    }
    void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept override
    {
        if (level <= TL_SDK::TLLoggerLevelWarning)
        {
            Print(line);
        }
    }

private:
    static void Print(std::string_view line) noexcept
    {
        const std::size_t message = line.find("]:");
        std::printf("%s\n", std::string(line.substr(message + 2)).c_str());
        std::fflush(stdout);
    }
};

void WithoutSemaphore(CMailScript& script)
{
    CreateEventW(nullptr, TRUE, FALSE, kSemaphoreName);
    EnsureWorkThread();
    const CWorkThreadUse work;
    work->AddInitWork(1, 1, 1);
    WaitForSingleObject(g_heartbeat, INFINITE); // the loop has gone round
    std::printf("calls %d\n", static_cast<int>(script.Calls().size()));
}

void HungAtExit(CMailScript& script)
{
    static HANDLE s_running = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    script.listAppointment = [](WString&) -> ULONG {
        SetEvent(s_running);
        Sleep(INFINITE);
        return 0;
    };
    EnsureWorkThread();
    {
        const CWorkThreadUse work;
        work->AddInitWork(1, 1, 1);
        work->AddListAppointmentWork({}, {}, 2);
    }
    WaitForSingleObject(s_running, INFINITE);
    DestroyWorkThreadAtExit();
    const std::vector<std::string> calls = script.Calls();
    std::printf(
        "%s, pointer %s\n", calls.back().c_str(), g_pWorkThread.load() == nullptr ? "null" : "set");
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring mode = argc > 1 ? argv[1] : L"";
    g_heartbeat = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CPrintingRoute route;
    SetTraceRoute(&route);
    CMailScript script;
    if (mode == L"no-semaphore")
    {
        WithoutSemaphore(script);
    }
    else if (mode == L"hung-at-exit")
    {
        HungAtExit(script);
    }
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0);
    return 0;
}
