#include "AppointmentTags.h"

#include "MapiUtil.h"
#include "PropertySets.h"
#include "Trace.h"

ULONG g_ulStartTagEx = 0;
ULONG g_ulEndTagEx = 0;
ULONG g_ulRecurringTag = 0;
ULONG g_ulAppointmentStartTag = 0;
ULONG g_ulAppointmentEndTag = 0;

void ResolveAppointmentTags(IMAPIFolder* folder, IMAPITable* table)
{
    // Identifiers in PSETID_Appointment. Source: [MS-OXPROPS].
    struct Wanted
    {
        ULONG* tag;
        long id;
        ULONG type;
        const char* failure;
    };
    const Wanted wanted[] = {
        {&g_ulStartTagEx, 0x8235, PT_SYSTIME, "Get IDNAME_ClipStart failed"},
        {&g_ulEndTagEx, 0x8236, PT_SYSTIME, "Get IDNAME_ClipEnd failed"},
        {&g_ulRecurringTag, 0x8223, PT_BOOLEAN, "Get IDNAME_ISRECURRING failed"},
        {&g_ulAppointmentStartTag, 0x820D, PT_SYSTIME, "Get IDNAME_STARTTIME failed"},
        {&g_ulAppointmentEndTag, 0x820E, PT_SYSTIME, "Get IDNAME_ENDTIME failed"},
    };
    for (const Wanted& entry : wanted)
    {
        if (*entry.tag != 0)
        {
            continue;
        }
        LONG sought = 0;
        (void)table->SeekRow(BOOKMARK_BEGINNING, 0, &sought);
        if (!CUtil::GetInformalTag(
                PSETID_Appointment, folder, table, entry.id, entry.type, *entry.tag))
        {
            SEND_TRACE(2, "COutlookCtrl::ListAppointmentFromFolder", "%s", entry.failure);
        }
    }
}
