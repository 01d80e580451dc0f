#include <algorithm>
#include <cstring>

#include "Table.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPITable", method);
}

// Rows carry short values: a store cuts longer text and leaves out longer bytes.
constexpr size_t kLongestText = 255;
constexpr std::uint64_t kLongestBytes = 510;

} // namespace

/// The value of a column; one too long for a row is cut, or an error.
const CValue* CTable::Column(const IRow& row, ULONG tag, CValue& scratch) const
{
    const CValue* value = row.Find(PROP_ID(tag), scratch);
    if (value == nullptr)
    {
        return nullptr;
    }
    if (value->Type() == PT_UNICODE && (value->IsFile() || value->WideView().size() > kLongestText))
    {
        const std::wstring text = value->AsText();
        scratch = CValue::Text(value->Tag(), std::wstring_view(text).substr(0, kLongestText));
        return &scratch;
    }
    if (value->Type() == PT_BINARY && value->SizeInBytes() > kLongestBytes)
    {
        scratch = CValue::Error(value->Tag(), MAPI_E_NOT_ENOUGH_MEMORY);
        return &scratch;
    }
    return value;
}

void CTable::WriteRow(SRow& out, const IRow& row)
{
    const std::vector<ULONG>& columns = m_view->Columns();
    // Each row is a head of its own: FreeProws frees them one by one.
    CBuffer buffer(columns.size() * sizeof(SPropValue), Op("QueryRows"));
    auto* values = buffer.As<SPropValue>();
    for (size_t i = 0; i < columns.size(); ++i)
    {
        CValue scratch;
        const CValue* value = Column(row, columns[i], scratch);
        CValue forced;
        for (const auto& [tag, code] : Outcome().errors)
        {
            if (PROP_ID(tag) == PROP_ID(columns[i]))
            {
                forced = CValue::Error(tag, code);
                value = &forced;
            }
        }
        WriteValue(buffer, values[i], value, columns[i], m_setup.unicode, ~std::uint64_t{0});
    }
    out.ulAdrEntryPad = 0;
    out.cValues = static_cast<ULONG>(columns.size());
    out.lpProps = static_cast<SPropValue*>(buffer.Detach());
}

SRowSet* CTable::WriteRows(const std::vector<RowPtr>& rows)
{
    CBuffer buffer(CbNewSRowSet(rows.size()), Op("QueryRows"));
    auto* set = buffer.As<SRowSet>();
    set->cRows = 0;
    try
    {
        for (const RowPtr& row : rows)
        {
            WriteRow(set->aRow[set->cRows], *row);
            ++set->cRows;
        }
    }
    catch (...)
    {
        std::string problem;
        for (ULONG i = 0; i < set->cRows; ++i)
        {
            buffers::Free(set->aRow[i].lpProps, problem);
        }
        throw;
    }
    return static_cast<SRowSet*>(buffer.Detach());
}

HRESULT CTable::QueryRows(LONG count, ULONG flags, SRowSet** rows)
{
    ClearOut(rows);
    constexpr Operation kOp = Op("QueryRows");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, TBL_NOADVANCE);
        RequireOut(rows);
        if (count == 0)
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "no rows asked for");
        }
        if (Outcome().rows >= 0)
        {
            const auto most = static_cast<LONG>(std::min<std::int64_t>(Outcome().rows, INT32_MAX));
            count = std::clamp(count, -most, most);
        }
        *rows = WriteRows(m_view->Take(count, (flags & TBL_NOADVANCE) != 0));
        return S_OK;
    });
}

HRESULT CTable::Abort()
{
    // Nothing of a table's work outlasts its call, so there is never anything left to abort.
    return Do(Op("Abort"), [&]() -> HRESULT { return S_OK; });
}

HRESULT CTable::WaitForCompletion(ULONG flags, ULONG, ULONG* status)
{
    ClearOut(status);
    constexpr Operation kOp = Op("WaitForCompletion");
    return Do(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, 0);
        if (status != nullptr)
        {
            *status = TBLSTAT_COMPLETE;
        }
        return S_OK;
    });
}

HRESULT CTable::ExpandRow(ULONG, BYTE*, ULONG, ULONG, SRowSet** rows, ULONG* more)
{
    ClearOut(rows);
    ClearOut(more);
    return Do(Op("ExpandRow"), [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CTable::CollapseRow(ULONG, BYTE*, ULONG, ULONG* count)
{
    ClearOut(count);
    return Do(Op("CollapseRow"), [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CTable::GetCollapseState(ULONG, ULONG, BYTE*, ULONG* cbState, BYTE** state)
{
    ClearOut(cbState);
    ClearOut(state);
    return Do(Op("GetCollapseState"), [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CTable::SetCollapseState(ULONG, ULONG, BYTE*, BOOKMARK* location)
{
    ClearOut(location);
    return Do(Op("SetCollapseState"), [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

} // namespace mapistore
