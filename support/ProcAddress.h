#pragma once

#include <windows.h>

/// The function `name` of a loaded library as `Fn`, null when it has none.
template <typename Fn>
[[nodiscard]] Fn ProcAddress(HMODULE library, const char* name) noexcept
{
    // By way of the type that stands for any function, which the compiler lets pass.
    return reinterpret_cast<Fn>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}
