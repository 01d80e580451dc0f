#pragma once

#include <windows.h>

#include "PlatformTypes.h"

/// Reads and writes single registry values, in the hives of the process's own account.
///
/// Thread: any.
/// Errors: a failure looks like an absent value; only ReadReg traces.
class CRegisterUtil final
{
public:
    /// Reads `valueName`, or the key's default value when it is null: into `dwordOut` with
    /// `wantDword`, else into the `bufferSize` bytes at `buffer`, which are zeroed first. The type
    /// is not looked at, and a text that fills the buffer comes without its terminator.
    static bool ReadReg(HKEY hive,
                        const WCHAR* subKey,
                        const WCHAR* valueName,
                        void* buffer,
                        DWORD bufferSize,
                        DWORD* dwordOut,
                        int wantDword);

    /// Writes a value, making its key if need be. True always: who may not write goes on without.
    static bool WriteReg(HKEY hive,
                         const WCHAR* subKey,
                         const WCHAR* valueName,
                         DWORD type,
                         const void* data,
                         DWORD size);
};

/// Reads a DWORD value in one registry view (`viewFlag` 0 is the default one). Answers 1 only when
/// the value exists and is a DWORD, else 0.
int ReadPolicyDword(
    HKEY hive, const WCHAR* subKey, const WCHAR* valueName, DWORD& value, REGSAM viewFlag);

/// Whether a policy feature is on: its effective value equals 1. The machine's value goes before the
/// user's.
bool ReadPolicyFeature(const WCHAR* valueName);
