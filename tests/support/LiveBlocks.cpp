#include "LiveBlocks.h"

#include <atomic>
#include <cstddef>

// The linker leads every malloc and its kin of this program here (see dt_count_blocks).
extern "C"
{
    void* __real_malloc(std::size_t size);                    // NOLINT
    void* __real_calloc(std::size_t count, std::size_t size); // NOLINT
    void* __real_realloc(void* block, std::size_t size);      // NOLINT
    void __real_free(void* block);                            // NOLINT
    void* __wrap_malloc(std::size_t size);                    // NOLINT
    void* __wrap_calloc(std::size_t count, std::size_t size); // NOLINT
    void* __wrap_realloc(void* block, std::size_t size);      // NOLINT
    void __wrap_free(void* block);                            // NOLINT
}

namespace
{

constinit std::atomic<long> g_live{0};

void* Counted(void* block) noexcept
{
    if (block != nullptr)
    {
        g_live.fetch_add(1, std::memory_order_relaxed);
    }
    return block;
}

} // namespace

void* __wrap_malloc(std::size_t size)
{
    return Counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return Counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size)
{
    void* const moved = __real_realloc(block, size);
    return block == nullptr ? Counted(moved) : moved;
}

void __wrap_free(void* block)
{
    if (block != nullptr)
    {
        g_live.fetch_sub(1, std::memory_order_relaxed);
    }
    __real_free(block);
}

long LiveBlocks() noexcept
{
    return g_live.load(std::memory_order_relaxed);
}
