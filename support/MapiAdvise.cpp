#include "MapiAdvise.h"

#include <cstddef>

namespace
{

// Places in the interface's table of functions, counted from QueryInterface.
constexpr std::size_t kTableAdvise = 4;    // IUnknown 3, GetLastError
constexpr std::size_t kStoreAdvise = 14;   // IUnknown 3, IMAPIProp 11
constexpr std::size_t kSessionAdvise = 11; // IUnknown 3, eight session methods
constexpr std::size_t kBookAdvise = 16;    // IUnknown 3, IMAPIProp 11, OpenEntry, CompareEntryIDs

using TableAdviseFn = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, ULONG, IMAPIAdviseSink*, ULONG_PTR*);
using EntryAdviseFn =
    HRESULT(STDMETHODCALLTYPE*)(IUnknown*, ULONG, ENTRYID*, ULONG, IMAPIAdviseSink*, ULONG_PTR*);
using UnadviseFn = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, ULONG_PTR);

template <typename Fn>
Fn FunctionAt(IUnknown* object, std::size_t place) noexcept
{
    // A COM object begins with the pointer to its table of functions.
    void* const* const functions = *reinterpret_cast<void***>(object);
    return reinterpret_cast<Fn>(functions[place]);
}

HRESULT AdviseEntry(IUnknown* object,
                    std::size_t place,
                    ULONG cbEntryId,
                    ENTRYID* entryId,
                    ULONG eventMask,
                    IMAPIAdviseSink* sink,
                    ULONG_PTR* connection) noexcept
{
    if (object == nullptr || connection == nullptr)
    {
        return E_POINTER;
    }
    *connection = 0;
    return FunctionAt<EntryAdviseFn>(object, place)(
        object, cbEntryId, entryId, eventMask, sink, connection);
}

HRESULT UnadviseEntry(IUnknown* object, std::size_t place, ULONG_PTR connection) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    return FunctionAt<UnadviseFn>(object, place)(object, connection);
}

} // namespace

HRESULT AdviseTable(IMAPITable* table,
                    ULONG eventMask,
                    IMAPIAdviseSink* sink,
                    ULONG_PTR* connection) noexcept
{
    if (table == nullptr || connection == nullptr)
    {
        return E_POINTER;
    }
    *connection = 0;
    return FunctionAt<TableAdviseFn>(table, kTableAdvise)(table, eventMask, sink, connection);
}

HRESULT UnadviseTable(IMAPITable* table, ULONG_PTR connection) noexcept
{
    return UnadviseEntry(table, kTableAdvise + 1, connection);
}

HRESULT AdviseStore(IMsgStore* store,
                    ULONG cbEntryId,
                    ENTRYID* entryId,
                    ULONG eventMask,
                    IMAPIAdviseSink* sink,
                    ULONG_PTR* connection) noexcept
{
    return AdviseEntry(store, kStoreAdvise, cbEntryId, entryId, eventMask, sink, connection);
}

HRESULT UnadviseStore(IMsgStore* store, ULONG_PTR connection) noexcept
{
    return UnadviseEntry(store, kStoreAdvise + 1, connection);
}

HRESULT AdviseSession(IMAPISession* session,
                      ULONG cbEntryId,
                      ENTRYID* entryId,
                      ULONG eventMask,
                      IMAPIAdviseSink* sink,
                      ULONG_PTR* connection) noexcept
{
    return AdviseEntry(session, kSessionAdvise, cbEntryId, entryId, eventMask, sink, connection);
}

HRESULT UnadviseSession(IMAPISession* session, ULONG_PTR connection) noexcept
{
    return UnadviseEntry(session, kSessionAdvise + 1, connection);
}

HRESULT AdviseAddressBook(IAddrBook* book,
                          ULONG cbEntryId,
                          ENTRYID* entryId,
                          ULONG eventMask,
                          IMAPIAdviseSink* sink,
                          ULONG_PTR* connection) noexcept
{
    return AdviseEntry(book, kBookAdvise, cbEntryId, entryId, eventMask, sink, connection);
}

HRESULT UnadviseAddressBook(IAddrBook* book, ULONG_PTR connection) noexcept
{
    return UnadviseEntry(book, kBookAdvise + 1, connection);
}
