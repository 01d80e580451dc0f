#pragma once

#include <windows.h>

#include <condition_variable>
#include <mutex>
#include <vector>

#include "PatchedImport.h"

/// What this program asks of the system, seen while one of these lives. One at a time.
///
/// Thread: calls of any thread are seen. Made before the threads that it watches and destroyed after
///         their end.
class CSystemCalls final
{
public:
    /// One call of SetProcessWorkingSetSize.
    struct Trim
    {
        HANDLE process;
        SIZE_T minimum;
        SIZE_T maximum;
        DWORD threadId;
    };

    /// The arguments of one call of MsgWaitForMultipleObjects.
    struct Wait
    {
        DWORD count;
        HANDLE first; ///< null without one
        BOOL waitsForAll;
        DWORD timeoutMs;
        DWORD wakeMask;
    };

    CSystemCalls();
    CSystemCalls(const CSystemCalls&) = delete;
    CSystemCalls& operator=(const CSystemCalls&) = delete;
    ~CSystemCalls();

    /// Called for every trim, on its thread.
    void (*onTrim)(void* context) = nullptr;
    void* trimContext = nullptr;

    /// While set, no thread can be started and the error is this one.
    DWORD threadError = 0;

    /// The trims so far, once there are at least `count`. Fails the test after a minute without.
    std::vector<Trim> TrimsOnce(std::size_t count);

    /// How many waits this thread has begun.
    std::size_t WaitsOf(DWORD threadId);
    /// The last wait of a thread that has begun more than `count`. Fails the test after a minute
    /// without.
    Wait NextWaitOf(DWORD threadId, std::size_t count);

private:
    friend struct SystemCallHooks;

    struct ThreadWaits
    {
        DWORD threadId;
        std::size_t begun;
        Wait last;
    };

    void NoteTrim(const Trim& trim);
    void NoteWait(DWORD threadId, const Wait& wait);
    ThreadWaits& WaitsLocked(DWORD threadId);

    std::mutex m_notesLock; // guards the two lists
    std::condition_variable m_noted;
    std::vector<Trim> m_trims;
    std::vector<ThreadWaits> m_waits;

    CPatchedImport m_trimImport;
    CPatchedImport m_waitImport;
    CPatchedImport m_threadImport;
};
