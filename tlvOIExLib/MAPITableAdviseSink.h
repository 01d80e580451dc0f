#pragma once

#include <condition_variable>
#include <mutex>

#include "ComRef.h"
#include "MapiHeaders.h"
#include "Owned.h"

/// Turns the row events of one subscribed folder into tasks of the work thread. Makes no MAPI call
/// and reads no store: MAPI calls it on a thread of its own.
///
/// Owner:  starts with one reference, the maker's, which goes by Destroy and by no other way. Holds
///         a reference to the folder; tasks borrow it.
/// Thread: OnNotify, AddRef, Release and QueryInterface on any thread; Destroy on the work thread.
class CMAPITableAdviseSink final : public IMAPIAdviseSink
{
public:
    /// `kind` is the folder kind: 5 for a calendar, 6 for contacts.
    CMAPITableAdviseSink(IMAPIFolder* folder, ULONG kind) noexcept;
    CMAPITableAdviseSink(const CMAPITableAdviseSink&) = delete;
    CMAPITableAdviseSink& operator=(const CMAPITableAdviseSink&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    /// Queues one task for each added, deleted or modified row; ignores all other events.
    /// Errors: E_FAIL for a null array, E_OUTOFMEMORY when a task could not be made.
    ULONG STDMETHODCALLTYPE OnNotify(ULONG cNotify,
                                     LPNOTIFICATION lpNotifications) noexcept override;

    /// Ends the sink after Unadvise: waits for notifications under way, ignores all later ones, lets
    /// the folder go and gives up the maker's reference. The memory goes with the last reference,
    /// which a provider may hold longer than it should.
    static void Destroy(CMAPITableAdviseSink* sink) noexcept;

private:
    class CUse;

    ~CMAPITableAdviseSink() = default;

    /// Gives up one reference without a trace; the object may be gone behind it.
    LONG DropReference() noexcept;
    void QueueTask(const TABLE_NOTIFICATION& event);

    LONG m_cRef = 1;
    CComRef<IMAPIFolder> m_folder;
    ULONG m_kind;

    std::mutex m_stateLock; // guards the two below
    std::condition_variable m_idle;
    ULONG m_underWay = 0;
    bool m_isDead = false;
};

struct TableSinkPolicy
{
    using Type = CMAPITableAdviseSink*;
    static Type Empty() noexcept { return nullptr; }
    static void Free(Type value) noexcept { CMAPITableAdviseSink::Destroy(value); }
};

/// Owner of one table sink, for the time of its subscription.
using CTableSink = COwned<TableSinkPolicy>;
