#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "Mapi64.h"
#include "Value.h"

namespace mapistore
{

/// One event on its way to a sink.
struct NotifyEvent
{
    ULONG eventType = fnevTableModified;
    ULONG tableEvent = 0;
    CValue index; // PR_INSTANCE_KEY of the row, of type PT_NULL when the event has none
    CValue prior; // of the row before it
    std::vector<CValue> row;
    std::vector<ULONG> columns; // the tags asked for, in the order of the row
    // Object events: identifiers of the object and of its parent.
    ULONG objectType = 0;
    std::string entryId;
    std::string parentId;
    std::string oldEntryId;
    std::string oldParentId;
    std::wstring messageClass;
    ULONG messageFlags = 0;
};

/// Brings events to sinks, in order, on a thread of its own.
///
/// Owner:  holds a reference of each sink while its connection lives and while a call is under way.
///         `Disconnect` does not wait for a call that is under way.
/// Thread: any; the sinks are called on the notifier's own thread and never under a lock.
class CNotifier
{
public:
    void Start();
    /// Ends the thread after the call that is under way. What waits is dropped.
    void Stop();

    /// Never 0 and never used again in a process.
    mapi64::Connection Connect(IMAPIAdviseSink* sink);
    bool Disconnect(mapi64::Connection connection);
    void Post(mapi64::Connection connection, NotifyEvent event);

private:
    void Loop();
    void Deliver(IMAPIAdviseSink* sink, const std::vector<NotifyEvent>& events);

    std::mutex m_lock; // guards everything below but the thread
    std::condition_variable m_wake;
    std::map<mapi64::Connection, IMAPIAdviseSink*> m_sinks;
    std::deque<std::pair<mapi64::Connection, NotifyEvent>> m_events;
    mapi64::Connection m_last = 0x100000000ULL; // above 32 bits, so that a cut number is noticed
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace mapistore
