#include "MonitorFixture.h"

#include <cstring>

#include "AtMemory.h"
#include "MapiDataStore.h"

HRESULT CFakeClient::QueryInterface(REFIID iid, void** object) noexcept
{
    *object = nullptr;
    const bool marshals = IsEqualIID(iid, IID_IMarshal);
    if (!isUnknown || marshals || !IsEqualIID(iid, IID_IUnknown))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IUnknown*>(this);
    return S_OK;
}

void CFakeClient::Note(const std::wstring& line)
{
    fired.push_back(line);
    if (onFire)
    {
        onFire();
    }
}

void CFakeHost::EndProcess() noexcept
{
    SetEvent(processEnded);
}

MonitorTest::MonitorTest()
{
    MapiDataStore().SetReleasing(0);
    CClientMonitor::SetHost(&m_host);
    m_monitor = CClientMonitor::GetInstance();
    EXPECT_NE(m_monitor, nullptr);
    EXPECT_NE(CClientMonitor::Window(), nullptr);
    m_monitor->AddClient(&m_client);
}

MonitorTest::~MonitorTest()
{
    CClientMonitor::DeleteClientMonitorInstance();
    MapiDataStore().SetReleasing(0);
    while (TakeQuit())
    {
    }
    CloseHandle(m_host.processEnded);
}

LPARAM MonitorTest::WideBlock(const std::wstring& text)
{
    const std::size_t cb = (text.size() + 1) * sizeof(wchar_t);
    void* const block = at_mem_alloc(cb);
    std::memcpy(block, text.c_str(), cb);
    return reinterpret_cast<LPARAM>(block);
}

LPARAM MonitorTest::NarrowBlock(const std::string& text)
{
    void* const block = at_mem_alloc(text.size() + 1);
    std::memcpy(block, text.c_str(), text.size() + 1);
    return reinterpret_cast<LPARAM>(block);
}

LRESULT MonitorTest::Send(UINT message, WPARAM wParam, LPARAM lParam)
{
    return SendMessageW(CClientMonitor::Window(), message, wParam, lParam);
}

bool MonitorTest::TakeQuit()
{
    MSG message;
    return PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}
