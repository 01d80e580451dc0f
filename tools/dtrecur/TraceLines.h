#pragma once

#include <string>
#include <vector>

#include "Trace.h"

/// Collects the messages of the trace, for --trace. The trace is closed without it, and costs
/// nothing.
class CTraceLines final : public ITraceRoute
{
public:
    struct Line
    {
        int level;
        std::string message;
    };

    CTraceLines() : m_before(SetTraceRoute(this)) {}
    CTraceLines(const CTraceLines&) = delete;
    CTraceLines& operator=(const CTraceLines&) = delete;
    ~CTraceLines() override { SetTraceRoute(m_before); }

    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view line) noexcept override
    {
        Write(TL_SDK::TLLoggerLevelMilestone, line);
    }
    void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept override;

    /// Gives the lines since the last call away.
    std::vector<Line> Take();

private:
    std::vector<Line> m_lines;
    ITraceRoute* m_before;
};
