#pragma once

#include "LineClock.h"
#include "TraceFile.h"
#include "TraceQueue.h"
#include "TraceRecord.h"

namespace tlvtrace
{
/// One process's trace: turns records into lines and gives them to the queue.
///
/// Thread: Write from any thread.
class CTraceLibrary
{
public:
    explicit CTraceLibrary(ITraceStore& store, const QueueLimits& limits = QueueLimits{});

    bool Start() { return m_queue.Start(); }

    /// Keeps GetLastError.
    void Write(const TraceRecord& record) noexcept;

    CTraceQueue& Queue() { return m_queue; }

private:
    CLineClock m_clock;
    CTraceQueue m_queue;
    DWORD m_continuedSlot; ///< Of each thread: not null while its last piece had no line end.
};
} // namespace tlvtrace
