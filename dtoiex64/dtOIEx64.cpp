// The entry of the executable. What stands before it is in StaticStart.cpp.

#include <windows.h>

#include "CrashCapture.h"
#include "dtoiExApp.h"
#include "Handle.h"
#include "Registration.h"
#include "RegistrationVerb.h"
#include "StaticStart.h"
#include "Trace.h"

namespace
{

void ReleaseThroughModule() noexcept
{
    Module().ReleaseMail();
}

} // namespace

// The signature is the startup code's.
// NOLINTNEXTLINE(readability-non-const-parameter)
int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR commandLine, int showCommand)
{
    // 1. The sign that the server runs: other programs open the event. Nothing waits on it, and a
    //    second instance is not turned away. Closed at the very end.
    const CHandle running(
        CreateEventW(nullptr, FALSE, FALSE, L"EVENT_DTOUTLOOK64_INTEGRATION_EXE"));

    // 2. The machine's verbs start from a clean slate: neither leaves old type information behind.
    CdtOIEx64Module& module = Module();
    const RegistrationVerb machineVerb = FindRegistrationVerb(
        commandLine, {RegistrationVerb::UnregServer, RegistrationVerb::RegServer});
    if (machineVerb != RegistrationVerb::None)
    {
        DeleteMachineKeys();
    }
    // 3. Crash capture, for server runs only: the per-user verbs go without it as well.
    else if (!module.IsRegistrationRun())
    {
        InstallCrashCapture(ReleaseThroughModule);
        SEND_TRACE(3, "_tWinMain", "~~~~~~~~~~~~~_tWinMain~~~~~~~~~~~~~~~~~~");
        module.SetDelayShutdown(false);
    }

    // 4. Register, unregister or serve.
    return module.WinMain(showCommand);
}
