#pragma once

#include <windows.h>

#include "Owned.h"

struct RegKeyPolicy
{
    using Type = HKEY;
    static Type Empty() noexcept { return nullptr; }
    static void Free(Type value) noexcept { RegCloseKey(value); }
};

/// Owner of one opened registry key. Empty is null.
using CRegKey = COwned<RegKeyPolicy>;
