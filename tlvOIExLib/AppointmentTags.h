#pragma once

#include "MapiHeaders.h"

/// Tags of the named properties that a listing restricts by, as the store numbers them.
///
/// Shape:  the store's identifier in the high half, the type in the low half; 0 while not known.
/// Thread: the work thread. Found once and kept for the process: all folders of one store number
///         names alike.

extern ULONG g_ulStartTagEx; ///< clip start of a series
extern ULONG g_ulEndTagEx;   ///< clip end of a series
extern ULONG g_ulRecurringTag;
extern ULONG g_ulAppointmentStartTag;
extern ULONG g_ulAppointmentEndTag;

/// Finds the tags that are not known yet, through an item of the folder.
/// Errors: a tag that cannot be found stays 0 and is traced; the next call tries again. The table
///         is left somewhere among its rows.
void ResolveAppointmentTags(IMAPIFolder* folder, IMAPITable* table);
