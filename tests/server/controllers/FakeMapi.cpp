#include "FakeMapi.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "FakeObjects.h"

FakeMapi* g_fakeMapi = nullptr;

HRESULT FakeMapi::Enter(const std::string& operation)
{
    calls.push_back(operation);
    if (const auto action = actions.find(operation); action != actions.end())
    {
        action->second();
    }
    const auto planned = answers.find(operation);
    if (planned == answers.end() || planned->second.empty())
    {
        return S_OK;
    }
    const HRESULT answer = planned->second.front();
    planned->second.erase(planned->second.begin());
    return answer;
}

std::size_t FakeMapi::CountCalls(const std::string& operation) const
{
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), operation));
}

namespace
{

void* More(void* head, std::size_t cbSize)
{
    void* block = nullptr;
    (void)MAPIAllocateMore(static_cast<ULONG>(cbSize), head, &block);
    return block;
}

class CFakeTable final : public CFakeObject<ITableStub>
{
public:
    CFakeTable(std::string name, std::vector<FakeProps> rows)
        : CFakeObject(std::move(name)), m_rows(std::move(rows))
    {
    }

    HRESULT STDMETHODCALLTYPE SetColumns(SPropTagArray* tags, ULONG flags) override
    {
        NoteFlags("SetColumns", flags);
        NoteTags("SetColumns", *tags);
        const HRESULT answer = Enter("SetColumns");
        // A failure comes from a table that set them all the same.
        m_columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
        return answer;
    }

    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override
    {
        const HRESULT answer = Enter("GetRowCount");
        *count = SUCCEEDED(answer) || g_fakeMapi->isCountToldOnFailure
                     ? static_cast<ULONG>(m_rows.size())
                     : 0;
        return answer;
    }

    HRESULT STDMETHODCALLTYPE Restrict(SRestriction* restriction, ULONG flags) override
    {
        const HRESULT answer = Enter("Restrict");
        NoteFlags("Restrict", flags);
        if (restriction != nullptr && restriction->rt == RES_PROPERTY)
        {
            g_fakeMapi->lastRestriction = *restriction;
            g_fakeMapi->lastRestrictionTag = restriction->res.resProperty.ulPropTag;
            g_fakeMapi->lastRestrictionText = restriction->res.resProperty.lpProp->Value.lpszW;
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG*) override
    {
        return Enter("WaitForCompletion");
    }

    HRESULT STDMETHODCALLTYPE QueryRows(LONG limit, ULONG flags, SRowSet** rows) override
    {
        *rows = nullptr;
        NoteFlags("QueryRows", flags);
        NoteLimit("QueryRows", limit);
        const HRESULT answer = Enter("QueryRows");
        if (FAILED(answer))
        {
            return answer;
        }
        const std::size_t count = std::min(m_rows.size(), static_cast<std::size_t>(limit));
        (void)MAPIAllocateBuffer(static_cast<ULONG>(CbNewSRowSet(count)),
                                 reinterpret_cast<void**>(rows));
        (*rows)->cRows = static_cast<ULONG>(count);
        for (std::size_t row = 0; row < count; ++row)
        {
            FillRow(m_rows[row], (*rows)->aRow[row]);
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG mask, IMAPIAdviseSink* sink, ULONG* connection) override
    {
        const HRESULT answer = Enter("Advise");
        NoteFlags("Advise", mask);
        if (SUCCEEDED(answer))
        {
            sink->AddRef();
            g_fakeMapi->sinks.push_back(sink);
            // Eight bytes, as 64-bit MAPI writes them: above four billion, with the place below.
            const ULONG_PTR wide = (ULONG_PTR{1} << 32) | g_fakeMapi->sinks.size();
            std::memcpy(connection, &wide, sizeof wide);
        }
        return answer;
    }

    HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override
    {
        const HRESULT answer = Enter("Unadvise");
        if (connection == 0 || connection > g_fakeMapi->sinks.size())
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        if (IMAPIAdviseSink* const sink = std::exchange(g_fakeMapi->sinks[connection - 1], nullptr))
        {
            sink->Release();
        }
        return answer;
    }

private:
    void FillRow(const FakeProps& props, SRow& row) const
    {
        row.cValues = static_cast<ULONG>(m_columns.size());
        (void)MAPIAllocateBuffer(static_cast<ULONG>(sizeof(SPropValue) * m_columns.size()),
                                 reinterpret_cast<void**>(&row.lpProps));
        for (std::size_t column = 0; column < m_columns.size(); ++column)
        {
            row.lpProps[column] = FakePropValue(props, m_columns[column], row.lpProps);
        }
    }

    std::vector<FakeProps> m_rows;
    std::vector<ULONG> m_columns;
};

class CFakeProfAdmin final : public CFakeObject<IProfAdminStub>
{
public:
    CFakeProfAdmin() : CFakeObject("IProfAdmin") {}

    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG, IMAPITable** table) override
    {
        *table = nullptr;
        const HRESULT answer = Enter("GetProfileTable");
        if (SUCCEEDED(answer))
        {
            *table = MakeFakeTable("ProfileTable", g_fakeMapi->profiles).Detach();
        }
        return answer;
    }
};

} // namespace

SPropValue FakePropValue(const FakeProps& props, ULONG tag, void* head)
{
    SPropValue value{};
    const auto found = std::find_if(props.begin(), props.end(), [tag](const FakeValue& candidate) {
        return PROP_ID(candidate.tag) == PROP_ID(tag);
    });
    if (found == props.end())
    {
        value.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tag));
        value.Value.err = MAPI_E_NOT_FOUND;
        return value;
    }
    value.ulPropTag = found->tag;
    if (const auto* const number = std::get_if<LONG>(&found->data))
    {
        value.Value.l = *number;
    }
    else if (const auto* const flag = std::get_if<bool>(&found->data))
    {
        // What stands beside the 16 bits is nobody's promise.
        value.Value.l = -1;
        value.Value.b = *flag ? 1 : 0;
    }
    else if (const auto* const narrow = std::get_if<std::string>(&found->data))
    {
        value.Value.lpszA = static_cast<char*>(More(head, narrow->size() + 1));
        std::memcpy(value.Value.lpszA, narrow->c_str(), narrow->size() + 1);
    }
    else if (const auto* const wide = std::get_if<std::wstring>(&found->data))
    {
        const std::size_t cbText = (wide->size() + 1) * sizeof(WCHAR);
        value.Value.lpszW = static_cast<WCHAR*>(More(head, cbText));
        std::memcpy(value.Value.lpszW, wide->c_str(), cbText);
    }
    else
    {
        const auto& block = std::get<BinaryBlock>(found->data);
        value.Value.bin.cb = BlockSize(block);
        value.Value.bin.lpb = static_cast<BYTE*>(More(head, block.size() + 1));
        std::copy(block.begin(), block.end(), value.Value.bin.lpb);
    }
    return value;
}

HRESULT AnswerGetProps(const FakeProps& props,
                       const SPropTagArray* tags,
                       ULONG* count,
                       SPropValue** values)
{
    *count = tags->cValues;
    (void)MAPIAllocateBuffer(static_cast<ULONG>(sizeof(SPropValue) * tags->cValues),
                             reinterpret_cast<void**>(values));
    HRESULT answer = S_OK;
    for (ULONG index = 0; index < tags->cValues; ++index)
    {
        (*values)[index] = FakePropValue(props, tags->aulPropTag[index], *values);
        if (PROP_TYPE((*values)[index].ulPropTag) == PT_ERROR)
        {
            answer = MAPI_W_ERRORS_RETURNED;
        }
    }
    return answer;
}

CComRef<IMAPITable> MakeFakeTable(std::string name, std::vector<FakeProps> rows)
{
    return CComRef<IMAPITable>::Adopt(new CFakeTable(std::move(name), std::move(rows)));
}

CComRef<IProfAdmin> MakeFakeProfAdmin()
{
    return CComRef<IProfAdmin>::Adopt(new CFakeProfAdmin());
}
