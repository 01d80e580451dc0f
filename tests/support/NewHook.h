#pragma once

#include <cstddef>
#include <functional>

/// Calls `hook` with the size before each block that this thread takes with new, for as long as it
/// lives. A hook may wait, and a hook that throws std::bad_alloc refuses the block. What the hook
/// itself allocates goes through.
///
/// The program has to be linked with dt_new_hook, which replaces the new of the whole program.
/// Thread: one hook a thread at a time; other threads are not looked at.
class CNewHook final
{
public:
    explicit CNewHook(std::function<void(std::size_t)> hook);
    CNewHook(const CNewHook&) = delete;
    CNewHook& operator=(const CNewHook&) = delete;
    ~CNewHook();

private:
    std::function<void(std::size_t)> m_hook;
};
