#include <cstring>

#include "Buffer.h"
#include "Text.h"

namespace mapistore
{
namespace
{

const void* Checked(const void* pointer)
{
    if (pointer == nullptr)
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a value points nowhere");
    }
    return pointer;
}

std::string_view Span(const void* pointer, size_t cb)
{
    return {static_cast<const char*>(cb != 0 ? Checked(pointer) : pointer), cb};
}

CValue TextOfWide(ULONG tag, const wchar_t* text)
{
    return CValue::Text(tag, static_cast<const wchar_t*>(Checked(text)));
}

CValue TextOfNarrow(ULONG tag, const char* text)
{
    return CValue::Text(tag, FromAnsi(static_cast<const char*>(Checked(text))));
}

template <class T>
void ReadFixedList(std::vector<CValue>& items, ULONG tag, ULONG count, T* array)
{
    for (ULONG i = 0; i < count; ++i)
    {
        std::uint64_t bits = 0;
        std::memcpy(&bits, static_cast<const T*>(Checked(array)) + i, sizeof(T));
        items.push_back(CValue::Raw(tag, bits));
    }
}

CValue ReadList(const SPropValue& value)
{
    ULONG tag = value.ulPropTag;
    const ULONG single = ChangeType(tag, PROP_TYPE(tag) & ~static_cast<ULONG>(MV_FLAG));
    const ULONG count = value.Value.MVl.cValues;
    std::vector<CValue> items;
    switch (PROP_TYPE(tag))
    {
    case PT_MV_I2:
        ReadFixedList(items, single, count, value.Value.MVi.lpi);
        break;
    case PT_MV_LONG:
        ReadFixedList(items, single, count, value.Value.MVl.lpl);
        break;
    case PT_MV_R4:
        ReadFixedList(items, single, count, value.Value.MVflt.lpflt);
        break;
    case PT_MV_DOUBLE:
    case PT_MV_APPTIME:
    case PT_MV_CURRENCY:
    case PT_MV_I8:
    case PT_MV_SYSTIME:
        ReadFixedList(items, single, count, value.Value.MVli.lpli);
        break;
    case PT_MV_UNICODE:
        for (ULONG i = 0; i < count; ++i)
        {
            items.push_back(TextOfWide(single, value.Value.MVszW.lppszW[i]));
        }
        break;
    case PT_MV_STRING8:
        tag = ChangeType(tag, PT_MV_UNICODE);
        for (ULONG i = 0; i < count; ++i)
        {
            items.push_back(TextOfNarrow(single, value.Value.MVszA.lppszA[i]));
        }
        break;
    case PT_MV_BINARY:
        for (ULONG i = 0; i < count; ++i)
        {
            const SBinary& bytes = value.Value.MVbin.lpbin[i];
            items.push_back(CValue::Binary(single, Span(bytes.lpb, bytes.cb)));
        }
        break;
    case PT_MV_CLSID:
        for (ULONG i = 0; i < count; ++i)
        {
            items.push_back(CValue::Guid(single, value.Value.MVguid.lpguid[i]));
        }
        break;
    default:
        throw CMapiError(MAPI_E_INVALID_TYPE, L"no list type that a store keeps");
    }
    return CValue::List(tag, std::move(items));
}

} // namespace

CValue ReadValue(const SPropValue& value)
{
    const ULONG tag = value.ulPropTag;
    switch (PROP_TYPE(tag))
    {
    case PT_I2:
        return CValue::Raw(tag, static_cast<std::uint16_t>(value.Value.i));
    case PT_LONG:
    case PT_R4:
        return CValue::Raw(tag, value.Value.ul);
    case PT_BOOLEAN:
        return CValue::Boolean(tag, value.Value.b != 0);
    case PT_DOUBLE:
    case PT_APPTIME:
    case PT_CURRENCY:
    case PT_I8:
    case PT_SYSTIME:
        return CValue::Raw(tag, static_cast<std::uint64_t>(value.Value.li.QuadPart));
    case PT_ERROR:
        return CValue::Error(tag, value.Value.err);
    case PT_UNICODE:
        return TextOfWide(tag, value.Value.lpszW);
    case PT_STRING8:
        return TextOfNarrow(tag, value.Value.lpszA);
    case PT_BINARY:
        return CValue::Binary(tag, Span(value.Value.bin.lpb, value.Value.bin.cb));
    case PT_CLSID:
        return CValue::Binary(tag, Span(value.Value.lpguid, sizeof(GUID)));
    default:
        if ((PROP_TYPE(tag) & MV_FLAG) != 0)
        {
            return ReadList(value);
        }
        throw CMapiError(MAPI_E_INVALID_TYPE, L"no type that a store keeps");
    }
}

} // namespace mapistore
