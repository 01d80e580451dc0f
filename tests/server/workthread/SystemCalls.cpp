#include "SystemCalls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "ProcAddress.h"

namespace
{

constexpr std::chrono::minutes kPatience{1};

std::atomic<CSystemCalls*> g_calls{nullptr};

/// The function of the system itself; by its plain name the program reaches what is patched in.
template <typename Fn>
Fn Real(const wchar_t* library, const char* name)
{
    return ProcAddress<Fn>(GetModuleHandleW(library), name);
}

const auto g_realTrim =
    Real<decltype(&SetProcessWorkingSetSize)>(L"kernel32.dll", "SetProcessWorkingSetSize");
const auto g_realWait =
    Real<decltype(&MsgWaitForMultipleObjects)>(L"user32.dll", "MsgWaitForMultipleObjects");
const auto g_realThread = Real<decltype(&CreateThread)>(L"kernel32.dll", "CreateThread");

} // namespace

struct SystemCallHooks
{
    static BOOL WINAPI Trim(HANDLE process, SIZE_T minimum, SIZE_T maximum)
    {
        if (CSystemCalls* const calls = g_calls.load())
        {
            calls->NoteTrim({process, minimum, maximum, GetCurrentThreadId()});
        }
        return g_realTrim(process, minimum, maximum);
    }

    static DWORD WINAPI
    Wait(DWORD count, const HANDLE* handles, BOOL waitsForAll, DWORD timeoutMs, DWORD wakeMask)
    {
        if (CSystemCalls* const calls = g_calls.load())
        {
            calls->NoteWait(
                GetCurrentThreadId(),
                {count, count != 0 ? handles[0] : nullptr, waitsForAll, timeoutMs, wakeMask});
        }
        return g_realWait(count, handles, waitsForAll, timeoutMs, wakeMask);
    }

    static HANDLE WINAPI Thread(SECURITY_ATTRIBUTES* security,
                                SIZE_T cbStack,
                                LPTHREAD_START_ROUTINE start,
                                void* parameter,
                                DWORD flags,
                                DWORD* threadId)
    {
        const CSystemCalls* const calls = g_calls.load();
        if (calls != nullptr && calls->threadError != 0)
        {
            SetLastError(calls->threadError);
            return nullptr;
        }
        return g_realThread(security, cbStack, start, parameter, flags, threadId);
    }
};

CSystemCalls::CSystemCalls()
    : m_trimImport("SetProcessWorkingSetSize", &SystemCallHooks::Trim),
      m_waitImport("MsgWaitForMultipleObjects", &SystemCallHooks::Wait),
      m_threadImport("CreateThread", &SystemCallHooks::Thread)
{
    g_calls = this;
}

CSystemCalls::~CSystemCalls()
{
    g_calls = nullptr;
}

std::vector<CSystemCalls::Trim> CSystemCalls::TrimsOnce(std::size_t count)
{
    std::unique_lock hold(m_notesLock);
    EXPECT_TRUE(m_noted.wait_for(hold, kPatience, [&] { return m_trims.size() >= count; }))
        << "only " << m_trims.size() << " trims came";
    return m_trims;
}

std::size_t CSystemCalls::WaitsOf(DWORD threadId)
{
    const std::scoped_lock hold(m_notesLock);
    return WaitsLocked(threadId).begun;
}

CSystemCalls::Wait CSystemCalls::NextWaitOf(DWORD threadId, std::size_t count)
{
    std::unique_lock hold(m_notesLock);
    EXPECT_TRUE(m_noted.wait_for(hold, kPatience, [&] {
        return WaitsLocked(threadId).begun > count;
    })) << "the thread did not come back to its wait";
    return WaitsLocked(threadId).last;
}

void CSystemCalls::NoteTrim(const Trim& trim)
{
    if (onTrim != nullptr)
    {
        onTrim(trimContext);
    }
    const std::scoped_lock hold(m_notesLock);
    m_trims.push_back(trim);
    m_noted.notify_all();
}

void CSystemCalls::NoteWait(DWORD threadId, const Wait& wait)
{
    const std::scoped_lock hold(m_notesLock);
    ThreadWaits& waits = WaitsLocked(threadId);
    waits.begun++;
    waits.last = wait;
    m_noted.notify_all();
}

CSystemCalls::ThreadWaits& CSystemCalls::WaitsLocked(DWORD threadId)
{
    for (ThreadWaits& waits : m_waits)
    {
        if (waits.threadId == threadId)
        {
            return waits;
        }
    }
    m_waits.push_back({threadId, 0, {}});
    return m_waits.back();
}
