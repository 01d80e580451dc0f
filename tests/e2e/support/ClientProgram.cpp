// A client process for the end-to-end tests: commands on standard input, answers and events on
// standard output. ScriptedClient.h lists the commands.
#include <windows.h>

#include <objbase.h>

#include "CommandReader.h"
#include "ScriptedClient.h"

namespace
{
void DispatchMessages()
{
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
} // namespace

int wmain()
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)))
    {
        return 1;
    }
    auto* const reader = new CCommandReader; // its thread ends with the process
    {
        CScriptedClient client;
        const HANDLE ready = reader->Ready();
        while (!reader->AtEnd())
        {
            DispatchMessages();
            std::string command;
            if (reader->Take(command))
            {
                client.Run(command);
                continue;
            }
            MsgWaitForMultipleObjectsEx(1, &ready, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        }
    }
    CoUninitialize();
    return 0;
}
