#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

#include "LineClock.h"

namespace tlvtrace
{
/// One call of a program that traces.
///
/// Shape: narrow texts in the process's code page; any of them may be null.
struct TraceRecord
{
    unsigned code = 0; ///< 8 failure, 4 warning, 2 milestone or detail.
    const char* module = nullptr;
    const char* tag = nullptr;
    const char* text = nullptr;
};

/// Longest head of a line in bytes, with its terminator.
constexpr std::size_t kMaxHead = 160;

/// Longest text that is kept of one record; the rest is cut. The server sends pieces of 2047.
constexpr std::size_t kMaxText = 4096;

/// Writes the head of a line, such as
/// "2026-11-02 14:30:15.007 1234:56 E dtOIEx64.exe oi ", and returns its length.
std::size_t WriteHead(char (&head)[kMaxHead],
                      const TraceRecord& record,
                      const MomentText& time,
                      DWORD process,
                      DWORD thread);

/// The record's text, one character more than is kept if it is longer than that.
std::string_view TextOf(const TraceRecord& record);

/// That text without the blanks in front and the line ends behind, cut to kMaxText.
std::string_view BodyOf(std::string_view text);

/// True when the text is a whole line: a piece without a line end is followed by the rest.
bool EndsLine(std::string_view text);
} // namespace tlvtrace
