#include "CountedHeap.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::size_t> g_asked{0};

} // namespace

std::size_t HeapBytesAsked() noexcept
{
    return g_asked.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size)
{
    g_asked.fetch_add(size, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
