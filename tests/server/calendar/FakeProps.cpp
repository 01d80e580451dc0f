#include "FakeProps.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

namespace
{

void* Linked(std::size_t cb, void* head)
{
    void* block = nullptr;
    MAPIAllocateMore(static_cast<ULONG>(cb != 0 ? cb : 1), head, &block);
    return block;
}

void* Copied(const void* bytes, std::size_t cb, void* head)
{
    void* const block = Linked(cb, head);
    std::memcpy(block, bytes, cb);
    return block;
}

/// What names were asked for so far; a name's place is its identifier.
std::vector<std::wstring>& KnownNames()
{
    static std::vector<std::wstring> s_names;
    return s_names;
}

constexpr ULONG kFirstNamed = 0x8100;

ULONG IdentifierOf(const std::wstring& name)
{
    std::vector<std::wstring>& names = KnownNames();
    const auto known = std::find(names.begin(), names.end(), name);
    const auto place = known - names.begin();
    if (known == names.end())
    {
        names.push_back(name);
    }
    return kFirstNamed + static_cast<ULONG>(place);
}

std::wstring NameOf(const GUID& set, LONG id)
{
    wchar_t text[32] = {};
    std::swprintf(text, std::size(text), L"%lX:%lX", set.Data1, static_cast<ULONG>(id));
    return text;
}

} // namespace

void CFakeProps::Keep(Entry entry)
{
    entry.plain.ulPropTag = entry.tag;
    m_entries[PROP_ID(entry.tag)] = std::move(entry);
}

void CFakeProps::SetText(ULONG tag, std::wstring text)
{
    Entry entry{.tag = tag};
    entry.wide = std::move(text);
    Keep(std::move(entry));
}

void CFakeProps::SetNarrow(ULONG tag, std::string text)
{
    Entry entry{.tag = tag};
    entry.narrow = std::move(text);
    Keep(std::move(entry));
}

void CFakeProps::SetLong(ULONG tag, LONG value)
{
    Entry entry{.tag = tag};
    entry.plain.Value.l = value;
    Keep(std::move(entry));
}

void CFakeProps::SetFlag(ULONG tag, bool value)
{
    Entry entry{.tag = tag};
    // The half of the union behind the flag holds whatever was there.
    entry.plain.Value.l = 0x7EEE0000;
    entry.plain.Value.b = value ? 1 : 0;
    Keep(std::move(entry));
}

void CFakeProps::SetTime(ULONG tag, FILETIME time)
{
    Entry entry{.tag = tag};
    entry.plain.Value.ft = time;
    Keep(std::move(entry));
}

void CFakeProps::SetBlock(ULONG tag, std::vector<BYTE> block)
{
    Entry entry{.tag = tag};
    entry.block = std::move(block);
    Keep(std::move(entry));
}

void CFakeProps::SetError(ULONG tag, SCODE error)
{
    Entry entry{.tag = PROP_TAG(PT_ERROR, PROP_ID(tag))};
    entry.plain.Value.err = error;
    Keep(std::move(entry));
}

void CFakeProps::Remove(ULONG tag)
{
    m_entries.erase(PROP_ID(tag));
}

SPropValue CFakeProps::Value(ULONG tag, void* head) const
{
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tag));
    value.Value.err = MAPI_E_NOT_FOUND;
    const auto found = m_entries.find(PROP_ID(tag));
    if (found == m_entries.end())
    {
        return value;
    }
    const Entry& entry = found->second;
    const ULONG type = PROP_TYPE(entry.tag);
    if (type != PT_ERROR && PROP_TYPE(tag) != PT_UNSPECIFIED && type != PROP_TYPE(tag) &&
        !m_ignoresAskedTypes)
    {
        return value;
    }
    value = entry.plain;
    switch (type)
    {
    case PT_UNICODE:
        value.Value.lpszW = static_cast<WCHAR*>(
            Copied(entry.wide.c_str(), (entry.wide.size() + 1) * sizeof(wchar_t), head));
        break;
    case PT_STRING8:
        value.Value.lpszA =
            static_cast<char*>(Copied(entry.narrow.c_str(), entry.narrow.size() + 1, head));
        break;
    default:
        // Bytes come as bytes whatever type they are kept under: whoever takes them has to look.
        if (type == PT_BINARY || !entry.block.empty())
        {
            value.Value.bin.cb = static_cast<ULONG>(entry.block.size());
            value.Value.bin.lpb =
                static_cast<BYTE*>(Copied(entry.block.data(), entry.block.size(), head));
        }
        break;
    }
    return value;
}

std::vector<ULONG> CFakeProps::Tags() const
{
    std::vector<ULONG> tags;
    for (const auto& [id, entry] : m_entries)
    {
        tags.push_back(entry.tag);
    }
    return tags;
}

LONG CFakeProps::LongOf(ULONG tag) const
{
    const auto found = m_entries.find(PROP_ID(tag));
    return found != m_entries.end() ? found->second.plain.Value.l : 0;
}

HRESULT CFakeProps::Answer(const SPropTagArray* tags, ULONG* count, SPropValue** values) const
{
    void* block = nullptr;
    MAPIAllocateBuffer(static_cast<ULONG>(tags->cValues * sizeof(SPropValue)), &block);
    *values = static_cast<SPropValue*>(block);
    *count = tags->cValues;
    HRESULT status = S_OK;
    for (ULONG i = 0; i < tags->cValues; ++i)
    {
        (*values)[i] = Value(tags->aulPropTag[i], block);
        if (PROP_TYPE((*values)[i].ulPropTag) == PT_ERROR)
        {
            status = MAPI_W_ERRORS_RETURNED;
        }
    }
    return status;
}

ULONG NamedTag(const GUID& set, LONG id, ULONG type)
{
    return PROP_TAG(type, IdentifierOf(NameOf(set, id)));
}

ULONG NamedTag(const wchar_t* name, ULONG type)
{
    return PROP_TAG(type, IdentifierOf(name));
}

std::string SpeltTag(ULONG tag)
{
    char text[16] = {};
    const ULONG place = PROP_ID(tag) - kFirstNamed;
    if (PROP_ID(tag) < kFirstNamed || place >= KnownNames().size())
    {
        std::snprintf(text, sizeof(text), "%08lX", tag);
        return text;
    }
    std::snprintf(text, sizeof(text), " %04lX", PROP_TYPE(tag));
    std::string name;
    for (const wchar_t unit : KnownNames()[place])
    {
        name += static_cast<char>(unit);
    }
    return name + text;
}

HRESULT AnswerNames(ULONG count, MAPINAMEID** names, SPropTagArray** tags)
{
    void* block = nullptr;
    MAPIAllocateBuffer(static_cast<ULONG>(sizeof(SPropTagArray) + count * sizeof(ULONG)), &block);
    *tags = static_cast<SPropTagArray*>(block);
    (*tags)->cValues = count;
    for (ULONG i = 0; i < count; ++i)
    {
        const MAPINAMEID& name = *names[i];
        const ULONG id = name.ulKind == MNID_ID ? IdentifierOf(NameOf(*name.lpguid, name.Kind.lID))
                                                : IdentifierOf(name.Kind.lpwstrName);
        (*tags)->aulPropTag[i] = PROP_TAG(PT_UNSPECIFIED, id);
    }
    return S_OK;
}
