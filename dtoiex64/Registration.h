#pragma once

#include <windows.h>

#include <span>
#include <string>

#include "RegistrarScript.h"

/// What a registration writes.
struct RegistrationData
{
    HMODULE module;    ///< carries the scripts, and the type library if `file` is its own
    std::wstring file; ///< path of the executable
    std::span<const UINT> scripts;   ///< numbers of the REGISTRY resources, in order
    ScriptReplacements replacements; ///< "MODULE" is added by the registration itself
};

/// Runs the scripts and registers the type library, which is looked for in the file and, failing
/// that, beside it with the extension ".tlb".
///
/// `perUser` writes to the user's own view of the classes root and needs no rights.
/// Thread: the main thread of a registration run: the per-user view holds for the whole process.
/// Errors: the first failure; a script that fails is undone.
HRESULT RegisterServer(const RegistrationData& data, bool perUser) noexcept;

/// Takes back what RegisterServer wrote, type information of earlier versions included. What is not
/// there is passed over.
/// Errors: the first failure; the rest is removed all the same.
HRESULT UnregisterServer(const RegistrationData& data, bool perUser) noexcept;

/// Deletes the machine's keys of the server, type information and old ones included, ignoring
/// results. The CLSID key is not among them: its script replaces it.
void DeleteMachineKeys() noexcept;
