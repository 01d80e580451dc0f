#pragma once

#include <windows.h>

#include <unknwn.h>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

/// A COM enumerator over a fixed list: a snapshot that later changes of its source do not touch.
///
/// Shape:  `Enumerator` is the interface (IEnumConnections and the like), `Item` what its Next
/// hands
///         out. `Policy` has a copyable type `Held` and `static void Copy(const Held&, Item&)`,
///         which fills an item for the caller, references included.
/// Thread: that of its creator.
template <typename Enumerator, typename Item, typename Policy>
class CComEnumerator final : public Enumerator
{
public:
    using Held = typename Policy::Held;

    CComEnumerator(const CComEnumerator&) = delete;
    CComEnumerator& operator=(const CComEnumerator&) = delete;

    static HRESULT Create(std::vector<Held> items,
                          std::size_t position,
                          Enumerator** enumerator) noexcept
    {
        *enumerator = new (std::nothrow) CComEnumerator(std::move(items), position);
        return *enumerator != nullptr ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override
    {
        if (object == nullptr)
        {
            return E_POINTER;
        }
        *object = nullptr;
        if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, __uuidof(Enumerator)))
        {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = static_cast<Enumerator*>(this);
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() noexcept override
    {
        return static_cast<ULONG>(InterlockedIncrement(&m_count));
    }

    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const LONG count = InterlockedDecrement(&m_count);
        if (count == 0)
        {
            delete this;
        }
        return static_cast<ULONG>(count);
    }

    /// S_FALSE when fewer than `wanted` items were left. `fetched` may be null for a single item.
    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, Item* items, ULONG* fetched) noexcept override
    {
        if (items == nullptr || (fetched == nullptr && wanted != 1))
        {
            return E_POINTER;
        }
        ULONG given = 0;
        for (; given < wanted && m_position < m_items.size(); given++, m_position++)
        {
            Policy::Copy(m_items[m_position], items[given]);
        }
        if (fetched != nullptr)
        {
            *fetched = given;
        }
        return given == wanted ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override
    {
        const std::size_t left = m_items.size() - m_position;
        m_position += count < left ? count : left;
        return count <= left ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Reset() noexcept override
    {
        m_position = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(Enumerator** enumerator) noexcept override
    try
    {
        if (enumerator == nullptr)
        {
            return E_POINTER;
        }
        *enumerator = nullptr;
        return Create(m_items, m_position, enumerator);
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

private:
    CComEnumerator(std::vector<Held> items, std::size_t position) noexcept
        : m_items(std::move(items)), m_position(position)
    {
    }
    ~CComEnumerator() = default;

    const std::vector<Held> m_items;
    std::size_t m_position;
    volatile LONG m_count = 1;
};
