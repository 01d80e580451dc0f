#pragma once

#include "BinaryBlock.h"
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
    /// `rowLimit` rows, 0 meaning all. While the table is busy the call waits and asks again, without
    /// a limit but a release that is asked for meanwhile. Returns the last status.
    static HRESULT QueryAllRows(IMAPITable* table,
                                SPropTagArray* columns,
                                SRestriction* restriction,
                                SSortOrderSet* sortOrder,
                                LONG rowLimit,
                                CMapiRows& rows,
                                ULONG flags);

    /// Finds the tag of a named property when the only way to ask is through an item of the folder:
    /// opens one message after the other until one knows the name, for a minute at most.
    ///
    /// Shape:  `tag` gets the store's identifier in its high half and `type` in its low half, or 0.
    /// Errors: false, traced, when no message of the table knows the name. The table's columns are
    ///         set, and it is left somewhere among its rows.
    static bool GetInformalTag(const GUID& propertySet,
                               IMAPIContainer* container,
                               IMAPITable* table,
                               LONG id,
                               ULONG type,
                               ULONG& tag);

    /// Appends the text of a public text property that is too long for one answer.
    /// Errors: traced; a text that cannot be read to its end is emptied.
    static void GetPropFromStream(IMAPIProp* object, const WCHAR* name, WString& text);

    /// Copies the photo of a contact: the data of the first attachment that is marked as one. Answers
    /// 1 when it was read.
    /// Errors: 0, with `picture` left alone, when there is none or it cannot be read whole.
    static ULONG GetContactPicture(IMessage* message, BinaryBlock& picture);
};

/// Reads one property. S_OK alone means that `value` holds it, whatever its type.
/// Errors: 1 for a null object, and MAPI_E_NOT_FOUND for every refusal, whatever the object said.
HRESULT GetOneProp(IMAPIProp* object, ULONG tag, CMapiBuffer<SPropValue>& value);

/// Reads one named property, named by its number when `isById` is set and by its text otherwise.
///
/// Shape:  `type` PT_UNSPECIFIED leaves the type to the store.
/// Errors: E_POINTER for a null object, MAPI_E_NOT_FOUND for a name that the store does not know and
///         for a property that the object lacks, otherwise what the object said.
HRESULT GetNamedProp(IMAPIProp* object,
                     const GUID& propertySet,
                     LONG id,
                     CMapiBuffer<SPropValue>& value,
                     ULONG type,
                     const WCHAR* name,
                     bool isById);

/// The tag of a property named by its number; `tag` is 0 when the store does not know the name.
void GetNamedTag(IMAPIProp* object, const GUID& propertySet, LONG id, ULONG type, ULONG& tag);

/// What a folder holds, by its container class. The first argument is not looked at.
ULONG ClassifyFolder(const void* ignored, IMAPIFolder* folder);
