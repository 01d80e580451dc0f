#include <algorithm>
#include <cstring>

#include "FakeObjects.h"

HRESULT CFakeAttach::QueryInterface(REFIID, void**)
{
    return E_NOINTERFACE;
}
ULONG CFakeAttach::AddRef()
{
    return static_cast<ULONG>(++references.held);
}
ULONG CFakeAttach::Release()
{
    return static_cast<ULONG>(--references.held);
}
HRESULT CFakeAttach::GetLastError(HRESULT, ULONG, MAPIERROR**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::SaveChanges(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values)
{
    const ULONG tag = tags->aulPropTag[0];
    calls.push_back("GetProps " + HexNumber(tag) + " flags " + HexNumber(flags));
    *count = 0;
    *values = nullptr;
    if (FAILED(status))
    {
        return status;
    }
    void* block = nullptr;
    MAPIAllocateBuffer(sizeof(SPropValue), &block);
    *values = static_cast<SPropValue*>(block);
    **values = {};
    *count = 1;
    if (status != S_OK)
    {
        (*values)->ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tag));
        (*values)->Value.err = error;
        return status;
    }
    (*values)->ulPropTag = tag;
    MAPIAllocateMore(static_cast<ULONG>(data.size() + 1), *values, &block);
    std::copy(data.begin(), data.end(), static_cast<BYTE*>(block));
    (*values)->Value.bin = {static_cast<ULONG>(data.size()), static_cast<BYTE*>(block)};
    return status;
}
HRESULT CFakeAttach::GetPropList(ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::OpenProperty(ULONG tag, const IID* iid, ULONG, ULONG flags, IUnknown** object)
{
    calls.push_back("OpenProperty " + HexNumber(tag) +
                    (*iid == IID_IStream ? " IStream" : " other") + " flags " + HexNumber(flags));
    *object = nullptr;
    if (SUCCEEDED(openProperty) && stream != nullptr)
    {
        stream->AddRef();
        *object = stream;
    }
    return openProperty;
}
HRESULT CFakeAttach::SetProps(ULONG, SPropValue*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::DeleteProps(SPropTagArray*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::CopyTo(ULONG,
                            const IID*,
                            SPropTagArray*,
                            ULONG,
                            IMAPIProgress*,
                            const IID*,
                            void*,
                            ULONG,
                            SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::CopyProps(
    SPropTagArray*, ULONG, IMAPIProgress*, const IID*, void*, ULONG, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::GetNamesFromIDs(SPropTagArray**, GUID*, ULONG, ULONG*, MAPINAMEID***)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeAttach::GetIDsFromNames(ULONG, MAPINAMEID**, ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
