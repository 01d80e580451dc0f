#pragma once

#include "BinaryBlock.h"
#include "PlatformTypes.h"

/// One folder as the folder walk found it.
struct MapiFolderInfo
{
    ULONG level = 0; ///< depth below the start folder, 0 for its children
    WString name;
    WString path; ///< names from the start, joined by a backslash
    ULONG kind = 0;
    BinaryBlock entryId; ///< as the open folder gives it, which the table's need not be
    ULONG reserved[3] = {};
};
