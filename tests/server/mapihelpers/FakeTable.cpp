#include <algorithm>

#include "FakeObjects.h"

namespace
{

SRowSet* MakeRows(const std::vector<FakeRow>& rows)
{
    void* block = nullptr;
    MAPIAllocateBuffer(static_cast<ULONG>(sizeof(SRowSet) + rows.size() * sizeof(SRow)), &block);
    auto* const set = static_cast<SRowSet*>(block);
    set->cRows = static_cast<ULONG>(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
    {
        const std::vector<SPropValue>& values = rows[row].values;
        SRow& out = set->aRow[row];
        out.ulAdrEntryPad = 0;
        out.cValues = static_cast<ULONG>(values.size());
        MAPIAllocateBuffer(static_cast<ULONG>(values.size() * sizeof(SPropValue)), &block);
        out.lpProps = static_cast<SPropValue*>(block);
        std::copy(values.begin(), values.end(), out.lpProps);
        for (ULONG i = 0; i < out.cValues; ++i)
        {
            if (PROP_TYPE(out.lpProps[i].ulPropTag) == PT_BINARY)
            {
                // The number that WithEntryId put where the size of the block belongs.
                const BYTE id = static_cast<BYTE>(values[i].Value.bin.cb);
                MAPIAllocateMore(1, out.lpProps, &block);
                *static_cast<BYTE*>(block) = id;
                out.lpProps[i].Value.bin = {1, static_cast<BYTE*>(block)};
            }
        }
    }
    return set;
}

} // namespace

FakeRow FakeRow::WithEntryId(BYTE id)
{
    SPropValue value{};
    value.ulPropTag = PR_ENTRYID;
    value.Value.bin.cb = id;
    return {{value}};
}

FakeRow FakeRow::WithoutEntryId()
{
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(PR_ENTRYID));
    value.Value.err = MAPI_E_NOT_FOUND;
    return {{value}};
}

FakeRow FakeRow::WithAttachment(LONG number)
{
    SPropValue value{};
    value.ulPropTag = PR_ATTACH_NUM;
    value.Value.l = number;
    return {{value}};
}

HRESULT CFakeTable::QueryInterface(REFIID, void**)
{
    return E_NOINTERFACE;
}
ULONG CFakeTable::AddRef()
{
    return static_cast<ULONG>(++references.held);
}
ULONG CFakeTable::Release()
{
    return static_cast<ULONG>(--references.held);
}
HRESULT CFakeTable::GetLastError(HRESULT, ULONG, MAPIERROR**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::Advise(ULONG, IMAPIAdviseSink*, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::Unadvise(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::GetStatus(ULONG*, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::SetColumns(SPropTagArray* columns, ULONG flags)
{
    std::string call = "SetColumns";
    for (ULONG i = 0; i < columns->cValues; ++i)
    {
        call += " " + HexNumber(columns->aulPropTag[i]);
    }
    calls.push_back(call + " flags " + HexNumber(flags));
    return setColumns;
}
HRESULT CFakeTable::QueryColumns(ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::GetRowCount(ULONG, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::SeekRow(BOOKMARK, LONG, LONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::SeekRowApprox(ULONG, ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::QueryPosition(ULONG*, ULONG*, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::FindRow(SRestriction*, BOOKMARK, ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::Restrict(SRestriction* restriction, ULONG flags)
{
    calls.push_back("Restrict flags " + HexNumber(flags));
    lastRestriction = *restriction;
    if (restriction->rt == RES_PROPERTY)
    {
        lastValue = *restriction->res.resProperty.lpProp;
    }
    return restrict;
}
HRESULT CFakeTable::CreateBookmark(BOOKMARK*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::FreeBookmark(BOOKMARK)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::SortTable(SSortOrderSet*, ULONG flags)
{
    calls.push_back("SortTable flags " + HexNumber(flags));
    return sort;
}
HRESULT CFakeTable::QuerySortOrder(SSortOrderSet**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::QueryRows(LONG count, ULONG flags, SRowSet** rows)
{
    calls.push_back("QueryRows " + HexNumber(static_cast<ULONG>(count)) + " flags " +
                    HexNumber(flags));
    const Batch batch = m_next < batches.size() ? batches[m_next++] : Batch{};
    *rows = FAILED(batch.status) || batch.isNull ? nullptr : MakeRows(batch.rows);
    return batch.status;
}
HRESULT CFakeTable::Abort()
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::ExpandRow(ULONG, BYTE*, ULONG, ULONG, SRowSet**, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::CollapseRow(ULONG, BYTE*, ULONG, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::WaitForCompletion(ULONG flags, ULONG timeoutMs, ULONG* status)
{
    calls.push_back("WaitForCompletion " + HexNumber(flags) + " " + std::to_string(timeoutMs) +
                    (status == nullptr ? " null" : " out"));
    return onWait();
}
HRESULT CFakeTable::GetCollapseState(ULONG, ULONG, BYTE*, ULONG*, BYTE**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeTable::SetCollapseState(ULONG, ULONG, BYTE*, BOOKMARK*)
{
    return MAPI_E_NO_SUPPORT;
}
