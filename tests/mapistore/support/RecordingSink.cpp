#include "RecordingSink.h"

namespace mapitest
{
namespace
{

std::string BytesIn(const SPropValue& value)
{
    if (PROP_TYPE(value.ulPropTag) != PT_BINARY)
    {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb);
}

HeardEvent HearTable(const TABLE_NOTIFICATION& table)
{
    HeardEvent event;
    event.tableEvent = table.ulTableEvent;
    event.index = BytesIn(table.propIndex);
    event.prior = BytesIn(table.propPrior);
    for (ULONG i = 0; i < table.row.cValues; ++i)
    {
        const SPropValue& value = table.row.lpProps[i];
        event.tags.push_back(value.ulPropTag);
        if (PROP_TYPE(value.ulPropTag) == PT_UNICODE)
        {
            event.texts.push_back(value.Value.lpszW);
        }
        if (value.ulPropTag == PR_ENTRYID)
        {
            event.entryId = BytesIn(value);
        }
    }
    return event;
}

} // namespace

HRESULT CRecordingSink::QueryInterface(REFIID iid, void** out)
{
    if (iid != IID_IUnknown && iid != IID_IMAPIAdviseSink)
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    *out = this;
    return S_OK;
}

ULONG CRecordingSink::OnNotify(ULONG count, NOTIFICATION* notifications)
{
    std::function<void()> action;
    {
        const std::scoped_lock hold(m_lock);
        ++m_calls;
        for (ULONG i = 0; i < count; ++i)
        {
            HeardEvent event;
            if (notifications[i].ulEventType == fnevTableModified)
            {
                event = HearTable(notifications[i].info.tab);
            }
            else
            {
                const OBJECT_NOTIFICATION& object = notifications[i].info.obj;
                event.entryId =
                    std::string(reinterpret_cast<const char*>(object.lpEntryID), object.cbEntryID);
            }
            event.type = notifications[i].ulEventType;
            event.thread = GetCurrentThreadId();
            m_events.push_back(std::move(event));
        }
        action = m_action;
    }
    m_came.notify_all();
    if (action)
    {
        action();
    }
    return 0;
}

std::vector<HeardEvent> CRecordingSink::WaitFor(size_t count)
{
    std::unique_lock hold(m_lock);
    m_came.wait(hold, [&] { return m_events.size() >= count; });
    return m_events;
}

std::vector<HeardEvent> CRecordingSink::Heard()
{
    const std::scoped_lock hold(m_lock);
    return m_events;
}

size_t CRecordingSink::Calls()
{
    const std::scoped_lock hold(m_lock);
    return m_calls;
}

} // namespace mapitest
