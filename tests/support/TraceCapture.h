#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Trace.h"

/// One captured trace line.
struct TraceLine
{
    TL_SDK::TLLoggerLevel level;
    std::string function; ///< what stands in the second bracket
    std::string message;  ///< what stands behind "]:"
    std::string text;     ///< the whole line
    bool heartbeat;
};

/// Collects trace lines for as long as it lives, and puts the old route back at its end.
///
/// Thread: any; lines of all threads are collected in the order of their arrival.
class CTraceCapture final : public ITraceRoute
{
public:
    CTraceCapture();
    CTraceCapture(const CTraceCapture&) = delete;
    CTraceCapture& operator=(const CTraceCapture&) = delete;
    ~CTraceCapture() override;

    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view line) noexcept override;
    void Write(TL_SDK::TLLoggerLevel level, std::string_view line) noexcept override;

    std::vector<TraceLine> Lines() const;
    /// Each line as "level message", in order.
    std::vector<std::string> Messages() const;
    /// How many lines have exactly this message.
    std::size_t Count(std::string_view message) const;
    bool Has(int level, std::string_view message) const;
    void Clear();

private:
    void Add(TL_SDK::TLLoggerLevel level, std::string_view line, bool heartbeat) noexcept;

    mutable std::mutex m_linesLock; // guards m_lines
    std::vector<TraceLine> m_lines;
    ITraceRoute* m_before = nullptr;
};
