#include "PropertyNames.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "Text.h"

namespace mapistore
{
namespace
{

struct TagEntry
{
    std::string_view name;
    ULONG tag;
};

struct SetEntry
{
    std::string_view name;
    std::string_view guid;
};

struct KnownEntry
{
    std::string_view name;
    std::string_view set;
    LONG number;
    ULONG type;
};

// The four tables are sorted by name; the build makes them from the store tool's.
constexpr TagEntry kTags[] = {
#include "PropertyTags.inc"
};
constexpr TagEntry kTypes[] = {
#include "PropertyTypes.inc"
};
constexpr SetEntry kSets[] = {
#include "PropertySets.inc"
};
constexpr KnownEntry kKnown[] = {
#include "KnownNames.inc"
};

template <class Table>
auto FindByName(const Table& table, std::string_view name)
{
    const auto found = std::lower_bound(
        std::begin(table), std::end(table), name, [](const auto& entry, std::string_view key) {
            return entry.name < key;
        });
    return found != std::end(table) && found->name == name ? &*found : nullptr;
}

bool ReadHex(std::string_view text, size_t maxDigits, std::uint64_t& number)
{
    if (text.size() < 3 || text.size() > maxDigits + 2 || text[0] != '0' ||
        (text[1] != 'x' && text[1] != 'X'))
    {
        return false;
    }
    number = 0;
    for (const char c : text.substr(2))
    {
        const bool digit = c >= '0' && c <= '9';
        const bool lower = c >= 'a' && c <= 'f';
        const bool upper = c >= 'A' && c <= 'F';
        if (!digit && !lower && !upper)
        {
            return false;
        }
        const int value = digit ? c - '0' : (lower ? c - 'a' : c - 'A') + 10;
        number = number * 16 + static_cast<std::uint64_t>(value);
    }
    return true;
}

std::optional<PropertyName> NameOf(std::string_view set, std::string_view id, std::string& problem)
{
    const SetEntry* known = FindByName(kSets, set);
    const std::optional<GUID> guid = ReadGuid(known != nullptr ? known->guid : set);
    if (!guid)
    {
        problem = "unknown property set \"" + std::string(set) + "\"";
        return std::nullopt;
    }
    if (id.empty())
    {
        problem = "the property's identifier is missing";
        return std::nullopt;
    }
    PropertyName name;
    name.set = *guid;
    std::uint64_t number = 0;
    if (ReadHex(id, 8, number))
    {
        name.number = static_cast<LONG>(number);
    }
    else
    {
        name.isText = true;
        name.text = FromUtf8(id);
    }
    return name;
}

} // namespace

bool IsStoredType(ULONG type)
{
    if (type == PT_UNSPECIFIED || type == PT_NULL || type == PT_ERROR || type == PT_OBJECT)
    {
        return false;
    }
    return std::any_of(std::begin(kTypes), std::end(kTypes), [type](const TagEntry& entry) {
        return entry.tag == type;
    });
}

std::optional<GUID> ReadGuid(std::string_view text)
{
    GUID guid{};
    if (text.size() != 38)
    {
        return std::nullopt;
    }
    const std::wstring wide = FromUtf8(text);
    return IIDFromString(wide.c_str(), &guid) == S_OK ? std::optional<GUID>(guid) : std::nullopt;
}

std::string GuidText(const GUID& guid)
{
    wchar_t text[40];
    StringFromGUID2(guid, text, 40);
    return ToUtf8(text);
}

std::optional<PropertyKey> ReadPropertyKey(std::string_view key, std::string& problem)
{
    PropertyKey result;
    if (const TagEntry* tag = FindByName(kTags, key))
    {
        result.tag = tag->tag;
        return result;
    }
    if (const KnownEntry* known = FindByName(kKnown, key))
    {
        result.isNamed = true;
        result.name.set = *ReadGuid(FindByName(kSets, known->set)->guid);
        result.name.number = known->number;
        result.type = known->type;
        return result;
    }
    std::uint64_t number = 0;
    if (key.size() == 10 && ReadHex(key, 8, number))
    {
        result.tag = static_cast<ULONG>(number);
        if (PROP_ID(result.tag) >= CNameMap::kFirst)
        {
            problem = "identifiers of 0x8000 and above belong to named properties; write "
                      "SET:IDENTIFIER:TYPE";
            return std::nullopt;
        }
        if (!IsStoredType(PROP_TYPE(result.tag)))
        {
            problem = "no property type that can be stored";
            return std::nullopt;
        }
        return result;
    }
    const size_t colon = key.find(':');
    const size_t last = key.rfind(':');
    if (colon == std::string_view::npos || last == colon)
    {
        problem =
            colon == std::string_view::npos ? "unknown property" : "expected SET:IDENTIFIER:TYPE";
        return std::nullopt;
    }
    const TagEntry* type = FindByName(kTypes, key.substr(last + 1));
    if (type == nullptr || !IsStoredType(type->tag))
    {
        problem = "unknown property type \"" + std::string(key.substr(last + 1)) + "\"";
        return std::nullopt;
    }
    const auto name =
        NameOf(key.substr(0, colon), key.substr(colon + 1, last - colon - 1), problem);
    if (!name)
    {
        return std::nullopt;
    }
    result.isNamed = true;
    result.name = *name;
    result.type = type->tag;
    return result;
}

std::optional<PropertyName> ReadPropertyName(std::string_view key, std::string& problem)
{
    const size_t colon = key.find(':');
    if (colon == std::string_view::npos)
    {
        problem = "expected SET:IDENTIFIER";
        return std::nullopt;
    }
    return NameOf(key.substr(0, colon), key.substr(colon + 1), problem);
}

std::string KeyOfTag(ULONG tag)
{
    std::string_view best;
    for (const TagEntry& entry : kTags)
    {
        // Of "PR_SUBJECT" and "PR_SUBJECT_W" the longer one says more.
        if (entry.tag == tag && entry.name.size() > best.size())
        {
            best = entry.name;
        }
    }
    if (!best.empty())
    {
        return std::string(best);
    }
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", tag);
    return text;
}

std::string KeyOfName(const PropertyName& name)
{
    std::string set = GuidText(name.set);
    for (const SetEntry& entry : kSets)
    {
        if (entry.guid == set)
        {
            set = entry.name;
        }
    }
    if (name.isText)
    {
        return set + ":" + ToUtf8(name.text);
    }
    char number[16];
    std::snprintf(number, sizeof(number), "0x%04lX", static_cast<unsigned long>(name.number));
    return set + ":" + number;
}

std::string KeyOfNamed(const PropertyName& name, ULONG type)
{
    for (const KnownEntry& known : kKnown)
    {
        const GUID set = *ReadGuid(FindByName(kSets, known.set)->guid);
        if (!name.isText && known.number == name.number && known.type == type &&
            std::memcmp(&set, &name.set, sizeof(set)) == 0)
        {
            return std::string(known.name);
        }
    }
    for (const TagEntry& entry : kTypes)
    {
        if (entry.tag == type)
        {
            return KeyOfName(name) + ":" + std::string(entry.name);
        }
    }
    return {};
}

} // namespace mapistore
