#include <cstring>

#include "ComRef.h"
#include "MapiUtil.h"
#include "Trace.h"

namespace
{

constexpr ULONG kReadBytes = 16384;
constexpr ULONGLONG kLargestTextBytes = 268435456;

/// Opens the stream of a public text property; null, traced, when the object has none.
CComRef<IStream> OpenTextStream(IMAPIProp* object, const WCHAR* name)
{
    constexpr const char* kFunction = "CUtil::GetPropFromStream";
    MAPINAMEID wanted{};
    // The platform's structure has no const; set and name are only read.
    wanted.lpguid = const_cast<GUID*>(&PS_PUBLIC_STRINGS);
    wanted.ulKind = MNID_STRING;
    wanted.Kind.lpwstrName = const_cast<WCHAR*>(name);
    MAPINAMEID* names = &wanted;
    CMapiBuffer<SPropTagArray> tags;
    const HRESULT status = object->GetIDsFromNames(1, &names, 0, tags.Put());
    // An unknown name comes back as a tag of type PT_ERROR.
    if (status != S_OK || !tags || tags->cValues != 1 || PROP_TYPE(tags->aulPropTag[0]) == PT_ERROR)
    {
        SEND_TRACE(3, kFunction, "CUtil::GetPropFromStream, GetIDsFromNames failed");
        return nullptr;
    }
    const ULONG tag = PROP_TAG(PT_UNICODE, PROP_ID(tags->aulPropTag[0]));
    CComRef<IStream> stream;
    if (FAILED(object->OpenProperty(tag, &IID_IStream, 0, 0, stream.PutUnknown())) || !stream)
    {
        SEND_TRACE(3, kFunction, "CUtil::GetPropFromStream, OpenProperty failed");
        return nullptr;
    }
    return stream;
}

} // namespace

void CUtil::GetPropFromStream(IMAPIProp* object, const WCHAR* name, WString& text)
{
    constexpr const char* kFunction = "CUtil::GetPropFromStream";
    if (object == nullptr)
    {
        return;
    }
    const CComRef<IStream> stream = OpenTextStream(object, name);
    if (!stream)
    {
        return;
    }
    STATSTG facts{};
    if (FAILED(stream->Stat(&facts, STATFLAG_NONAME)))
    {
        SEND_TRACE(3, kFunction, "CUtil::GetPropFromStream, Stat failed");
        return;
    }
    if (facts.cbSize.QuadPart > kLargestTextBytes)
    {
        SEND_TRACE(3, kFunction, "CUtil::GetPropFromStream, size is larger than the maximum");
        return;
    }
    WCHAR units[kReadBytes / sizeof(WCHAR) + 1];
    ULONG read = kReadBytes;
    while (read == kReadBytes)
    {
        std::memset(units, 0, sizeof units);
        read = 0;
        if (FAILED(stream->Read(units, kReadBytes, &read)))
        {
            SEND_TRACE(3, kFunction, "CUtil::GetPropFromStream, spStream Read Fail");
            text.clear();
            return;
        }
        text.append(units);
    }
}
