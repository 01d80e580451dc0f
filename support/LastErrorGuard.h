#pragma once

#include <windows.h>

/// Keeps the thread's last error over a scope, so that cleaning up never hides the cause.
class CLastErrorGuard final
{
public:
    CLastErrorGuard() noexcept : m_error(GetLastError()) {}
    ~CLastErrorGuard() { SetLastError(m_error); }

    CLastErrorGuard(const CLastErrorGuard&) = delete;
    CLastErrorGuard& operator=(const CLastErrorGuard&) = delete;

private:
    DWORD m_error;
};
