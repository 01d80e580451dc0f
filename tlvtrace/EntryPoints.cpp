#include "EntryPoints.h"

#include <windows.h>

#include <atomic>
#include <new>

#include "TraceLibrary.h"

namespace
{
// Made at the first line and never destroyed: programs trace until their very end, and some unload the
// library before. The module pins itself, so unloading leaves the writer thread its code.
INIT_ONCE g_made{};
std::atomic<tlvtrace::CTraceLibrary*> g_library{nullptr};

BOOL CALLBACK MakeLibrary(INIT_ONCE* /*once*/, void* /*parameter*/, void** /*context*/)
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&MakeLibrary),
                       &self);
    try
    {
        auto* const file = new tlvtrace::CTraceFile(
            tlvtrace::TraceDirectory(), L"strato-mapi", tlvtrace::RotationLimits{});
        auto* const library = new tlvtrace::CTraceLibrary(*file);
        library->Start();
        g_library.store(library, std::memory_order_release);
    }
    catch (const std::bad_alloc&)
    {
        // Without memory there is no trace; the program goes on.
    }
    return TRUE;
}

void Write(const tlvtrace::TraceRecord& record)
{
    tlvtrace::CTraceLibrary* library = g_library.load(std::memory_order_acquire);
    if (library == nullptr)
    {
        const DWORD lastError = GetLastError();
        InitOnceExecuteOnce(&g_made, MakeLibrary, nullptr, nullptr);
        SetLastError(lastError);
        library = g_library.load(std::memory_order_acquire);
    }
    if (library != nullptr)
    {
        library->Write(record);
    }
}
} // namespace

void TLVTRACERAWADLLNAME_RESIDENT(
    unsigned code, const char* module, const char* tag, int /*zero*/, const char* text) noexcept
{
    Write({code, module, tag, text});
}

void TLVTRACERAWA_RESIDENT(unsigned code, const char* tag, int /*zero*/, const char* text) noexcept
{
    Write({code, nullptr, tag, text});
}

void TLVTRACERAWA(unsigned code, const char* module, int /*zero*/, const char* text) noexcept
{
    Write({code, module, nullptr, text});
}

int TLVTRACEFLUSH(unsigned timeoutMs) noexcept
{
    const DWORD lastError = GetLastError();
    tlvtrace::CTraceLibrary* const library = g_library.load(std::memory_order_acquire);
    const bool isWritten = library == nullptr || library->Queue().WaitUntilWritten(timeoutMs);
    SetLastError(lastError);
    return isWritten ? 1 : 0;
}

BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, void* reserved)
{
    // At the end of the process all other threads are gone, the writer among them.
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr && g_library.load() != nullptr)
    {
        g_library.load()->Queue().DrainAtExit();
    }
    return TRUE;
}
