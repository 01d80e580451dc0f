#include "MapiUtil.h"

#include <array>
#include <string>
#include <string_view>

#include "MapiDataStore.h"
#include "Trace.h"

namespace
{

constexpr LONG kAllRows = 0x0FFFFFFF;
constexpr ULONG kBusyWaitMs = 1000;

struct FolderClass
{
    std::string_view beginning;
    FolderKind kind;
};

// Compared in this order over the length of the entry, so that an entry also stands for every longer
// class. The point in the third place is that of either prefix, IPF and IPM.
constexpr std::array kFolderClasses{FolderClass{"IP..Note", FolderKindMail},
                                    FolderClass{"IP..Imap", FolderKindMail},
                                    FolderClass{"IP..Appointment", FolderKindAppointment},
                                    FolderClass{"IP..Contact", FolderKindContact},
                                    FolderClass{"IP..Journal", FolderKindJournal},
                                    FolderClass{"IP..StickyNote", FolderKindStickyNote},
                                    FolderClass{"IP..Task", FolderKindTask},
                                    FolderClass{"IP..", FolderKindOtherItems}};

} // namespace

HRESULT CUtil::QueryAllRows(IMAPITable* table,
                            SPropTagArray* columns,
                            SRestriction* restriction,
                            SSortOrderSet* sortOrder,
                            LONG rowLimit,
                            CMapiRows& rows,
                            ULONG flags)
{
    if (table == nullptr)
    {
        return E_FAIL;
    }
    if (columns != nullptr)
    {
        (void)table->SetColumns(columns, 0);
    }
    if (restriction != nullptr)
    {
        (void)table->Restrict(restriction, TBL_BATCH);
    }
    if (sortOrder != nullptr)
    {
        (void)table->SortTable(sortOrder, 0);
    }
    // Set long since behind a hibernate, when the server may be brought up again.
    const bool wasReleasing = MapiDataStore().IsReleasing();
    for (;;)
    {
        const HRESULT status =
            table->QueryRows(rowLimit != 0 ? rowLimit : kAllRows, flags, rows.Put());
        if (status != MAPI_E_BUSY)
        {
            return status;
        }
        SEND_TRACE(3, "CUtil::QueryAllRows", "QueryAllRows hResult==MAPI_E_BUSY");
        const HRESULT waited = table->WaitForCompletion(0, kBusyWaitMs, nullptr);
        if (waited == MAPI_E_NO_SUPPORT)
        {
            return waited;
        }
        if (!wasReleasing && MapiDataStore().IsReleasing())
        {
            // Nobody waits for the rows any more, and a table that stays busy must not hold up the
            // release.
            return status;
        }
    }
}

HRESULT GetOneProp(IMAPIProp* object, ULONG tag, CMapiBuffer<SPropValue>& value)
{
    value.Reset();
    if (object == nullptr)
    {
        return 1;
    }
    SizedSPropTagArray(1, tags) = {1, {tag}};
    ULONG cValues = 0;
    const HRESULT status = object->GetProps(
        reinterpret_cast<SPropTagArray*>(&tags), MAPI_UNICODE, &cValues, value.Put());
    if (status != S_OK || cValues == 0 || !value)
    {
        value.Reset();
        return MAPI_E_NOT_FOUND;
    }
    return S_OK;
}

ULONG ClassifyFolder(const void*, IMAPIFolder* folder)
{
    CMapiBuffer<SPropValue> value;
    if (GetOneProp(folder, PR_CONTAINER_CLASS_A, value) != S_OK ||
        value->ulPropTag != PR_CONTAINER_CLASS_A || value->Value.lpszA == nullptr)
    {
        return FolderKindUnknown;
    }
    std::string text = value->Value.lpszA;
    if (text.size() > 3 && text.starts_with("IP"))
    {
        text[2] = '.';
    }
    for (const FolderClass& entry : kFolderClasses)
    {
        if (text.starts_with(entry.beginning))
        {
            return entry.kind;
        }
    }
    return FolderKindUnknown;
}
