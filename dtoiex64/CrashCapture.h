#pragma once

#include <windows.h>

/// Makes this process's last word on unhandled exceptions ours.
///
/// Installs the filter below and then disables the system function that would replace it, so that
/// neither a mail provider nor a runtime can take it away. Uncaught C++ exceptions, which do not reach
/// a filter from every thread, are led there as well. What the crash path needs of libraries is loaded
/// now, since the loader may be what is broken then.
///
/// `release` is called by the filter to release the mail system, after the files are written.
/// Thread: the main thread, once, in server runs only, after the runtime's own start.
void InstallCrashCapture(void (*release)() noexcept) noexcept;

/// The unhandled-exception filter: keeps the trace file of the dead run, writes a minidump, releases the
/// mail system. Answers 1, which ends the process.
///
/// Files, in the user's roaming application data under "\Talvo Connect\":
///     strato-mapi.txt               read
///     strato_mapi_last_crash.txt    its copy; an older and longer copy keeps its tail
///     dtOIEx64.exe.300.dmp          the minidump
///
/// Runs once: an exception within it, or of another thread meanwhile, answers 1 at once. A step that
/// fails is skipped. It allocates as little as it can: its buffers are static, and what it calls of the
/// trace and of the release is guarded by locks that the dead thread may enter again.
/// Thread: the crashing one.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name by which the filter is known.
LONG WINAPI _UnhandledExceptionFilter(EXCEPTION_POINTERS* pointers) noexcept;
