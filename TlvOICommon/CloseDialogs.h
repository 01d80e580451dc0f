#pragma once

#include <windows.h>

#include <list>
#include <memory>

/// Posts WM_CLOSE to every window of the process but those of the spared threads and the event
/// window, so that no dialog of the mail system holds up a release.
///
/// Owner:  takes over the list and frees it in every case.
/// Thread: any; it does not wait for the windows.
/// Errors: traced; the windows then stay open.
void CloseDlgInProcess(DWORD processId, std::unique_ptr<std::list<DWORD>> spared);
