#include "TableView.h"

#include <algorithm>
#include <set>

#include "Runtime.h"

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

/// A missing key sorts before every value, as a null would.
int CompareKeys(const CValue* left, const CValue* right)
{
    if (left == nullptr || right == nullptr)
    {
        return left == right ? 0 : (left == nullptr ? -1 : 1);
    }
    bool comparable = false;
    const int order = CompareValues(*left, *right, comparable);
    return comparable ? order : 0;
}

const CValue* SortKey(const IRow& row, ULONG tag, CValue& scratch)
{
    const CValue* value = row.Find(PROP_ID(tag), scratch);
    return value != nullptr && value->Type() != PT_ERROR ? value : nullptr;
}

} // namespace

CTableView::CTableView(Source source, std::vector<ULONG> defaultColumns)
    : m_source(std::move(source)), m_columns(defaultColumns),
      m_defaultColumns(std::move(defaultColumns))
{
}

std::vector<ULONG> CTableView::AllColumns()
{
    std::set<ULONG> seen;
    std::vector<ULONG> tags;
    const auto add = [&](ULONG tag) {
        if (seen.insert(PROP_ID(tag)).second)
        {
            tags.push_back(tag);
        }
    };
    std::for_each(m_defaultColumns.begin(), m_defaultColumns.end(), add);
    for (const RowPtr& row : m_source())
    {
        std::vector<ULONG> own;
        row->AddTags(own);
        std::for_each(own.begin(), own.end(), add);
    }
    return tags;
}

void CTableView::Restrict(std::shared_ptr<const CRestriction> restriction, bool later)
{
    m_restriction = std::move(restriction);
    m_ready = false;
    m_cursor = 0;
    m_bookmarks.clear();
    // A watched table has to know its rows, or the next change could not be told from the old ones.
    if (!later || HasConnections())
    {
        Prepare();
    }
}

void CTableView::Sort(std::vector<SSortOrder> order, bool later)
{
    m_order = std::move(order);
    m_ready = false;
    m_cursor = 0;
    m_bookmarks.clear();
    if (!later || HasConnections())
    {
        Prepare();
    }
}

void CTableView::Prepare()
{
    if (!m_ready)
    {
        Rebuild();
        m_ready = true;
    }
}

void CTableView::Rebuild()
{
    std::vector<RowPtr> all = m_source();
    if (m_restriction)
    {
        all.erase(
            std::remove_if(all.begin(),
                           all.end(),
                           [this](const RowPtr& row) { return !m_restriction->Matches(*row); }),
            all.end());
    }
    if (m_order.empty())
    {
        std::sort(all.begin(), all.end(), [](const RowPtr& left, const RowPtr& right) {
            return left->Order() < right->Order();
        });
        m_rows = std::move(all);
        return;
    }
    // The keys are taken once: a computed one would be made anew for each comparison.
    struct Keyed
    {
        RowPtr row;
        std::vector<CValue> keys;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(all.size());
    for (RowPtr& row : all)
    {
        Keyed one;
        for (const SSortOrder& order : m_order)
        {
            CValue scratch;
            const CValue* key = SortKey(*row, order.ulPropTag, scratch);
            one.keys.push_back(key != nullptr ? *key : CValue());
        }
        one.row = std::move(row);
        keyed.push_back(std::move(one));
    }
    std::sort(keyed.begin(), keyed.end(), [this](const Keyed& left, const Keyed& right) {
        for (size_t i = 0; i < m_order.size(); ++i)
        {
            const CValue& a = left.keys[i];
            const CValue& b = right.keys[i];
            const int order = CompareKeys(a.Empty() ? nullptr : &a, b.Empty() ? nullptr : &b);
            if (order != 0)
            {
                return (order < 0) == (m_order[i].ulOrder == TABLE_SORT_ASCEND);
            }
        }
        return left.row->Order() < right.row->Order();
    });
    m_rows.clear();
    m_rows.reserve(keyed.size());
    for (Keyed& one : keyed)
    {
        m_rows.push_back(std::move(one.row));
    }
}

bool CTableView::Before(const IRow& left, const IRow& right) const
{
    for (const SSortOrder& sort : m_order)
    {
        CValue leftScratch;
        CValue rightScratch;
        const int order = CompareKeys(SortKey(left, sort.ulPropTag, leftScratch),
                                      SortKey(right, sort.ulPropTag, rightScratch));
        if (order != 0)
        {
            return (order < 0) == (sort.ulOrder == TABLE_SORT_ASCEND);
        }
    }
    return left.Order() < right.Order();
}

size_t CTableView::PlaceOf(const IRow& row) const
{
    const auto found = std::lower_bound(
        m_rows.begin(), m_rows.end(), row, [this](const RowPtr& one, const IRow& wanted) {
            return Before(*one, wanted);
        });
    return static_cast<size_t>(found - m_rows.begin());
}

size_t CTableView::Count()
{
    Prepare();
    return m_rows.size();
}

size_t CTableView::Position()
{
    Prepare();
    return std::min(m_cursor, m_rows.size());
}

void CTableView::SetPosition(size_t position)
{
    Prepare();
    m_cursor = std::min(position, m_rows.size());
}

std::vector<RowPtr> CTableView::Take(LONG count, bool stay)
{
    Prepare();
    const size_t at = Position();
    size_t first = at;
    size_t last = at;
    if (count >= 0)
    {
        last = std::min(m_rows.size(), at + static_cast<size_t>(count));
    }
    else
    {
        const auto back = static_cast<size_t>(-static_cast<std::int64_t>(count));
        first = back > at ? 0 : at - back;
    }
    std::vector<RowPtr> rows(m_rows.begin() + static_cast<std::ptrdiff_t>(first),
                             m_rows.begin() + static_cast<std::ptrdiff_t>(last));
    if (!stay)
    {
        m_cursor = count >= 0 ? last : first;
    }
    return rows;
}

BOOKMARK CTableView::CreateBookmark()
{
    Bookmark bookmark;
    const size_t at = Position();
    bookmark.atEnd = at == m_rows.size();
    if (!bookmark.atEnd)
    {
        bookmark.row = m_rows[at];
    }
    m_bookmarks[++m_lastBookmark] = bookmark;
    return m_lastBookmark;
}

bool CTableView::FreeBookmark(BOOKMARK bookmark)
{
    return m_bookmarks.erase(bookmark) != 0;
}

bool CTableView::Locate(BOOKMARK bookmark, size_t& position, bool& moved)
{
    Prepare();
    moved = false;
    switch (bookmark)
    {
    case BOOKMARK_BEGINNING:
        position = 0;
        return true;
    case BOOKMARK_CURRENT:
        position = Position();
        return true;
    case BOOKMARK_END:
        position = m_rows.size();
        return true;
    default:
        break;
    }
    const auto found = m_bookmarks.find(bookmark);
    if (found == m_bookmarks.end())
    {
        return false;
    }
    position = found->second.atEnd ? m_rows.size() : PlaceOf(*found->second.row);
    moved = found->second.moved;
    return true;
}

LONG CTableView::Seek(size_t origin, LONG rows)
{
    Prepare();
    const auto from = static_cast<std::int64_t>(origin);
    const auto end = static_cast<std::int64_t>(m_rows.size());
    const std::int64_t to = std::clamp<std::int64_t>(from + rows, 0, end);
    m_cursor = static_cast<size_t>(to);
    return static_cast<LONG>(to - from);
}

bool CTableView::FindRow(const CRestriction& restriction, size_t origin, bool backward)
{
    Prepare();
    if (backward)
    {
        for (size_t i = std::min(origin, m_rows.size()); i-- > 0;)
        {
            if (restriction.Matches(*m_rows[i]))
            {
                m_cursor = i;
                return true;
            }
        }
        return false;
    }
    for (size_t i = origin; i < m_rows.size(); ++i)
    {
        if (restriction.Matches(*m_rows[i]))
        {
            m_cursor = i;
            return true;
        }
    }
    return false;
}

bool CTableView::Disconnect(mapi64::Connection connection)
{
    const auto found = std::find(m_connections.begin(), m_connections.end(), connection);
    if (found == m_connections.end())
    {
        return false;
    }
    m_connections.erase(found);
    return true;
}

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
    const bool staysInPlace = wasIn && isIn && !Before(*change.before, *change.after) &&
                              !Before(*change.after, *change.before);
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
