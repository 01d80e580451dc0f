#include "MAPITableAdviseSink.h"

#include <span>

#include "FolderKind.h"
#include "HexText.h"
#include "PropValue.h"
#include "Trace.h"
#include "WorkTask.h"
#include "WorkThread.h"

namespace
{

/// The task of a table event, for one kind of folder.
bool TaskTypeOf(ULONG tableEvent, ULONG kind, TaskType& type) noexcept
{
    const bool isCalendar = kind == FolderKindAppointment;
    if (!isCalendar && kind != FolderKindContact)
    {
        return false;
    }
    switch (tableEvent)
    {
    case TABLE_ROW_ADDED:
        type = isCalendar ? TaskType::AddAppt : TaskType::AddContact;
        return true;
    case TABLE_ROW_DELETED:
        type = isCalendar ? TaskType::DeleteAppt : TaskType::DeleteContact;
        return true;
    case TABLE_ROW_MODIFIED:
        type = isCalendar ? TaskType::ModifyAppt : TaskType::ModifyContact;
        return true;
    default:
        return false;
    }
}

const char* MilestoneOf(ULONG tableEvent) noexcept
{
    switch (tableEvent)
    {
    case TABLE_ROW_ADDED:
        return "CMAPITableAdviseSink::OnNotify TABLE_ROW_ADDED";
    case TABLE_ROW_DELETED:
        return "CMAPITableAdviseSink::OnNotify TABLE_ROW_DELETED";
    default:
        return "CMAPITableAdviseSink::OnNotify TABLE_ROW_MODIFIED";
    }
}

WString HexOfBinary(const SPropValue& value)
{
    BinaryBlock block;
    prop::TakeBlock(&value, block);
    return HexTextOf(block);
}

/// The identifier of the row; with several the last one, without one an empty text.
WString EntryHexOf(const SRow& row)
{
    WString hex;
    for (const SPropValue& value : std::span<const SPropValue>(row.lpProps, row.cValues))
    {
        if (value.ulPropTag == PR_ENTRYID)
        {
            hex = HexOfBinary(value);
        }
    }
    return hex;
}

/// Hands the task to the work thread, which is made if there is none; without one the task is lost.
void HandOver(WorkTask& task)
{
    if (g_pWorkThread.load() == nullptr)
    {
        (void)EnsureWorkThread();
    }
    const CWorkThreadUse worker;
    if (!worker)
    {
        FreeTaskTexts(task);
        return;
    }
    worker->AddTableWork(task);
}

} // namespace

/// One notification under way. Holds a reference, so that the sink outlives the call even when the
/// provider gave its own back before the call returned.
class CMAPITableAdviseSink::CUse final
{
public:
    explicit CUse(CMAPITableAdviseSink& sink) noexcept : m_sink(sink)
    {
        InterlockedIncrement(&m_sink.m_cRef);
        const std::scoped_lock hold(m_sink.m_stateLock);
        m_isCounted = !m_sink.m_isDead;
        m_sink.m_underWay += m_isCounted ? 1 : 0;
    }
    CUse(const CUse&) = delete;
    CUse& operator=(const CUse&) = delete;
    ~CUse()
    {
        if (m_isCounted)
        {
            const std::scoped_lock hold(m_sink.m_stateLock);
            --m_sink.m_underWay;
            m_sink.m_idle.notify_all();
        }
        m_sink.DropReference();
    }

    explicit operator bool() const noexcept { return m_isCounted; }

private:
    CMAPITableAdviseSink& m_sink;
    bool m_isCounted;
};

CMAPITableAdviseSink::CMAPITableAdviseSink(IMAPIFolder* folder, ULONG kind) noexcept
    : m_folder(CComRef<IMAPIFolder>::Share(folder)), m_kind(kind)
{
}

HRESULT STDMETHODCALLTYPE CMAPITableAdviseSink::QueryInterface(REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_INVALIDARG;
    }
    *object = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IMAPIAdviseSink))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IMAPIAdviseSink*>(this);
    return S_OK;
}

ULONG STDMETHODCALLTYPE CMAPITableAdviseSink::AddRef() noexcept
{
    const LONG count = InterlockedIncrement(&m_cRef);
    SEND_TRACE(3,
               "CMAPITableAdviseSink::AddRef",
               "CMAPITableAdviseSink.m_cRef increased to %d.",
               static_cast<int>(count));
    return static_cast<ULONG>(count);
}

ULONG STDMETHODCALLTYPE CMAPITableAdviseSink::Release() noexcept
{
    const LONG count = DropReference(); // the object may be gone from here on
    SEND_TRACE(3,
               "CMAPITableAdviseSink::Release",
               "CMAPITableAdviseSink.m_cRef decreased to %d.",
               static_cast<int>(count));
    return static_cast<ULONG>(count);
}

ULONG STDMETHODCALLTYPE CMAPITableAdviseSink::OnNotify(ULONG cNotify,
                                                       LPNOTIFICATION lpNotifications) noexcept
try
{
    if (lpNotifications == nullptr)
    {
        return static_cast<ULONG>(E_FAIL);
    }
    SEND_TRACE(3,
               "CMAPITableAdviseSink::OnNotify",
               "CMAPITableAdviseSink::OnNotify, cNotify number[%d]",
               static_cast<int>(cNotify));
    const CUse use(*this);
    if (use)
    {
        for (const NOTIFICATION& notification :
             std::span<const NOTIFICATION>(lpNotifications, cNotify))
        {
            if (notification.ulEventType == fnevTableModified)
            {
                QueueTask(notification.info.tab);
            }
        }
    }
    return S_OK;
}
catch (...)
{
    // Nothing may fly through the provider's frames; what can come here is want of memory.
    return static_cast<ULONG>(E_OUTOFMEMORY);
}

void CMAPITableAdviseSink::QueueTask(const TABLE_NOTIFICATION& event)
{
    constexpr const char* kFunction = "CMAPITableAdviseSink::OnNotify";
    WorkTask task;
    if (!TaskTypeOf(event.ulTableEvent, m_kind, task.eTaskType))
    {
        return;
    }
    SEND_TRACE(2, kFunction, "%s", MilestoneOf(event.ulTableEvent));
    const WString instanceHex = HexOfBinary(event.propIndex);
    WString entryHex;
    const bool hasEntry = event.ulTableEvent != TABLE_ROW_DELETED;
    if (hasEntry)
    {
        if (event.row.lpProps == nullptr)
        {
            SEND_TRACE(1, kFunction, "lpRow == NULL");
            return;
        }
        entryHex = EntryHexOf(event.row);
    }
    task.Param1 = reinterpret_cast<std::uint64_t>(m_folder.Get());
    task.Param2 = hasEntry ? TaskText(entryHex) : 0;
    task.Param3 = TaskText(instanceHex);
    HandOver(task);
}

void CMAPITableAdviseSink::Destroy(CMAPITableAdviseSink* sink) noexcept
{
    if (sink == nullptr)
    {
        return;
    }
    {
        std::unique_lock hold(sink->m_stateLock);
        sink->m_isDead = true;
        sink->m_idle.wait(hold, [sink] { return sink->m_underWay == 0; });
    }
    sink->m_folder.Reset();
    sink->DropReference();
}

LONG CMAPITableAdviseSink::DropReference() noexcept
{
    const LONG count = InterlockedDecrement(&m_cRef);
    if (count == 0)
    {
        delete this;
    }
    return count;
}
