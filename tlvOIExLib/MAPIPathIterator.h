#pragma once

#include <windows.h>

#include "PlatformTypes.h"

/// The places where the mail client's MAPI library may lie, one after the other: the installer's
/// component, the two paths that the client registered, the system directory.
///
/// Shape:  each place is asked once; there is no way back.
/// Thread: one.
/// Errors: a place without a path is passed over and shows in the trace alone.
// Class and member are named in documents and traces of this system as they stand here.
// NOLINTNEXTLINE(readability-identifier-naming)
class MAPIPathIterator
{
public:
    /// The next path, empty when all places were asked.
    void GetNextMAPIPath(WString& path);

private:
    void GetRegisteredMapiClient(bool bDLL, bool bDLLEx);
    void GetMailClientFromMSIData(HKEY key);
    void GetMailClientFromDllPath(HKEY key, bool bDLLEx);
    void GetMAPISystemDir();

    ULONG CurrentSource = 0; // NOLINT(readability-identifier-naming)
    WString m_path;          ///< the candidate just found
};
