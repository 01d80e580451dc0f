#include "TraceQueue.h"

#include <array>
#include <cstdio>
#include <utility>

namespace tlvtrace
{
namespace
{
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kMaxLossNote = 120;

class CExclusive
{
public:
    explicit CExclusive(SRWLOCK& lock) : m_lock(lock) { AcquireSRWLockExclusive(&m_lock); }
    CExclusive(const CExclusive&) = delete;
    CExclusive& operator=(const CExclusive&) = delete;
    ~CExclusive() { ReleaseSRWLockExclusive(&m_lock); }

private:
    SRWLOCK& m_lock;
};

/// Whether there is an end of a line in the text. Looks at all of it, which the compiler can do for many
/// letters at once.
bool HasLineEnd(std::string_view text)
{
    bool has = false;
    for (const char letter : text)
    {
        has |= (letter == '\n') | (letter == '\r');
    }
    return has;
}

void AppendOneLine(std::string& text, std::string_view head, std::string_view body)
{
    text += head;
    if (!HasLineEnd(body))
    {
        text += body;
        text += kLineEnd;
        return;
    }
    for (const char letter : body)
    {
        if (letter == '\n')
        {
            text += "\\n";
        }
        else if (letter == '\r')
        {
            text += "\\r";
        }
        else
        {
            text += letter;
        }
    }
    text += kLineEnd;
}

void AppendLossNote(std::string& text, std::uint64_t lost)
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    std::array<char, kMaxLossNote> note{};
    const int length = std::snprintf(
        note.data(),
        note.size(),
        "%04u-%02u-%02u %02u:%02u:%02u.%03u %lu:%lu W - - %llu trace lines lost here: "
        "the disk was too slow\r\n",
        now.wYear,
        now.wMonth,
        now.wDay,
        now.wHour,
        now.wMinute,
        now.wSecond,
        now.wMilliseconds,
        GetCurrentProcessId(),
        GetCurrentThreadId(),
        lost);
    if (length > 0 && static_cast<std::size_t>(length) < note.size())
    {
        text.append(note.data(), static_cast<std::size_t>(length));
    }
}
} // namespace

CTraceQueue::CTraceQueue(ITraceStore& store, const QueueLimits& limits)
    : m_store(store), m_limits(limits)
{
    m_filling.text.reserve(m_limits.cbBuffer + kMaxLossNote);
    m_writing.text.reserve(m_limits.cbBuffer + kMaxLossNote);
}

CTraceQueue::~CTraceQueue()
{
    Stop();
}

bool CTraceQueue::Start()
{
    m_thread = CreateThread(nullptr, 0, WriterProc, this, 0, nullptr);
    return m_thread != nullptr;
}

void CTraceQueue::Stop() noexcept
{
    if (m_thread == nullptr)
    {
        return;
    }
    {
        const CExclusive hold(m_lock);
        m_stopping = true;
    }
    WakeAllConditionVariable(&m_work);
    WaitForSingleObject(m_thread, INFINITE);
    CloseHandle(m_thread);
    m_thread = nullptr;
}

bool CTraceQueue::HasRoom(std::size_t cbLine) const
{
    return m_filling.text.size() + cbLine <= m_limits.cbBuffer;
}

// Called and left with m_lock held.
bool CTraceQueue::WaitForRoom(std::size_t cbLine) noexcept
{
    const ULONGLONG end = GetTickCount64() + m_limits.fullWaitMs;
    while (!m_stalled && !HasRoom(cbLine))
    {
        const ULONGLONG now = GetTickCount64();
        if (now >= end ||
            SleepConditionVariableSRW(&m_progress, &m_lock, static_cast<DWORD>(end - now), 0) == 0)
        {
            // One caller has waited for all: until the disk moves nobody waits again.
            m_stalled = !HasRoom(cbLine);
            break;
        }
    }
    return HasRoom(cbLine);
}

void CTraceQueue::Add(std::string_view head, std::string_view body, bool hurry) noexcept
{
    // Every letter of the body may become two.
    const std::size_t cbMost = head.size() + 2 * body.size() + kLineEnd.size();
    bool wake = false;
    {
        const CExclusive hold(m_lock);
        if (!HasRoom(cbMost) && !WaitForRoom(cbMost))
        {
            ++m_untold;
            ++m_lost;
            return;
        }
        AppendOneLine(m_filling.text, head, body);
        ++m_filling.lines;
        // The writer sleeps for a first line, and then lets others gather.
        const bool fills = m_filling.text.size() >= m_limits.cbBuffer / 2;
        wake = m_filling.lines == 1 || ((hurry || fills) && !m_hurry);
        m_hurry = m_hurry || hurry || fills;
    }
    if (wake)
    {
        WakeConditionVariable(&m_work);
    }
}

// Called and left with m_lock held.
void CTraceQueue::Gather() noexcept
{
    const ULONGLONG end = GetTickCount64() + m_limits.gatherMs;
    while (!m_stopping && !m_hurry)
    {
        const ULONGLONG now = GetTickCount64();
        if (now >= end ||
            SleepConditionVariableSRW(&m_work, &m_lock, static_cast<DWORD>(end - now), 0) == 0)
        {
            return;
        }
    }
}

DWORD WINAPI CTraceQueue::WriterProc(void* self) noexcept
{
    static_cast<CTraceQueue*>(self)->WriteLoop();
    return 0;
}

void CTraceQueue::WriteLoop() noexcept
{
    for (;;)
    {
        std::uint64_t lost = 0;
        {
            const CExclusive hold(m_lock);
            while (m_filling.lines == 0 && !m_stopping)
            {
                SleepConditionVariableSRW(&m_work, &m_lock, INFINITE, 0);
            }
            if (m_filling.lines == 0)
            {
                return;
            }
            Gather();
            std::swap(m_filling, m_writing);
            m_busy = true;
            m_hurry = false;
            lost = std::exchange(m_untold, 0);
        }
        WakeAllConditionVariable(&m_progress);
        WriteBatch(lost);
    }
}

// The buffer m_writing belongs to the caller.
void CTraceQueue::WriteBatch(std::uint64_t lost) noexcept
{
    if (lost != 0)
    {
        AppendLossNote(m_writing.text, lost);
    }
    const bool written = m_store.Append(m_writing.text);
    {
        const CExclusive hold(m_lock);
        if (!written)
        {
            m_untold += m_writing.lines + lost;
            m_lost += m_writing.lines;
        }
        m_writing.text.clear();
        m_writing.lines = 0;
        m_busy = false;
        m_stalled = false;
    }
    WakeAllConditionVariable(&m_progress);
}

bool CTraceQueue::WaitUntilWritten(DWORD timeoutMs) noexcept
{
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    const CExclusive hold(m_lock);
    while (m_busy || m_filling.lines != 0)
    {
        if (m_filling.lines != 0 && !m_hurry)
        {
            m_hurry = true;
            WakeConditionVariable(&m_work);
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end ||
            SleepConditionVariableSRW(&m_progress, &m_lock, static_cast<DWORD>(end - now), 0) == 0)
        {
            return !m_busy && m_filling.lines == 0;
        }
    }
    return true;
}

void CTraceQueue::DrainAtExit() noexcept
{
    // A thread that the system has ended may have held the lock; then its lines are gone.
    if (TryAcquireSRWLockExclusive(&m_lock) == 0)
    {
        return;
    }
    // The writer was ended in the middle: it may have written its lines, and not come to say so.
    if (m_busy && !m_store.Holds(m_writing.text))
    {
        static_cast<void>(m_store.Append(m_writing.text));
    }
    if (m_untold != 0)
    {
        AppendLossNote(m_filling.text, m_untold);
    }
    if (!m_filling.text.empty())
    {
        static_cast<void>(m_store.Append(m_filling.text));
    }
    ReleaseSRWLockExclusive(&m_lock);
}

std::uint64_t CTraceQueue::LostLines() noexcept
{
    const CExclusive hold(m_lock);
    return m_lost;
}
} // namespace tlvtrace
