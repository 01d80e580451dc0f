#pragma once

/// What the trace library offers, by the names under which programs look it up. The first three append one
/// line to "strato-mapi.txt", and differ only in what the caller says about itself.
///
/// Shape:  `code` is 8 for a failure, 4 for a warning, 2 for all else. Texts are narrow, terminated,
///         and may be null. `zero` is reserved.
/// Thread: any. A call copies its texts and returns; it waits for the disk at most a few
///         hundredths of a second.
/// Errors: none are told; a line that cannot be kept is counted, and the count stands in the file.
extern "C"
{
    void TLVTRACERAWADLLNAME_RESIDENT(
        unsigned code, const char* module, const char* tag, int zero, const char* text) noexcept;
    void TLVTRACERAWA_RESIDENT(unsigned code, const char* tag, int zero, const char* text) noexcept;
    void TLVTRACERAWA(unsigned code, const char* module, int zero, const char* text) noexcept;

    /// Waits until every line of this process so far stands in the file, at most so long. For a process
    /// that dies at once: lines gather in memory for up to half a second before they are written.
    /// Errors: 0 when lines are still waiting, else 1.
    int TLVTRACEFLUSH(unsigned timeoutMs) noexcept;
}
