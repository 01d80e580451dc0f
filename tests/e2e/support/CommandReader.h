#pragma once

#include <windows.h>

#include <deque>
#include <mutex>
#include <string>
#include <thread>

/// Reads lines from standard input on a thread of its own.
///
/// Thread: Take on one thread; Ready() may be waited for in a message loop.
class CCommandReader
{
public:
    CCommandReader();
    CCommandReader(const CCommandReader&) = delete;
    CCommandReader& operator=(const CCommandReader&) = delete;

    /// Signalled while a line waits or the input has ended.
    [[nodiscard]] HANDLE Ready() const { return m_ready; }

    /// False when no line waits.
    bool Take(std::string& line);

    /// True once the input has ended and every line was taken.
    bool AtEnd();

private:
    void ReadAll();

    HANDLE m_ready;
    std::mutex m_linesLock; // guards the two below
    std::deque<std::string> m_lines;
    bool m_ended = false;
};
