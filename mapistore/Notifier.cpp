#include "Notifier.h"

#include <cstring>

#include "Buffer.h"
#include "Runtime.h"

namespace mapistore
{
namespace
{

// As many events as one call may carry.
constexpr size_t kMaxBatch = 32;
constexpr std::uint64_t kNoLimit = ~std::uint64_t{0};

void WriteIndex(CBuffer& buffer, SPropValue& out, const CValue& value)
{
    out = SPropValue();
    out.ulPropTag = PR_NULL;
    if (!value.Empty())
    {
        WriteValue(buffer, out, &value, value.Tag(), true, kNoLimit);
    }
}

void WriteTable(CBuffer& buffer, TABLE_NOTIFICATION& out, const NotifyEvent& event)
{
    out.ulTableEvent = event.tableEvent;
    out.hResult = S_OK;
    WriteIndex(buffer, out.propIndex, event.index);
    WriteIndex(buffer, out.propPrior, event.prior);
    out.row.cValues = static_cast<ULONG>(event.row.size());
    if (!event.row.empty())
    {
        out.row.lpProps =
            static_cast<SPropValue*>(buffer.More(event.row.size() * sizeof(SPropValue)));
        for (size_t i = 0; i < event.row.size(); ++i)
        {
            WriteValue(buffer, out.row.lpProps[i], &event.row[i], event.columns[i], true, kNoLimit);
        }
    }
}

ENTRYID* WriteId(CBuffer& buffer, const std::string& id, ULONG& cb)
{
    cb = static_cast<ULONG>(id.size());
    if (id.empty())
    {
        return nullptr;
    }
    void* copy = buffer.More(id.size(), 1);
    std::memcpy(copy, id.data(), id.size());
    return static_cast<ENTRYID*>(copy);
}

void WriteObject(CBuffer& buffer, OBJECT_NOTIFICATION& out, const NotifyEvent& event)
{
    out.ulObjType = event.objectType;
    out.lpEntryID = WriteId(buffer, event.entryId, out.cbEntryID);
    out.lpParentID = WriteId(buffer, event.parentId, out.cbParentID);
    out.lpOldID = WriteId(buffer, event.oldEntryId, out.cbOldID);
    out.lpOldParentID = WriteId(buffer, event.oldParentId, out.cbOldParentID);
}

void WriteNewMail(CBuffer& buffer, NEWMAIL_NOTIFICATION& out, const NotifyEvent& event)
{
    out.lpEntryID = WriteId(buffer, event.entryId, out.cbEntryID);
    out.lpParentID = WriteId(buffer, event.parentId, out.cbParentID);
    out.ulFlags = MAPI_UNICODE;
    out.lpszMessageClass = static_cast<LPTSTR>(WriteText(buffer, event.messageClass, true));
    out.ulMessageFlags = event.messageFlags;
}

} // namespace

void CNotifier::Start()
{
    const std::scoped_lock hold(m_lock);
    m_stopping = false;
    m_events.clear();
    m_thread = std::thread([this] { Loop(); });
}

void CNotifier::Stop()
{
    std::map<mapi64::Connection, IMAPIAdviseSink*> left;
    {
        const std::scoped_lock hold(m_lock);
        m_stopping = true;
        left.swap(m_sinks);
        m_events.clear();
    }
    m_wake.notify_all();
    if (m_thread.get_id() == std::this_thread::get_id())
    {
        m_thread.detach(); // a sink ended MAPI from within its notification
    }
    else if (m_thread.joinable())
    {
        m_thread.join();
    }
    // A sink that was never disconnected is not released: its owner may have freed it.
}

mapi64::Connection CNotifier::Connect(IMAPIAdviseSink* sink)
{
    sink->AddRef();
    const std::scoped_lock hold(m_lock);
    const mapi64::Connection connection = ++m_last;
    m_sinks[connection] = sink;
    return connection;
}

bool CNotifier::Disconnect(mapi64::Connection connection)
{
    IMAPIAdviseSink* sink = nullptr;
    {
        const std::scoped_lock hold(m_lock);
        const auto found = m_sinks.find(connection);
        if (found == m_sinks.end())
        {
            return false;
        }
        sink = found->second;
        m_sinks.erase(found);
    }
    sink->Release();
    return true;
}

void CNotifier::Post(mapi64::Connection connection, NotifyEvent event)
{
    {
        const std::scoped_lock hold(m_lock);
        if (m_stopping || m_sinks.count(connection) == 0)
        {
            return;
        }
        m_events.emplace_back(connection, std::move(event));
    }
    m_wake.notify_one();
}

void CNotifier::Loop()
{
    std::unique_lock hold(m_lock);
    while (true)
    {
        m_wake.wait(hold, [this] { return m_stopping || !m_events.empty(); });
        if (m_stopping)
        {
            return;
        }
        const mapi64::Connection connection = m_events.front().first;
        std::vector<NotifyEvent> batch;
        while (!m_events.empty() && m_events.front().first == connection &&
               batch.size() < kMaxBatch)
        {
            batch.push_back(std::move(m_events.front().second));
            m_events.pop_front();
        }
        const auto found = m_sinks.find(connection);
        if (found == m_sinks.end())
        {
            continue;
        }
        IMAPIAdviseSink* sink = found->second;
        sink->AddRef();
        hold.unlock();
        Deliver(sink, batch);
        sink->Release();
        hold.lock();
    }
}

void CNotifier::Deliver(IMAPIAdviseSink* sink, const std::vector<NotifyEvent>& events)
{
    try
    {
        CBuffer buffer(events.size() * sizeof(NOTIFICATION), kNoOperation, false);
        auto* notifications = buffer.As<NOTIFICATION>();
        std::memset(notifications, 0, events.size() * sizeof(NOTIFICATION));
        for (size_t i = 0; i < events.size(); ++i)
        {
            notifications[i].ulEventType = events[i].eventType;
            if (events[i].eventType == fnevTableModified)
            {
                WriteTable(buffer, notifications[i].info.tab, events[i]);
            }
            else if (events[i].eventType == fnevNewMail)
            {
                WriteNewMail(buffer, notifications[i].info.newmail, events[i]);
            }
            else
            {
                WriteObject(buffer, notifications[i].info.obj, events[i]);
            }
        }
        sink->OnNotify(static_cast<ULONG>(events.size()), notifications);
    }
    catch (...)
    {
        Runtime().Ledger().Misuse(
            kNoOperation, MAPI_E_CALL_FAILED, "an exception left a sink's OnNotify");
    }
}

} // namespace mapistore
