#pragma once

#include "MapiHeaders.h"

/// How the tests reach into the fake provider library that the system's MAPI32.dll forwards to.

/// What the exported functions of the library do. A null entry answers MAPI_E_NO_SUPPORT.
struct FakeProviderHooks
{
    HRESULT (*initialize)(void* start);
    void (*uninitialize)();
    HRESULT (*logonEx)(const WCHAR* profile, ULONG flags, IMAPISession** session);
    HRESULT (*adminProfiles)(IProfAdmin** admin);
};

/// Export names of the two functions that only the tests call.
inline constexpr const char* kSetHooksName = "SetFakeProviderHooks";
inline constexpr const char* kLiveBuffersName = "CountFakeProviderBuffers";

using SetHooksFn = void (*)(const FakeProviderHooks* hooks);
/// How many buffers were handed out and not freed.
using LiveBuffersFn = LONG (*)();

inline constexpr const WCHAR* kFakeProviderFile = L"fakemapi64.dll";
/// The same library without MAPIAllocateBuffer.
inline constexpr const WCHAR* kIncompleteProviderFile = L"fakemapi64-incomplete.dll";
