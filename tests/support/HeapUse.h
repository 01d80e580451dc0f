#pragma once

#include <cstddef>
#include <ostream>

/// What is in use on all heaps of this process: of the program itself, of every library in it, and of the
/// system's allocators, those of COM and BSTRs among them.
struct HeapUse
{
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    bool operator==(const HeapUse&) const = default;
};

std::ostream& operator<<(std::ostream& out, const HeapUse& use);

/// Counts now. What other threads take and free meanwhile comes in or not.
HeapUse HeapsInUse() noexcept;
