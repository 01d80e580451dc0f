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

} // namespace mapistore
