#include "ConnectionPoint.h"

#include <algorithm>
#include <utility>

#include "ComEnumerator.h"

namespace
{

struct ConnectionPolicy
{
    using Held = std::pair<CComRef<IDispatch>, DWORD>;
    static void Copy(const Held& held, CONNECTDATA& item) noexcept
    {
        item.pUnk = CComRef<IDispatch>::Share(held.first.Get()).Detach();
        item.dwCookie = held.second;
    }
};

struct PointPolicy
{
    using Held = CComRef<IConnectionPoint>;
    static void Copy(const Held& held, IConnectionPoint*& item) noexcept
    {
        item = Held::Share(held.Get()).Detach();
    }
};

using CConnectionEnumerator = CComEnumerator<IEnumConnections, CONNECTDATA, ConnectionPolicy>;
using CPointEnumerator = CComEnumerator<IEnumConnectionPoints, IConnectionPoint*, PointPolicy>;

} // namespace

HRESULT CConnectionPoint::QueryInterface(REFIID iid, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, __uuidof(IConnectionPoint)))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IConnectionPoint*>(this);
    return S_OK;
}

HRESULT CConnectionPoint::GetConnectionInterface(IID* iid) noexcept
{
    if (iid == nullptr)
    {
        return E_POINTER;
    }
    *iid = m_events;
    return S_OK;
}

HRESULT CConnectionPoint::GetConnectionPointContainer(
    IConnectionPointContainer** container) noexcept
{
    if (container == nullptr)
    {
        return E_POINTER;
    }
    m_container.AddRef();
    *container = &m_container;
    return S_OK;
}

HRESULT CConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) noexcept
try
{
    if (sink == nullptr || cookie == nullptr)
    {
        return E_POINTER;
    }
    *cookie = 0;
    // Asking may be a call into another process: not under the lock.
    auto events = CComRef<IDispatch>::Query(sink, m_events);
    if (!events)
    {
        events = CComRef<IDispatch>::Query(sink);
    }
    if (!events)
    {
        return CONNECT_E_CANNOTCONNECT;
    }
    const std::scoped_lock hold(m_slotsLock);
    auto slot = std::find_if(
        m_slots.begin(), m_slots.end(), [](const CComRef<IDispatch>& held) { return !held; });
    if (slot == m_slots.end())
    {
        slot = m_slots.emplace(m_slots.end());
    }
    *slot = std::move(events);
    *cookie = static_cast<DWORD>(slot - m_slots.begin()) + 1;
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

HRESULT CConnectionPoint::Unadvise(DWORD cookie) noexcept
{
    CComRef<IDispatch> sink; // released behind the lock
    const std::scoped_lock hold(m_slotsLock);
    if (cookie == 0 || cookie > m_slots.size() || !m_slots[cookie - 1])
    {
        return CONNECT_E_NOCONNECTION;
    }
    std::swap(sink, m_slots[cookie - 1]);
    return S_OK;
}

HRESULT CConnectionPoint::EnumConnections(IEnumConnections** enumerator) noexcept
try
{
    if (enumerator == nullptr)
    {
        return E_POINTER;
    }
    *enumerator = nullptr;
    std::vector<ConnectionPolicy::Held> connections;
    {
        const std::scoped_lock hold(m_slotsLock);
        for (std::size_t i = 0; i < m_slots.size(); i++)
        {
            if (m_slots[i])
            {
                connections.emplace_back(m_slots[i], static_cast<DWORD>(i) + 1);
            }
        }
    }
    return CConnectionEnumerator::Create(std::move(connections), 0, enumerator);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

std::size_t CConnectionPoint::SlotCount() const
{
    const std::scoped_lock hold(m_slotsLock);
    return m_slots.size();
}

CComRef<IDispatch> CConnectionPoint::SinkAt(std::size_t slot) const
{
    const std::scoped_lock hold(m_slotsLock);
    return slot < m_slots.size() ? m_slots[slot] : CComRef<IDispatch>();
}

HRESULT EnumerateConnectionPoints(std::initializer_list<IConnectionPoint*> points,
                                  IEnumConnectionPoints** enumerator) noexcept
try
{
    if (enumerator == nullptr)
    {
        return E_POINTER;
    }
    *enumerator = nullptr;
    std::vector<PointPolicy::Held> held;
    held.reserve(points.size());
    for (IConnectionPoint* const point : points)
    {
        held.push_back(PointPolicy::Held::Share(point));
    }
    return CPointEnumerator::Create(std::move(held), 0, enumerator);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
