#include "MapiAdvise.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace
{

constexpr ULONG_PTR kWideConnection = 0x1234567890ABCDEF;

/// What a provider of 64 bits received and answers, with tables of functions made by hand: the
/// stock headers cannot declare one.
struct Provider
{
    void* const* functions = nullptr; // first, as in every COM object
    ULONG cbEntryId = 0;
    ENTRYID* entryId = nullptr;
    ULONG eventMask = 0;
    IMAPIAdviseSink* sink = nullptr;
    ULONG_PTR unadvised = 0;
    HRESULT answer = S_OK;
};

HRESULT STDMETHODCALLTYPE AdviseOnTable(Provider* self,
                                        ULONG eventMask,
                                        IMAPIAdviseSink* sink,
                                        ULONG_PTR* connection)
{
    self->eventMask = eventMask;
    self->sink = sink;
    *connection = kWideConnection;
    return self->answer;
}

HRESULT STDMETHODCALLTYPE AdviseOnEntry(Provider* self,
                                        ULONG cbEntryId,
                                        ENTRYID* entryId,
                                        ULONG eventMask,
                                        IMAPIAdviseSink* sink,
                                        ULONG_PTR* connection)
{
    self->cbEntryId = cbEntryId;
    self->entryId = entryId;
    self->eventMask = eventMask;
    self->sink = sink;
    *connection = kWideConnection;
    return self->answer;
}

HRESULT STDMETHODCALLTYPE Unadvise(Provider* self, ULONG_PTR connection)
{
    self->unadvised = connection;
    return self->answer;
}

template <typename Fn>
std::vector<void*> TableWith(std::size_t place, Fn advise)
{
    std::vector<void*> functions(32, nullptr);
    functions[place] = reinterpret_cast<void*>(advise);
    functions[place + 1] = reinterpret_cast<void*>(&Unadvise);
    return functions;
}

template <typename T>
T* As(Provider& provider)
{
    return reinterpret_cast<T*>(&provider);
}

IMAPIAdviseSink* const kSink = reinterpret_cast<IMAPIAdviseSink*>(ULONG_PTR{0x5151});
ENTRYID* const kEntry = reinterpret_cast<ENTRYID*>(ULONG_PTR{0x6161});

/// The variable for the connection with a neighbour on each side, which must not be written.
struct Guarded
{
    ULONG_PTR before = 0x1111111111111111;
    ULONG_PTR connection = 0;
    ULONG_PTR behind = 0x2222222222222222;
};

void ExpectWholeConnection(const Guarded& guarded)
{
    EXPECT_EQ(guarded.connection, kWideConnection);
    EXPECT_EQ(guarded.before, 0x1111111111111111U);
    EXPECT_EQ(guarded.behind, 0x2222222222222222U);
}

} // namespace

TEST(MapiAdvise, TableConnectionComesAndGoesWithAllEightBytes)
{
    const std::vector<void*> functions = TableWith(4, &AdviseOnTable);
    Provider provider{.functions = functions.data()};
    Guarded guarded;

    EXPECT_EQ(AdviseTable(As<IMAPITable>(provider), fnevTableModified, kSink, &guarded.connection),
              S_OK);
    EXPECT_EQ(UnadviseTable(As<IMAPITable>(provider), guarded.connection), S_OK);

    ExpectWholeConnection(guarded);
    EXPECT_EQ(provider.eventMask, 0x100U);
    EXPECT_EQ(provider.sink, kSink);
    EXPECT_EQ(provider.unadvised, kWideConnection);
}

TEST(MapiAdvise, StoreConnectionComesAndGoesWithAllEightBytes)
{
    const std::vector<void*> functions = TableWith(14, &AdviseOnEntry);
    Provider provider{.functions = functions.data()};
    Guarded guarded;

    EXPECT_EQ(AdviseStore(As<IMsgStore>(provider), 7, kEntry, 2, kSink, &guarded.connection), S_OK);
    EXPECT_EQ(UnadviseStore(As<IMsgStore>(provider), guarded.connection), S_OK);

    ExpectWholeConnection(guarded);
    EXPECT_EQ(provider.cbEntryId, 7U);
    EXPECT_EQ(provider.entryId, kEntry);
    EXPECT_EQ(provider.unadvised, kWideConnection);
}

TEST(MapiAdvise, SessionConnectionComesAndGoesWithAllEightBytes)
{
    const std::vector<void*> functions = TableWith(11, &AdviseOnEntry);
    Provider provider{.functions = functions.data()};
    Guarded guarded;

    EXPECT_EQ(AdviseSession(As<IMAPISession>(provider), 7, kEntry, 2, kSink, &guarded.connection),
              S_OK);
    EXPECT_EQ(UnadviseSession(As<IMAPISession>(provider), guarded.connection), S_OK);

    ExpectWholeConnection(guarded);
    EXPECT_EQ(provider.unadvised, kWideConnection);
}

TEST(MapiAdvise, AddressBookConnectionComesAndGoesWithAllEightBytes)
{
    const std::vector<void*> functions = TableWith(16, &AdviseOnEntry);
    Provider provider{.functions = functions.data()};
    Guarded guarded;

    EXPECT_EQ(AdviseAddressBook(As<IAddrBook>(provider), 7, kEntry, 2, kSink, &guarded.connection),
              S_OK);
    EXPECT_EQ(UnadviseAddressBook(As<IAddrBook>(provider), guarded.connection), S_OK);

    ExpectWholeConnection(guarded);
    EXPECT_EQ(provider.unadvised, kWideConnection);
}

TEST(MapiAdvise, ProviderStatusIsHandedOn)
{
    const std::vector<void*> functions = TableWith(4, &AdviseOnTable);
    Provider provider{.functions = functions.data(), .answer = MAPI_E_NO_SUPPORT};
    ULONG_PTR connection = 0;

    EXPECT_EQ(AdviseTable(As<IMAPITable>(provider), fnevTableModified, kSink, &connection),
              MAPI_E_NO_SUPPORT);
    EXPECT_EQ(UnadviseTable(As<IMAPITable>(provider), connection), MAPI_E_NO_SUPPORT);
}

TEST(MapiAdvise, NullObjectsAndOutPointersAreAnsweredWithPointerError)
{
    const std::vector<void*> functions = TableWith(4, &AdviseOnTable);
    Provider provider{.functions = functions.data()};
    ULONG_PTR connection = 0;

    EXPECT_EQ(AdviseTable(nullptr, 1, kSink, &connection), E_POINTER);
    EXPECT_EQ(AdviseTable(As<IMAPITable>(provider), 1, kSink, nullptr), E_POINTER);
    EXPECT_EQ(AdviseStore(nullptr, 0, nullptr, 1, kSink, &connection), E_POINTER);
    EXPECT_EQ(UnadviseSession(nullptr, 1), E_POINTER);
}
