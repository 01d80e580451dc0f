#pragma once

#include <cstddef>
#include <list>
#include <mutex>

#include "WorkTask.h"

/// The two lists of waiting tasks: the first list, and the low list whose tasks run only while the
/// first is empty. Within a list the order is first in, first out; neither has a bound, and a
/// steady flow into the first starves the low one.
///
/// Owner:  a waiting task owns its texts.
/// Thread: any. The trace line of an operation is written under the lock, so that the trace tells
///         the true order. The lock is recursive: a thread that dies inside an operation comes back
///         from the crash filter to clear the lists.
/// Errors: Push throws std::bad_alloc and leaves the lists as they were.
class CWorkQueue
{
public:
    CWorkQueue() = default;
    CWorkQueue(const CWorkQueue&) = delete;
    CWorkQueue& operator=(const CWorkQueue&) = delete;
    ~CWorkQueue() = default;

    /// Appends to the list that the type belongs to. A type outside 0 to 22 goes on no list, and
    /// its words are left alone, since what they hold is not known.
    void Push(const WorkTask& task);

    /// Takes the next task; false when both lists are empty.
    bool Pop(WorkTask& task);

    /// Drops all waiting tasks. Frees what the tasks of the first list own but the instance key
    /// texts of table notifications, and of the low list the texts of type 2 alone. What is left
    /// behind is bounded by what waits at a release.
    void Clear();

    /// Drops the waiting table notifications of one folder, texts and all, before the folder goes.
    /// Returns how many there were.
    std::size_t DropFolder(std::uint64_t folder);

private:
    std::recursive_mutex m_Lock; // guards both lists
    std::list<WorkTask> m_PendingWork;
    std::list<WorkTask> m_LowPendingWork;
};
