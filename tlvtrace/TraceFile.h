#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "TraceQueue.h"

namespace tlvtrace
{
/// How large a trace file grows and how many older ones are kept.
struct RotationLimits
{
    std::uint64_t cbFile = std::uint64_t{8} * 1024 * 1024;
    unsigned olderFiles = 3;
};

/// The directory of the trace file: the user's roaming application data and "\Talvo Connect".
/// Errors: empty when the system does not tell where that is.
std::wstring TraceDirectory();

/// A text file that several processes append to.
///
/// Each append opens the file, writes whole lines and closes it again, one process at a time. So a
/// crash copies a complete file, and a rotation by one process is seen by all others at once.
///
/// A file that would grow beyond its limit is renamed: "strato-mapi.txt" to "strato-mapi.1.txt", that
/// one to "strato-mapi.2.txt", and the oldest goes. While a reader forbids the renaming, the file
/// grows on, up to four times the limit; then lines are refused.
///
/// Thread: Append from one thread at a time.
class CTraceFile final : public ITraceStore
{
public:
    /// Shape: `directory` without a backslash at its end; it is made when it is missing.
    CTraceFile(std::wstring directory, std::wstring name, const RotationLimits& limits);
    ~CTraceFile() override;

    bool Append(std::string_view lines) noexcept override;

    /// Looks through the last megabyte of the file, and of the one before it.
    bool Holds(std::string_view lines) noexcept override;

private:
    [[nodiscard]] std::wstring PathOf(unsigned age) const;
    [[nodiscard]] HANDLE Open() const noexcept;
    void Rotate() const noexcept;
    bool AppendLocked(std::string_view lines) const noexcept;

    std::wstring m_directory;
    std::wstring m_name; ///< Without its extension, which is ".txt".
    RotationLimits m_limits;
    HANDLE m_turn; ///< Named mutex: whose turn it is to append.
};
} // namespace tlvtrace
