#pragma once

#include <span>
#include <string_view>

#include "TraceText.h"

/// The trace of the server: lines go to the trace library beside the executable, and a line with the
/// heartbeat text goes to the event window instead, and from there to the client. Without an event
/// window nothing is traced at all.

/// Loads the trace library and opens the trace. Calling it again does nothing.
/// Thread: the main thread, during static construction.
void StartServerTrace() noexcept;

/// Closes the trace and frees the library.
/// Thread: the main thread, during static destruction.
void StopServerTrace() noexcept;

/// The raw writer: assembles the pairs behind the prefix and sends them in pieces, whether there is an
/// event window or not.
/// Thread: any.
void WriteRawTrace(int code, std::string_view prefix, std::span<const TracePair> pairs) noexcept;
