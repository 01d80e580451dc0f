#pragma once

#include "PlatformTypes.h"

/// What bringing up a mail system answers. The client sees these numbers in OnInitialize.
enum BringUpResult : ULONG
{
    BringUpReady = 0,
    BringUpRefused = 1,            ///< no init type, or an unknown mail type
    BringUpNoLibrary = 0x80080002, ///< mail client, stub, library or its start failed
    BringUpNoDefaultProfile = 0x80080003,
    BringUpNoSession = 0x80080004,     ///< logon, current user or message store failed
    BringUpNotesSelected = 0x80004005, ///< E_FAIL: this mail system can only be selected
};
