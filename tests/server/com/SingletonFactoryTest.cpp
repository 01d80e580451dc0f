#include "SingletonFactory.h"

#include <gtest/gtest.h>

#include "CachedRefCount.h"

namespace
{

class CLock final : public IModuleLock
{
public:
    LONG Lock() noexcept override { return ++count; }
    LONG Unlock() noexcept override { return --count; }
    LONG count = 0;
};

int g_made = 0;
int g_alive = 0;
HRESULT g_constructed = S_OK;

class CObject final : public IUnknown
{
public:
    explicit CObject(IModuleLock& module) : m_refs(module) { g_alive++; }
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override
    {
        *object = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown))
        {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return m_refs.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG count = m_refs.Release();
        if (count == 0)
        {
            delete this;
        }
        return count;
    }

    static HRESULT Create(IModuleLock& module, IUnknown** object) noexcept
    {
        g_made++;
        *object = SUCCEEDED(g_constructed) ? new CObject(module) : nullptr;
        return g_constructed;
    }

private:
    ~CObject() { g_alive--; }
    CCachedRefCount m_refs;
};

class SingletonFactoryTest : public testing::Test
{
protected:
    SingletonFactoryTest()
    {
        g_made = 0;
        g_alive = 0;
        g_constructed = S_OK;
        m_factory =
            CComRef<CSingletonFactory>::Adopt(new CSingletonFactory(m_lock, CObject::Create));
    }

    CComRef<IUnknown> CreateObject()
    {
        CComRef<IUnknown> object;
        EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()), S_OK);
        return object;
    }

    CLock m_lock;
    CComRef<CSingletonFactory> m_factory;
};

TEST_F(SingletonFactoryTest, EveryCreationGivesTheSameObject)
{
    const CComRef<IUnknown> first = CreateObject();
    const CComRef<IUnknown> second = CreateObject();

    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(g_made, 1);
}

TEST_F(SingletonFactoryTest, TheObjectOutlivesItsClientsAndServesTheNext)
{
    const IUnknown* const before = CreateObject().Get();
    EXPECT_EQ(g_alive, 1);

    EXPECT_EQ(CreateObject().Get(), before);
    EXPECT_EQ(g_made, 1);
}

TEST_F(SingletonFactoryTest, TheModuleIsLockedFromTheFirstOutsideReferenceToTheLast)
{
    EXPECT_EQ(m_lock.count, 0);
    CComRef<IUnknown> first = CreateObject();
    EXPECT_EQ(m_lock.count, 1);
    CComRef<IUnknown> second = CreateObject();
    EXPECT_EQ(m_lock.count, 1);
    first.Reset();
    EXPECT_EQ(m_lock.count, 1);
    second.Reset();
    EXPECT_EQ(m_lock.count, 0);
}

TEST_F(SingletonFactoryTest, ReferencesToTheFactoryDoNotLockTheModule)
{
    const auto factory = CComRef<IClassFactory>::Query(m_factory.Get());
    EXPECT_TRUE(factory);
    EXPECT_EQ(m_lock.count, 0);
}

TEST_F(SingletonFactoryTest, LockServerCounts)
{
    EXPECT_EQ(m_factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(m_factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(m_lock.count, 2);
    EXPECT_EQ(m_factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(m_lock.count, 1);
}

TEST_F(SingletonFactoryTest, AggregationIsRefusedAndMakesNothing)
{
    CLock module;
    CSingletonFactory* const outer = m_factory.Get();
    void* object = &module;

    EXPECT_EQ(m_factory->CreateInstance(outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(g_made, 0);
}

TEST_F(SingletonFactoryTest, AFailedFirstCreationIsAnsweredToAllLaterOnes)
{
    g_constructed = E_FAIL;
    CComRef<IUnknown> object;
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()), E_FAIL);

    g_constructed = S_OK;
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()), E_FAIL);
    EXPECT_FALSE(object);
    EXPECT_EQ(g_made, 1);
}

TEST_F(SingletonFactoryTest, AnUnknownInterfaceIsRefusedAndTheModuleStaysUnlocked)
{
    CComRef<IUnknown> object;
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IClassFactory, object.PutVoid()),
              E_NOINTERFACE);
    EXPECT_EQ(m_lock.count, 0);
}

TEST_F(SingletonFactoryTest, ADroppedObjectGoesWithItsLastReferenceAndIsNotMadeAgain)
{
    CComRef<IUnknown> object = CreateObject();
    m_factory->DropObject();
    EXPECT_EQ(g_alive, 1);
    object.Reset();
    EXPECT_EQ(g_alive, 0);

    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()),
              CO_E_SERVER_STOPPING);
    EXPECT_EQ(g_made, 1);
}

TEST_F(SingletonFactoryTest, AnObjectNobodyHoldsGoesWithTheFactory)
{
    CreateObject().Reset();
    EXPECT_EQ(g_alive, 1);
    m_factory.Reset();
    EXPECT_EQ(g_alive, 0);
}

TEST_F(SingletonFactoryTest, InterfacesAndNullArguments)
{
    EXPECT_TRUE(CComRef<IUnknown>::Query(m_factory.Get()));
    EXPECT_FALSE(CComRef<IDispatch>::Query(m_factory.Get()));
    EXPECT_EQ(m_factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
}

} // namespace
