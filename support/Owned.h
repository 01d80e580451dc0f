#pragma once

#include <windows.h>

#include <utility>

#include "LastErrorGuard.h"

/// The owner of one platform resource. What is empty and how it is freed is told by a policy:
///
///     struct Policy
///     {
///         using Type = ...;
///         static Type Empty() noexcept;
///         static void Free(Type value) noexcept;
///     };
///
/// Owner:  frees at the end of its life; `Put` frees first and lends the slot, `Detach` gives away.
/// Thread: that of the resource. Freeing keeps the thread's last error.
template <typename Policy>
class COwned final
{
public:
    using Type = typename Policy::Type;

    COwned() noexcept = default;
    explicit COwned(Type value) noexcept : m_value(value) {}
    COwned(COwned&& other) noexcept : m_value(other.Detach()) {}
    ~COwned() { Reset(); }

    COwned& operator=(COwned&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_value = other.Detach();
        }
        return *this;
    }
    COwned(const COwned&) = delete;
    COwned& operator=(const COwned&) = delete;

    [[nodiscard]] Type Get() const noexcept { return m_value; }
    explicit operator bool() const noexcept { return m_value != Policy::Empty(); }

    /// The out slot: frees what is held, then lends the empty place.
    [[nodiscard]] Type* Put() noexcept
    {
        Reset();
        return &m_value;
    }

    [[nodiscard]] Type Detach() noexcept { return std::exchange(m_value, Policy::Empty()); }

    void Reset() noexcept
    {
        if (Type const value = Detach(); value != Policy::Empty())
        {
            const CLastErrorGuard keep;
            Policy::Free(value);
        }
    }

private:
    Type m_value = Policy::Empty();
};
