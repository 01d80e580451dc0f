#pragma once

#include <condition_variable>
#include <mutex>

/// Lets a known number of threads begin together.
///
/// Stands in for std::latch: the one of GCC 12's library loses wake-ups under Windows. Drop this when
/// the thread tests pass a few hundred times with std::latch under Wine.
class CStartLine
{
public:
    explicit CStartLine(int runners) : m_missing(runners) {}

    void ArriveAndWait()
    {
        std::unique_lock hold(m_lock);
        --m_missing;
        m_allHere.notify_all();
        m_allHere.wait(hold, [this] { return m_missing == 0; });
    }

private:
    std::mutex m_lock; // guards m_missing
    std::condition_variable m_allHere;
    int m_missing;
};
