#include "TraceCapture.h"

#include <algorithm>

CTraceCapture::CTraceCapture() : m_before(SetTraceRoute(this)) {}

CTraceCapture::~CTraceCapture()
{
    SetTraceRoute(m_before);
}

void CTraceCapture::SendHeartbeat(std::string_view line) noexcept
{
    Add(TL_SDK::TLLoggerLevelMilestone, line, true);
}

void CTraceCapture::Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept
{
    Add(level, line, false);
}

void CTraceCapture::Add(TL_SDK::TLLoggerLevel level, std::string_view line, bool heartbeat) noexcept
{
    TraceLine entry{level, {}, {}, std::string(line), heartbeat};
    const std::size_t open = line.find("][");
    const std::size_t close = line.find("]:", open);
    if (open != std::string_view::npos && close != std::string_view::npos)
    {
        entry.function = line.substr(open + 2, close - open - 2);
        entry.message = line.substr(close + 2);
    }
    const std::scoped_lock hold(m_linesLock);
    m_lines.push_back(std::move(entry));
}

std::vector<TraceLine> CTraceCapture::Lines() const
{
    const std::scoped_lock hold(m_linesLock);
    return m_lines;
}

std::vector<std::string> CTraceCapture::Messages() const
{
    std::vector<std::string> messages;
    for (const TraceLine& line : Lines())
    {
        messages.push_back(std::to_string(line.level) + " " + line.message);
    }
    return messages;
}

std::size_t CTraceCapture::Count(std::string_view message) const
{
    const std::vector<TraceLine> lines = Lines();
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [message](const TraceLine& line) {
            return line.message == message;
        }));
}

bool CTraceCapture::Has(int level, std::string_view message) const
{
    const std::vector<TraceLine> lines = Lines();
    return std::any_of(lines.begin(), lines.end(), [level, message](const TraceLine& line) {
        return line.level == level && line.message == message;
    });
}

void CTraceCapture::Clear()
{
    const std::scoped_lock hold(m_linesLock);
    m_lines.clear();
}
