#pragma once

#include <windows.h>

/// Counts what keeps the process serving. The module ends the process when the count falls to 0.
class IModuleLock
{
public:
    IModuleLock() = default;
    IModuleLock(const IModuleLock&) = delete;
    IModuleLock& operator=(const IModuleLock&) = delete;

    /// Both give the new count. Thread: any.
    virtual LONG Lock() noexcept = 0;
    virtual LONG Unlock() noexcept = 0;

protected:
    ~IModuleLock() = default;
};
