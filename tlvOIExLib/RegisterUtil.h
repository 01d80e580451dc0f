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

/// The readers below see the settings of the logged-on user where HKEY_CURRENT_USER is asked for on
/// Windows Vista or later, whatever account this process runs under (see UserProfile.h).
/// `viewFlag` is 0 for the default registry view, KEY_WOW64_32KEY or KEY_WOW64_64KEY.

/// Reads a DWORD value. Answers 1 only when the value exists and is a REG_DWORD, else 0 with `value`
/// left alone.
int ReadPolicyDword(
    HKEY hive, const WCHAR* subKey, const WCHAR* valueName, DWORD& value, REGSAM viewFlag);

/// Whether a policy feature is on: its effective value equals 1. The machine's value goes before the
/// user's, and the default view before the 32-bit view before the 64-bit view.
bool ReadPolicyFeature(const WCHAR* valueName);

/// The size of a value in bytes, -1 when there is none.
int GetRegValueSize(HKEY hive, const WCHAR* subKey, const WCHAR* valueName, REGSAM viewFlag);

/// Reads a text of at most `size` bytes into `buffer`. Answers 1 only when the value exists, is a
/// REG_SZ and fits, else 0 with the buffer left alone. A text that fills the buffer comes without its
/// terminator.
int RegValueToBuffer(HKEY hive,
                     const WCHAR* subKey,
                     const WCHAR* valueName,
                     void* buffer,
                     DWORD size,
                     REGSAM viewFlag);

/// Reads a text of any size. Answers 1 when there was one, else 0 with an empty text.
int ReadRegString(
    HKEY hive, const WCHAR* subKey, const WCHAR* valueName, WString& text, REGSAM viewFlag);
