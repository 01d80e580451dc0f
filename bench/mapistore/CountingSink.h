#pragma once

#include <condition_variable>
#include <mutex>

#include "Mapi64.h"

/// A sink that counts what it hears and notes when the first and the last came.
///
/// Thread: OnNotify on the library's thread, the rest on the bench's.
class CCountingSink final : public IMAPIAdviseSink
{
public:
    HRESULT WINAPI QueryInterface(REFIID iid, void** out) override;
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_refs)); }
    ULONG WINAPI Release() override { return static_cast<ULONG>(InterlockedDecrement(&m_refs)); }
    ULONG WINAPI OnNotify(ULONG count, NOTIFICATION* notifications) override;

    /// Waits for that many notifications. Units: seconds between the first call and the last.
    double WaitFor(std::size_t count);

private:
    LONG m_refs = 1;   // the bench's own
    std::mutex m_lock; // guards the members below
    std::condition_variable m_came;
    std::size_t m_count = 0;
    LARGE_INTEGER m_first{};
    LARGE_INTEGER m_last{};
};
