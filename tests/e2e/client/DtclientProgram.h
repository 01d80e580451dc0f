#pragma once

#include <windows.h>

#include <string>

#include "ChildProcess.h"

/// Exit codes of dtclient.
constexpr DWORD kDone = 0;
constexpr DWORD kFailed = 1;
constexpr DWORD kWrongUsage = 2;
constexpr DWORD kIncomplete = 3;

/// Runs dtclient to its end.
inline ProgramResult Dtclient(const std::wstring& arguments)
{
    return RunProgram(BuildPath(L"dtclient.exe"), arguments);
}
