#include <span>

#include "FuzzInput.h"
#include "PatternTail.h"

/// Reads any bytes as the tail of a pattern, from any offset inside and a little behind.
/// Shape: one byte of offset, then the pattern.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    const std::span<const std::uint8_t> blob(data + 1, size - 1);
    PatternTail tail;
    ExceptionMap exceptions;
    const TailResult result =
        CPatternTailReader(blob, WTEXT("Standup"), WTEXT("Room")).Read(data[0], tail, exceptions);

    // Every entry has four bytes of its own, and every text its two bytes a unit.
    Require(exceptions.size() <= blob.size() / 4);
    std::size_t units = 0;
    for (const auto& [date, info] : exceptions)
    {
        Require(info.state == kExceptionDeleted || info.state == kExceptionModified);
        units += info.subject.size() + info.location.size();
    }
    Require(units <= blob.size() / 2 + exceptions.size() * 11);
    Require(!result.isComplete || result.warning == TailWarning::None);
    return 0;
}
