#include "SingletonFactory.h"

HRESULT CSingletonFactory::QueryInterface(REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, __uuidof(IClassFactory)))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
}

ULONG CSingletonFactory::AddRef() noexcept
{
    return static_cast<ULONG>(InterlockedIncrement(&m_count));
}

ULONG CSingletonFactory::Release() noexcept
{
    const LONG count = InterlockedDecrement(&m_count);
    if (count == 0)
    {
        delete this;
    }
    return static_cast<ULONG>(count);
}

HRESULT CSingletonFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr)
    {
        return CLASS_E_NOAGGREGATION;
    }
    if (m_created == S_FALSE)
    {
        m_created = m_create(m_module, m_object.Put());
    }
    return FAILED(m_created) ? m_created : m_object->QueryInterface(iid, object);
}

HRESULT CSingletonFactory::LockServer(BOOL lock) noexcept
{
    if (lock != FALSE)
    {
        m_module.Lock();
    }
    else
    {
        m_module.Unlock();
    }
    return S_OK;
}

void CSingletonFactory::DropObject() noexcept
{
    m_created = CO_E_SERVER_STOPPING;
    m_object.Reset();
}
