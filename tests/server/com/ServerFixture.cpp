#include "ServerFixture.h"

#include <ocidl.h>

#include <atomic>

#include "Bstr.h"
#include "MapiClient.h"
#include "MapiDataStore.h"
#include "Monitor.h"
#include "MonitorThread.h"
#include "WorkThread.h"

namespace
{

std::atomic<bool> g_noWorkThread{false};

} // namespace

// The linker leads every call of EnsureWorkThread here (--wrap, by its linker name).
extern "C"
{
    bool __real__Z16EnsureWorkThreadv() noexcept;
    bool __wrap__Z16EnsureWorkThreadv() noexcept;
}

bool __wrap__Z16EnsureWorkThreadv() noexcept
{
    return !g_noWorkThread && __real__Z16EnsureWorkThreadv();
}

CNoWorkThread::CNoWorkThread() noexcept
{
    g_noWorkThread = true;
}

CNoWorkThread::~CNoWorkThread()
{
    g_noWorkThread = false;
}

ServerTest::ServerTest()
{
    FakeMail& mail = TheFakeMail();
    mail.mailTypeInForce = MailTypeOutlook;
    mail.initAnswer = 0;
    mail.initCalls = 0;
    mail.freeLibCalls = 0;
    mail.clearCalls = 0;
    mail.lastMailType = 0;
    mail.lastInitType = 99;
    SetMailSwitchFactory(MakeFakeMailSwitch);
    MapiDataStore().SetReleasing(0);
    CClientMonitor::SetHost(&m_module);
    CClientMonitor::GetInstance();
}

ServerTest::~ServerTest()
{
    ReleaseClient();
    ReleaseWorkThread(false);
    AskClientMonitorThreadToStop();
    CClientMonitor::DeleteClientMonitorInstance();
    CloseClientMonitorThread(INFINITE);
    MapiDataStore().SetReleasing(0);
    SetMailSwitchFactory(nullptr);
}

void ServerTest::CreateClient()
{
    CComRef<IUnknown> unknown;
    ASSERT_EQ(CMapiClient::Create(m_module, unknown.Put()), S_OK);
    m_client = CComRef<IMapiDtClient>::Query(unknown.Get(), IID_IMapiDtClient);
    const auto container = CComRef<IConnectionPointContainer>::Query(unknown.Get());
    CComRef<IConnectionPoint> point;
    ASSERT_EQ(container->FindConnectionPoint(DIID__IMapiDtClientEvents, point.Put()), S_OK);
    DWORD cookie = 0;
    ASSERT_EQ(point->Advise(&m_sink, &cookie), S_OK);
}

void ServerTest::ReleaseClient()
{
    m_client.Reset();
}

void ServerTest::PumpUntilEvents(std::size_t count)
{
    MSG message;
    while (m_sink.calls.size() < count && GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        DispatchMessageW(&message);
    }
}

void ServerTest::PumpWaiting()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
    {
        DispatchMessageW(&message);
    }
}

void ServerTest::DrainWork()
{
    // One task runs at a time, in the order of the queue: an Init of our own comes behind all others.
    static ULONG s_marker = 1000;
    WorkTask task;
    task.eTaskType = TaskType::InitMapi;
    task.Param1 = TaskHalves(MailTypeOutlook, ++s_marker);
    {
        const CWorkThreadUse work;
        work->AddWork(task);
    }
    while (TheFakeMail().lastInitType != s_marker)
    {
        WaitForSingleObject(TheFakeMail().called.Get(), INFINITE);
    }
}

HRESULT
ServerTest::Initialize(int mailType, const wchar_t* initType, const wchar_t* traceLocation)
{
    const CBstr location =
        traceLocation != nullptr ? CBstr(std::wstring_view(traceLocation)) : CBstr();
    const CBstr type = initType != nullptr ? CBstr(std::wstring_view(initType)) : CBstr();
    return m_client->Initialize(static_cast<TLVOI_MAILTYPE>(mailType), location.Get(), type.Get());
}

HRESULT ServerTest::ReleaseApp(int hibernate)
{
    return m_client->ReleaseApp(static_cast<VARIANT_BOOL>(hibernate));
}

void ServerTest::BringUp()
{
    const std::size_t before = m_sink.calls.size();
    EXPECT_EQ(Initialize(1, L"CALENDARING"), S_OK);
    PumpUntilEvents(before + 1);
}
