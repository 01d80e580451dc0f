#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "RecurrentRule.h"
#include "ToolSettings.h"
#include "TraceLines.h"

/// Expands one line of a batch into lines of output.
///
/// Shape:  in, tab separated: id, pattern hex, zone hex, first time, window start, window end,
///         subject, location, keep-all. Out: id and count, then a line for each instance with id,
///         index, start, end, sub key, subject, location, has-meeting-type, meeting type; or id,
///         "error" and a reason.
class CBatchExpander
{
public:
    explicit CBatchExpander(bool withTrace);

    /// `line` comes without its line ending. Appends to `out`.
    void Expand(std::string_view line, std::string& out);

private:
    void AppendTrace(std::string_view id, std::string& out);

    CToolSettings m_settings;
    InstanceList m_instances;
    std::unique_ptr<CTraceLines> m_trace; // only with --trace
};

/// Runs the lines of standard input. Output is written whenever no more input is at hand, so that a
/// program on the other side may ask line by line.
/// Returns the exit code.
int RunBatch(bool withTrace);
