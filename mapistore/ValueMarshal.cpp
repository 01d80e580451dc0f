#include <cstring>

#include "Buffer.h"
#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

void* CopyBytes(CBuffer& buffer, std::string_view bytes, size_t alignment)
{
    void* copy = buffer.More(bytes.size(), alignment);
    if (!bytes.empty())
    {
        std::memcpy(copy, bytes.data(), bytes.size());
    }
    return copy;
}

bool WriteError(SPropValue& out, ULONG tag, SCODE code)
{
    out.ulPropTag = ChangeType(tag, PT_ERROR);
    out.Value.err = code;
    return false;
}

/// The bytes of HTML, in whatever form it is stored: text is given in UTF-8, which is what
/// PR_INTERNET_CPID 65001 of such a message means.
std::string HtmlBytes(const CValue& value)
{
    return value.Type() == PT_BINARY ? value.Bytes() : ToUtf8(value.AsText());
}

bool WriteHtml(
    CBuffer& buffer, SPropValue& out, const CValue& value, ULONG tag, std::uint64_t limit)
{
    out.ulPropTag = tag;
    if (PROP_TYPE(tag) == PT_UNICODE)
    {
        const std::wstring text =
            value.Type() == PT_BINARY ? FromUtf8(value.Bytes()) : value.AsText();
        if ((text.size() + 1) * sizeof(wchar_t) > limit)
        {
            return WriteError(out, tag, MAPI_E_NOT_ENOUGH_MEMORY);
        }
        out.Value.lpszW = static_cast<wchar_t*>(WriteText(buffer, text, true));
        return true;
    }
    // The 8-bit text goes through the code page like any other; the bytes stay what they are.
    const std::string bytes = PROP_TYPE(tag) == PT_STRING8 && value.Type() != PT_BINARY
                                  ? ToAnsi(value.AsText())
                                  : HtmlBytes(value);
    if (bytes.size() > limit)
    {
        return WriteError(out, tag, MAPI_E_NOT_ENOUGH_MEMORY);
    }
    if (PROP_TYPE(tag) == PT_STRING8)
    {
        auto* text = static_cast<char*>(buffer.More(bytes.size() + 1, 1));
        std::memcpy(text, bytes.c_str(), bytes.size() + 1);
        out.Value.lpszA = text;
        return true;
    }
    out.Value.bin.cb = static_cast<ULONG>(bytes.size());
    out.Value.bin.lpb = static_cast<BYTE*>(CopyBytes(buffer, bytes, 1));
    return true;
}

void WriteFixed(SPropValue& out, const CValue& value)
{
    const std::uint64_t bits = value.AsBits();
    std::memcpy(&out.Value, &bits, sizeof(bits));
}

template <class T>
T* ListArray(CBuffer& buffer, size_t count)
{
    return static_cast<T*>(buffer.More(count * sizeof(T)));
}

template <class T>
T* FixedList(CBuffer& buffer, const std::vector<CValue>& items)
{
    T* array = ListArray<T>(buffer, items.size());
    for (size_t i = 0; i < items.size(); ++i)
    {
        const std::uint64_t bits = items[i].AsBits();
        std::memcpy(&array[i], &bits, sizeof(T));
    }
    return array;
}

void WriteList(CBuffer& buffer, SPropValue& out, const CValue& value, ULONG type)
{
    const std::vector<CValue>& items = value.Items();
    const auto count = static_cast<ULONG>(items.size());
    out.Value.MVl.cValues = count;
    switch (type)
    {
    case PT_MV_I2:
        out.Value.MVi.lpi = FixedList<short>(buffer, items);
        break;
    case PT_MV_LONG:
        out.Value.MVl.lpl = FixedList<LONG>(buffer, items);
        break;
    case PT_MV_R4:
        out.Value.MVflt.lpflt = FixedList<float>(buffer, items);
        break;
    case PT_MV_UNICODE:
        out.Value.MVszW.lppszW = ListArray<LPWSTR>(buffer, count);
        for (ULONG i = 0; i < count; ++i)
        {
            out.Value.MVszW.lppszW[i] =
                static_cast<LPWSTR>(WriteText(buffer, items[i].AsText(), true));
        }
        break;
    case PT_MV_STRING8:
        out.Value.MVszA.lppszA = ListArray<LPSTR>(buffer, count);
        for (ULONG i = 0; i < count; ++i)
        {
            out.Value.MVszA.lppszA[i] =
                static_cast<LPSTR>(WriteText(buffer, items[i].AsText(), false));
        }
        break;
    case PT_MV_BINARY:
        out.Value.MVbin.lpbin = ListArray<SBinary>(buffer, count);
        for (ULONG i = 0; i < count; ++i)
        {
            const std::string bytes = items[i].Bytes();
            out.Value.MVbin.lpbin[i].cb = static_cast<ULONG>(bytes.size());
            out.Value.MVbin.lpbin[i].lpb = static_cast<BYTE*>(CopyBytes(buffer, bytes, 1));
        }
        break;
    case PT_MV_CLSID:
        out.Value.MVguid.lpguid = ListArray<GUID>(buffer, count);
        for (ULONG i = 0; i < count; ++i)
        {
            std::memcpy(&out.Value.MVguid.lpguid[i], items[i].View().data(), sizeof(GUID));
        }
        break;
    default:
        out.Value.MVli.lpli = FixedList<LARGE_INTEGER>(buffer, items);
        break;
    }
}

bool IsTextType(ULONG type)
{
    return type == PT_UNICODE || type == PT_STRING8;
}

ULONG NativeType(const CValue& value, bool unicode)
{
    const ULONG type = value.Type();
    if (type == PT_UNICODE)
    {
        return unicode ? PT_UNICODE : PT_STRING8;
    }
    if (type == PT_MV_UNICODE)
    {
        return unicode ? PT_MV_UNICODE : PT_MV_STRING8;
    }
    return type;
}

bool WriteSimple(
    CBuffer& buffer, SPropValue& out, const CValue& value, ULONG tag, std::uint64_t limit)
{
    const ULONG type = PROP_TYPE(tag);
    out.ulPropTag = tag;
    if (IsTextType(type))
    {
        if (value.IsFile() && value.SizeInBytes() > limit)
        {
            return WriteError(out, tag, MAPI_E_NOT_ENOUGH_MEMORY);
        }
        const std::wstring text = value.AsText();
        const size_t cbUnit = type == PT_UNICODE ? sizeof(wchar_t) : 1;
        if ((text.size() + 1) * cbUnit > limit)
        {
            return WriteError(out, tag, MAPI_E_NOT_ENOUGH_MEMORY);
        }
        out.Value.lpszW = static_cast<wchar_t*>(WriteText(buffer, text, type == PT_UNICODE));
        return true;
    }
    if (type == PT_BINARY)
    {
        if (value.SizeInBytes() > limit)
        {
            return WriteError(out, tag, MAPI_E_NOT_ENOUGH_MEMORY);
        }
        const std::string bytes = value.Bytes();
        out.Value.bin.cb = static_cast<ULONG>(bytes.size());
        out.Value.bin.lpb = static_cast<BYTE*>(CopyBytes(buffer, bytes, 1));
        return true;
    }
    if (type == PT_CLSID)
    {
        out.Value.lpguid = static_cast<GUID*>(CopyBytes(buffer, value.View(), 8));
        return true;
    }
    if ((type & MV_FLAG) != 0)
    {
        WriteList(buffer, out, value, type);
        return true;
    }
    WriteFixed(out, value);
    return true;
}

} // namespace

void* WriteText(CBuffer& buffer, std::wstring_view text, bool unicode)
{
    if (unicode)
    {
        auto* copy = static_cast<wchar_t*>(buffer.More((text.size() + 1) * sizeof(wchar_t), 2));
        if (!text.empty())
        {
            std::memcpy(copy, text.data(), text.size() * sizeof(wchar_t));
        }
        copy[text.size()] = L'\0';
        return copy;
    }
    const std::string narrow = ToAnsi(text);
    auto* copy = static_cast<char*>(buffer.More(narrow.size() + 1, 1));
    std::memcpy(copy, narrow.c_str(), narrow.size() + 1);
    return copy;
}

bool WriteValue(CBuffer& buffer,
                SPropValue& out,
                const CValue* value,
                ULONG tag,
                bool unicode,
                std::uint64_t limit)
{
    out = SPropValue();
    if (value == nullptr || value->Empty())
    {
        return WriteError(out, tag, MAPI_E_NOT_FOUND);
    }
    if (value->Type() == PT_ERROR)
    {
        return WriteError(out, tag, value->AsError());
    }
    ULONG type = PROP_TYPE(tag);
    if (type == PT_UNSPECIFIED)
    {
        type = NativeType(*value, unicode);
        tag = ChangeType(tag, type);
    }
    if (PROP_ID(tag) == kIdHtml && (IsTextType(type) || type == PT_BINARY) &&
        (value->Type() == PT_BINARY || value->Type() == PT_UNICODE))
    {
        return WriteHtml(buffer, out, *value, tag, limit);
    }
    const bool sameType = type == value->Type() ||
                          (IsTextType(type) && value->Type() == PT_UNICODE) ||
                          (type == PT_MV_STRING8 && value->Type() == PT_MV_UNICODE);
    if (!sameType)
    {
        return WriteError(out, tag, MAPI_E_NOT_FOUND);
    }
    return WriteSimple(buffer, out, *value, tag, limit);
}

namespace
{

const void* Checked(const void* pointer)
{
    if (pointer == nullptr)
    {
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"a value points nowhere");
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
