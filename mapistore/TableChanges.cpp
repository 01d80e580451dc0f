#include "RowOrder.h"
#include "Runtime.h"
#include "TableView.h"

namespace mapistore
{
namespace
{

CValue InstanceKeyOf(const IRow& row)
{
    CValue scratch;
    const CValue* key = row.Find(PROP_ID(PR_INSTANCE_KEY), scratch);
    return key != nullptr ? *key : CValue();
}

} // namespace

void CTableView::Insert(const RowPtr& row)
{
    const size_t place = PlaceOf(*row);
    m_rows.insert(m_rows.begin() + static_cast<std::ptrdiff_t>(place), row);
    if (place < m_cursor)
    {
        ++m_cursor;
    }
}

void CTableView::Erase(size_t place)
{
    for (auto& [number, bookmark] : m_bookmarks)
    {
        if (bookmark.row == m_rows[place])
        {
            bookmark.moved = true;
        }
    }
    m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(place));
    if (place < m_cursor)
    {
        --m_cursor;
    }
}

void CTableView::Tell(ULONG tableEvent, const RowPtr& row, size_t place)
{
    NotifyEvent event;
    event.tableEvent = tableEvent;
    event.index = InstanceKeyOf(*row);
    if (tableEvent != TABLE_ROW_DELETED)
    {
        if (place != 0)
        {
            event.prior = InstanceKeyOf(*m_rows[place - 1]);
        }
        event.columns = m_columns;
        for (const ULONG tag : m_columns)
        {
            CValue scratch;
            const CValue* value = row->Find(PROP_ID(tag), scratch);
            event.row.push_back(value != nullptr ? *value : CValue());
        }
    }
    for (const mapi64::Connection connection : m_connections)
    {
        Runtime().Notifier().Post(connection, event);
    }
}

void CTableView::Apply(const RowChange& change)
{
    if (!m_ready)
    {
        return; // the next look reads the source as it is then
    }
    size_t oldPlace = m_rows.size();
    if (change.before)
    {
        const size_t place = PlaceOf(*change.before);
        const bool isIn = place < m_rows.size() && m_rows[place]->Id() == change.before->Id();
        oldPlace = isIn ? place : m_rows.size();
    }
    const bool wasIn = oldPlace != m_rows.size();
    const bool isIn = change.after && (!m_restriction || m_restriction->Matches(*change.after));
    const bool staysInPlace = wasIn && isIn &&
                              !SortsBefore(*change.before, *change.after, m_order) &&
                              !SortsBefore(*change.after, *change.before, m_order);
    if (staysInPlace)
    {
        const RowPtr old = m_rows[oldPlace];
        m_rows[oldPlace] = change.after;
        for (auto& [number, bookmark] : m_bookmarks)
        {
            if (bookmark.row == old)
            {
                bookmark.row = change.after;
            }
        }
        Tell(TABLE_ROW_MODIFIED, change.after, oldPlace);
        return;
    }
    if (wasIn)
    {
        Erase(oldPlace);
    }
    if (isIn)
    {
        Insert(change.after);
        Tell(wasIn ? TABLE_ROW_MODIFIED : TABLE_ROW_ADDED, change.after, PlaceOf(*change.after));
    }
    else if (wasIn)
    {
        Tell(TABLE_ROW_DELETED, change.before, 0);
    }
}

} // namespace mapistore
