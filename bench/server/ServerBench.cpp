// What the server costs from its client's side, each figure beside a floor measured in the same run:
// a bare COM server that does nothing, and the cheapest call that goes between the same processes.
#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <ocidl.h>
#include <psapi.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BareIdentity.h"
#include "BareRegistration.h"
#include "ChildProcess.h"
#include "ClientFrame.h"
#include "ComOwners.h"
#include "RoundTripFigures.h"
#include "ServerProcesses.h"
#include "ServerSession.h"

namespace
{
using Clock = std::chrono::steady_clock;

constexpr int kActivations = 5;
constexpr int kCalls = 2000;
constexpr int kEvents = 500;
constexpr int kRequests = 1000;
constexpr std::chrono::seconds kTimeout(60);

double MicrosecondsOf(const std::function<void()>& action)
{
    const Clock::time_point start = Clock::now();
    action();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double MedianOf(int times, const std::function<void()>& action)
{
    std::vector<double> measured;
    for (int index = 0; index < times; ++index)
    {
        measured.push_back(MicrosecondsOf(action));
    }
    return dtclient::SpreadOf(std::move(measured)).median;
}

void WaitForEndOf(const std::wstring& fileName)
{
    for (const DWORD id : ProcessesOf(fileName))
    {
        static_cast<void>(CWatchedProcess(id).WaitForEnd());
    }
}

// Units: kibibytes.
struct Memory
{
    double workingSet = 0;
    double privateBytes = 0;
};

Memory MemoryOf(const std::wstring& fileName)
{
    Memory memory;
    for (const DWORD id : ProcessesOf(fileName))
    {
        HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id);
        PROCESS_MEMORY_COUNTERS counters{};
        if (GetProcessMemoryInfo(process, &counters, sizeof counters) != 0)
        {
            memory.workingSet = static_cast<double>(counters.WorkingSetSize) / 1024;
            memory.privateBytes = static_cast<double>(counters.PagefileUsage) / 1024;
        }
        CloseHandle(process);
    }
    return memory;
}

void Print(const char* what, double ours, double floor, const char* unit, const char* floorIs)
{
    std::printf("%-34s %10.1f %s   floor %10.1f %s (%s), %.2f times\n",
                what,
                ours,
                unit,
                floor,
                unit,
                floorIs,
                floor > 0 ? ours / floor : 0.0);
}

struct BareFigures
{
    double activationUs = 0;
    double callUs = 0;
    Memory memory;
};

BareFigures MeasureBareServer()
{
    const CBareRegistration registration(BuildPath(L"bench\\bare_server.exe"));
    BareFigures figures;
    std::vector<double> activations;
    for (int index = 0; index < kActivations; ++index)
    {
        dtclient::CComRef<IPersist> bare;
        HRESULT hr = S_OK;
        activations.push_back(MicrosecondsOf([&bare, &hr] {
            hr = CoCreateInstance(
                kBareClass, nullptr, CLSCTX_LOCAL_SERVER, IID_IPersist, bare.PutVoid());
        }));
        if (FAILED(hr))
        {
            std::fprintf(stderr,
                         "The bare server does not start: 0x%08lX.\n",
                         static_cast<unsigned long>(hr));
            return figures;
        }
        if (index == 0)
        {
            CLSID clsid{};
            figures.callUs = MedianOf(kCalls, [&bare, &clsid] { bare->GetClassID(&clsid); });
            figures.memory = MemoryOf(L"bare_server.exe");
        }
        bare.Reset();
        WaitForEndOf(L"bare_server.exe");
    }
    figures.activationUs = dtclient::SpreadOf(std::move(activations)).median;
    return figures;
}

struct ServerFigures
{
    bool complete = false;
    double activationUs = 0;
    double emptyMethodUs = 0;
    double systemCallUs = 0;
    double callToEventUs = 0;
    Memory atStart;
    Memory afterRequests;
};

bool MeasureOneActivation(ServerFigures& figures, std::vector<double>& activations, bool withCalls)
{
    dtclient::CServerSession session;
    bool opened = false;
    activations.push_back(MicrosecondsOf([&] { opened = session.Open().IsDone(); }));
    if (!opened)
    {
        return false;
    }
    if (withCalls)
    {
        figures.atStart = MemoryOf(L"dtOIEx64.exe");
        figures.emptyMethodUs = MedianOf(kCalls, [&session] { session.EmptyCall(); });

        dtclient::CComRef<ISupportErrorInfo> support;
        if (FAILED(session.Object()->QueryInterface(IID_ISupportErrorInfo, support.PutVoid())))
        {
            return false;
        }
        figures.systemCallUs =
            MedianOf(kCalls, [&support] { support->InterfaceSupportsErrorInfo(IID_IUnknown); });

        // Without a mail system the answer is empty: what is left is the road there and back.
        const dtclient::ListWindow window{{2026, 11, 1, 0, 0, 0}, {2026, 11, 2, 0, 0, 0}};
        std::wstring document;
        const auto list = [&] { static_cast<void>(session.List(window, kTimeout, document)); };
        figures.callToEventUs = MedianOf(kEvents, list);
        for (int request = kEvents; request < kRequests; ++request)
        {
            list();
        }
        figures.afterRequests = MemoryOf(L"dtOIEx64.exe");
    }
    return true;
}

ServerFigures MeasureServer()
{
    const CRegisteredServer server(BuildPath(L"dtOIEx64.exe"));
    ServerFigures figures;
    std::vector<double> activations;
    for (int index = 0; index < kActivations; ++index)
    {
        if (!MeasureOneActivation(figures, activations, index == 0))
        {
            return figures;
        }
        WaitForEndOf(L"dtOIEx64.exe");
    }
    figures.activationUs = dtclient::SpreadOf(std::move(activations)).median;
    figures.complete = true;
    return figures;
}
} // namespace

int wmain()
{
    // The desktop of the session comes up with the first window: not a cost of either server.
    dtclient::CClientFrame frame;
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) || FAILED(frame.Create()))
    {
        return 1;
    }
    const BareFigures bare = MeasureBareServer();
    const ServerFigures server = MeasureServer();
    CoUninitialize();
    if (!server.complete)
    {
        std::fputs("The server cannot be measured: it does not start.\n", stderr);
        return 1;
    }
    std::printf(
        "Server, medians of %d activations, %d calls, %d events:\n", kActivations, kCalls, kEvents);
    Print("activation, with sink",
          server.activationUs / 1000,
          bare.activationUs / 1000,
          "ms",
          "a bare COM server");
    Print("empty method, dual interface",
          server.emptyMethodUs,
          server.systemCallUs,
          "us",
          "a system interface, same processes");
    Print("empty method, dual interface",
          server.emptyMethodUs,
          bare.callUs,
          "us",
          "a bare COM server's call");
    Print("call to event",
          server.callToEventUs,
          2 * server.emptyMethodUs,
          "us",
          "an empty call each way");
    Print("working set after start",
          server.atStart.workingSet,
          bare.memory.workingSet,
          "KiB",
          "a bare COM server");
    Print("working set after 1,000 requests",
          server.afterRequests.workingSet,
          server.atStart.workingSet,
          "KiB",
          "the same after start");
    Print("private bytes after 1,000 requests",
          server.afterRequests.privateBytes,
          server.atStart.privateBytes,
          "KiB",
          "the same after start");
    return 0;
}
