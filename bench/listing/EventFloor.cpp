#include "EventFloor.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

#include "BareIdentity.h"
#include "BareRegistration.h"
#include "ChildProcess.h"
#include "ComOwners.h"
#include "EventSink.h"
#include "ProcessFigures.h"
#include "ServerProcesses.h"

namespace
{

constexpr const wchar_t* kBareFile = L"bare_server.exe";

/// Characters that come with the first events: they open the connection, as the product's answer to
/// Initialize has done before any listing.
constexpr UINT kFirstCharacters = 1;

/// Asks for one event; gives the characters that came.
std::size_t SendOne(IDispatch& bare, UINT characters)
{
    std::size_t received = 0;
    auto* const sink = new dtclient::CEventSink(
        [&received](const dtclient::ServerEvent& event) { received = event.text.size(); });
    VARIANTARG arguments[2] = {};
    arguments[0].vt = VT_UI4;
    arguments[0].ulVal = characters;
    arguments[1].vt = VT_DISPATCH;
    arguments[1].pdispVal = sink;
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    bare.Invoke(kBareSendEvent,
                IID_NULL,
                LOCALE_USER_DEFAULT,
                DISPATCH_METHOD,
                &parameters,
                nullptr,
                nullptr,
                nullptr);
    sink->Close();
    sink->Release();
    return received;
}

bool MeasureOnce(const std::wstring& path, UINT characters, EventCost& cost)
{
    dtclient::CComRef<IDispatch> bare;
    const HRESULT hr =
        CoCreateInstance(kBareClass, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, bare.PutVoid());
    const std::vector<DWORD> ids = ProcessesOf(kBareFile);
    if (FAILED(hr) || ids.size() != 1 || SendOne(*bare.Get(), kFirstCharacters) != kFirstCharacters)
    {
        std::fprintf(stderr, "The bare server fails: 0x%08lX.\n", static_cast<unsigned long>(hr));
        return false;
    }
    HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | SYNCHRONIZE, FALSE, ids.front());
    const CCpuMeter meter(process, path);
    const double start = NowMs();
    const std::size_t received = SendOne(*bare.Get(), characters);
    cost.wallMs = NowMs() - start;
    cost.cpuMs = meter.SpentMs();
    bare.Reset();
    WaitForSingleObject(process, kPatienceMs);
    CloseHandle(process);
    if (received != characters)
    {
        std::fprintf(stderr, "%zu characters came, not %u.\n", received, characters);
        return false;
    }
    return true;
}

} // namespace

std::optional<EventCost> MeasureEventFloor(std::size_t characters, unsigned runs)
{
    const std::wstring path = BuildPath(L"bench\\bare_server.exe");
    const CBareRegistration registration(path);
    std::vector<double> walls;
    double cpu = 0;
    for (unsigned run = 0; run < runs; ++run)
    {
        EventCost cost;
        if (!MeasureOnce(path, static_cast<UINT>(characters), cost))
        {
            return std::nullopt;
        }
        walls.push_back(cost.wallMs);
        cpu += cost.cpuMs;
    }
    std::sort(walls.begin(), walls.end());
    return EventCost{walls[walls.size() / 2], cpu / runs};
}

std::vector<double> MeasureEventMemory(std::size_t characters, unsigned events, unsigned step)
{
    const CBareRegistration registration(BuildPath(L"bench\\bare_server.exe"));
    std::vector<double> sizes;
    dtclient::CComRef<IDispatch> bare;
    const HRESULT hr =
        CoCreateInstance(kBareClass, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, bare.PutVoid());
    const std::vector<DWORD> ids = ProcessesOf(kBareFile);
    if (FAILED(hr) || ids.size() != 1)
    {
        std::fprintf(stderr, "The bare server fails: 0x%08lX.\n", static_cast<unsigned long>(hr));
        return sizes;
    }
    HANDLE process =
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE, FALSE, ids.front());
    for (unsigned event = 1; event <= events; ++event)
    {
        if (SendOne(*bare.Get(), static_cast<UINT>(characters)) != characters)
        {
            std::fprintf(stderr, "Event %u of the bare server did not come whole.\n", event);
            sizes.clear();
            break;
        }
        if (event == 1 || event % step == 0)
        {
            sizes.push_back(FiguresOf(process).workingSetKiB);
        }
    }
    bare.Reset();
    WaitForSingleObject(process, kPatienceMs);
    CloseHandle(process);
    return sizes;
}
