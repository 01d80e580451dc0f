#pragma once

#include <windows.h>

#include <unknwn.h>

#include "ModuleLock.h"
#include "MonitorHost.h"

/// The command line of a server that the system starts.
inline constexpr const wchar_t* kServerRun = L"\"C:\\a b\\dtOIEx64.exe\" -Embedding";

/// A class of which nobody gets an object.
inline HRESULT RefuseToCreate(IModuleLock&, IUnknown** object) noexcept
{
    *object = nullptr;
    return E_NOTIMPL;
}

/// A class that needs nothing around it.
inline bool PlainMain(bool, const IMonitorHost&) noexcept
{
    return true;
}
