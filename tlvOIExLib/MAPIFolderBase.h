#pragma once

#include <vector>

#include "BinaryBlock.h"
#include "ComRef.h"
#include "MapiHeaders.h"
#include "MapiItemRef.h"

/// Reads contents tables of folders and opens the messages in them.
///
/// Shape:  a mix-in without data.
/// Owner:  folders and tables are borrowed for the call.
/// Thread: the work thread.
class CMAPIFolderBase
{
protected:
    CMAPIFolderBase() = default;
    ~CMAPIFolderBase() = default;

    /// Restricts the table, sets the five columns of the listing on it and appends a reference for
    /// each appointment in it. The restriction and the columns stay on the table.
    /// Owner:  the nodes of `restriction` are the caller's and stay alive during the call.
    /// Errors: traced; what the table refuses ends the read with no further references.
    static void RestrictAppointmentOnTable(IMAPITable* table,
                                           SRestriction* restriction,
                                           std::vector<MapiItemRef>& refs);

    /// Opens a message through its folder.
    /// Errors: null unless the object is a message; `status` is what the folder answered.
    static CComRef<IMessage> OpenMessageInFolder(IMAPIFolder* folder,
                                                 const BinaryBlock& entryId,
                                                 HRESULT& status);

    /// The long-term identifier of an open message; empty when it has none.
    static BinaryBlock ReadEntryIdProperty(IMessage* message);

    /// Replaces the table's identifier of a message by its long-term one.
    /// Errors: false when the message cannot be opened; the reference is then left alone.
    static bool ResolveEntryId(IMAPIFolder* folder, MapiItemRef& reference);
};

/// Traces what a table said of its last failure, if it said anything.
void TraceTableError(IMAPITable* table, HRESULT status, const char* function);
