// The order of the process's start and stop, in one place.
//
// What has to stand before wWinMain is made by the one object below, and nothing else in the program
// relies on the order in which the linker runs constructors: the globals it reaches are initialised
// at compile time. Its constructor runs on the main thread, where no loader lock is held, so that a
// window and threads may be made here; its destructor runs at the exit of the main thread, while
// other threads may still run.

#include "StaticStart.h"

#include <windows.h>

#include "dtoiExApp.h"
#include "MapiCtrl.h"
#include "Monitor.h"
#include "ServerTrace.h"

namespace
{

class CStaticStart final
{
public:
    CStaticStart() : m_module(GetCommandLineW())
    {
        // 1. The trace library, so that nothing that follows is lost.
        StartServerTrace();
        // 2. What stands behind the work thread, which the first client object will make.
        SetMailSwitchFactory(MakeMapiCtrl);
        // 3. The monitor learns where it stands: from here on it may come to life.
        CClientMonitor::SetHost(&m_module);
        // 4. The classes: the hidden window, made on this thread, and the monitor thread. Neither in
        //    a registration run.
        m_module.StartClasses();
    }
    CStaticStart(const CStaticStart&) = delete;
    CStaticStart& operator=(const CStaticStart&) = delete;

    ~CStaticStart()
    {
        // The same way back. The classes end the monitor, and with its window the trace is closed.
        m_module.StopClasses();
        CClientMonitor::SetHost(nullptr);
        StopServerTrace();
    }

    CdtOIEx64Module& Module() noexcept { return m_module; }

private:
    CdtOIEx64Module m_module;
};

CStaticStart g_staticStart;

} // namespace

CdtOIEx64Module& Module() noexcept
{
    return g_staticStart.Module();
}
