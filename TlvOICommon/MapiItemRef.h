#pragma once

#include "BinaryBlock.h"
#include "PlatformTypes.h"

/// Says where one message lies: which profile and store, and by which identifiers it is reached.
struct MapiItemRef
{
    WString profileName;
    WString storeName;
    BinaryBlock parentEntryId; ///< PR_PARENT_ENTRYID
    BinaryBlock entryId;       ///< PR_ENTRYID; in some stores the table's short form at first
    BinaryBlock instanceKey;   ///< PR_INSTANCE_KEY, which alone identifies a deleted row
    BinaryBlock storeEntryId;
};
