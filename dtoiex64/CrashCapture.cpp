#include "CrashCapture.h"

#include <atomic>
#include <exception>

#include "CrashDump.h"
#include "CrashFiles.h"
#include "Trace.h"

namespace
{

constexpr const wchar_t* kTraceFile = L"strato-mapi.txt";
constexpr const wchar_t* kTraceCopy = L"strato_mapi_last_crash.txt";
constexpr const wchar_t* kDumpFile = L"dtOIEx64.exe"
                                     L"."
                                     L"300"
                                     L".dmp";

/// A body for a function on x86-64 that returns 0 at once: xor eax, eax; ret.
constexpr BYTE kReturnZero[] = {0x33, 0xC0, 0xC3};

/// The code of the exception that stands for std::terminate. Bit 29 marks it as the program's own.
constexpr DWORD kTerminateCode = 0xE0544552;

/// The code under which our compiler's C++ exceptions travel.
constexpr DWORD kGccThrow = 0x20474343;

void (*g_release)() noexcept = nullptr;
std::atomic<bool> g_isEntered{false};

/// Overwrites the start of SetUnhandledExceptionFilter in this process. Where the system forbids that,
/// the filter stays as exposed as it is in any program.
void LockFilterIn() noexcept
{
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    void* const function =
        kernel != nullptr
            ? reinterpret_cast<void*>(GetProcAddress(kernel, "SetUnhandledExceptionFilter"))
            : nullptr;
    MEMORY_BASIC_INFORMATION region{};
    DWORD before = 0;
    if (function == nullptr || VirtualQuery(function, &region, sizeof region) == 0 ||
        VirtualProtect(function, sizeof kReturnZero, PAGE_EXECUTE_READWRITE, &before) == FALSE)
    {
        return;
    }
    WriteProcessMemory(GetCurrentProcess(), function, kReturnZero, sizeof kReturnZero, nullptr);
    VirtualProtect(function, sizeof kReturnZero, region.Protect, &before);
    FlushInstructionCache(GetCurrentProcess(), function, sizeof kReturnZero);
}

/// An uncaught C++ exception on the main thread, or one that leaves a noexcept function, ends in
/// std::terminate and would end the process with no word to the filter.
[[noreturn]] void RaiseOnTerminate()
{
    RaiseException(kTerminateCode, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    TerminateProcess(GetCurrentProcess(), kTerminateCode);
    __builtin_unreachable();
}

/// The end of a C++ exception that nobody catches, with the exit code that the system would give. Left
/// to the system it would unwind, and the runtime's cleanup of the frames on the way needs a target
/// frame that its search has never found: the process would hang.
void EndUncaughtThrow(const EXCEPTION_POINTERS* pointers) noexcept
{
    if (pointers != nullptr && pointers->ExceptionRecord->ExceptionCode == kGccThrow)
    {
        TerminateProcess(GetCurrentProcess(), kGccThrow);
    }
}

} // namespace

void InstallCrashCapture(void (*release)() noexcept) noexcept
{
    g_release = release;
    PrepareCrashDump();
    SetUnhandledExceptionFilter(_UnhandledExceptionFilter);
    LockFilterIn();
    std::set_terminate(RaiseOnTerminate);
}

LONG WINAPI _UnhandledExceptionFilter(EXCEPTION_POINTERS* pointers) noexcept
{
    OutputDebugStringW(L"######## in _UnhandledExceptionFilter");
    if (g_isEntered.exchange(true))
    {
        return EXCEPTION_EXECUTE_HANDLER;
    }
    SEND_TRACE(2,
               "_UnhandledExceptionFilter",
               "#################### _UnhandledExceptionFilter.\tCRASH!!! ####################");
    FlushTrace(kTraceFlushMs); // the last lines are the ones that tell what happened
    CrashPath path;
    FindCrashDirectory(path);
    CopyTraceFile(path, kTraceFile, kTraceCopy);
    WriteCrashDump(pointers, path.With(kDumpFile));
    if (g_release != nullptr)
    {
        g_release();
    }
    EndUncaughtThrow(pointers);
    return EXCEPTION_EXECUTE_HANDLER;
}
