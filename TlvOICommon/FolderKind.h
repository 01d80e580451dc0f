#pragma once

#include "PlatformTypes.h"

/// What a folder holds, judged by its class.
enum FolderKind : ULONG
{
    FolderKindAny = 0, ///< as a wanted kind only
    FolderKindAppointment = 5,
    FolderKindContact = 6,
    FolderKindJournal = 7,
    FolderKindStickyNote = 8,
    FolderKindTask = 9,
    FolderKindOtherItems = 10,
    FolderKindMail = 11,
    FolderKindUnknown = 12,
};
