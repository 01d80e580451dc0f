#pragma once

#include <windows.h>

#include <string>

/// Sets an event that another process waits for, or waits for it while messages go on; whoever comes
/// first makes it. `value` becomes "1" when a wait succeeded, else "0".
HRESULT Signal(const std::wstring& name, bool waits, std::string& value);

/// Makes an event before anybody sets it, and holds it until this process ends: one that is set and
/// closed with nobody holding it is forgotten.
HRESULT KeepSignal(const std::wstring& name);

/// Waits until every process of this file name has ended, or ends them. `value` as above.
HRESULT EndOfProcesses(const std::wstring& fileName, bool ends, std::string& value);
