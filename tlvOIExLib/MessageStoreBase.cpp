#include "MessageStoreBase.h"

#include "HexText.h"
#include "MapiDataStore.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "NarrowText.h"
#include "OrdinalText.h"
#include "RegisterUtil.h"
#include "Trace.h"

namespace
{

constexpr const char* kOpenStore = "CMessageStoreBase::OpenDefaultMessageStore";

/// PR_MDB_PROVIDER of a personal store, as hexadecimal text.
constexpr WStringView kPersonalProvider = L"4E495441F9BFB80100AA0037D96E0000";

constexpr ULONG kOnlineFlags = MDB_ONLINE | MDB_NO_MAIL; // 0x180

unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

BinaryBlock BlockOf(const SBinary& bin)
{
    return bin.lpb != nullptr ? BinaryBlock(bin.lpb, bin.lpb + bin.cb) : BinaryBlock();
}

ENTRYID* EntryIdOf(const BinaryBlock& block) noexcept
{
    // MAPI takes identifiers as writable and does not write them.
    return reinterpret_cast<ENTRYID*>(const_cast<std::uint8_t*>(block.data()));
}

/// Whether the user or an administrator asked for the store to be opened online.
bool IsOnlineModeWanted()
{
    DWORD userValue = 0;
    (void)CRegisterUtil::ReadReg(HKEY_CURRENT_USER,
                                 L"SOFTWARE\\Talvo\\DeskTools",
                                 L"OutlookMeetingOnlineMode",
                                 nullptr,
                                 0,
                                 &userValue,
                                 1);
    const bool isPolicySet =
        ReadPolicyFeature(L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLINEMODE");
    SEND_TRACE(2,
               kOpenStore,
               "CMessageStoreBase::OpenMessageStore, dwUseOnlineMode=%d, bOnlineMode=%d",
               static_cast<int>(userValue),
               isPolicySet ? 1 : 0);
    return userValue != 0 || isPolicySet;
}

void TraceOpenError(IMAPISession* session, HRESULT status)
{
    CMapiBuffer<MAPIERROR> error;
    if (FAILED(session->GetLastError(status, 0, error.Put())) || !error)
    {
        return;
    }
    // Without MAPI_UNICODE the texts are narrow, whatever the header's type says.
    SEND_TRACE(3,
               kOpenStore,
               "CMessageStoreBase::OpenMessageStore - GetLastError, szComponent[%s], "
               "ulVersion[%d], ulContext[%d], ulLowLevelError[%d]",
               reinterpret_cast<const char*>(error->lpszComponent),
               static_cast<int>(error->ulVersion),
               static_cast<int>(error->ulContext),
               static_cast<int>(error->ulLowLevelError));
}

} // namespace

/// The row of the default store.
struct CMessageStoreBase::DefaultStore
{
    BinaryBlock entryId;
    std::string name; ///< narrow, as the stores table has it
    WString providerHex;
    WString recordKeyHex;

    bool Take(const SRow& row)
    {
        *this = {};
        bool isDefault = false;
        for (ULONG column = 0; column < row.cValues; ++column)
        {
            const SPropValue& value = row.lpProps[column];
            switch (value.ulPropTag)
            {
            case PR_ENTRYID:
                entryId = BlockOf(value.Value.bin);
                break;
            case PR_DISPLAY_NAME_A:
                name = value.Value.lpszA != nullptr ? value.Value.lpszA : "";
                break;
            case PR_DEFAULT_STORE:
                isDefault = value.Value.b != 0;
                break;
            case PR_MDB_PROVIDER:
                providerHex = HexTextOf(BlockOf(value.Value.bin));
                break;
            case PR_RECORD_KEY:
                recordKeyHex = HexTextOf(BlockOf(value.Value.bin));
                break;
            default:
                break;
            }
        }
        return isDefault && !entryId.empty();
    }
};

bool CMessageStoreBase::OpenDefaultMessageStore()
{
    if (!lpSession)
    {
        SEND_TRACE(3, kOpenStore, "CMessageStoreBase::OpenMessageStore - lpSession is NULL");
        return false;
    }
    m_strStoreName.clear();
    DefaultStore found;
    bool isOpen = false;
    {
        CComRef<IMAPITable> table;
        const HRESULT status = lpSession->GetMsgStoresTable(0, table.Put());
        if (FAILED(status) || !table)
        {
            SEND_TRACE(3,
                       kOpenStore,
                       "CMessageStoreBase::OpenMessageStore - Get Msg store table failed. Error "
                       "Code[%d]",
                       static_cast<int>(GetLastError()));
        }
        else if (FindDefaultStore(table.Get(), found))
        {
            JudgeProvider(found);
            isOpen = OpenFoundStore(found);
        }
    }
    MapiDataStore().SetStoreFacts(m_strStoreName, m_StoreEid, found.recordKeyHex);
    return isOpen;
}

bool CMessageStoreBase::FindDefaultStore(IMAPITable* table, DefaultStore& found) const
{
    SizedSPropTagArray(5, columns) = {
        5, {PR_ENTRYID, PR_DISPLAY_NAME_A, PR_DEFAULT_STORE, PR_MDB_PROVIDER, PR_RECORD_KEY}};
    CMapiRows rows;
    const HRESULT status = CUtil::QueryAllRows(table,
                                               reinterpret_cast<SPropTagArray*>(&columns),
                                               nullptr,
                                               nullptr,
                                               0,
                                               rows,
                                               TBL_NOADVANCE);
    if (FAILED(status) || !rows)
    {
        SEND_TRACE(0, kOpenStore, "CMessageStoreBase::OpenMessageStore - QueryAllRows failed");
        return false;
    }
    for (const SRow& row : rows)
    {
        if (found.Take(row))
        {
            return true;
        }
    }
    found = {};
    return false;
}

void CMessageStoreBase::JudgeProvider(const DefaultStore& found)
{
    if (EqualIgnoringCase(found.providerHex, kPersonalProvider))
    {
        SEND_TRACE(2,
                   kOpenStore,
                   "CMessageStoreBase::OpenMessageStore - The default folder[%s] is personal",
                   found.name.c_str());
        m_bNeedRealEntryID = 0;
        return;
    }
    SEND_TRACE(2,
               kOpenStore,
               "CMessageStoreBase::OpenMessageStore - The default folder[%s] is NOT personal, "
               "need to get real EntryID",
               found.name.c_str());
    m_bNeedRealEntryID = 1;
}

bool CMessageStoreBase::OpenFoundStore(const DefaultStore& found)
{
    SEND_TRACE(2, kOpenStore, "CMessageStoreBase::OpenMessageStore PreCall");
    const ULONG flags = IsOnlineModeWanted() ? kOnlineFlags : MAPI_BEST_ACCESS;
    CComRef<IMsgStore> store;
    const HRESULT status = lpSession->OpenMsgStore(
        0, BlockSize(found.entryId), EntryIdOf(found.entryId), nullptr, flags, store.Put());
    SEND_TRACE(2, kOpenStore, "CMessageStoreBase::OpenMessageStore AfterCall");
    if (status != S_OK || !store)
    {
        SEND_TRACE(1,
                   kOpenStore,
                   "CMessageStoreBase::OpenMessageStore - open msg store failed, hResult[0x%x], "
                   "name[%s]",
                   Code(status),
                   found.name.c_str());
        if (status == MAPI_W_ERRORS_RETURNED)
        {
            TraceOpenError(lpSession.Get(), status);
        }
        m_strStoreName.clear();
        return false;
    }
    m_strStoreName = WidenText(found.name);
    m_StoreEid = found.entryId;
    lpMsgStore = std::move(store);
    SEND_TRACE(2, kOpenStore, "CMessageStoreBase::OpenMessageStore - store is open successful");
    return true;
}

void CMessageStoreBase::CloseMessageStore()
{
    if (!lpMsgStore)
    {
        return;
    }
    SEND_TRACE(3,
               "CMessageStoreBase::CloseMessageStore",
               "CMessageStoreBase::CloseMessageStore - close message store");
    ULONG flags = LOGOFF_NO_WAIT;
    (void)lpMsgStore->StoreLogoff(&flags); // it goes in any case
    lpMsgStore.Reset();
}

void CMessageStoreBase::LogoffMAPISession()
{
    if (lpSession)
    {
        SEND_TRACE(2,
                   "CMessageStoreBase::LogoffMAPISession",
                   "CMapiCtrl::Logoff - to log off profile[%s]",
                   NarrowText(m_strProfile).c_str());
        (void)lpSession->Logoff(0, 0, 0); // it goes in any case
        lpSession.Reset();
    }
    m_strProfile.clear();
}
