#include "AtMemory.h"

#include <cstdlib>

void* at_mem_alloc(std::size_t size) noexcept
{
    return std::malloc(size != 0 ? size : 1);
}

void* at_mem_realloc(void* block, std::size_t size) noexcept
{
    return std::realloc(block, size != 0 ? size : 1);
}

void at_mem_free(void* block) noexcept
{
    std::free(block);
}
