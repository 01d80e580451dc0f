#include <cstdio>
#include <cstring>

#include "FakeObjects.h"

std::string HexNumber(ULONG value)
{
    char text[16] = {};
    std::snprintf(text, sizeof(text), "%lX", value);
    return text;
}

namespace
{

/// One property as a block of MAPI's allocator, its text linked to it.
SPropValue* MakeValue(ULONG tag, const CFakeProps& props)
{
    void* block = nullptr;
    MAPIAllocateBuffer(sizeof(SPropValue), &block);
    auto* const value = static_cast<SPropValue*>(block);
    std::memset(block, 0, sizeof(SPropValue));
    value->ulPropTag = tag;
    if (PROP_TYPE(tag) == PT_UNICODE)
    {
        const std::size_t cb = (props.text.size() + 1) * sizeof(wchar_t);
        MAPIAllocateMore(static_cast<ULONG>(cb), block, &block);
        value->Value.lpszW = static_cast<WCHAR*>(block);
        std::memcpy(block, props.text.c_str(), cb);
    }
    else if (PROP_TYPE(tag) == PT_STRING8)
    {
        const std::size_t cb = props.narrowText.size() + 1;
        MAPIAllocateMore(static_cast<ULONG>(cb), block, &block);
        value->Value.lpszA = static_cast<char*>(block);
        std::memcpy(block, props.narrowText.c_str(), cb);
    }
    return value;
}

} // namespace

HRESULT CFakeProps::GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values)
{
    calls.push_back("GetProps " + HexNumber(tags->aulPropTag[0]) + " flags " + HexNumber(flags));
    *count = 0;
    *values = nullptr;
    if (FAILED(propStatus) || isValueNull)
    {
        return propStatus;
    }
    *count = 1;
    *values = MakeValue(tags->aulPropTag[0], *this);
    return propStatus;
}

HRESULT CFakeProps::GetIds(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags)
{
    const MAPINAMEID& name = *names[0];
    const std::string wanted =
        name.ulKind == MNID_ID
            ? "id " + HexNumber(static_cast<ULONG>(name.Kind.lID))
            : "name " + std::string(name.Kind.lpwstrName,
                                    name.Kind.lpwstrName + wcslen(name.Kind.lpwstrName));
    calls.push_back("GetIDsFromNames " + std::to_string(count) + " " + wanted + " set " +
                    HexNumber(name.lpguid->Data1) + " flags " + HexNumber(flags));
    *tags = nullptr;
    if (FAILED(idStatus) || isTagsNull)
    {
        return idStatus;
    }
    void* block = nullptr;
    MAPIAllocateBuffer(sizeof(SPropTagArray), &block);
    *tags = static_cast<SPropTagArray*>(block);
    (*tags)->cValues = 1;
    (*tags)->aulPropTag[0] = namedTag;
    return idStatus;
}
