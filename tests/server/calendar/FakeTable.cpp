#include <algorithm>
#include <cstdio>
#include <cstring>

#include "DateTexts.h"
#include "FakeCalendar.h"
#include "PlatformDates.h"

namespace
{

std::string Hex(ULONG value)
{
    char text[16] = {};
    std::snprintf(text, sizeof(text), "%08lX", value);
    return text;
}

std::string ValueText(const SPropValue& value)
{
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_SYSTIME: {
        SYSTEMTIME time{};
        static_cast<void>(dates::FileTimeToSystemTime(value.Value.ft, time));
        return TextOf(time);
    }
    case PT_BOOLEAN:
        return value.Value.b != 0 ? "TRUE" : "FALSE";
    default:
        return std::to_string(value.Value.l);
    }
}

std::string Spelt(const SRestriction& node);

std::string SpeltList(const char* name, ULONG count, const SRestriction* nodes)
{
    std::string text = std::string(name) + "(";
    for (ULONG i = 0; i < count; ++i)
    {
        text += (i != 0 ? ", " : "") + Spelt(nodes[i]);
    }
    return text + ")";
}

std::string Spelt(const SRestriction& node)
{
    switch (node.rt)
    {
    case RES_AND:
        return SpeltList("AND", node.res.resAnd.cRes, node.res.resAnd.lpRes);
    case RES_OR:
        return SpeltList("OR", node.res.resOr.cRes, node.res.resOr.lpRes);
    case RES_NOT:
        return "NOT(" + Spelt(*node.res.resNot.lpRes) + ")";
    case RES_PROPERTY: {
        const SPropertyRestriction& property = node.res.resProperty;
        const char* const relation = property.relop == RELOP_GT   ? ">"
                                     : property.relop == RELOP_LT ? "<"
                                     : property.relop == RELOP_EQ ? "="
                                                                  : "?";
        // Both tags have to agree, or a store would refuse the comparison.
        return Hex(property.ulPropTag) +
               (property.lpProp->ulPropTag == property.ulPropTag ? " " : " WRONG TAG ") + relation +
               " " + ValueText(*property.lpProp);
    }
    default:
        return "?";
    }
}

/// Only what attachment tables are asked: one number equal to another.
bool Passes(const CFakeProps& row, const SRestriction& node)
{
    return node.rt == RES_PROPERTY && node.res.resProperty.relop == RELOP_EQ &&
           row.LongOf(node.res.resProperty.ulPropTag) == node.res.resProperty.lpProp->Value.l;
}

} // namespace

HRESULT CFakeTable::GetLastError(HRESULT, ULONG flags, MAPIERROR** error)
{
    calls.push_back("GetLastError flags " + std::to_string(flags));
    *error = nullptr;
    if (!hasErrorText)
    {
        return S_OK;
    }
    void* block = nullptr;
    MAPIAllocateBuffer(sizeof(MAPIERROR), &block);
    *error = static_cast<MAPIERROR*>(block);
    std::memset(block, 0, sizeof(MAPIERROR));
    static char s_component[] = "store";
    static char s_text[] = "no luck";
    (*error)->lpszComponent = reinterpret_cast<LPTSTR>(s_component);
    (*error)->lpszError = reinterpret_cast<LPTSTR>(s_text);
    (*error)->ulVersion = 2;
    (*error)->ulLowLevelError = 3;
    (*error)->ulContext = 0x44;
    return S_OK;
}

HRESULT CFakeTable::GetStatus(ULONG* state, ULONG* type)
{
    calls.emplace_back("GetStatus");
    *state = 0;
    *type = 0;
    return script.Next("GetStatus");
}

HRESULT CFakeTable::SetColumns(SPropTagArray* columns, ULONG flags)
{
    std::string call = "SetColumns";
    const HRESULT status = script.Next("SetColumns");
    if (status == S_OK)
    {
        m_columns.clear();
    }
    for (ULONG i = 0; i < columns->cValues; ++i)
    {
        call += " " + Hex(columns->aulPropTag[i]);
        if (status == S_OK)
        {
            m_columns.push_back(columns->aulPropTag[i]);
        }
    }
    calls.push_back(call + " flags " + std::to_string(flags));
    return status;
}

HRESULT CFakeTable::GetRowCount(ULONG, ULONG* count)
{
    calls.emplace_back("GetRowCount");
    *count = static_cast<ULONG>(m_isRestricted ? m_visible.size() : rows.size());
    return script.Next("GetRowCount");
}

HRESULT CFakeTable::SeekRow(BOOKMARK origin, LONG count, LONG* sought)
{
    calls.push_back(origin == BOOKMARK_BEGINNING && count == 0 ? "SeekRow" : "SeekRow elsewhere");
    *sought = 0;
    m_position = 0;
    return script.Next("SeekRow");
}

HRESULT CFakeTable::Restrict(SRestriction* restriction, ULONG flags)
{
    calls.push_back("Restrict " + (restriction != nullptr ? Spelt(*restriction) : "none") +
                    " flags " + std::to_string(flags));
    const HRESULT status = script.Next("Restrict");
    if (FAILED(status))
    {
        return status;
    }
    m_position = 0;
    m_isRestricted = restriction != nullptr && appliesRestrictions;
    m_visible.clear();
    for (std::size_t row = 0; row < rows.size() && m_isRestricted; ++row)
    {
        if (Passes(rows[row], *restriction))
        {
            m_visible.push_back(row);
        }
    }
    return status;
}

HRESULT CFakeTable::QueryRows(LONG count, ULONG, SRowSet** out)
{
    calls.push_back("QueryRows " + std::to_string(count));
    *out = nullptr;
    const HRESULT status = script.Next("QueryRows");
    if (FAILED(status))
    {
        return status;
    }
    if (onQueryRows)
    {
        onQueryRows();
    }
    std::vector<const CFakeProps*> chosen;
    const std::size_t total = m_isRestricted ? m_visible.size() : rows.size();
    for (; m_position < total && chosen.size() < static_cast<std::size_t>(count); ++m_position)
    {
        chosen.push_back(&rows[m_isRestricted ? m_visible[m_position] : m_position]);
    }
    void* block = nullptr;
    MAPIAllocateBuffer(static_cast<ULONG>(sizeof(SRowSet) + chosen.size() * sizeof(SRow)), &block);
    *out = static_cast<SRowSet*>(block);
    (*out)->cRows = static_cast<ULONG>(chosen.size());
    for (std::size_t i = 0; i < chosen.size(); ++i)
    {
        const std::vector<ULONG> tags = m_columns.empty() ? chosen[i]->Tags() : m_columns;
        MAPIAllocateBuffer(static_cast<ULONG>(tags.size() * sizeof(SPropValue)), &block);
        SRow& row = (*out)->aRow[i];
        row = {0, static_cast<ULONG>(tags.size()), static_cast<SPropValue*>(block)};
        for (std::size_t column = 0; column < tags.size(); ++column)
        {
            row.lpProps[column] = chosen[i]->Value(tags[column], block);
        }
    }
    return status;
}

HRESULT CFakeTable::Abort()
{
    calls.emplace_back("Abort");
    return script.Next("Abort");
}
