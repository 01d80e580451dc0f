#include "CloseDialogs.h"

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>

#include "EventWindow.h"
#include "Handle.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CUtil::CloseDlgInProcess";

BOOL CALLBACK CloseOneWindow(HWND window, LPARAM eventWindow) noexcept
{
    if (reinterpret_cast<LPARAM>(window) != eventWindow)
    {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

} // namespace

void CloseDlgInProcess(DWORD processId, std::unique_ptr<std::list<DWORD>> spared)
{
    if (processId == 0)
    {
        SEND_TRACE(3, kFunction, "CloseDlgInProcess, dwCurProcessID == 0");
        return;
    }
    const CHandle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, processId));
    if (!process)
    {
        SEND_TRACE(3, kFunction, "CloseDlgInProcess, hProcess == NULL, can't OpenProcess");
        return;
    }
    // A failed snapshot is the invalid handle; both forms end the walk before it starts.
    const CFileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    if (!snapshot || snapshot.Get() == nullptr)
    {
        SEND_TRACE(3, kFunction, "CloseDlgInProcess, hThreadSnap == 0");
        return;
    }

    const LPARAM eventWindow = reinterpret_cast<LPARAM>(EventWindow());
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL more = Thread32First(snapshot.Get(), &thread); more != FALSE;
         more = Thread32Next(snapshot.Get(), &thread))
    {
        const bool isSpared =
            spared != nullptr &&
            std::find(spared->begin(), spared->end(), thread.th32ThreadID) != spared->end();
        if (thread.th32OwnerProcessID == processId && !isSpared)
        {
            EnumThreadWindows(thread.th32ThreadID, CloseOneWindow, eventWindow);
        }
    }
}
