#include "Table.h"

#include <algorithm>

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPITable", method);
}

constexpr ULONG kBatchFlags = TBL_ASYNC | TBL_BATCH;
constexpr ULONG kKnownEvents = fnevCriticalError | fnevTableModified | fnevExtended;

} // namespace

std::vector<ULONG> ColumnsInWidth(std::vector<ULONG> columns, bool unicode)
{
    for (ULONG& tag : columns)
    {
        const ULONG type = PROP_TYPE(tag);
        if (type == PT_UNICODE || type == PT_STRING8)
        {
            tag = ChangeType(tag, unicode ? PT_UNICODE : PT_STRING8);
        }
        else if (type == PT_MV_UNICODE || type == PT_MV_STRING8)
        {
            tag = ChangeType(tag, unicode ? PT_MV_UNICODE : PT_MV_STRING8);
        }
    }
    return columns;
}

CTable* MakeStaticTable(const char* kind,
                        std::vector<RowPtr> rows,
                        std::vector<ULONG> columns,
                        bool unicode,
                        Operation madeBy,
                        Lifeline life)
{
    TableSetup setup;
    setup.kind = kind;
    setup.unicode = unicode;
    setup.madeBy = madeBy;
    setup.ownLock = std::make_shared<std::recursive_mutex>();
    auto view = std::make_shared<CTableView>([rows = std::move(rows)] { return rows; },
                                             ColumnsInWidth(std::move(columns), unicode));
    return new CTable(std::move(setup), std::move(view), std::move(life));
}

CTable::CTable(TableSetup setup, std::shared_ptr<CTableView> view, Lifeline life)
    : CObject("IMAPITable", setup.madeBy, std::move(life)), m_setup(std::move(setup)),
      m_view(std::move(view))
{
}

bool CTable::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IMAPITable;
}

void CTable::Dispose() noexcept
{
    if (!m_tickets.empty())
    {
        // The table goes, and with it what it would have told; the connections stay in the ledger,
        // because nobody gave them back.
        const std::scoped_lock hold(ViewLock());
        for (const auto& [connection, ticket] : m_tickets)
        {
            m_view->Disconnect(connection);
            Runtime().Notifier().Disconnect(connection);
        }
    }
    m_view.reset();
    m_setup.keepAlive.reset();
}

HRESULT CTable::GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error)
{
    return LastError(Op("GetLastError"), hr, flags, error);
}

HRESULT CTable::Advise(ULONG eventMask, IMAPIAdviseSink* sink, mapi64::Connection* out)
{
    if (out != nullptr)
    {
        *out = 0;
    }
    constexpr Operation kOp = Op("Advise");
    return Do(kOp, [&]() -> HRESULT {
        RequireOut(out);
        RequireOut(sink);
        if ((eventMask & ~kKnownEvents) != 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "events that no table has");
        }
        if (!m_setup.advises)
        {
            return MAPI_E_NO_SUPPORT;
        }
        m_view->Count(); // from now on the view knows its rows
        const mapi64::Connection connection = Runtime().Notifier().Connect(sink);
        m_view->Connect(connection);
        m_tickets[connection] =
            Runtime().Ledger().Hand(LedgerKind::Connection, "connection", kOp, 0);
        *out = connection;
        return S_OK;
    });
}

HRESULT CTable::Unadvise(mapi64::Connection connection)
{
    constexpr Operation kOp = Op("Unadvise");
    const HRESULT hr = Do(kOp, [&]() -> HRESULT {
        const auto found = m_tickets.find(connection);
        if (found == m_tickets.end())
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a connection that this table did not give");
        }
        m_view->Disconnect(connection);
        Runtime().Ledger().Return(found->second);
        m_tickets.erase(found);
        return S_OK;
    });
    if (hr == S_OK)
    {
        // The sink's reference goes outside of the locks: its Release may do anything.
        Runtime().Notifier().Disconnect(connection);
    }
    return hr;
}

HRESULT CTable::GetStatus(ULONG* status, ULONG* type)
{
    ClearOut(status);
    ClearOut(type);
    return Do(Op("GetStatus"), [&]() -> HRESULT {
        RequireOut(status);
        RequireOut(type);
        *status = TBLSTAT_COMPLETE;
        *type = m_setup.ownLock ? TBLTYPE_SNAPSHOT : TBLTYPE_DYNAMIC;
        return S_OK;
    });
}

HRESULT CTable::SetColumns(SPropTagArray* tags, ULONG flags)
{
    constexpr Operation kOp = Op("SetColumns");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, kBatchFlags);
        RequireOut(tags);
        if (tags->cValues == 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a column set without columns");
        }
        std::vector<ULONG> columns(tags->aulPropTag, tags->aulPropTag + tags->cValues);
        for (const ULONG tag : columns)
        {
            if ((PROP_TYPE(tag) & MV_INSTANCE) != 0)
            {
                throw CMapiError(MAPI_E_TOO_COMPLEX, L"one row for each of several values");
            }
        }
        m_view->SetColumns(std::move(columns));
        return S_OK;
    });
}

HRESULT CTable::QueryColumns(ULONG flags, SPropTagArray** tags)
{
    ClearOut(tags);
    constexpr Operation kOp = Op("QueryColumns");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, TBL_ALL_COLUMNS);
        RequireOut(tags);
        const std::vector<ULONG> columns =
            (flags & TBL_ALL_COLUMNS) != 0 ? ColumnsInWidth(m_view->AllColumns(), m_setup.unicode)
                                           : m_view->Columns();
        CBuffer buffer(CbNewSPropTagArray(columns.size()), kOp);
        auto* out = buffer.As<SPropTagArray>();
        out->cValues = static_cast<ULONG>(columns.size());
        std::copy(columns.begin(), columns.end(), out->aulPropTag);
        *tags = static_cast<SPropTagArray*>(buffer.Detach());
        return S_OK;
    });
}

HRESULT CTable::GetRowCount(ULONG flags, ULONG* count)
{
    ClearOut(count);
    constexpr Operation kOp = Op("GetRowCount");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, TBL_NOWAIT);
        RequireOut(count);
        *count = static_cast<ULONG>(m_view->Count());
        return S_OK;
    });
}

size_t CTable::OriginOf(Operation operation, BOOKMARK origin, bool& moved)
{
    size_t position = 0;
    if (!m_view->Locate(origin, position, moved))
    {
        Refuse(operation, MAPI_E_INVALID_BOOKMARK, "an unknown bookmark");
    }
    return position;
}

HRESULT CTable::SeekRow(BOOKMARK origin, LONG rows, LONG* sought)
{
    if (sought != nullptr)
    {
        *sought = 0;
    }
    constexpr Operation kOp = Op("SeekRow");
    return Do(kOp, [&]() -> HRESULT {
        bool moved = false;
        const size_t position = OriginOf(kOp, origin, moved);
        const LONG done = m_view->Seek(position, rows);
        if (sought != nullptr)
        {
            *sought = done;
        }
        return moved ? MAPI_W_POSITION_CHANGED : S_OK;
    });
}

HRESULT CTable::SeekRowApprox(ULONG numerator, ULONG denominator)
{
    constexpr Operation kOp = Op("SeekRowApprox");
    return Do(kOp, [&]() -> HRESULT {
        if (denominator == 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a fraction of nothing");
        }
        const std::uint64_t count = m_view->Count();
        m_view->SetPosition(numerator >= denominator ? count : count * numerator / denominator);
        return S_OK;
    });
}

HRESULT CTable::QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator)
{
    ClearOut(row);
    ClearOut(numerator);
    ClearOut(denominator);
    return Do(Op("QueryPosition"), [&]() -> HRESULT {
        RequireOut(row);
        RequireOut(numerator);
        RequireOut(denominator);
        const auto count = static_cast<ULONG>(m_view->Count());
        *row = static_cast<ULONG>(m_view->Position());
        *numerator = *row;
        *denominator = count != 0 ? count : 1;
        return S_OK;
    });
}

HRESULT CTable::FindRow(SRestriction* res, BOOKMARK origin, ULONG flags)
{
    constexpr Operation kOp = Op("FindRow");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, DIR_BACKWARD);
        RequireOut(res);
        const auto restriction = CRestriction::Compile(*res);
        bool moved = false;
        const size_t position = OriginOf(kOp, origin, moved);
        const bool found = m_view->FindRow(*restriction, position, (flags & DIR_BACKWARD) != 0);
        if (!found)
        {
            return MAPI_E_NOT_FOUND;
        }
        return moved ? MAPI_W_POSITION_CHANGED : S_OK;
    });
}

HRESULT CTable::Restrict(SRestriction* res, ULONG flags)
{
    constexpr Operation kOp = Op("Restrict");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, kBatchFlags);
        std::shared_ptr<const CRestriction> restriction;
        if (res != nullptr)
        {
            restriction = CRestriction::Compile(*res);
        }
        m_view->Restrict(std::move(restriction), (flags & TBL_BATCH) != 0);
        return S_OK;
    });
}

HRESULT CTable::CreateBookmark(BOOKMARK* out)
{
    ClearOut(out);
    return Do(Op("CreateBookmark"), [&]() -> HRESULT {
        RequireOut(out);
        *out = m_view->CreateBookmark();
        return S_OK;
    });
}

HRESULT CTable::FreeBookmark(BOOKMARK bookmark)
{
    constexpr Operation kOp = Op("FreeBookmark");
    return Do(kOp, [&]() -> HRESULT {
        if (!m_view->FreeBookmark(bookmark))
        {
            Refuse(kOp, MAPI_E_INVALID_BOOKMARK, "an unknown bookmark");
        }
        return S_OK;
    });
}

HRESULT CTable::SortTable(SSortOrderSet* order, ULONG flags)
{
    constexpr Operation kOp = Op("SortTable");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, kBatchFlags);
        RequireOut(order);
        if (order->cCategories != 0 || order->cExpanded != 0)
        {
            throw CMapiError(MAPI_E_TOO_COMPLEX, L"categories");
        }
        std::vector<SSortOrder> keys(order->aSort, order->aSort + order->cSorts);
        for (const SSortOrder& key : keys)
        {
            if ((PROP_TYPE(key.ulPropTag) & MV_FLAG) != 0 || key.ulOrder > TABLE_SORT_DESCEND)
            {
                throw CMapiError(MAPI_E_TOO_COMPLEX, L"a sort key of several values");
            }
        }
        m_view->Sort(std::move(keys), (flags & TBL_BATCH) != 0);
        return S_OK;
    });
}

HRESULT CTable::QuerySortOrder(SSortOrderSet** order)
{
    ClearOut(order);
    constexpr Operation kOp = Op("QuerySortOrder");
    return Do(kOp, [&]() -> HRESULT {
        RequireOut(order);
        const std::vector<SSortOrder>& keys = m_view->SortOrder();
        CBuffer buffer(CbNewSSortOrderSet(keys.size()), kOp);
        auto* out = buffer.As<SSortOrderSet>();
        out->cSorts = static_cast<ULONG>(keys.size());
        out->cCategories = 0;
        out->cExpanded = 0;
        std::copy(keys.begin(), keys.end(), out->aSort);
        *order = static_cast<SSortOrderSet*>(buffer.Detach());
        return S_OK;
    });
}

} // namespace mapistore
