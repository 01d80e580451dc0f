#pragma once

#include <windows.h>

#include "Owned.h"

struct LoadedModulePolicy
{
    using Type = HMODULE;
    static Type Empty() noexcept { return nullptr; }
    static void Free(Type value) noexcept { FreeLibrary(value); }
};

/// Owner of one loaded library. Empty is null.
using CLoadedModule = COwned<LoadedModulePolicy>;
