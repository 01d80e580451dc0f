#pragma once

#include <map>
#include <string>
#include <vector>

#include "MapiHeaders.h"

/// Properties of one fake object or row, by identifier; each has one type.
class CFakeProps final
{
public:
    void SetText(ULONG tag, std::wstring text);
    void SetNarrow(ULONG tag, std::string text);
    void SetLong(ULONG tag, LONG value);
    void SetFlag(ULONG tag, bool value);
    void SetTime(ULONG tag, FILETIME time);
    void SetBlock(ULONG tag, std::vector<BYTE> block);
    /// The property is there but does not come: `error` stands in its place.
    void SetError(ULONG tag, SCODE error);
    void Remove(ULONG tag);
    /// Properties come whatever type is asked for, as careless stores give them.
    void IgnoreAskedTypes() { m_ignoresAskedTypes = true; }

    /// The property of this tag, as a value whose blocks are linked to `head`. PT_UNSPECIFIED takes
    /// any type; without the property the value has type PT_ERROR.
    SPropValue Value(ULONG tag, void* head) const;
    /// All properties, in order of their identifiers.
    std::vector<ULONG> Tags() const;
    LONG LongOf(ULONG tag) const;

    /// Answers GetProps.
    HRESULT Answer(const SPropTagArray* tags, ULONG* count, SPropValue** values) const;

private:
    struct Entry
    {
        ULONG tag = 0;
        SPropValue plain{};
        std::wstring wide{};
        std::string narrow{};
        std::vector<BYTE> block{};
    };

    void Keep(Entry entry);

    std::map<ULONG, Entry> m_entries;
    bool m_ignoresAskedTypes = false;
};

/// The tag under which the fake store keeps a named property.
ULONG NamedTag(const GUID& set, LONG id, ULONG type);
/// A public text name.
ULONG NamedTag(const wchar_t* name, ULONG type = PT_UNICODE);

/// "62002:820D 0040", "TalvoKey 001F" or "0037001F": the name and asked type of a named property in
/// hexadecimal digits, or the tag of any other.
std::string SpeltTag(ULONG tag);

/// Answers GetIDsFromNames: the store knows every name.
HRESULT AnswerNames(ULONG count, MAPINAMEID** names, SPropTagArray** tags);
