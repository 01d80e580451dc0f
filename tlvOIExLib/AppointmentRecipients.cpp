#include "ComRef.h"
#include "EmailAddress.h"
#include "MapiMemory.h"
#include "MAPIMessageBase.h"
#include "MapiUtil.h"
#include "NarrowText.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CMAPIMessageBase::GetMAPIApptAttenddeeList";

/// Time that the mail client gets to itself after each recipient.
constexpr DWORD kPauseMs = 1;

AttendeeInfo AttendeeOfRow(const SRow& row)
{
    AttendeeInfo attendee;
    for (ULONG column = 0; column < row.cValues; column++)
    {
        const SPropValue& value = row.lpProps[column];
        switch (value.ulPropTag)
        {
        case PR_DISPLAY_NAME_W:
            prop::TakeText(&value, attendee.name);
            break;
        case PR_EMAIL_ADDRESS_W:
            prop::TakeText(&value, attendee.address);
            break;
        case PR_RECIPIENT_TYPE:
            prop::TakeNumber(&value, attendee.recipientType);
            break;
        case PR_RECIPIENT_TRACKSTATUS:
            prop::TakeNumber(&value, attendee.trackStatus);
            break;
        case PR_RECIPIENT_FLAGS:
            prop::TakeNumber(&value, attendee.recipientFlags);
            break;
        case PR_ADDRTYPE_W:
            prop::TakeText(&value, attendee.addressType);
            break;
        case PR_SMTP_ADDRESS_W:
            prop::TakeText(&value, attendee.email);
            break;
        case PR_ENTRYID:
            prop::TakeBlock(&value, attendee.entryId);
            break;
        default:
            break;
        }
    }
    return attendee;
}

/// Whether the recipient can be reached; one whose name is an address is given that address.
bool CompleteAddress(AttendeeInfo& attendee)
{
    if (!attendee.email.empty() || !attendee.address.empty())
    {
        return true;
    }
    if (IsValidEmailAddress(attendee.name))
    {
        attendee.email = attendee.name;
        attendee.address = attendee.name;
        SEND_TRACE(0,
                   kFunction,
                   "Appointment's recipient's Display Name is mail address, emailType[%s], "
                   "AttdType[%d]",
                   NarrowText(attendee.addressType).c_str(),
                   static_cast<int>(attendee.recipientFlags));
        return true;
    }
    SEND_TRACE(0,
               kFunction,
               "Appointment's recipient[%s] without mail address, emailType[%s], AttdType[%d]",
               NarrowText(attendee.name).c_str(),
               NarrowText(attendee.addressType).c_str(),
               static_cast<int>(attendee.recipientFlags));
    return false;
}

} // namespace

void CMAPIMessageBase::GetMAPIApptAttenddeeList(IMessage* message,
                                                std::vector<AttendeeInfo>& attendees)
{
    if (message == nullptr)
    {
        return;
    }
    CComRef<IMAPITable> table;
    if (FAILED(message->GetRecipientTable(MAPI_UNICODE, table.Put())) || !table)
    {
        return;
    }
    ULONG count = 0;
    if (FAILED(table->GetRowCount(0, &count)) || count == 0)
    {
        return;
    }
    CMapiRows rows;
    if (FAILED(table->QueryRows(static_cast<LONG>(count), 0, rows.Put())) || !rows)
    {
        return;
    }
    for (const SRow& row : rows)
    {
        AttendeeInfo attendee = AttendeeOfRow(row);
        if (CompleteAddress(attendee))
        {
            attendees.push_back(std::move(attendee));
        }
        Sleep(kPauseMs);
    }
}
