#pragma once

#include "MapiHeaders.h"

/// `Advise` and `Unadvise` with the types of 64-bit MAPI.
///
/// The stock headers declare the connection as a 32-bit ULONG. 64-bit MAPI writes and takes eight
/// bytes: called through the stock prototype it would overwrite the stack behind the variable, and
/// the number would come back cut. The order of virtual functions in the stock headers is right, so
/// these functions fetch the two entries from the object's table and call them with true types.
///
/// Shape:  the connection is opaque and 64 bits wide.
/// Owner:  the caller owns the connection and gives it back with the matching Unadvise before it
///         releases the object.
/// Thread: the one that owns the object.
/// Errors: whatever the provider answers; E_POINTER for a null object or out pointer.

[[nodiscard]] HRESULT AdviseTable(IMAPITable* table,
                                  ULONG eventMask,
                                  IMAPIAdviseSink* sink,
                                  ULONG_PTR* connection) noexcept;
HRESULT UnadviseTable(IMAPITable* table, ULONG_PTR connection) noexcept;

[[nodiscard]] HRESULT AdviseStore(IMsgStore* store,
                                  ULONG cbEntryId,
                                  ENTRYID* entryId,
                                  ULONG eventMask,
                                  IMAPIAdviseSink* sink,
                                  ULONG_PTR* connection) noexcept;
HRESULT UnadviseStore(IMsgStore* store, ULONG_PTR connection) noexcept;

[[nodiscard]] HRESULT AdviseSession(IMAPISession* session,
                                    ULONG cbEntryId,
                                    ENTRYID* entryId,
                                    ULONG eventMask,
                                    IMAPIAdviseSink* sink,
                                    ULONG_PTR* connection) noexcept;
HRESULT UnadviseSession(IMAPISession* session, ULONG_PTR connection) noexcept;

[[nodiscard]] HRESULT AdviseAddressBook(IAddrBook* book,
                                        ULONG cbEntryId,
                                        ENTRYID* entryId,
                                        ULONG eventMask,
                                        IMAPIAdviseSink* sink,
                                        ULONG_PTR* connection) noexcept;
HRESULT UnadviseAddressBook(IAddrBook* book, ULONG_PTR connection) noexcept;
