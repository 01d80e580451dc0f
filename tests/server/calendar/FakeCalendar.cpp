#include "FakeCalendar.h"

#include <atomic>
#include <cstring>

#include "DateTexts.h"
#include "PlatformDates.h"

namespace
{

std::atomic<LONG> g_liveFakes{0};

} // namespace

LONG LiveFakes() noexcept
{
    return g_liveFakes;
}

void CountFake(LONG change) noexcept
{
    g_liveFakes += change;
}

HRESULT CFakeScript::Next(const std::string& method)
{
    std::deque<HRESULT>& statuses = m_statuses[method];
    if (statuses.empty())
    {
        return S_OK;
    }
    const HRESULT next = statuses.front();
    statuses.pop_front();
    return next;
}

FILETIME Moment(const std::string& text)
{
    FILETIME moment{};
    static_cast<void>(dates::SystemTimeToFileTime(TimeOf(text), moment));
    return moment;
}

ULONG CFakeStream::Release()
{
    const ULONG left = --m_references;
    if (left == 0)
    {
        delete this;
    }
    return left;
}

HRESULT CFakeStream::Read(void* buffer, ULONG cb, ULONG* cbRead)
{
    const std::size_t count = std::min<std::size_t>(cb, m_bytes.size() - m_at);
    if (count != 0)
    {
        std::memcpy(buffer, m_bytes.data() + m_at, count);
    }
    m_at += count;
    m_reads.push_back(std::to_string(cb) + " gave " + std::to_string(count));
    *cbRead = static_cast<ULONG>(count);
    return S_OK;
}

HRESULT CFakeStream::Stat(STATSTG* facts, DWORD)
{
    std::memset(facts, 0, sizeof(*facts));
    facts->cbSize.QuadPart = m_bytes.size();
    return S_OK;
}
