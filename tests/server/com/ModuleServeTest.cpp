// The module while it serves: its apartment, its class objects, its message loop, and what its start and
// stop make and end around them.

#include <gtest/gtest.h>

#include "dtoiExApp.h"
#include "FakeMailSwitch.h"
#include "FrameWindow.h"
#include "MapiClient.h"
#include "MapiDataStore.h"
#include "ModuleObjects.h"
#include "Monitor.h"
#include "MonitorThread.h"
#include "TraceCapture.h"
#include "WorkThread.h"

namespace
{

/// The class registrations of one module, as the system is asked for them.
struct Registrations
{
    HRESULT secondAnswer = S_OK; ///< a failure is given instead of the second registration
    int asked = 0;
    DWORD context = 0;
    DWORD flags = 0;
    std::vector<DWORD> given;
    std::vector<DWORD> revoked;
};

Registrations* g_registrations = nullptr;

bool g_hasManagedCode = false; ///< the runtime of managed code is said to be loaded

using RegisterFunction = decltype(&CoRegisterClassObject);
using RevokeFunction = decltype(&CoRevokeClassObject);
using ModuleFunction = decltype(&GetModuleHandleW);

HRESULT WINAPI
RegisterClassSeen(REFCLSID clsid, IUnknown* factory, DWORD context, DWORD flags, DWORD* given);
HRESULT WINAPI RevokeClassSeen(DWORD given);
HMODULE WINAPI ModuleSeen(LPCWSTR name);

} // namespace

// The linker leads all calls of these system functions here (--wrap, by the names under
// which they are imported).
extern "C"
{
    extern const RegisterFunction __real___imp_CoRegisterClassObject;
    extern const RevokeFunction __real___imp_CoRevokeClassObject;
    extern const ModuleFunction __real___imp_GetModuleHandleW;
    extern const RegisterFunction __wrap___imp_CoRegisterClassObject;
    extern const RevokeFunction __wrap___imp_CoRevokeClassObject;
    extern const ModuleFunction __wrap___imp_GetModuleHandleW;
    const RegisterFunction __wrap___imp_CoRegisterClassObject = RegisterClassSeen;
    const RevokeFunction __wrap___imp_CoRevokeClassObject = RevokeClassSeen;
    const ModuleFunction __wrap___imp_GetModuleHandleW = ModuleSeen;
}

namespace
{

HRESULT WINAPI
RegisterClassSeen(REFCLSID clsid, IUnknown* factory, DWORD context, DWORD flags, DWORD* given)
{
    if (g_registrations != nullptr)
    {
        g_registrations->asked++;
        g_registrations->context = context;
        g_registrations->flags = flags;
        if (g_registrations->asked == 2 && FAILED(g_registrations->secondAnswer))
        {
            return g_registrations->secondAnswer;
        }
    }
    const HRESULT hr = __real___imp_CoRegisterClassObject(clsid, factory, context, flags, given);
    if (g_registrations != nullptr && SUCCEEDED(hr))
    {
        g_registrations->given.push_back(*given);
    }
    return hr;
}

HRESULT WINAPI RevokeClassSeen(DWORD given)
{
    if (g_registrations != nullptr)
    {
        g_registrations->revoked.push_back(given);
    }
    return __real___imp_CoRevokeClassObject(given);
}

HMODULE WINAPI ModuleSeen(LPCWSTR name)
{
    const bool isManaged =
        name != nullptr && CompareStringOrdinal(name, -1, L"Mscoree.dll", -1, TRUE) == CSTR_EQUAL;
    // Any module will do: only that there is one counts.
    return __real___imp_GetModuleHandleW(isManaged && g_hasManagedCode ? nullptr : name);
}

/// Called within the message loop of the module that the window's user data names.
LRESULT CALLBACK LoopProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_APP)
    {
        auto* const module =
            reinterpret_cast<CdtOIEx64Module*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        module->Lock();
        module->Unlock();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

/// Runs a module whose first message, WM_APP, goes to `proc`.
int RunWith(WNDPROC proc, CdtOIEx64Module& module)
{
    const HWND window = CreateWindowExW(
        0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(proc));
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&module));
    PostMessageW(window, WM_APP, 0, 0);
    const int exitCode = module.WinMain(0);
    DestroyWindow(window);
    return exitCode;
}

/// Runs a module whose first message locks and unlocks it.
int RunUntilUnlocked(CdtOIEx64Module& module)
{
    return RunWith(LoopProc, module);
}

TEST(Module, ItServesUntilTheLastUnlock)
{
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, PlainMain}};
    CdtOIEx64Module module(kServerRun, objects);
    module.SetDelayShutdown(false);
    EXPECT_EQ(RunUntilUnlocked(module), 0);
}

TEST(Module, ItServesUntilTheLastUnlockAlsoWithDelayedShutdown)
{
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, PlainMain}};
    CdtOIEx64Module module(kServerRun, objects);
    EXPECT_EQ(RunUntilUnlocked(module), 0);
}

TEST(Module, ItsClassIsRegisteredSuspendedForAllClientsAndRevokedAtTheEnd)
{
    Registrations seen;
    g_registrations = &seen;
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, PlainMain}};
    CdtOIEx64Module module(kServerRun, objects);
    module.SetDelayShutdown(false);
    EXPECT_EQ(RunUntilUnlocked(module), 0);
    g_registrations = nullptr;

    EXPECT_EQ(seen.asked, 1);
    EXPECT_EQ(seen.context, 4U); // local server
    EXPECT_EQ(seen.flags, 5U);   // multiple use, suspended
    EXPECT_EQ(seen.given.size(), 1U);
    EXPECT_EQ(seen.revoked, seen.given);
}

TEST(Module, AFailedClassRegistrationRevokesTheOthersAndIsTheExitCode)
{
    Registrations seen;
    seen.secondAnswer = CO_E_OBJISREG;
    g_registrations = &seen;
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, PlainMain},
                                      {&IID_IMapiDtClient, 106, RefuseToCreate, PlainMain}};
    CdtOIEx64Module module(kServerRun, objects);
    module.SetDelayShutdown(false);
    EXPECT_EQ(module.WinMain(0), CO_E_OBJISREG); // it never comes to serving
    g_registrations = nullptr;

    EXPECT_EQ(seen.given.size(), 1U);
    EXPECT_EQ(seen.revoked, seen.given);
}

TEST(Module, AnApartmentOfTheOtherKindIsPutUpWithBesideManagedCode)
{
    g_hasManagedCode = true;
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, PlainMain}};
    {
        CdtOIEx64Module module(kServerRun, objects);
        module.SetDelayShutdown(false);
        EXPECT_EQ(RunUntilUnlocked(module), 0);
    }
    // The module has left the apartment to whoever made it.
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    g_hasManagedCode = false;
}

TEST(Module, AnApartmentOfTheOtherKindIsRefused)
{
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    CdtOIEx64Module module(kServerRun);
    EXPECT_EQ(module.WinMain(0), RPC_E_CHANGED_MODE);
    CoUninitialize();
}

TEST(ModuleStart, MakesTheWindowAndTheWatchAndTheStopEndsBoth)
{
    const CFrameWindow frame;
    ASSERT_TRUE(frame.Stands());
    CdtOIEx64Module module(kServerRun);
    CClientMonitor::SetHost(&module);
    module.StartClasses();
    const HWND window = CClientMonitor::Window();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(GetWindowThreadProcessId(window, nullptr), GetCurrentThreadId());
    EXPECT_NE(g_hMonitorThread.load(), nullptr);
    EXPECT_EQ(g_bMonitorRun.load(), 1);

    module.StopClasses();
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_EQ(g_hMonitorThread.load(), nullptr);
    EXPECT_EQ(g_bMonitorRun.load(), 0);
    EXPECT_EQ(CClientMonitor::GetInstance(), nullptr);
}

/// Creates the one object as a client of this process would, and lets it go again.
LRESULT CALLBACK ClientProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_APP)
    {
        CComRef<IUnknown> object;
        EXPECT_EQ(
            CoCreateInstance(
                CLSID_MapiDtClient, nullptr, CLSCTX_LOCAL_SERVER, IID_IUnknown, object.PutVoid()),
            S_OK);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(ModuleStart, TheObjectGoesAtTheEndOfServingWhileTheMonitorStillStands)
{
    const CFrameWindow frame;
    SetMailSwitchFactory(MakeFakeMailSwitch);
    CdtOIEx64Module module(kServerRun);
    module.SetDelayShutdown(false);
    CClientMonitor::SetHost(&module);
    module.StartClasses();
    CTraceCapture trace;
    EXPECT_EQ(RunWith(ClientProc, module), 0);

    EXPECT_TRUE(trace.Has(2, "CMapiClient::FinalConstruct"));
    EXPECT_TRUE(trace.Has(2, "CMapiClient::FinalRelease"));
    EXPECT_NE(CClientMonitor::GetInstance(), nullptr);
    module.StopClasses();
    MapiDataStore().SetReleasing(0);
    SetMailSwitchFactory(nullptr);
}

TEST(ModuleStart, ARegistrationRunHasNeitherWindowNorWatch)
{
    CdtOIEx64Module module(L"dtOIEx64.exe /RegServer");
    CClientMonitor::SetHost(&module);
    module.StartClasses();
    EXPECT_EQ(CClientMonitor::Window(), nullptr);
    EXPECT_EQ(g_hMonitorThread.load(), nullptr);

    module.StopClasses();
    CClientMonitor::SetHost(nullptr);
}

} // namespace
