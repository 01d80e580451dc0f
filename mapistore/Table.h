#pragma once

#include <functional>

#include "Object.h"
#include "TableView.h"

namespace mapistore
{

/// How a table was made.
struct TableSetup
{
    const char* kind = ""; // "contents", "hierarchy", ...: the subject for fault plans
    bool unicode = false;  // width of text in columns that leave it open
    bool advises = true;   // false: Advise answers MAPI_E_NO_SUPPORT
    Operation madeBy = kNoOperation;
    std::shared_ptr<void> keepAlive;               // what the view's source needs
    std::shared_ptr<std::recursive_mutex> ownLock; // of a table whose rows nobody else changes
    std::recursive_mutex* sharedLock = nullptr;    // of one that follows a store
};

/// IMAPITable over a view.
class CTable final : public CObject<mapi64::IMAPITable>
{
public:
    CTable(TableSetup setup, std::shared_ptr<CTableView> view, Lifeline life);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) override;
    HRESULT WINAPI Advise(ULONG eventMask, IMAPIAdviseSink* sink, mapi64::Connection* out) override;
    HRESULT WINAPI Unadvise(mapi64::Connection connection) override;
    HRESULT WINAPI GetStatus(ULONG* status, ULONG* type) override;
    HRESULT WINAPI SetColumns(SPropTagArray* tags, ULONG flags) override;
    HRESULT WINAPI QueryColumns(ULONG flags, SPropTagArray** tags) override;
    HRESULT WINAPI GetRowCount(ULONG flags, ULONG* count) override;
    HRESULT WINAPI SeekRow(BOOKMARK origin, LONG rows, LONG* sought) override;
    HRESULT WINAPI SeekRowApprox(ULONG numerator, ULONG denominator) override;
    HRESULT WINAPI QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override;
    HRESULT WINAPI FindRow(SRestriction* res, BOOKMARK origin, ULONG flags) override;
    HRESULT WINAPI Restrict(SRestriction* res, ULONG flags) override;
    HRESULT WINAPI CreateBookmark(BOOKMARK* out) override;
    HRESULT WINAPI FreeBookmark(BOOKMARK bookmark) override;
    HRESULT WINAPI SortTable(SSortOrderSet* order, ULONG flags) override;
    HRESULT WINAPI QuerySortOrder(SSortOrderSet** order) override;
    HRESULT WINAPI QueryRows(LONG count, ULONG flags, SRowSet** rows) override;
    HRESULT WINAPI Abort() override;
    HRESULT WINAPI ExpandRow(
        ULONG cbKey, BYTE* key, ULONG count, ULONG flags, SRowSet** rows, ULONG* more) override;
    HRESULT WINAPI CollapseRow(ULONG cbKey, BYTE* key, ULONG flags, ULONG* count) override;
    HRESULT WINAPI WaitForCompletion(ULONG flags, ULONG timeoutMs, ULONG* status) override;
    HRESULT WINAPI
    GetCollapseState(ULONG flags, ULONG cbKey, BYTE* key, ULONG* cbState, BYTE** state) override;
    HRESULT WINAPI SetCollapseState(ULONG flags,
                                    ULONG cbState,
                                    BYTE* state,
                                    BOOKMARK* location) override;

protected:
    void Dispose() noexcept override;

private:
    template <class Body>
    HRESULT Do(Operation operation, Body&& body) noexcept
    {
        return Run(operation,
                   [&]() -> HRESULT {
                       const std::scoped_lock hold(ViewLock());
                       return body();
                   },
                   {m_setup.kind});
    }
    std::recursive_mutex& ViewLock() const
    {
        return m_setup.ownLock ? *m_setup.ownLock : *m_setup.sharedLock;
    }
    size_t OriginOf(Operation operation, BOOKMARK origin, bool& moved);
    SRowSet* WriteRows(const std::vector<RowPtr>& rows);
    void WriteRow(SRow& out, const IRow& row);
    const CValue* Column(const IRow& row, ULONG tag, CValue& scratch) const;

    TableSetup m_setup;
    std::shared_ptr<CTableView> m_view;
    std::map<mapi64::Connection, CLedger::Ticket> m_tickets;
};

/// A table of rows that stay as they are.
CTable* MakeStaticTable(const char* kind,
                        std::vector<RowPtr> rows,
                        std::vector<ULONG> columns,
                        bool unicode,
                        Operation madeBy,
                        Lifeline life);

/// Text columns in the width that the table was opened in.
std::vector<ULONG> ColumnsInWidth(std::vector<ULONG> columns, bool unicode);

} // namespace mapistore
