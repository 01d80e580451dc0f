#pragma once

#include <windows.h>

#include <map>
#include <string>

/// All that stands below a registry key: the path of each key with a backslash at its end, and of each
/// value behind its key, with the text of its data.
using RegistryListing = std::map<std::wstring, std::wstring>;

/// Lists one root in one of its two views, `view` being KEY_WOW64_64KEY or KEY_WOW64_32KEY.
RegistryListing ListRegistry(HKEY root, const std::wstring& path, REGSAM view);

/// What stands in `after` and not, or otherwise, in `before`.
RegistryListing Added(const RegistryListing& before, const RegistryListing& after);
