#pragma once

#include <windows.h>

#include <string>

/// The full path of a module's file, that of the program for null. Empty when the system has none.
std::wstring ModulePath(HMODULE module);
