#pragma once

#include <windows.h>

#include "ModuleLock.h"

/// Reference count of an object that its class factory keeps for all clients.
///
/// Shape:  starts at 1, the factory's own reference, which does not keep the process alive. The
///         first outside reference (1 to 2) locks the module, the end of the last one (2 to 1)
///         unlocks it; in between the object goes on and serves the next client.
/// Thread: any.
class CCachedRefCount final
{
public:
    explicit CCachedRefCount(IModuleLock& module) noexcept : m_module(module) {}

    ULONG AddRef() noexcept
    {
        const LONG count = InterlockedIncrement(&m_count);
        if (count == 2)
        {
            m_module.Lock();
        }
        return static_cast<ULONG>(count);
    }

    /// At 0 the caller destroys the object.
    ULONG Release() noexcept
    {
        const LONG count = InterlockedDecrement(&m_count);
        if (count == 1)
        {
            m_module.Unlock();
        }
        return static_cast<ULONG>(count);
    }

private:
    IModuleLock& m_module;
    volatile LONG m_count = 1;
};
