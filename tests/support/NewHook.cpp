#include "NewHook.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace
{

thread_local const std::function<void(std::size_t)>* t_hook = nullptr;

void CallHook(std::size_t size)
{
    const auto* const hook = std::exchange(t_hook, nullptr);
    if (hook == nullptr)
    {
        return;
    }
    try
    {
        (*hook)(size);
    }
    catch (...)
    {
        t_hook = hook;
        throw;
    }
    t_hook = hook;
}

} // namespace

CNewHook::CNewHook(std::function<void(std::size_t)> hook) : m_hook(std::move(hook))
{
    t_hook = &m_hook;
}

CNewHook::~CNewHook()
{
    t_hook = nullptr;
}

void* operator new(std::size_t size)
{
    CallHook(size);
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return operator new(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
