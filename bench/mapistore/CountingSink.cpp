#include "CountingSink.h"

HRESULT CCountingSink::QueryInterface(REFIID iid, void** out)
{
    if (iid != IID_IUnknown && iid != IID_IMAPIAdviseSink)
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    *out = this;
    return S_OK;
}

ULONG CCountingSink::OnNotify(ULONG count, NOTIFICATION*)
{
    const std::scoped_lock hold(m_lock);
    QueryPerformanceCounter(&m_last);
    if (m_count == 0)
    {
        m_first = m_last;
    }
    m_count += count;
    m_came.notify_all();
    return 0;
}

double CCountingSink::WaitFor(std::size_t count)
{
    std::unique_lock hold(m_lock);
    m_came.wait(hold, [&] { return m_count >= count; });
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(m_last.QuadPart - m_first.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}
