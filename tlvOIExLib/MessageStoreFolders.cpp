// CMessageStoreBase: the common folders of the store, and opening its folders and messages.

#include "MapiMemory.h"
#include "MessageStoreBase.h"
#include "Trace.h"

namespace
{

unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

BinaryBlock BlockOf(const SBinary& bin)
{
    return bin.lpb != nullptr ? BinaryBlock(bin.lpb, bin.lpb + bin.cb) : BinaryBlock();
}

CComRef<IMAPIFolder> OpenStoreFolder(IMsgStore* store,
                                     ULONG cbEntryId,
                                     ENTRYID* entryId,
                                     ULONG flags)
{
    ULONG objectType = 0;
    CComRef<IUnknown> object;
    const HRESULT status =
        store->OpenEntry(cbEntryId, entryId, nullptr, flags, &objectType, object.Put());
    if (FAILED(status) || !object || objectType != MAPI_FOLDER)
    {
        return nullptr;
    }
    return CComRef<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object.Detach()));
}

ENTRYID* EntryIdOf(const BinaryBlock& block) noexcept
{
    // MAPI takes identifiers as writable and does not write them.
    return reinterpret_cast<ENTRYID*>(const_cast<std::uint8_t*>(block.data()));
}

} // namespace

void CMessageStoreBase::GetCommonEids()
{
    constexpr const char* kFunction = "CMessageStoreBase::GetCommonEids";
    m_OutboxEid.clear();
    m_SentEid.clear();
    if (!lpMsgStore)
    {
        SEND_TRACE(2, kFunction, "CMessageStoreBase::GetCommonEids - lpMsgStore is NULL");
        return;
    }
    // The waste basket is asked for and not kept: the store answers the four together.
    SizedSPropTagArray(4, tags) = {4,
                                   {PR_VALID_FOLDER_MASK,
                                    PR_IPM_OUTBOX_ENTRYID,
                                    PR_IPM_SENTMAIL_ENTRYID,
                                    PR_IPM_WASTEBASKET_ENTRYID}};
    ULONG cValues = 0;
    CMapiBuffer<SPropValue> values;
    const HRESULT status =
        lpMsgStore->GetProps(reinterpret_cast<SPropTagArray*>(&tags), 0, &cValues, values.Put());
    if ((status != S_OK && status != MAPI_W_ERRORS_RETURNED) || !values || cValues != tags.cValues)
    {
        SEND_TRACE(
            2, kFunction, "CMessageStoreBase::GetCommonEids - get outbox/sentbox entryid failed");
        return;
    }
    const ULONG mask = values[0].ulPropTag == PR_VALID_FOLDER_MASK ? values[0].Value.ul : 0;
    if ((mask & FOLDER_IPM_OUTBOX_VALID) != 0 && values[1].ulPropTag == PR_IPM_OUTBOX_ENTRYID)
    {
        m_OutboxEid = BlockOf(values[1].Value.bin);
    }
    if ((mask & FOLDER_IPM_SENTMAIL_VALID) != 0 && values[2].ulPropTag == PR_IPM_SENTMAIL_ENTRYID)
    {
        m_SentEid = BlockOf(values[2].Value.bin);
    }
}

IMAPIFolder* CMessageStoreBase::GetInboxFolder()
{
    constexpr const char* kFunction = "CMessageStoreBase::GetInboxFolder";
    if (!m_pInbox && lpMsgStore)
    {
        ULONG cbEntryId = 0;
        CMapiBuffer<ENTRYID> entryId;
        const HRESULT status =
            lpMsgStore->GetReceiveFolder(nullptr, MAPI_UNICODE, &cbEntryId, entryId.Put(), nullptr);
        if (SUCCEEDED(status) && entryId)
        {
            m_pInbox = OpenStoreFolder(lpMsgStore.Get(), cbEntryId, entryId.Get(), 0);
        }
    }
    SEND_TRACE(3,
               kFunction,
               m_pInbox ? "CMessageStoreBase::GetInBoxFolder - success"
                        : "CMessageStoreBase::GetInBoxFolder - failed");
    return m_pInbox.Get();
}

IMAPIFolder* CMessageStoreBase::GetOutboxFolder()
{
    constexpr const char* kFunction = "CMessageStoreBase::GetOutboxFolder";
    if (!m_pSentFolder && lpMsgStore && !m_SentEid.empty())
    {
        m_pSentFolder =
            OpenStoreFolder(lpMsgStore.Get(), BlockSize(m_SentEid), EntryIdOf(m_SentEid), 0);
    }
    SEND_TRACE(3,
               kFunction,
               m_pSentFolder ? "CMessageStoreBase::GetOutboxFolder - success"
                             : "CMessageStoreBase::GetOutboxFolder - failed");
    return m_pSentFolder.Get();
}

CComRef<IUnknown> CMessageStoreBase::OpenObject(const BinaryBlock& entryId,
                                                ULONG wantedType,
                                                HRESULT& status,
                                                ULONG& objectType)
{
    CComRef<IUnknown> object;
    status = lpMsgStore->OpenEntry(BlockSize(entryId),
                                   EntryIdOf(entryId),
                                   nullptr,
                                   MAPI_BEST_ACCESS,
                                   &objectType,
                                   object.Put());
    if (FAILED(status) || objectType != wantedType)
    {
        object.Reset();
    }
    return object;
}

CComRef<IMAPIFolder> CMessageStoreBase::OpenFolder(const BinaryBlock& entryId)
{
    constexpr const char* kFunction = "CMessageStoreBase::OpenFolder";
    if (!lpMsgStore)
    {
        SEND_TRACE(3, kFunction, "CMessageStoreBase::OpenFolder - MsgStore is NULL");
        return nullptr;
    }
    HRESULT status = S_OK;
    ULONG objectType = 0;
    CComRef<IUnknown> object = OpenObject(entryId, MAPI_FOLDER, status, objectType);
    if (!object)
    {
        SEND_TRACE(0,
                   kFunction,
                   "CMessageStoreBase::OpenFolder - failed, hResult[0x%x] objType[%d]",
                   Code(status),
                   static_cast<int>(objectType));
        return nullptr;
    }
    return CComRef<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object.Detach()));
}

CComRef<IMessage> CMessageStoreBase::OpenMAPIMessage(const BinaryBlock& entryId)
{
    constexpr const char* kFunction = "CMessageStoreBase::OpenMAPIMessage";
    if (!lpMsgStore)
    {
        SEND_TRACE(3, kFunction, "CMessageStoreBase::OpenMAPIMessage - MsgStore is NULL");
        return nullptr;
    }
    HRESULT status = S_OK;
    ULONG objectType = 0;
    CComRef<IUnknown> object = OpenObject(entryId, MAPI_MESSAGE, status, objectType);
    if (!object)
    {
        SEND_TRACE(0,
                   kFunction,
                   "CMessageStoreBase::OpenMAPIMessage - failed, hResult[0x%x] objType[%d]",
                   Code(status),
                   static_cast<int>(objectType));
        return nullptr;
    }
    return CComRef<IMessage>::Adopt(static_cast<IMessage*>(object.Detach()));
}
