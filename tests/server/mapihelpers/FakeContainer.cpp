#include "FakeObjects.h"

HRESULT CFakeContainer::QueryInterface(REFIID, void**)
{
    return E_NOINTERFACE;
}
ULONG CFakeContainer::AddRef()
{
    return static_cast<ULONG>(++references.held);
}
ULONG CFakeContainer::Release()
{
    return static_cast<ULONG>(--references.held);
}
HRESULT CFakeContainer::GetLastError(HRESULT, ULONG, MAPIERROR**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::SaveChanges(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetProps(SPropTagArray* tags,
                                 ULONG flags,
                                 ULONG* count,
                                 SPropValue** values)
{
    return props.GetProps(tags, flags, count, values);
}
HRESULT CFakeContainer::GetPropList(ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::OpenProperty(ULONG, const IID*, ULONG, ULONG, IUnknown**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::SetProps(ULONG, SPropValue*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::DeleteProps(SPropTagArray*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::CopyTo(ULONG,
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
HRESULT CFakeContainer::CopyProps(
    SPropTagArray*, ULONG, IMAPIProgress*, const IID*, void*, ULONG, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetNamesFromIDs(SPropTagArray**, GUID*, ULONG, ULONG*, MAPINAMEID***)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetIDsFromNames(ULONG, MAPINAMEID**, ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetContentsTable(ULONG, IMAPITable**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetHierarchyTable(ULONG, IMAPITable**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::OpenEntry(
    ULONG cb, ENTRYID* entryId, const IID* iid, ULONG flags, ULONG* type, IUnknown** object)
{
    const BYTE id = cb != 0 ? *reinterpret_cast<const BYTE*>(entryId) : BYTE{0};
    calls.push_back("OpenEntry " + HexNumber(id) + (iid == nullptr ? " null" : " iid") + " flags " +
                    HexNumber(flags));
    CFakeMessage* const opened = open(id);
    *object = nullptr;
    if (opened == nullptr)
    {
        return MAPI_E_NOT_FOUND;
    }
    opened->AddRef();
    *object = opened;
    *type = objectType;
    return S_OK;
}
HRESULT CFakeContainer::SetSearchCriteria(SRestriction*, ENTRYLIST*, ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeContainer::GetSearchCriteria(ULONG, SRestriction**, ENTRYLIST**, ULONG*)
{
    return MAPI_E_NO_SUPPORT;
}
