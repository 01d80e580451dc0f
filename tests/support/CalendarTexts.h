#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "PlatformTypes.h"

/// What the machine's clocks show at a moment given in UTC as "2026-11-02T09:00:00": the form in which
/// clients give the window of a listing.
FILETIME MachineTimeOf(const std::string& utcText);

/// The texts of one element of a document, in their order, without the CDATA marks around them.
std::vector<std::wstring> ElementValues(const WString& xml, const std::wstring& element);
