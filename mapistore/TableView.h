#pragma once

#include <functional>
#include <map>

#include "Notifier.h"
#include "Restriction.h"

namespace mapistore
{

/// One change of a table's source: only `after` is set for a new row, only `before` for one that
/// went, both for one that changed.
struct RowChange
{
    RowPtr before;
    RowPtr after;
};

/// The rows of one open table: restricted, sorted, with a cursor, bookmarks and the connections that
/// hear of changes. Knows nothing of COM.
///
/// Thread: the caller holds the lock of the table's source.
class CTableView
{
public:
    using Source = std::function<std::vector<RowPtr>()>;

    CTableView(Source source, std::vector<ULONG> defaultColumns);

    void SetColumns(std::vector<ULONG> columns) { m_columns = std::move(columns); }
    const std::vector<ULONG>& Columns() const { return m_columns; }
    std::vector<ULONG> AllColumns();

    /// Both put the cursor at the beginning and let go of the bookmarks. The work itself waits for
    /// the next look at the rows when `later` is set (TBL_BATCH).
    void Restrict(std::shared_ptr<const CRestriction> restriction, bool later);
    void Sort(std::vector<SSortOrder> order, bool later);
    const std::vector<SSortOrder>& SortOrder() const { return m_order; }

    size_t Count();
    size_t Position();
    void SetPosition(size_t position);
    /// The rows from the cursor, forward or, for a negative count, backward. The cursor moves behind
    /// them unless `stay`.
    std::vector<RowPtr> Take(LONG count, bool stay);

    BOOKMARK CreateBookmark();
    bool FreeBookmark(BOOKMARK bookmark);
    /// False for an unknown bookmark. `moved` when its row went since.
    bool Locate(BOOKMARK bookmark, size_t& position, bool& moved);
    /// Moves the cursor from the bookmark by `rows`; gives how far it got.
    LONG Seek(size_t origin, LONG rows);
    /// Finds the first match from a position, forward or backward, and puts the cursor on it.
    bool FindRow(const CRestriction& restriction, size_t origin, bool backward);

    void Connect(mapi64::Connection connection) { m_connections.push_back(connection); }
    bool Disconnect(mapi64::Connection connection);
    bool HasConnections() const { return !m_connections.empty(); }
    std::vector<mapi64::Connection> Connections() const { return m_connections; }

    /// Takes over a change of the source and tells the connections about the rows in the view.
    void Apply(const RowChange& change);

private:
    struct Bookmark
    {
        RowPtr row; // null: behind the last row
        bool atEnd = false;
        bool moved = false;
    };

    void Prepare();
    void Rebuild();
    size_t PlaceOf(const IRow& row) const;
    void Insert(const RowPtr& row);
    void Erase(size_t place);
    void Tell(ULONG tableEvent, const RowPtr& row, size_t place);

    Source m_source;
    std::vector<ULONG> m_columns;
    std::vector<ULONG> m_defaultColumns;
    std::shared_ptr<const CRestriction> m_restriction;
    std::vector<SSortOrder> m_order;
    std::vector<RowPtr> m_rows;
    bool m_ready = false;
    size_t m_cursor = 0;
    std::map<BOOKMARK, Bookmark> m_bookmarks;
    BOOKMARK m_lastBookmark = BOOKMARK_END;
    std::vector<mapi64::Connection> m_connections;
};

} // namespace mapistore
