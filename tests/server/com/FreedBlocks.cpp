#include "FreedBlocks.h"

#include <atomic>

namespace
{

std::atomic<int> g_freed{0};

} // namespace

int FreedBlocks() noexcept
{
    return g_freed.load();
}

// The linker leads every call of at_mem_free here (--wrap).
extern "C"
{
    void __real_at_mem_free(void* block) noexcept;
    void __wrap_at_mem_free(void* block) noexcept;
}

void __wrap_at_mem_free(void* block) noexcept
{
    if (block != nullptr)
    {
        g_freed++;
    }
    __real_at_mem_free(block);
}
