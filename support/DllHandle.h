#pragma once

#include <windows.h>

#include "ProcAddress.h"

/// One library of the system.
///
/// Owner:  frees the module at the end of its life if it loaded it.
/// Thread: one at a time.
class CDLLHandle final
{
public:
    constexpr CDLLHandle() noexcept = default;
    CDLLHandle(const CDLLHandle&) = delete;
    CDLLHandle& operator=(const CDLLHandle&) = delete;
    ~CDLLHandle();

    /// Loads `fileName` from the system directory and from nowhere else, unless it is loaded
    /// already. False when that fails.
    bool LoadSystemLibrary(const WCHAR* fileName) noexcept;

    [[nodiscard]] bool IsLoaded() const noexcept { return m_hModule != nullptr; }

    /// Null when the library is not loaded or has no such function.
    template <typename Fn>
    [[nodiscard]] Fn Find(const char* name) const noexcept
    {
        return m_hModule != nullptr ? ProcAddress<Fn>(m_hModule, name) : nullptr;
    }

private:
    HMODULE m_hModule = nullptr;
    bool m_bOwner = false;
};
