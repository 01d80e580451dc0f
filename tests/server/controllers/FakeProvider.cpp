// A MAPI library whose functions are told by the test what to do, and whose allocator counts.

#include <atomic>
#include <cstdlib>
#include <new>

#include "FakeProviderApi.h"

namespace
{

std::atomic<const FakeProviderHooks*> g_hooks{nullptr};
std::atomic<LONG> g_liveBuffers{0};

/// In front of each block. The blocks of MAPIAllocateMore hang on their head.
struct BlockHeader
{
    BlockHeader* next;
    std::uint64_t padding; // blocks are aligned to 16 bytes
};

BlockHeader* NewBlock(ULONG cbSize)
{
    return static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + cbSize));
}

BlockHeader* HeaderOf(void* buffer)
{
    return static_cast<BlockHeader*>(buffer) - 1;
}

} // namespace

extern "C"
{
    __declspec(dllexport) void SetFakeProviderHooks(const FakeProviderHooks* hooks)
    {
        g_hooks = hooks;
    }

    __declspec(dllexport) LONG CountFakeProviderBuffers()
    {
        return g_liveBuffers.load();
    }

    __declspec(dllexport) HRESULT WINAPI MAPIInitialize(void* start)
    {
        const FakeProviderHooks* const hooks = g_hooks.load();
        return hooks != nullptr && hooks->initialize != nullptr ? hooks->initialize(start)
                                                                : MAPI_E_NO_SUPPORT;
    }

    __declspec(dllexport) void WINAPI MAPIUninitialize()
    {
        const FakeProviderHooks* const hooks = g_hooks.load();
        if (hooks != nullptr && hooks->uninitialize != nullptr)
        {
            hooks->uninitialize();
        }
    }

    __declspec(dllexport) HRESULT WINAPI
        MAPILogonEx(ULONG_PTR, LPTSTR profile, LPTSTR, ULONG flags, IMAPISession** session)
    {
        const FakeProviderHooks* const hooks = g_hooks.load();
        return hooks != nullptr && hooks->logonEx != nullptr
                   ? hooks->logonEx(profile, flags, session)
                   : MAPI_E_NO_SUPPORT;
    }

    __declspec(dllexport) HRESULT WINAPI MAPIAdminProfiles(ULONG, IProfAdmin** admin)
    {
        const FakeProviderHooks* const hooks = g_hooks.load();
        return hooks != nullptr && hooks->adminProfiles != nullptr ? hooks->adminProfiles(admin)
                                                                   : MAPI_E_NO_SUPPORT;
    }

#ifndef FAKE_PROVIDER_INCOMPLETE
    __declspec(dllexport) SCODE WINAPI MAPIAllocateBuffer(ULONG cbSize, void** buffer)
    {
        BlockHeader* const block = NewBlock(cbSize);
        *buffer = block != nullptr ? block + 1 : nullptr;
        g_liveBuffers += block != nullptr ? 1 : 0;
        return block != nullptr ? S_OK : E_OUTOFMEMORY;
    }
#endif

    __declspec(dllexport) SCODE WINAPI MAPIAllocateMore(ULONG cbSize, void* object, void** buffer)
    {
        BlockHeader* const block = NewBlock(cbSize);
        *buffer = block != nullptr ? block + 1 : nullptr;
        if (block == nullptr)
        {
            return E_OUTOFMEMORY;
        }
        block->next = HeaderOf(object)->next;
        HeaderOf(object)->next = block;
        return S_OK;
    }

    __declspec(dllexport) ULONG WINAPI MAPIFreeBuffer(void* buffer)
    {
        if (buffer != nullptr)
        {
            --g_liveBuffers;
            BlockHeader* block = HeaderOf(buffer);
            while (block != nullptr)
            {
                BlockHeader* const next = block->next;
                std::free(block);
                block = next;
            }
        }
        return S_OK;
    }
}
