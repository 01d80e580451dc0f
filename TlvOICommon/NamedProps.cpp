#include "ComRef.h"
#include "MapiUtil.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CUtil::GetInformalTag";
constexpr LONG kBatchRows = 10;
constexpr DWORD kSearchLimitMs = 60000;

/// Identifiers below this are no named properties.
constexpr ULONG kFirstNamedId = 0x8000;

MAPINAMEID NameById(const GUID& propertySet, LONG id) noexcept
{
    MAPINAMEID name{};
    // The platform's structure has no const; the set is only read.
    name.lpguid = const_cast<GUID*>(&propertySet);
    name.ulKind = MNID_ID;
    name.Kind.lID = id;
    return name;
}

/// Asks for one name. Only S_OK with an identifier of the named range is an answer: an unknown name
/// comes back as a success with a tag of type PT_ERROR.
HRESULT TagOfName(IMAPIProp* object, MAPINAMEID& name, ULONG& tag)
{
    MAPINAMEID* names = &name;
    CMapiBuffer<SPropTagArray> tags;
    const HRESULT status = object->GetIDsFromNames(1, &names, 0, tags.Put());
    if (FAILED(status))
    {
        return status;
    }
    if (status != S_OK || !tags || tags->cValues != 1 ||
        PROP_TYPE(tags->aulPropTag[0]) == PT_ERROR || PROP_ID(tags->aulPropTag[0]) < kFirstNamedId)
    {
        return MAPI_E_NOT_FOUND;
    }
    tag = tags->aulPropTag[0];
    return S_OK;
}

ULONG WithType(ULONG tag, ULONG type) noexcept
{
    return type != PT_UNSPECIFIED ? PROP_TAG(type, PROP_ID(tag)) : tag;
}

/// Asks the message of one row. `status` becomes that of the last call made: a row that is no message
/// fails nothing, one that cannot be opened or does not know the name does.
void AskRow(IMAPIContainer* container,
            const SRow& row,
            MAPINAMEID& name,
            ULONG type,
            ULONG& tag,
            HRESULT& status)
{
    if (row.cValues == 0 || row.lpProps[0].ulPropTag != PR_ENTRYID)
    {
        return;
    }
    const SBinary& entryId = row.lpProps[0].Value.bin;
    ULONG objectType = 0;
    CComRef<IUnknown> object;
    status = container->OpenEntry(entryId.cb,
                                  reinterpret_cast<ENTRYID*>(entryId.lpb),
                                  nullptr,
                                  MAPI_BEST_ACCESS,
                                  &objectType,
                                  object.Put());
    if (FAILED(status) || objectType != MAPI_MESSAGE || !object)
    {
        return;
    }
    ULONG found = 0;
    status = TagOfName(static_cast<IMAPIProp*>(object.Get()), name, found);
    if (status == S_OK)
    {
        tag = WithType(found, type);
    }
}

/// Searches row by row, and goes on to the next batch unless the last call of the batch failed.
/// `elapsedMs` is the time of the last row.
bool SearchRows(IMAPIContainer* container,
                IMAPITable* table,
                MAPINAMEID& name,
                ULONG type,
                ULONG& tag,
                DWORD& elapsedMs)
{
    const DWORD start = GetTickCount();
    HRESULT status = S_OK;
    while (tag == 0 && SUCCEEDED(status) && elapsedMs < kSearchLimitMs)
    {
        CMapiRows rows;
        status = table->QueryRows(kBatchRows, 0, rows.Put());
        if (SUCCEEDED(status) && (rows.Count() == 0 || rows.Count() > ULONG{kBatchRows}))
        {
            SEND_TRACE(3, kFunction, "lpsRowSet->cRows <= 0 || lpsRowSet->cRows > 10");
            return false;
        }
        if (FAILED(status))
        {
            SEND_TRACE(3, kFunction, "table QueryRows failed");
        }
        for (std::size_t row = 0; row < rows.Count() && tag == 0; row++)
        {
            AskRow(container, rows[row], name, type, tag, status);
            elapsedMs = GetTickCount() - start;
        }
    }
    return tag != 0;
}

} // namespace

bool CUtil::GetInformalTag(const GUID& propertySet,
                           IMAPIContainer* container,
                           IMAPITable* table,
                           LONG id,
                           ULONG type,
                           ULONG& tag)
{
    SEND_TRACE(3, kFunction, "GetApptInformalTag");
    tag = 0;
    if (container == nullptr || table == nullptr)
    {
        SEND_TRACE(3, kFunction, "Input param error");
        return false;
    }
    SizedSPropTagArray(2, columns) = {2, {PR_ENTRYID, PR_OBJECT_TYPE}};
    if (FAILED(table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0)))
    {
        SEND_TRACE(3, kFunction, "table SetColumns failed");
        return false;
    }
    MAPINAMEID name = NameById(propertySet, id);
    DWORD elapsedMs = 0;
    const bool isFound = SearchRows(container, table, name, type, tag, elapsedMs);
    if (elapsedMs > kSearchLimitMs)
    {
        SEND_TRACE(3, kFunction, "Time out");
    }
    return isFound;
}

HRESULT GetNamedProp(IMAPIProp* object,
                     const GUID& propertySet,
                     LONG id,
                     CMapiBuffer<SPropValue>& value,
                     ULONG type,
                     const WCHAR* name,
                     bool isById)
{
    value.Reset();
    if (object == nullptr)
    {
        return E_POINTER;
    }
    MAPINAMEID wanted = NameById(propertySet, id);
    if (!isById)
    {
        wanted.ulKind = MNID_STRING;
        wanted.Kind.lpwstrName = const_cast<WCHAR*>(name);
    }
    ULONG tag = 0;
    if (TagOfName(object, wanted, tag) != S_OK)
    {
        return MAPI_E_NOT_FOUND;
    }
    // The identifier alone: the tag that names come with may carry a type of its own.
    SizedSPropTagArray(1, tags) = {1, {PROP_TAG(type, PROP_ID(tag))}};
    ULONG count = 0;
    const HRESULT status = object->GetProps(
        reinterpret_cast<SPropTagArray*>(&tags), MAPI_UNICODE, &count, value.Put());
    if (status == MAPI_W_ERRORS_RETURNED)
    {
        CMapiBuffer<MAPIERROR> error;
        object->GetLastError(status, MAPI_UNICODE, error.Put());
        value.Reset();
        return MAPI_E_NOT_FOUND;
    }
    return status;
}

void GetNamedTag(IMAPIProp* object, const GUID& propertySet, LONG id, ULONG type, ULONG& tag)
{
    tag = 0;
    if (object == nullptr)
    {
        return;
    }
    MAPINAMEID name = NameById(propertySet, id);
    ULONG found = 0;
    if (TagOfName(object, name, found) == S_OK)
    {
        tag = WithType(found, type);
    }
}
