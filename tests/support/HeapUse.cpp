#include "HeapUse.h"

#include <windows.h>

#include <algorithm>
#include <array>

std::ostream& operator<<(std::ostream& out, const HeapUse& use)
{
    return out << use.blocks << " blocks of " << use.bytes << " bytes";
}

HeapUse HeapsInUse() noexcept
{
    // On the stack: a list on a heap would count itself.
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    HeapUse use;
    for (DWORD i = 0; i < std::min<DWORD>(count, static_cast<DWORD>(heaps.size())); ++i)
    {
        HANDLE const heap = heaps[i];
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry) != FALSE)
        {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
            {
                ++use.blocks;
                use.bytes += entry.cbData;
            }
        }
        HeapUnlock(heap);
    }
    return use;
}
