#pragma once

#include <windows.h>

/// The generation of the system, as numbers that readers of settings compare.
enum class OsClass : int
{
    Other = 0, ///< NT 5.2 and whatever is not below
    Windows95 = 1,
    Windows98 = 2,
    OldNt = 3,
    WindowsMe = 4,
    Windows2000 = 5,
    WindowsXp = 6,
    VistaOrLater = 8,
};

/// The class of a platform id of OSVERSIONINFO with its version.
[[nodiscard]] OsClass ClassifyOs(DWORD platformId, DWORD majorVersion, DWORD minorVersion) noexcept;

/// The class of this system, asked for once.
[[nodiscard]] OsClass CurrentOsClass() noexcept;
