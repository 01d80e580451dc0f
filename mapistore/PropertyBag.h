#pragma once

#include "Value.h"

namespace mapistore
{

/// A set of properties, at most one for each identifier, in the order of identifiers.
class CPropertyBag
{
public:
    const CValue* Find(ULONG id) const;
    /// Replaces whatever stands under the same identifier, whatever its type.
    void Set(CValue value);
    bool Remove(ULONG id);
    void Clear() { m_values.clear(); }
    bool Empty() const { return m_values.empty(); }
    size_t Size() const { return m_values.size(); }
    void Reserve(size_t count) { m_values.reserve(count); }

    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }
    bool operator==(const CPropertyBag& other) const { return m_values == other.m_values; }

    std::wstring TextOf(ULONG id) const;
    LONG LongOf(ULONG id, LONG otherwise) const;
    bool BoolOf(ULONG id) const;

private:
    std::vector<CValue> m_values;
};

} // namespace mapistore
