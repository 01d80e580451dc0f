#include "ConnectionPoint.h"

#include <gtest/gtest.h>

#include "dtOIEx64_i.h"
#include "RecordingSink.h"

namespace
{

/// A container that counts the references which its point hands on.
class CContainer final : public IConnectionPointContainer
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) noexcept override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return static_cast<ULONG>(--references); }
    HRESULT STDMETHODCALLTYPE
    EnumConnectionPoints(IEnumConnectionPoints** enumerator) noexcept override
    {
        return EnumerateConnectionPoints({&point}, enumerator);
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID, IConnectionPoint**) noexcept override
    {
        return E_NOTIMPL;
    }

    LONG references = 1;
    CConnectionPoint point{*this, DIID__IMapiDtClientEvents};
};

class ConnectionPointTest : public testing::Test
{
protected:
    DWORD Advise(CRecordingSink& sink)
    {
        DWORD cookie = 0;
        EXPECT_EQ(m_container.point.Advise(&sink, &cookie), S_OK);
        return cookie;
    }

    CRecordingSink m_first{DIID__IMapiDtClientEvents};
    CRecordingSink m_second{DIID__IMapiDtClientEvents};
    CRecordingSink m_third{DIID__IMapiDtClientEvents};
    CContainer m_container;
};

TEST_F(ConnectionPointTest, CookiesCountFromOneAndEmptySlotsAreUsedAgain)
{
    EXPECT_EQ(Advise(m_first), 1U);
    EXPECT_EQ(Advise(m_second), 2U);
    EXPECT_EQ(m_container.point.Unadvise(1), S_OK);

    EXPECT_EQ(Advise(m_third), 1U);
    EXPECT_EQ(m_container.point.SlotCount(), 2U);
    EXPECT_EQ(m_container.point.SinkAt(0).Get(), &m_third);
    EXPECT_EQ(m_container.point.SinkAt(1).Get(), &m_second);
}

TEST_F(ConnectionPointTest, ASinkIsHeldUntilItsCookieIsGivenBack)
{
    const DWORD cookie = Advise(m_first);
    EXPECT_EQ(m_first.references, 2);

    EXPECT_EQ(m_container.point.Unadvise(cookie), S_OK);
    EXPECT_EQ(m_first.references, 1);
    EXPECT_FALSE(m_container.point.SinkAt(0));
}

TEST_F(ConnectionPointTest, TheSameSinkMayBeAdvisedTwice)
{
    EXPECT_EQ(Advise(m_first), 1U);
    EXPECT_EQ(Advise(m_first), 2U);
    EXPECT_EQ(m_first.references, 3);
}

TEST_F(ConnectionPointTest, ASinkWithPlainDispatchIsTaken)
{
    CRecordingSink plain(IID_IDispatch);
    EXPECT_EQ(Advise(plain), 1U);
    EXPECT_EQ(m_container.point.Unadvise(1), S_OK); // before the sink goes
}

TEST_F(ConnectionPointTest, ASinkWithNeitherInterfaceIsRefused)
{
    CRecordingSink foreign(IID_NULL);
    DWORD cookie = 7;

    EXPECT_EQ(m_container.point.Advise(&foreign, &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(foreign.references, 1);
}

TEST_F(ConnectionPointTest, NullArgumentsAreRefused)
{
    DWORD cookie = 0;
    EXPECT_EQ(m_container.point.Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(m_container.point.Advise(&m_first, nullptr), E_POINTER);
    EXPECT_EQ(m_container.point.EnumConnections(nullptr), E_POINTER);
    EXPECT_EQ(m_container.point.GetConnectionInterface(nullptr), E_POINTER);
    EXPECT_EQ(m_container.point.GetConnectionPointContainer(nullptr), E_POINTER);
    EXPECT_EQ(m_container.point.QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ConnectionPointTest, CookiesNotInUseAreRefused)
{
    const DWORD cookie = Advise(m_first);
    EXPECT_EQ(m_container.point.Unadvise(0), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(m_container.point.Unadvise(cookie + 1), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(m_container.point.Unadvise(cookie), S_OK);
    EXPECT_EQ(m_container.point.Unadvise(cookie), CONNECT_E_NOCONNECTION);
}

TEST_F(ConnectionPointTest, ItsReferencesAreThoseOfItsContainer)
{
    CComRef<IConnectionPoint> point;
    EXPECT_EQ(m_container.point.QueryInterface(IID_IConnectionPoint, point.PutVoid()), S_OK);
    EXPECT_EQ(m_container.references, 2);
    point.Reset();
    EXPECT_EQ(m_container.references, 1);
}

TEST_F(ConnectionPointTest, ItIsAnIdentityOfItsOwn)
{
    CComRef<IUnknown> other;
    EXPECT_EQ(m_container.point.QueryInterface(IID_IConnectionPointContainer, other.PutVoid()),
              E_NOINTERFACE);
    EXPECT_EQ(m_container.references, 1);
}

TEST_F(ConnectionPointTest, ItNamesItsInterfaceAndItsContainer)
{
    IID iid{};
    EXPECT_EQ(m_container.point.GetConnectionInterface(&iid), S_OK);
    EXPECT_EQ(iid, DIID__IMapiDtClientEvents);

    CComRef<IConnectionPointContainer> container;
    EXPECT_EQ(m_container.point.GetConnectionPointContainer(container.Put()), S_OK);
    EXPECT_EQ(container.Get(), &m_container);
    EXPECT_EQ(m_container.references, 2);
}

TEST_F(ConnectionPointTest, EnumerationGivesEachConnectionWithItsCookie)
{
    Advise(m_first);
    Advise(m_second);
    Advise(m_third);
    m_container.point.Unadvise(2);
    CComRef<IEnumConnections> connections;
    ASSERT_EQ(m_container.point.EnumConnections(connections.Put()), S_OK);

    CONNECTDATA data[3]{};
    ULONG fetched = 0;
    EXPECT_EQ(connections->Next(3, data, &fetched), S_FALSE);

    ASSERT_EQ(fetched, 2U);
    EXPECT_EQ(data[0].pUnk, &m_first);
    EXPECT_EQ(data[0].dwCookie, 1U);
    EXPECT_EQ(data[1].pUnk, &m_third);
    EXPECT_EQ(data[1].dwCookie, 3U);
    data[0].pUnk->Release();
    data[1].pUnk->Release();
    connections.Reset();
    EXPECT_EQ(m_first.references, 2);
}

TEST_F(ConnectionPointTest, AnEnumerationIsASnapshot)
{
    const DWORD cookie = Advise(m_first);
    CComRef<IEnumConnections> connections;
    ASSERT_EQ(m_container.point.EnumConnections(connections.Put()), S_OK);
    m_container.point.Unadvise(cookie);

    CONNECTDATA data{};
    EXPECT_EQ(connections->Next(1, &data, nullptr), S_OK);
    ASSERT_EQ(data.pUnk, &m_first);
    data.pUnk->Release();
}

TEST_F(ConnectionPointTest, AnEnumerationSkipsResetsAndClones)
{
    Advise(m_first);
    Advise(m_second);
    CComRef<IEnumConnections> connections;
    ASSERT_EQ(m_container.point.EnumConnections(connections.Put()), S_OK);
    const auto nextCookie = [](IEnumConnections& from) {
        CONNECTDATA data{};
        if (from.Next(1, &data, nullptr) != S_OK)
        {
            return DWORD{0};
        }
        data.pUnk->Release();
        return data.dwCookie;
    };

    EXPECT_EQ(connections->Skip(1), S_OK);
    CComRef<IEnumConnections> clone;
    ASSERT_EQ(connections->Clone(clone.Put()), S_OK);
    EXPECT_EQ(nextCookie(*connections.Get()), 2U);
    EXPECT_EQ(nextCookie(*connections.Get()), 0U);
    EXPECT_EQ(nextCookie(*clone.Get()), 2U);
    EXPECT_EQ(connections->Skip(1), S_FALSE);
    EXPECT_EQ(connections->Reset(), S_OK);
    EXPECT_EQ(nextCookie(*connections.Get()), 1U);
    EXPECT_EQ(connections->Skip(0xFFFFFFFFU), S_FALSE);
    EXPECT_EQ(connections->Skip(0), S_OK);
}

TEST_F(ConnectionPointTest, AnEnumerationAnswersItsInterfacesAndRefusesNull)
{
    CComRef<IEnumConnections> connections;
    ASSERT_EQ(m_container.point.EnumConnections(connections.Put()), S_OK);

    EXPECT_TRUE(CComRef<IUnknown>::Query(connections.Get()));
    EXPECT_TRUE(CComRef<IEnumConnections>::Query(connections.Get()));
    EXPECT_FALSE(CComRef<IDispatch>::Query(connections.Get()));
    CONNECTDATA data[2]{};
    EXPECT_EQ(connections->Next(1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(connections->Next(2, data, nullptr), E_POINTER);
    EXPECT_EQ(connections->Clone(nullptr), E_POINTER);
    EXPECT_EQ(connections->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ConnectionPointTest, AContainerEnumeratesItsPoints)
{
    CComRef<IEnumConnectionPoints> points;
    ASSERT_EQ(m_container.EnumConnectionPoints(points.Put()), S_OK);

    CComRef<IConnectionPoint> point;
    EXPECT_EQ(points->Next(1, point.Put(), nullptr), S_OK);
    EXPECT_EQ(point.Get(), &m_container.point);
    CComRef<IConnectionPoint> none;
    EXPECT_EQ(points->Next(1, none.Put(), nullptr), S_FALSE);
    EXPECT_EQ(m_container.EnumConnectionPoints(nullptr), E_POINTER);
}

} // namespace
