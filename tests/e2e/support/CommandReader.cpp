#include "CommandReader.h"

#include <iostream>

CCommandReader::CCommandReader() : m_ready(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    // Ends with the process: a read from a pipe cannot be called off.
    std::thread([this] { ReadAll(); }).detach();
}

void CCommandReader::ReadAll()
{
    for (std::string line; std::getline(std::cin, line);)
    {
        while (!line.empty() && line.back() == '\r')
        {
            line.pop_back();
        }
        const std::scoped_lock hold(m_linesLock);
        m_lines.push_back(line);
        SetEvent(m_ready);
    }
    const std::scoped_lock hold(m_linesLock);
    m_ended = true;
    SetEvent(m_ready);
}

bool CCommandReader::Take(std::string& line)
{
    const std::scoped_lock hold(m_linesLock);
    if (m_lines.empty())
    {
        return false;
    }
    line = m_lines.front();
    m_lines.pop_front();
    if (m_lines.empty() && !m_ended)
    {
        ResetEvent(m_ready);
    }
    return true;
}

bool CCommandReader::AtEnd()
{
    const std::scoped_lock hold(m_linesLock);
    return m_ended && m_lines.empty();
}
