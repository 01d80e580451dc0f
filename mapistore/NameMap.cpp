#include "NameMap.h"

#include <cstring>

namespace mapistore
{

bool PropertyName::operator<(const PropertyName& other) const
{
    const int sets = std::memcmp(&set, &other.set, sizeof(set));
    if (sets != 0)
    {
        return sets < 0;
    }
    if (isText != other.isText)
    {
        return isText < other.isText;
    }
    return isText ? text < other.text : number < other.number;
}

ULONG CNameMap::Find(const PropertyName& name) const
{
    const auto found = m_ids.find(name);
    return found != m_ids.end() ? found->second : 0;
}

const PropertyName* CNameMap::NameOf(ULONG id) const
{
    const auto found = m_names.find(id);
    return found != m_names.end() ? &found->second : nullptr;
}

ULONG CNameMap::Make(const PropertyName& name)
{
    const ULONG known = Find(name);
    if (known != 0)
    {
        return known;
    }
    while (m_next <= kLast && m_names.count(m_next) != 0)
    {
        ++m_next;
    }
    if (m_next > kLast)
    {
        return 0;
    }
    Set(name, m_next);
    return m_next;
}

bool CNameMap::Set(const PropertyName& name, ULONG id)
{
    const auto taken = m_names.find(id);
    if (taken != m_names.end())
    {
        const auto own = m_ids.find(name);
        return own != m_ids.end() && own->second == id;
    }
    if (m_ids.count(name) != 0)
    {
        return false;
    }
    m_ids[name] = id;
    m_names[id] = name;
    return true;
}

} // namespace mapistore
