#pragma once

#include <windows.h>

#include <unknwn.h>

#include <cstddef>
#include <utility>

#include "LastErrorGuard.h"

/// Owner of one reference to a COM object.
///
/// Owner: `Adopt` takes over a reference that the caller holds, `Share` adds one, `Put` is the slot
///        for an out parameter and releases first, `Detach` gives the reference away.
/// Thread: that of the object; interface pointers do not cross apartments.
/// Errors: releasing keeps GetLastError.
template <typename Interface>
class CComRef final
{
public:
    CComRef() noexcept = default;
    CComRef(std::nullptr_t) noexcept {}
    CComRef(const CComRef& other) noexcept : CComRef(Share(other.m_object)) {}
    CComRef(CComRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    CComRef& operator=(CComRef other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~CComRef() { Reset(); }

    [[nodiscard]] static CComRef Adopt(Interface* object) noexcept
    {
        CComRef ref;
        ref.m_object = object;
        return ref;
    }

    [[nodiscard]] static CComRef Share(Interface* object) noexcept
    {
        if (object != nullptr)
        {
            object->AddRef();
        }
        return Adopt(object);
    }

    /// Asks `object` for this interface; empty when it is null or does not answer.
    [[nodiscard]] static CComRef Query(IUnknown* object, REFIID iid = __uuidof(Interface)) noexcept
    {
        CComRef ref;
        if (object != nullptr && FAILED(object->QueryInterface(iid, ref.PutVoid())))
        {
            ref.m_object = nullptr;
        }
        return ref;
    }

    [[nodiscard]] Interface** Put() noexcept
    {
        Reset();
        return &m_object;
    }

    /// The same slot for calls that take `void**`.
    [[nodiscard]] void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    /// The same slot for calls that take `IUnknown**` and answer this interface.
    [[nodiscard]] IUnknown** PutUnknown() noexcept { return reinterpret_cast<IUnknown**>(Put()); }

    [[nodiscard]] Interface* Detach() noexcept { return std::exchange(m_object, nullptr); }

    void Reset() noexcept
    {
        // Emptied first: a release may call back into the owner.
        if (Interface* const object = Detach(); object != nullptr)
        {
            const CLastErrorGuard keep;
            object->Release();
        }
    }

    [[nodiscard]] Interface* Get() const noexcept { return m_object; }
    Interface* operator->() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

private:
    Interface* m_object = nullptr;
};
