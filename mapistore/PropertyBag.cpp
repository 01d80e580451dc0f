#include "PropertyBag.h"

#include <algorithm>

namespace mapistore
{
namespace
{

bool Before(const CValue& value, ULONG id)
{
    return value.Id() < id;
}

} // namespace

const CValue* CPropertyBag::Find(ULONG id) const
{
    const auto found = std::lower_bound(m_values.begin(), m_values.end(), id, Before);
    return found != m_values.end() && found->Id() == id ? &*found : nullptr;
}

void CPropertyBag::Set(CValue value)
{
    const auto found = std::lower_bound(m_values.begin(), m_values.end(), value.Id(), Before);
    if (found != m_values.end() && found->Id() == value.Id())
    {
        *found = std::move(value);
    }
    else
    {
        m_values.insert(found, std::move(value));
    }
}

bool CPropertyBag::Remove(ULONG id)
{
    const auto found = std::lower_bound(m_values.begin(), m_values.end(), id, Before);
    if (found == m_values.end() || found->Id() != id)
    {
        return false;
    }
    m_values.erase(found);
    return true;
}

std::wstring CPropertyBag::TextOf(ULONG id) const
{
    const CValue* value = Find(id);
    return value != nullptr && value->Type() == PT_UNICODE ? value->AsText() : std::wstring();
}

LONG CPropertyBag::LongOf(ULONG id, LONG otherwise) const
{
    const CValue* value = Find(id);
    return value != nullptr && value->Type() == PT_LONG ? value->AsLong() : otherwise;
}

bool CPropertyBag::BoolOf(ULONG id) const
{
    const CValue* value = Find(id);
    return value != nullptr && value->Type() == PT_BOOLEAN && value->AsBool();
}

} // namespace mapistore
