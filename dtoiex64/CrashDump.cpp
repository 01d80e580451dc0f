#include "CrashDump.h"

#include "Handle.h"

namespace
{

using WriteDumpFunction = BOOL(WINAPI*)(HANDLE process,
                                        DWORD processId,
                                        HANDLE file,
                                        MINIDUMP_TYPE type,
                                        PMINIDUMP_EXCEPTION_INFORMATION exception,
                                        PMINIDUMP_USER_STREAM_INFORMATION userStreams,
                                        PMINIDUMP_CALLBACK_INFORMATION callback);

/// Data segments, handle data, unloaded modules, private read-write memory, full memory information,
/// thread information.
constexpr auto kDumpType = static_cast<MINIDUMP_TYPE>(0x1A25);
static_assert(kDumpType == (MiniDumpWithDataSegs | MiniDumpWithHandleData |
                            MiniDumpWithUnloadedModules | MiniDumpWithPrivateReadWriteMemory |
                            MiniDumpWithFullMemoryInfo | MiniDumpWithThreadInfo));

WriteDumpFunction g_writeDump = nullptr;

bool EqualsNoCase(const wchar_t* text, int cch, const wchar_t* other) noexcept
{
    return CompareStringOrdinal(text, cch, other, -1, TRUE) == CSTR_EQUAL;
}

/// The executable, and ntdll, whose data segments tell about the process as a whole.
bool IsModuleWanted(const wchar_t* path) noexcept
{
    const wchar_t* name = path;
    const wchar_t* extension = nullptr;
    for (const wchar_t* at = path; *at != L'\0'; at++)
    {
        if (*at == L'\\' || *at == L'/')
        {
            name = at + 1;
            extension = nullptr;
        }
        else if (*at == L'.')
        {
            extension = at;
        }
    }
    const int cchBase = extension != nullptr ? static_cast<int>(extension - name) : -1;
    return (extension != nullptr && EqualsNoCase(extension, -1, L".exe")) ||
           EqualsNoCase(name, cchBase, L"ntdll");
}

} // namespace

void PrepareCrashDump() noexcept
{
    const HMODULE library = LoadLibraryW(L"dbghelp.dll"); // stays for the life of the process
    if (library != nullptr)
    {
        g_writeDump = reinterpret_cast<WriteDumpFunction>(
            reinterpret_cast<void (*)()>(GetProcAddress(library, "MiniDumpWriteDump")));
    }
}

void WriteCrashDump(EXCEPTION_POINTERS* pointers, const wchar_t* path) noexcept
{
    if (g_writeDump == nullptr)
    {
        return;
    }
    const CFileHandle file(
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    if (!file)
    {
        return;
    }
    MINIDUMP_EXCEPTION_INFORMATION exception{};
    exception.ThreadId = GetCurrentThreadId();
    exception.ExceptionPointers = pointers;
    exception.ClientPointers = FALSE;
    MINIDUMP_CALLBACK_INFORMATION callback{};
    callback.CallbackRoutine = CrashDumpCallback;
    g_writeDump(GetCurrentProcess(),
                GetCurrentProcessId(),
                file.Get(),
                kDumpType,
                pointers != nullptr ? &exception : nullptr,
                nullptr,
                &callback);
}

BOOL CALLBACK CrashDumpCallback(PVOID /*parameter*/,
                                PMINIDUMP_CALLBACK_INPUT input,
                                PMINIDUMP_CALLBACK_OUTPUT output) noexcept
{
    if (input == nullptr || output == nullptr)
    {
        return FALSE;
    }
    switch (input->CallbackType)
    {
    case ModuleCallback:
        if ((output->ModuleWriteFlags & ModuleWriteDataSeg) != 0 &&
            (input->Module.FullPath == nullptr || !IsModuleWanted(input->Module.FullPath)))
        {
            output->ModuleWriteFlags &= ~static_cast<ULONG>(ModuleWriteDataSeg);
        }
        return TRUE;
    case ThreadCallback:
    case ThreadExCallback:
    case IncludeThreadCallback:
    case IncludeModuleCallback:
        return TRUE;
    default:
        return FALSE;
    }
}
