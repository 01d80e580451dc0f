#pragma once

#include <windows.h>

#include <dbghelp.h>

/// Loads the library that writes dumps, so that a crash need not. Without it there are no dumps.
void PrepareCrashDump() noexcept;

/// Writes a minidump of this process to `path`, over an older one: with the exception, the threads and
/// the process's own memory, but of loaded modules only the data of the executable and of ntdll.
/// Null pointers leave the exception out.
/// Thread: any. Errors: without the library or the file there is no dump.
void WriteCrashDump(EXCEPTION_POINTERS* pointers, const wchar_t* path) noexcept;

/// Decides what goes into the dump: see WriteCrashDump.
BOOL CALLBACK CrashDumpCallback(PVOID parameter,
                                PMINIDUMP_CALLBACK_INPUT input,
                                PMINIDUMP_CALLBACK_OUTPUT output) noexcept;
