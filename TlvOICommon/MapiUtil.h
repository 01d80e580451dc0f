#pragma once

#include "FolderKind.h"
#include "MapiHeaders.h"
#include "MapiMemory.h"
#include "PlatformTypes.h"

/// What the MAPI code shares.
///
/// Owner:  nothing is kept between calls; objects are borrowed.
/// Thread: the work thread.
/// Errors: told by the result and by a trace line; a status of MAPI is never raised.
class CUtil final
{
public:
    /// Sets columns, restriction and sort order where given, their answers ignored, and reads up to
    /// `rowLimit` rows, 0 meaning all. While the table is busy the call waits and asks again.
    /// Returns the last status.
    static HRESULT QueryAllRows(IMAPITable* table,
                                SPropTagArray* columns,
                                SRestriction* restriction,
                                SSortOrderSet* sortOrder,
                                LONG rowLimit,
                                CMapiRows& rows,
                                ULONG flags);
};

/// Reads one property. S_OK alone means that `value` holds it, whatever its type.
/// Errors: E_POINTER without an object's place for the value, 1 for a null object, and
///         MAPI_E_NOT_FOUND for every refusal, whatever the object said.
HRESULT GetOneProp(IMAPIProp* object, ULONG tag, CMapiBuffer<SPropValue>& value);

/// What a folder holds, by its container class. The first argument is not looked at.
ULONG ClassifyFolder(const void* ignored, IMAPIFolder* folder);
