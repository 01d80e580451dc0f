#pragma once

#include <windows.h>

#include <atomic>

/// The trace library "tlvtraceX64.dll" beside the executable, which may be missing, and whose entry
/// points may be missing one by one.
///
/// Owner:  the library, from Load to Unload.
/// Thread: Load and Send from any thread. Unload from one thread, at the end; texts that other threads
///         are just sending keep the library loaded.
/// Errors: none are told. Without an entry point texts go to the debugger.
class CTraceLoader
{
public:
    constexpr CTraceLoader() noexcept = default;
    CTraceLoader(const CTraceLoader&) = delete;
    CTraceLoader& operator=(const CTraceLoader&) = delete;
    ~CTraceLoader() = default;

    /// Looks for the library and its entry points unless it is loaded, and tells the debugger.
    void Load() noexcept;

    /// Load(), if no entry point is known and nobody has looked before.
    void LoadOnce() noexcept;

    /// Tells the debugger and frees the library.
    void Unload() noexcept;

    /// Sends a terminated text by the first entry point that there is.
    void Send(int code, const char* text) noexcept;

    /// Waits until the library has written what was sent, at most so long. A library that does not offer
    /// this is not waited for.
    void Flush(unsigned timeoutMs) noexcept;

private:
    using RawFunction = void (*)(int, const char*, int, const char*);
    using ResidentFunction = void (*)(int, const char*, int, const char*);
    using DllResidentFunction = void (*)(int, const char*, const char*, int, const char*);
    using FlushFunction = int (*)(unsigned);

    void Report(const char* which) const noexcept;

    SRWLOCK m_tableLock{}; // held shared over a call, exclusively to load and to free
    std::atomic<bool> m_hasLooked{false};
    HMODULE m_library = nullptr;
    RawFunction m_raw = nullptr;
    ResidentFunction m_resident = nullptr;
    DllResidentFunction m_dllResident = nullptr;
    FlushFunction m_flush = nullptr;
    WCHAR m_libraryPath[MAX_PATH] = {};
    char m_moduleName[MAX_PATH] = {};
};
