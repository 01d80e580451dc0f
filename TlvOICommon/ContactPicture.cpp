#include "ComRef.h"
#include "MapiUtil.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CUtil::GetContactPicture";

/// The first attachment that is marked as the photo; null without one.
CComRef<IAttach> OpenPhoto(IMessage* message)
{
    CComRef<IMAPITable> table;
    if (FAILED(message->GetAttachmentTable(MAPI_UNICODE, table.Put())) || !table)
    {
        return nullptr;
    }
    SPropValue mark{};
    mark.ulPropTag = PR_ATTACHMENT_CONTACTPHOTO;
    mark.Value.b = 1;
    SRestriction isPhoto{};
    isPhoto.rt = RES_PROPERTY;
    isPhoto.res.resProperty.relop = RELOP_EQ;
    isPhoto.res.resProperty.ulPropTag = PR_ATTACHMENT_CONTACTPHOTO;
    isPhoto.res.resProperty.lpProp = &mark;
    SizedSPropTagArray(2, columns) = {2, {PR_ATTACH_NUM, PR_ATTACHMENT_CONTACTPHOTO}};
    CMapiRows rows;
    if (FAILED(CUtil::QueryAllRows(table.Get(),
                                   reinterpret_cast<SPropTagArray*>(&columns),
                                   &isPhoto,
                                   nullptr,
                                   0,
                                   rows,
                                   0)) ||
        rows.Count() == 0 || rows[0].cValues == 0 || rows[0].lpProps[0].ulPropTag != PR_ATTACH_NUM)
    {
        return nullptr;
    }
    CComRef<IAttach> attachment;
    if (FAILED(message->OpenAttach(
            rows[0].lpProps[0].Value.ul, nullptr, MAPI_BEST_ACCESS, attachment.Put())))
    {
        return nullptr;
    }
    return attachment;
}

/// Reads data that is too long for a single answer.
bool ReadByStream(IAttach* attachment, BinaryBlock& picture)
{
    SEND_TRACE(3, kFunction, "CUtil::GetContactPicture - Using streams");
    CComRef<IStream> stream;
    STATSTG facts{};
    if (FAILED(attachment->OpenProperty(
            PR_ATTACH_DATA_BIN, &IID_IStream, 0, 0, stream.PutUnknown())) ||
        !stream || FAILED(stream->Stat(&facts, STATFLAG_NONAME)) || facts.cbSize.HighPart != 0)
    {
        return false;
    }
    // The size is the store's word: a block of MAPI's allocator can be refused without harm.
    const ULONG cbPicture = facts.cbSize.LowPart;
    CMapiBuffer<BYTE> bytes;
    ULONG cbRead = 0;
    if (MAPIAllocateBuffer(cbPicture, bytes.PutVoid()) != S_OK || !bytes ||
        FAILED(stream->Read(bytes.Get(), cbPicture, &cbRead)) || cbRead != cbPicture)
    {
        return false;
    }
    SEND_TRACE(3, kFunction, "CUtil::GetContactPicture - Photo retrieved via streams");
    picture.assign(bytes.Get(), bytes.Get() + cbPicture);
    return true;
}

} // namespace

ULONG CUtil::GetContactPicture(IMessage* message, BinaryBlock& picture)
{
    SEND_TRACE(3, kFunction, "CMAPIMessageBase::GetContactPicture");
    if (message == nullptr)
    {
        return 0;
    }
    const CComRef<IAttach> attachment = OpenPhoto(message);
    if (!attachment)
    {
        return 0;
    }
    SizedSPropTagArray(1, tags) = {1, {PR_ATTACH_DATA_BIN}};
    ULONG count = 0;
    CMapiBuffer<SPropValue> value;
    const HRESULT status = attachment->GetProps(
        reinterpret_cast<SPropTagArray*>(&tags), MAPI_UNICODE, &count, value.Put());
    if (!value || count == 0)
    {
        return 0;
    }
    if (status == MAPI_W_ERRORS_RETURNED)
    {
        const bool isTooLong =
            PROP_TYPE(value->ulPropTag) == PT_ERROR && value->Value.err == MAPI_E_NOT_ENOUGH_MEMORY;
        return isTooLong && ReadByStream(attachment.Get(), picture) ? 1 : 0;
    }
    if (status != S_OK || value->ulPropTag != PR_ATTACH_DATA_BIN ||
        (value->Value.bin.lpb == nullptr && value->Value.bin.cb != 0))
    {
        return 0;
    }
    picture.assign(value->Value.bin.lpb, value->Value.bin.lpb + value->Value.bin.cb);
    return 1;
}
