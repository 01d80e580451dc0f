#pragma once

#include <cstddef>

/// The general allocator: every block that changes hands between threads or leaves the program
/// through its exports comes from here and goes back here.
///
/// Thread: any; a block may be freed on another thread than the one that made it.
/// Errors: null when there is no memory. A size of 0 gives a block that can be freed.
extern "C"
{
    void* at_mem_alloc(std::size_t size) noexcept;
    /// A null block makes a new one. On failure the old block stands.
    void* at_mem_realloc(void* block, std::size_t size) noexcept;
    /// Null does nothing.
    void at_mem_free(void* block) noexcept;
}
