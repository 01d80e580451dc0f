#pragma once

#include <windows.h>

#include <unknwn.h>

#include "ComRef.h"
#include "ModuleLock.h"

/// Makes the object of a class: constructed to the end, with one reference that the caller owns.
/// Errors: a failure leaves `object` null, and nothing of the object behind.
using CreateObjectFunction = HRESULT (*)(IModuleLock& module, IUnknown** object) noexcept;

/// Class factory of a class with at most one object in the process.
///
/// The first creation makes the object, every later one hands out the same. A failure of the first
/// creation is kept and answered to every later one. References to the factory do not count as use
/// of the module; LockServer does.
///
/// Owner:  count 1, owned by whoever made it; holds a reference to the object until DropObject.
/// Thread: the apartment that registered it.
class CSingletonFactory final : public IClassFactory
{
public:
    CSingletonFactory(IModuleLock& module, CreateObjectFunction create) noexcept
        : m_module(module), m_create(create)
    {
    }
    CSingletonFactory(const CSingletonFactory&) = delete;
    CSingletonFactory& operator=(const CSingletonFactory&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    /// Errors: CLASS_E_NOAGGREGATION with an outer object, E_NOINTERFACE, what the first creation
    ///         answered.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer,
                                             REFIID iid,
                                             void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) noexcept override;

    /// Gives up the object, which goes with its last outside reference. Later creations are refused
    /// with CO_E_SERVER_STOPPING.
    void DropObject() noexcept;

private:
    ~CSingletonFactory() = default;

    IModuleLock& m_module;
    const CreateObjectFunction m_create;
    CComRef<IUnknown> m_object;
    HRESULT m_created = S_FALSE; // S_FALSE before the first creation
    volatile LONG m_count = 1;
};
