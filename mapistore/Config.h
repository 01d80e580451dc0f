#pragma once

#include <windows.h>

#include <string>

namespace mapistore
{

/// What the surroundings ask of the library, as docs/mapistore-library.md lists it.
struct Config
{
    std::wstring folder; // the store folder
    std::wstring ledger; // the file that gets the ledger's report; empty: only the debugger stream
    std::wstring faults; // a fault plan, or "@" and the path of one
    bool guard = false;  // each buffer ends at an inaccessible page
    bool watch = true;   // follow changes of the document
};

/// Sets one value for this process, above environment and registry. `name` is "Folder", "Ledger",
/// "Faults", "Guard" or "Watch"; a null `value` takes it back. False for another name.
bool OverrideConfig(const wchar_t* name, const wchar_t* value);

/// Each value by itself: the process's override, else the environment, else HKEY_CURRENT_USER, else
/// HKEY_LOCAL_MACHINE, else the default.
Config ReadConfig();

} // namespace mapistore
