#include <cstring>

#include "FakeObjects.h"

HRESULT CFakeMessage::QueryInterface(REFIID, void**)
{
    return E_NOINTERFACE;
}
ULONG CFakeMessage::AddRef()
{
    return static_cast<ULONG>(++references.held);
}
ULONG CFakeMessage::Release()
{
    return static_cast<ULONG>(--references.held);
}
HRESULT CFakeMessage::GetLastError(HRESULT result, ULONG, MAPIERROR** error)
{
    props.calls.push_back("GetLastError " + HexNumber(static_cast<ULONG>(result)));
    void* block = nullptr;
    MAPIAllocateBuffer(sizeof(MAPIERROR), &block);
    std::memset(block, 0, sizeof(MAPIERROR));
    *error = static_cast<MAPIERROR*>(block);
    return S_OK;
}
HRESULT CFakeMessage::SaveChanges(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values)
{
    return props.GetProps(tags, flags, count, values);
}
HRESULT CFakeMessage::GetPropList(ULONG, SPropTagArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::OpenProperty(ULONG tag, const IID* iid, ULONG, ULONG flags, IUnknown** object)
{
    props.calls.push_back("OpenProperty " + HexNumber(tag) +
                          (*iid == IID_IStream ? " IStream" : " other") + " flags " +
                          HexNumber(flags));
    *object = nullptr;
    if (SUCCEEDED(openProperty) && stream != nullptr)
    {
        stream->AddRef();
        *object = stream;
    }
    return openProperty;
}
HRESULT CFakeMessage::SetProps(ULONG, SPropValue*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::DeleteProps(SPropTagArray*, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::CopyTo(ULONG,
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
HRESULT CFakeMessage::CopyProps(
    SPropTagArray*, ULONG, IMAPIProgress*, const IID*, void*, ULONG, SPropProblemArray**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::GetNamesFromIDs(SPropTagArray**, GUID*, ULONG, ULONG*, MAPINAMEID***)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::GetIDsFromNames(ULONG count,
                                      MAPINAMEID** names,
                                      ULONG flags,
                                      SPropTagArray** tags)
{
    return props.GetIds(count, names, flags, tags);
}
HRESULT CFakeMessage::GetAttachmentTable(ULONG flags, IMAPITable** table)
{
    props.calls.push_back("GetAttachmentTable flags " + HexNumber(flags));
    *table = attachmentTable;
    if (attachmentTable == nullptr)
    {
        return MAPI_E_NO_SUPPORT;
    }
    attachmentTable->AddRef();
    return S_OK;
}
HRESULT CFakeMessage::OpenAttach(ULONG number, const IID* iid, ULONG flags, IAttach** opened)
{
    props.calls.push_back("OpenAttach " + HexNumber(number) + (iid == nullptr ? " null" : " iid") +
                          " flags " + HexNumber(flags));
    *opened = attachment;
    if (attachment == nullptr)
    {
        return MAPI_E_NOT_FOUND;
    }
    attachment->AddRef();
    return S_OK;
}
HRESULT CFakeMessage::CreateAttach(const IID*, ULONG, ULONG*, IAttach**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::DeleteAttach(ULONG, ULONG, IMAPIProgress*, ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::GetRecipientTable(ULONG, IMAPITable**)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::ModifyRecipients(ULONG, ADRLIST*)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::SubmitMessage(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
HRESULT CFakeMessage::SetReadFlag(ULONG)
{
    return MAPI_E_NO_SUPPORT;
}
