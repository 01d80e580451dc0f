#include "ComRef.h"
#include "MapiMemory.h"
#include "MAPIMessageBase.h"
#include "MapiUtil.h"
#include "Minutes1601.h"
#include "PlatformDates.h"
#include "PropertySets.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

constexpr long kStartWhole = 0x820D; // PSETID_Appointment, PidLidAppointmentStartWhole

/// The numbers of the attachments of a series that are messages: its changed instances.
/// Errors: false, traced, when the message gives no table.
bool QueryEmbedded(IMessage* message, const char* function, CMapiRows& rows)
{
    if (message == nullptr)
    {
        SEND_TRACE(0, function, "lpAttachedMessage is NULL");
        return false;
    }
    CComRef<IMAPITable> table;
    const HRESULT status = message->GetAttachmentTable(MAPI_UNICODE, table.Put());
    if (FAILED(status) || !table)
    {
        SEND_TRACE(0, function, "GetAttachmentTable failed, hresult=%d", static_cast<int>(status));
        return false;
    }
    SPropValue method{};
    method.ulPropTag = PR_ATTACH_METHOD;
    method.Value.l = ATTACH_EMBEDDED_MSG;
    SRestriction isEmbedded{};
    isEmbedded.rt = RES_PROPERTY;
    isEmbedded.res.resProperty.relop = RELOP_EQ;
    isEmbedded.res.resProperty.ulPropTag = PR_ATTACH_METHOD;
    isEmbedded.res.resProperty.lpProp = &method;
    SizedSPropTagArray(1, columns) = {1, {PR_ATTACH_NUM}};
    return SUCCEEDED(CUtil::QueryAllRows(
        table.Get(), reinterpret_cast<SPropTagArray*>(&columns), &isEmbedded, nullptr, 0, rows, 0));
}

CComRef<IMessage> OpenEmbedded(IMessage* message, const SRow& row)
{
    if (row.cValues == 0 || row.lpProps[0].ulPropTag != PR_ATTACH_NUM)
    {
        return nullptr;
    }
    CComRef<IAttach> attachment;
    const auto number = static_cast<ULONG>(row.lpProps[0].Value.l);
    if (FAILED(message->OpenAttach(number, nullptr, MAPI_BEST_ACCESS, attachment.Put())) ||
        !attachment)
    {
        return nullptr;
    }
    CComRef<IMessage> embedded;
    if (FAILED(attachment->OpenProperty(
            PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_MODIFY, embedded.PutUnknown())))
    {
        return nullptr;
    }
    return embedded;
}

bool IsInWindow(const SYSTEMTIME& time, const FILETIME& windowStart, const FILETIME& windowEnd)
{
    FILETIME moment{};
    return dates::SystemTimeToFileTime(time, moment) &&
           dates::CompareFileTime(windowStart, moment) <= 0 &&
           dates::CompareFileTime(moment, windowEnd) <= 0;
}

} // namespace

bool CMAPIMessageBase::GetExceptionAppointmentInfo(const FILETIME& windowStart,
                                                   const FILETIME& windowEnd,
                                                   IMessage* message,
                                                   MeetingInfo& info)
{
    constexpr const char* kFunction = "CMAPIMessageBase::GetExceptionAppointmentInfo";
    CMapiRows rows;
    if (!QueryEmbedded(message, kFunction, rows))
    {
        return false;
    }
    bool isFound = false;
    for (const SRow& row : rows)
    {
        const CComRef<IMessage> embedded = OpenEmbedded(message, row);
        if (!embedded)
        {
            continue;
        }
        MeetingInfo candidate;
        GetMAPIAppointmentInfo(embedded.Get(), candidate);
        if (IsInWindow(candidate.firstTime, windowStart, windowEnd))
        {
            info = std::move(candidate);
            isFound = true;
            SEND_TRACE(0, kFunction, "Get the mathced instance of Recurrence meeting.");
        }
    }
    return isFound;
}

bool CMAPIMessageBase::GetExceptionRecipients(IMessage* message, SeriesRecipients& recipients)
{
    CMapiRows rows;
    if (!QueryEmbedded(message, "CMAPIMessageBase::GetExceptionRecipients", rows))
    {
        return false;
    }
    bool isComplete = true;
    for (const SRow& row : rows)
    {
        const CComRef<IMessage> embedded = OpenEmbedded(message, row);
        if (!embedded)
        {
            isComplete = false;
            continue;
        }
        SYSTEMTIME start{};
        CMapiBuffer<SPropValue> value;
        if (GetNamedProp(embedded.Get(),
                         PSETID_Appointment,
                         kStartWhole,
                         value,
                         PT_SYSTIME,
                         nullptr,
                         true) == S_OK)
        {
            prop::TakeTime(value.Get(), start);
        }
        std::vector<AttendeeInfo> attendees;
        GetMAPIApptAttenddeeList(embedded.Get(), attendees);
        recipients.emplace(MinutesFromSystemTime(start), std::move(attendees));
    }
    return isComplete;
}
