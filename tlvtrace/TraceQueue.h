#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tlvtrace
{
/// Where finished lines go.
class ITraceStore
{
public:
    ITraceStore() = default;
    ITraceStore(const ITraceStore&) = delete;
    ITraceStore& operator=(const ITraceStore&) = delete;
    virtual ~ITraceStore() = default;

    /// Appends whole lines. May take as long as the disk takes.
    /// Errors: false when nothing of them was written.
    virtual bool Append(std::string_view lines) noexcept = 0;

    /// Whether just these lines, one behind the other, were appended lately.
    /// Errors: false when that cannot be told.
    virtual bool Holds(std::string_view lines) noexcept = 0;
};

/// How much a queue holds and how long a full one makes its caller wait.
struct QueueLimits
{
    std::size_t cbBuffer = std::size_t{512} * 1024; ///< Each of the two buffers.
    DWORD fullWaitMs = 20;
    /// How long the writer lets lines gather before it opens the file. A listing traces for seconds, and
    /// opening the file for each few lines would cost as much as the listing itself.
    DWORD gatherMs = 500;
};

/// Takes lines from any thread at the cost of a copy, and writes them on a thread of its own.
///
/// Two buffers of fixed size take turns: one is filled while the other is written, so memory never
/// grows. A line that finds the buffer full waits a moment for room; if the disk still hangs, it is
/// dropped, and so is every later one at once until the disk moves again. What was dropped is counted,
/// and the count stands in the file where the lines are missing.
///
/// Opening, writing and closing the file costs as much as some hundred lines, so lines gather for a
/// moment first, unless one says that it hurries, the buffer fills, or somebody waits for the writing.
///
/// Owner:  borrows the store, which outlives the queue.
/// Thread: Add and WaitUntilWritten from any thread; Stop and DrainAtExit from one.
class CTraceQueue
{
public:
    CTraceQueue(ITraceStore& store, const QueueLimits& limits);
    CTraceQueue(const CTraceQueue&) = delete;
    CTraceQueue& operator=(const CTraceQueue&) = delete;
    ~CTraceQueue();

    /// Starts the writer. Without it lines are kept until the buffer is full, then dropped.
    bool Start();

    /// Adds "head body" as one line: line ends within the body are written as "\r" and "\n". With
    /// `hurry` it does not wait for others.
    void Add(std::string_view head, std::string_view body, bool hurry = false) noexcept;

    /// Waits until every line added before is written or counted as lost.
    /// Errors: false when that takes longer.
    bool WaitUntilWritten(DWORD timeoutMs) noexcept;

    /// Ends the writer after it has written what waits. No thread may add a line any more.
    void Stop() noexcept;

    /// Writes what waits on the calling thread. For the end of the process, when the system has
    /// already ended the writer, wherever it stood.
    void DrainAtExit() noexcept;

    /// Lines lost since the start, those already told in the file included.
    std::uint64_t LostLines() noexcept;

private:
    struct Buffer
    {
        std::string text;
        std::uint64_t lines = 0;
    };

    static DWORD WINAPI WriterProc(void* self) noexcept;
    void WriteLoop() noexcept;
    void WriteBatch(std::uint64_t lost) noexcept;
    void Gather() noexcept;
    [[nodiscard]] bool HasRoom(std::size_t cbLine) const;
    bool WaitForRoom(std::size_t cbLine) noexcept;

    ITraceStore& m_store;
    const QueueLimits m_limits;
    HANDLE m_thread = nullptr;

    SRWLOCK m_lock{}; // guards all below
    CONDITION_VARIABLE m_work{};
    CONDITION_VARIABLE m_progress{};
    Buffer m_filling;
    Buffer m_writing; // the writer's own while m_busy is set
    bool m_busy = false;
    bool m_stopping = false;
    bool m_hurry = false;       // what waits is to be written at once
    bool m_stalled = false;     // a caller has waited in vain since the last progress
    std::uint64_t m_untold = 0; // lost lines whose count is not in the file yet
    std::uint64_t m_lost = 0;
};
} // namespace tlvtrace
