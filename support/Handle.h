#pragma once

#include <windows.h>

#include <utility>

/// Owner of one kernel handle. Empty is null, which is not what CreateFile answers: files have
/// CFileHandle.
///
/// Errors: closing keeps GetLastError.
template <LONG_PTR EmptyValue>
class CBasicHandle final
{
public:
    CBasicHandle() noexcept = default;
    explicit CBasicHandle(HANDLE handle) noexcept : m_handle(handle) {}
    CBasicHandle(const CBasicHandle&) = delete;
    CBasicHandle& operator=(const CBasicHandle&) = delete;
    CBasicHandle(CBasicHandle&& other) noexcept : m_handle(other.Detach()) {}
    CBasicHandle& operator=(CBasicHandle&& other) noexcept
    {
        if (this != &other)
        {
            Reset(other.Detach());
        }
        return *this;
    }
    ~CBasicHandle() { Reset(); }

    void Reset(HANDLE handle = Empty()) noexcept
    {
        HANDLE old = std::exchange(m_handle, handle);
        if (old != Empty())
        {
            const DWORD lastError = GetLastError();
            CloseHandle(old);
            SetLastError(lastError);
        }
    }

    [[nodiscard]] HANDLE Detach() noexcept { return std::exchange(m_handle, Empty()); }
    [[nodiscard]] HANDLE Get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != Empty(); }

private:
    static HANDLE Empty() noexcept
    {
        if constexpr (EmptyValue == 0)
        {
            return nullptr;
        }
        else
        {
            return reinterpret_cast<HANDLE>(EmptyValue);
        }
    }

    HANDLE m_handle = Empty();
};

using CHandle = CBasicHandle<0>;
/// Empty is INVALID_HANDLE_VALUE.
using CFileHandle = CBasicHandle<-1>;
