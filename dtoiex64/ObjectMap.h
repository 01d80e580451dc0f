#pragma once

#include <windows.h>

#include <array>

#include "MonitorHost.h"
#include "SingletonFactory.h"

/// One class that the module serves.
struct ObjectMapEntry
{
    const CLSID* clsid;
    UINT registryScript; ///< number of the REGISTRY resource
    CreateObjectFunction create;
    /// The class's part in the start (before wWinMain) and the stop (behind it) of the process.
    /// False when the start failed; the process then ends with -1.
    bool (*objectMain)(bool starting, const IMonitorHost& host) noexcept;
};

/// Every class of the module.
extern const std::array<ObjectMapEntry, 1> g_objectMap;
