#include <gtest/gtest.h>

#include "dtoiExApp.h"
#include "FakeMailSwitch.h"
#include "MapiClient.h"
#include "MapiDataStore.h"
#include "ModuleObjects.h"
#include "TraceCapture.h"
#include "WorkThread.h"

namespace
{

using Lines = std::vector<std::string>;

bool TakeQuit()
{
    MSG message;
    return PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}

int g_starts = 0;
int g_stops = 0;

bool CountingMain(bool starting, const IMonitorHost&) noexcept
{
    (starting ? g_starts : g_stops)++;
    return true;
}

bool FailingMain(bool starting, const IMonitorHost&) noexcept
{
    return !starting;
}

TEST(Module, LocksAreCountedAndTraced)
{
    CdtOIEx64Module module(kServerRun);
    CTraceCapture trace;
    EXPECT_EQ(module.Lock(), 1);
    EXPECT_EQ(module.Lock(), 2);
    EXPECT_EQ(module.GetLockCount(), 2);
    EXPECT_EQ(module.Unlock(), 1);

    EXPECT_EQ(trace.Messages(),
              (Lines{"3 CtlvcOIExModule::Lock, m_nLockCnt:1",
                     "3 CtlvcOIExModule::Lock, m_nLockCnt:2",
                     "3 CtlvcOIExModule::Unlock, m_nLockCnt:[1]"}));
    EXPECT_FALSE(TakeQuit());
}

TEST(Module, TheLastUnlockEndsTheMessageLoop)
{
    CdtOIEx64Module module(kServerRun);
    module.SetDelayShutdown(false);
    module.Lock();
    CTraceCapture trace;
    EXPECT_EQ(module.Unlock(), 0);

    EXPECT_EQ(trace.Messages(),
              (Lines{"3 CtlvcOIExModule::Unlock, m_nLockCnt:[0]",
                     "3 CtlvcOIExModule::Unlock, post WM_QUIT message to main thread",
                     "3 PostThreadMessage return value:[1]"}));
    EXPECT_TRUE(TakeQuit());
}

TEST(Module, TheLastUnlockReleasesTheMailSystemFirst)
{
    SetMailSwitchFactory(MakeFakeMailSwitch);
    ASSERT_TRUE(EnsureWorkThread());
    TheFakeMail().freeLibCalls = 0;
    CdtOIEx64Module module(kServerRun);
    module.SetDelayShutdown(false);
    module.Lock();
    module.Unlock();

    EXPECT_EQ(TheFakeMail().freeLibCalls, 1);
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_TRUE(MapiDataStore().IsReleasing());
    EXPECT_TRUE(TakeQuit());
    MapiDataStore().SetReleasing(0);
    SetMailSwitchFactory(nullptr);
}

TEST(Module, WithDelayedShutdownTheLastUnlockPostsNothingItself)
{
    CdtOIEx64Module module(kServerRun);
    module.Lock();
    CTraceCapture trace;
    EXPECT_EQ(module.Unlock(), 0);

    EXPECT_EQ(trace.Messages(), (Lines{"3 CtlvcOIExModule::Unlock, m_nLockCnt:[0]"}));
    EXPECT_FALSE(TakeQuit());
}

TEST(Module, AFailedStartStepEndsTheProcessWithMinusOne)
{
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, FailingMain},
                                      {&CLSID_MapiDtClient, 106, RefuseToCreate, CountingMain}};
    g_starts = 0;
    CdtOIEx64Module module(kServerRun, objects);
    module.StartClasses();

    EXPECT_EQ(g_starts, 1);
    EXPECT_EQ(module.WinMain(0), -1);
}

TEST(Module, StartAndStopReachEveryClass)
{
    const ObjectMapEntry objects[] = {{&CLSID_MapiDtClient, 106, RefuseToCreate, CountingMain},
                                      {&CLSID_MapiDtClient, 106, RefuseToCreate, CountingMain}};
    g_starts = 0;
    g_stops = 0;
    CdtOIEx64Module module(kServerRun, objects);
    module.StartClasses();
    EXPECT_EQ(g_starts, 2);
    module.StopClasses();
    EXPECT_EQ(g_stops, 2);
}

TEST(Module, EachVerbMakesARegistrationRun)
{
    const auto registers = [](const wchar_t* commandLine) {
        return CdtOIEx64Module(commandLine).IsRegistrationRun();
    };
    EXPECT_TRUE(registers(L"dtOIEx64.exe /RegServer"));
    EXPECT_TRUE(registers(L"dtOIEx64.exe -UnregServer"));
    EXPECT_TRUE(registers(L"dtOIEx64.exe /regserverperuser"));
    EXPECT_TRUE(registers(L"dtOIEx64.exe /UnregServerPerUser"));
    EXPECT_FALSE(registers(L"dtOIEx64.exe /RegServerX"));
    EXPECT_FALSE(registers(L"C:\\-RegServer\\dtOIEx64.exe -Embedding"));
    EXPECT_FALSE(registers(kServerRun));
}

TEST(Module, TheMainThreadIsTheOneThatMadeIt)
{
    EXPECT_EQ(CdtOIEx64Module(kServerRun).MainThreadId(), GetCurrentThreadId());
}

TEST(Module, TheGlobalInterfaceTableIsMadeOnceAndHandedOutWithAReference)
{
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    {
        CdtOIEx64Module module(kServerRun);
        CComRef<IGlobalInterfaceTable> first;
        CComRef<IGlobalInterfaceTable> second;
        EXPECT_EQ(module.GetGITPtr(first.Put()), S_OK);
        EXPECT_EQ(module.GetGITPtr(second.Put()), S_OK);
        EXPECT_TRUE(first);
        EXPECT_EQ(first.Get(), second.Get());
        EXPECT_EQ(module.GetGITPtr(nullptr), E_POINTER);
    }
    CoUninitialize();
}

TEST(Module, ScriptsMayNameTheApplicationId)
{
    CdtOIEx64Module module(kServerRun);
    ScriptReplacements replacements;
    EXPECT_EQ(module.AddCommonRGSReplacements(replacements), S_OK);
    EXPECT_EQ(replacements,
              (ScriptReplacements{{L"APPID", L"{D0418E03-DEDF-40BE-8DCD-9189B3197D23}"}}));
}

TEST(Module, TheClassMapHoldsTheOneClass)
{
    ASSERT_EQ(g_objectMap.size(), 1U);
    EXPECT_EQ(*g_objectMap[0].clsid, CLSID_MapiDtClient);
    EXPECT_EQ(g_objectMap[0].registryScript, 106U);
}

} // namespace
