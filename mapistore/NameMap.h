#pragma once

#include <map>
#include <optional>
#include <string>

#include "Mapi64.h"

namespace mapistore
{

/// The name of a named property: a set with a number or a text.
struct PropertyName
{
    GUID set{};
    bool isText = false;
    LONG number = 0;
    std::wstring text;

    bool operator<(const PropertyName& other) const;
};

/// Which identifier stands for which name. One map serves a whole document.
///
/// Shape:  identifiers from 0x8000 to 0xFFFE; new ones from 0x8100 upward.
/// Thread: the caller holds the store folder's lock.
class CNameMap
{
public:
    static constexpr ULONG kFirst = 0x8000;
    static constexpr ULONG kFirstNew = 0x8100;
    static constexpr ULONG kLast = 0xFFFE;

    /// 0 for an unknown name.
    ULONG Find(const PropertyName& name) const;
    const PropertyName* NameOf(ULONG id) const;
    /// The identifier of the name, a new one if need be. 0 when none is left.
    ULONG Make(const PropertyName& name);
    /// False when the identifier already stands for another name.
    bool Set(const PropertyName& name, ULONG id);

    const std::map<PropertyName, ULONG>& All() const { return m_ids; }

private:
    std::map<PropertyName, ULONG> m_ids;
    std::map<ULONG, PropertyName> m_names;
    ULONG m_next = kFirstNew;
};

} // namespace mapistore
