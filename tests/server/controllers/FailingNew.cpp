#include "FailingNew.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local bool g_isFailing = false;

} // namespace

CFailingNew::CFailingNew() noexcept
{
    g_isFailing = true;
}

CFailingNew::~CFailingNew()
{
    g_isFailing = false;
}

void* operator new(std::size_t size)
{
    void* const block =
        size < kFailingBytes || !g_isFailing ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
