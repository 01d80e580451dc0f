#pragma once

#include <cstddef>
#include <functional>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>

#include "Trace.h"
#include "VarAdapter.h"

/// A name, which may be null, and its value.
struct TracePair
{
    const char* name;
    CVarAdapter value;
};

/// The longest text that one call of the trace library takes.
inline constexpr std::size_t kTracePieceBytes = 2047;

/// The code that the trace library knows for a level: 8 for a failure, 4 for a warning, 2 for
/// everything else.
int TraceCode(TL_SDK::TLLoggerLevel level) noexcept;

/// The text of one raw trace: the prefix and a blank, then for each pair its name and "=" if it has
/// a name, its value, and ",", and a line feed at the end. Its room comes from `memory`.
std::pmr::string RawTraceText(std::string_view prefix,
                              std::span<const TracePair> pairs,
                              std::pmr::memory_resource* memory);

/// Cuts the text, which has a terminator behind it, into pieces of 2047 bytes and a rest, and hands out
/// each as a terminated text. An empty text is one empty piece.
void ForEachTracePiece(std::string_view text, const std::function<void(const char*)>& send);
