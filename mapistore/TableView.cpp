#include "TableView.h"

#include <algorithm>
#include <set>

#include "RowOrder.h"

namespace mapistore
{

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
    SortRows(all, m_order);
    m_rows = std::move(all);
}
size_t CTableView::PlaceOf(const IRow& row) const
{
    const auto found = std::lower_bound(
        m_rows.begin(), m_rows.end(), row, [this](const RowPtr& one, const IRow& wanted) {
            return SortsBefore(*one, wanted, m_order);
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

} // namespace mapistore
