#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

#include "StoreFixture.h"

namespace mapitest
{

/// What a sink heard of one event.
struct HeardEvent
{
    ULONG type = 0;
    ULONG tableEvent = 0;
    std::string index; // bytes of propIndex
    std::string prior;
    std::vector<ULONG> tags;         // of the row
    std::vector<std::wstring> texts; // wide texts of the row, in order
    std::string entryId;             // PR_ENTRYID of the row, or of the object
    DWORD thread = 0;
};

/// A sink that writes down what it hears and lets a test wait for it.
///
/// Thread: OnNotify on the library's thread; the rest on the test's.
class CRecordingSink final : public IMAPIAdviseSink
{
public:
    HRESULT WINAPI QueryInterface(REFIID iid, void** out) override;
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_refs)); }
    ULONG WINAPI Release() override { return static_cast<ULONG>(InterlockedDecrement(&m_refs)); }
    ULONG WINAPI OnNotify(ULONG count, NOTIFICATION* notifications) override;

    /// The events so far, after at least `count` have come. Waits as long as it takes; the test's
    /// own time limit ends a wait for what never comes.
    std::vector<HeardEvent> WaitFor(size_t count);
    std::vector<HeardEvent> Heard();
    LONG References() const { return m_refs; }
    size_t Calls();
    /// Runs inside of each call, before it returns.
    void SetAction(std::function<void()> action) { m_action = std::move(action); }

private:
    LONG m_refs = 1;   // the test's own
    std::mutex m_lock; // guards the members below
    std::condition_variable m_came;
    std::vector<HeardEvent> m_events;
    size_t m_calls = 0;
    std::function<void()> m_action;
};

} // namespace mapitest
