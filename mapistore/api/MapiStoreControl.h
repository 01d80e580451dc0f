#pragma once

#include <windows.h>

/// What the library offers beside MAPI, for tests and tools. The DLL exports these by name; the
/// static library has them under the same names.
extern "C"
{
    /// Sets "Folder", "Ledger", "Faults", "Guard" or "Watch" for this process, above environment and
    /// registry; a null value takes it back. It counts from the next first MAPIInitialize.
    ///
    /// Errors: E_INVALIDARG for another name.
    HRESULT WINAPI MapiStoreConfigure(const wchar_t* name, const wchar_t* value);

    /// Replaces the fault plan at once. UTF-8 text as docs/mapistore-library.md describes it.
    ///
    /// Errors: E_INVALIDARG for a plan that cannot be read; the plan is empty then.
    HRESULT WINAPI MapiStoreSetFaults(const char* plan);

    struct MapiStoreCounts
    {
        ULONG64 interfacesHanded;
        ULONG64 buffersHanded;
        ULONG64 connectionsHanded;
        ULONG64 interfacesLeft;
        ULONG64 buffersLeft;
        ULONG64 connectionsLeft;
        ULONG64 misuse;
    };

    /// What the ledger counts since the first MAPIInitialize. Stands after MAPIUninitialize too, until
    /// the next MAPIInitialize.
    void WINAPI MapiStoreGetCounts(MapiStoreCounts* counts);

    /// Copies the ledger's report, UTF-8 with a terminator, cut to `cb` bytes. Returns the bytes that
    /// the whole report needs.
    ULONG WINAPI MapiStoreGetReport(char* text, ULONG cb);

    /// Reads the document again if it changed, and returns when the tables know of it: for tests that
    /// do not want to wait for the watching thread.
    HRESULT WINAPI MapiStoreRefresh(void);

    /// Frees the shells of released objects, which the library keeps for a while so that a late call on
    /// one of them is refused: for tests that count heap blocks.
    void WINAPI MapiStoreDropShells(void);
}
