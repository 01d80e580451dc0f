#pragma once

#include <windows.h>

#include <atomic>

/// The thread that watches for the desktop client's frame window, and ends this process when it is
/// gone.

/// 1 while the thread is to run.
extern std::atomic<LONG> g_bMonitorRun;
/// The running thread, null when there is none.
extern std::atomic<HANDLE> g_hMonitorThread;

/// The class of the desktop client's main frame: a window of it is the whole sign of a live client.
constexpr const wchar_t* kClientFrameClass =
    L"Tlv_FrameWnd_OneStep_4AB81DDB_3EA4_4920_819F_AF9B4613D075";

/// Starts ClientMonitorProc, unless it was started before. Sets g_bMonitorRun itself: a thread that
/// comes up late must not undo a stop.
/// Thread: the main thread.
void StartClientMonitorThread() noexcept;

/// Sets g_bMonitorRun to 0 and wakes the thread.
void AskClientMonitorThreadToStop() noexcept;

/// Waits for the thread, at most `timeoutMs`, and closes its handle.
void CloseClientMonitorThread(DWORD timeoutMs) noexcept;

/// The thread procedure. Looks every two seconds; the first look that finds no frame window posts
/// WM_EVENT_CLIENT_NONEXIST and ends the process two seconds later, however far the orderly way out
/// has come by then. Does nothing in a registration run.
DWORD WINAPI ClientMonitorProc(void* unused);
