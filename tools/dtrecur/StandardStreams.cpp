#include "StandardStreams.h"

#include <cstdio>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace
{

constexpr std::size_t kReadBytes = 1U << 18;

/// Bytes read; 0 at the end.
std::size_t ReadSome(char* into, std::size_t room)
{
#ifdef _WIN32
    const int count = _read(0, into, static_cast<unsigned>(room));
#else
    const ssize_t count = read(STDIN_FILENO, into, room);
#endif
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace

void UsePlainStreams()
{
#ifdef _WIN32
    _setmode(0, _O_BINARY);
    _setmode(1, _O_BINARY);
    _setmode(2, _O_BINARY);
#endif
}

bool FlushOutput(std::string& out)
{
    const bool isWritten =
        std::fwrite(out.data(), 1, out.size(), stdout) == out.size() && std::fflush(stdout) == 0;
    out.clear();
    return isWritten;
}

std::string ReadAllInput()
{
    std::string all;
    for (;;)
    {
        const std::size_t before = all.size();
        all.resize(before + kReadBytes);
        const std::size_t count = ReadSome(all.data() + before, kReadBytes);
        all.resize(before + count);
        if (count == 0)
        {
            return all;
        }
    }
}

bool IsTerminalOutput()
{
#ifdef _WIN32
    return _isatty(1) != 0;
#else
    return isatty(STDOUT_FILENO) != 0;
#endif
}

bool CLineReader::Next(std::string_view& line, const std::function<bool()>& beforeWait)
{
    for (;;)
    {
        const std::size_t end = m_buffer.find('\n', m_searched);
        if (end != std::string::npos || (m_isAtEnd && m_begin < m_buffer.size()))
        {
            const std::size_t stop = end != std::string::npos ? end : m_buffer.size();
            line = std::string_view(m_buffer).substr(m_begin, stop - m_begin);
            if (!line.empty() && line.back() == '\r')
            {
                line.remove_suffix(1);
            }
            m_begin = m_searched = end != std::string::npos ? end + 1 : stop;
            return true;
        }
        if (m_isAtEnd || !beforeWait())
        {
            return false;
        }
        m_isAtEnd = !Fill();
    }
}

bool CLineReader::Fill()
{
    m_buffer.erase(0, m_begin);
    m_begin = 0;
    m_searched = m_buffer.size();
    m_buffer.resize(m_searched + kReadBytes);
    const std::size_t count = ReadSome(m_buffer.data() + m_searched, kReadBytes);
    m_buffer.resize(m_searched + count);
    return count != 0;
}
