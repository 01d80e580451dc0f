#include "TraceLines.h"

#include <utility>

void CTraceLines::Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept
try
{
    // "[file:line][function]:message"
    const std::size_t at = line.find("]:");
    m_lines.push_back(
        {level, std::string(at == std::string_view::npos ? line : line.substr(at + 2))});
}
catch (const std::exception&)
{
    return; // no memory: a line is lost
}

std::vector<CTraceLines::Line> CTraceLines::Take()
{
    return std::exchange(m_lines, {});
}
