#include "MAPIFolderBase.h"

#include "MapiMemory.h"
#include "MapiUtil.h"
#include "OrdinalText.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CMAPIFolderBase::RestrictAppointmentOnTable";
constexpr WStringView kAppointmentClass = L"ipm.appointment";

constexpr unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

/// Empties the restriction of the table and sets the wanted one.
bool ReplaceRestriction(IMAPITable* table, SRestriction* restriction)
{
    HRESULT status = table->Restrict(nullptr, TBL_BATCH);
    if (FAILED(status))
    {
        TraceTableError(table, status, kFunction);
        SEND_TRACE(1, kFunction, "lpTable->Restrict [%8x]", Code(status));
        if (status == MAPI_E_NETWORK_ERROR)
        {
            SEND_TRACE(3, kFunction, "network error");
        }
        return false;
    }
    status = table->Restrict(restriction, TBL_BATCH);
    if (FAILED(status))
    {
        TraceTableError(table, status, kFunction);
        SEND_TRACE(3, kFunction, "6. lpTable->Restrict [%8x]", Code(status));
        return false;
    }
    return true;
}

/// Stops whatever the table is doing and goes back to its first row.
bool Rewind(IMAPITable* table)
{
    HRESULT status = table->Abort();
    if (status == MAPI_E_UNABLE_TO_ABORT)
    {
        ULONG state = 0;
        ULONG type = 0;
        status = table->GetStatus(&state, &type);
        SEND_TRACE(3, kFunction, "1.1 lpTable->GetStatus[%8x]", Code(status));
    }
    else if (FAILED(status))
    {
        SEND_TRACE(3, kFunction, "1.2 lpTable->Abort [%8x]", Code(status));
        return false;
    }
    LONG sought = 0;
    status = table->SeekRow(BOOKMARK_BEGINNING, 0, &sought);
    if (FAILED(status))
    {
        SEND_TRACE(3,
                   kFunction,
                   "3. lpTable->SeekRow(BOOKMARK_BEGINNING, 0, &lRowsSought) [%8x]",
                   Code(status));
        return false;
    }
    return true;
}

/// Reads all rows of the restricted table with the columns of the listing.
bool ReadRows(IMAPITable* table, CMapiRows& rows)
{
    ULONG count = 0;
    HRESULT status = table->GetRowCount(0, &count);
    if (FAILED(status))
    {
        SEND_TRACE(3, kFunction, "7. lpTable->GetRowCount[%8x]", Code(status));
    }
    if (count == 0)
    {
        SEND_TRACE(3, kFunction, "lpTable->GetRowCount: 0");
        return false;
    }

    SizedSPropTagArray(5, columns) = {
        5, {PR_INSTANCE_KEY, PR_ENTRYID, PR_PARENT_ENTRYID, PR_OBJECT_TYPE, PR_MESSAGE_CLASS_W}};
    status = table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0);
    if (status != S_OK)
    {
        if (FAILED(status))
        {
            SEND_TRACE(3, kFunction, "8. lpTable->SetColumns [%8x]", Code(status));
        }
        return false;
    }

    status = table->QueryRows(static_cast<LONG>(count), 0, rows.Put());
    if (status != S_OK || !rows)
    {
        SEND_TRACE(3,
                   kFunction,
                   "CMAPIFolderBase.RestrictAppointmentOnTable, lpTable->QueryRows "
                   "error[0x%08x]\n",
                   Code(status));
        return false;
    }
    return true;
}

/// The reference that a row of the listing gives; false when the row is no appointment.
bool ReferenceOfRow(const SRow& row, MapiItemRef& reference)
{
    WString messageClass;
    std::uint32_t objectType = 0;
    for (ULONG column = 0; column < row.cValues; column++)
    {
        const SPropValue& value = row.lpProps[column];
        switch (PROP_ID(value.ulPropTag))
        {
        case PROP_ID(PR_INSTANCE_KEY):
            prop::TakeBlock(&value, reference.instanceKey);
            break;
        case PROP_ID(PR_ENTRYID):
            prop::TakeBlock(&value, reference.entryId);
            break;
        case PROP_ID(PR_PARENT_ENTRYID):
            prop::TakeBlock(&value, reference.parentEntryId);
            break;
        case PROP_ID(PR_OBJECT_TYPE):
            prop::TakeNumber(&value, objectType);
            break;
        case PROP_ID(PR_MESSAGE_CLASS_W):
            prop::TakeText(&value, messageClass);
            break;
        default:
            break;
        }
    }
    return objectType == MAPI_MESSAGE &&
           LowerCaseText(messageClass).compare(0, kAppointmentClass.size(), kAppointmentClass) == 0;
}

} // namespace

void TraceTableError(IMAPITable* table, HRESULT status, const char* function)
{
    CMapiBuffer<MAPIERROR> error;
    if (table->GetLastError(status, 0, error.Put()) != S_OK || !error)
    {
        return;
    }
    // Without MAPI_UNICODE in the flags the texts are 8-bit, whatever the declaration says.
    const auto* const component = reinterpret_cast<const char*>(error->lpszComponent);
    const auto* const text = reinterpret_cast<const char*>(error->lpszError);
    SEND_TRACE(3,
               function,
               "GetLastError[%s][%s][%d][%d][%8x]",
               component != nullptr ? component : "",
               text != nullptr ? text : "",
               static_cast<int>(error->ulVersion),
               static_cast<int>(error->ulLowLevelError),
               static_cast<unsigned>(error->ulContext));
}

void CMAPIFolderBase::RestrictAppointmentOnTable(IMAPITable* table,
                                                 SRestriction* restriction,
                                                 std::vector<MapiItemRef>& refs)
{
    CMapiRows rows;
    if (!Rewind(table) || !ReplaceRestriction(table, restriction) || !ReadRows(table, rows))
    {
        return;
    }
    refs.reserve(refs.size() + rows.Count());
    for (const SRow& row : rows)
    {
        MapiItemRef reference;
        if (ReferenceOfRow(row, reference))
        {
            refs.push_back(std::move(reference));
        }
    }
}

CComRef<IMessage> CMAPIFolderBase::OpenMessageInFolder(IMAPIFolder* folder,
                                                       const BinaryBlock& entryId,
                                                       HRESULT& status)
{
    // The stock declaration wants a writable identifier that the provider only reads.
    BinaryBlock id(entryId);
    ULONG type = 0;
    CComRef<IUnknown> object;
    status = folder->OpenEntry(BlockSize(id),
                               reinterpret_cast<ENTRYID*>(id.data()),
                               nullptr,
                               MAPI_BEST_ACCESS,
                               &type,
                               object.Put());
    if (FAILED(status) || type != MAPI_MESSAGE || !object)
    {
        return nullptr;
    }
    // Without an interface asked for, a folder answers a message with IMessage itself.
    return CComRef<IMessage>::Adopt(static_cast<IMessage*>(object.Detach()));
}

BinaryBlock CMAPIFolderBase::ReadEntryIdProperty(IMessage* message)
{
    BinaryBlock entryId;
    CMapiBuffer<SPropValue> value;
    if (GetOneProp(message, PR_ENTRYID, value) == S_OK)
    {
        prop::TakeBlock(value.Get(), entryId);
    }
    return entryId;
}

bool CMAPIFolderBase::ResolveEntryId(IMAPIFolder* folder, MapiItemRef& reference)
{
    if (folder == nullptr)
    {
        return false;
    }
    HRESULT status = S_OK;
    const CComRef<IMessage> message = OpenMessageInFolder(folder, reference.entryId, status);
    if (!message)
    {
        return false;
    }
    if (BinaryBlock entryId = ReadEntryIdProperty(message.Get()); !entryId.empty())
    {
        reference.entryId = std::move(entryId);
    }
    return true;
}
