#pragma once

#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <cstddef>
#include <initializer_list>
#include <mutex>
#include <vector>

#include "ComRef.h"

/// A connection point for one dispatch interface of events.
///
/// Shape:  a row of slots; a cookie is a slot's number, from 1. An empty slot is given to the next
///         sink.
/// Owner:  a member of its container, whose lifetime it shares: references to the point are
///         references to the container. Holds one reference to each sink.
/// Thread: any; sinks are interface pointers of the apartment that advised them.
class CConnectionPoint final : public IConnectionPoint
{
public:
    /// `container` is not counted. `events` is the interface that sinks are asked for.
    CConnectionPoint(IConnectionPointContainer& container, REFIID events) noexcept
        : m_container(container), m_events(events)
    {
    }
    CConnectionPoint(const CConnectionPoint&) = delete;
    CConnectionPoint& operator=(const CConnectionPoint&) = delete;
    ~CConnectionPoint() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return m_container.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return m_container.Release(); }

    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) noexcept override;
    HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** container) noexcept override;
    /// Errors: CONNECT_E_CANNOTCONNECT for a sink that answers neither the event interface nor
    ///         IDispatch, E_POINTER, E_OUTOFMEMORY.
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    /// Errors: CONNECT_E_NOCONNECTION for a cookie that is not in use.
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** enumerator) noexcept override;

    /// How many slots there are now, empty ones included.
    [[nodiscard]] std::size_t SlotCount() const;
    /// The sink in a slot with a reference of its own; empty for an empty or missing slot.
    [[nodiscard]] CComRef<IDispatch> SinkAt(std::size_t slot) const;

private:
    IConnectionPointContainer& m_container;
    const IID m_events;
    mutable std::recursive_mutex m_slotsLock; // guards m_slots; never held over a call to a sink
    std::vector<CComRef<IDispatch>> m_slots;
};

/// Enumerates the connection points of a container. The points are shared.
HRESULT EnumerateConnectionPoints(std::initializer_list<IConnectionPoint*> points,
                                  IEnumConnectionPoints** enumerator) noexcept;
