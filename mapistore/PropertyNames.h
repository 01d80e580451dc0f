#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NameMap.h"

namespace mapistore
{

/// What the key of a property object names: a tag, or a named property with its type.
struct PropertyKey
{
    ULONG tag = 0; // of a property that is not named
    bool isNamed = false;
    PropertyName name;
    ULONG type = 0; // of a named one
};

/// Reads a key as docs/mapistore.md describes them. `problem` tells what is wrong with a bad one.
std::optional<PropertyKey> ReadPropertyKey(std::string_view key, std::string& problem);

/// Reads "SET:IDENTIFIER", the key of `namedIds`.
std::optional<PropertyName> ReadPropertyName(std::string_view key, std::string& problem);

/// The key for a tag: its usual name, or eight hexadecimal digits.
std::string KeyOfTag(ULONG tag);

/// "SET:IDENTIFIER" with the usual name of the set.
std::string KeyOfName(const PropertyName& name);

/// The known name of a named property, or "SET:IDENTIFIER:TYPE".
std::string KeyOfNamed(const PropertyName& name, ULONG type);

std::optional<GUID> ReadGuid(std::string_view text);
std::string GuidText(const GUID& guid);

/// Types that a document can hold.
bool IsStoredType(ULONG type);

} // namespace mapistore
