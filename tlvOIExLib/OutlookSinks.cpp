// COutlookCtrl: finding the folders to watch, subscribing them, and letting them go.

#include <cstring>
#include <utility>

#include "FaultGuard.h"
#include "FolderKind.h"
#include "FolderWalk.h"
#include "HexText.h"
#include "MapiAdvise.h"
#include "MapiDataStore.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "NarrowText.h"
#include "OutlookCtrl.h"
#include "RegisterUtil.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

/// The texts in which the two subscriptions differ. A null text is not traced.
struct SinkTexts
{
    const char* function;
    const char* storeIsNull;
    const char* noSubtreeId;
    const char* emptySubtreeId;
    const char* rootOpened;
    const char* noRoot;
    const char* toSink;
    const char* openFailed;
    const char* tableFailed;
    const char* noNotification;
    const char* adviseFailed;
    const char* subscribed;
};

// The format of each text stands where it is used; these are formats for exactly those values.
#define SINK_TEXTS(name, emptyId)                                                                  \
    {                                                                                              \
        "COutlookCtrl::" name, "CMapiCtrl::" name " - MsgStore is NULL",                           \
            "CMapiCtrl::" name " - get PR_IPM_SUBTREE_ENTRYID failed", emptyId,                    \
            "CMapiCtrl::" name " - open mapi folder success, folder type:",                        \
            "CMapiCtrl::" name " - ipmroot==0", "CMapiCtrl." name " - to sink folder",             \
            "CMapiCtrl." name " - open folder failed",                                             \
            "CMapiCtrl." name " - get folder table failed",                                        \
            "CMapiCtrl." name " - this folder table not support notification",                     \
            "CMapiCtrl." name " - sink table failed",                                              \
            "CMapiCtrl." name " - sink table successfull"                                          \
    }

constexpr SinkTexts kCalendarTexts =
    SINK_TEXTS("InitAppTbl", "CMapiCtrl::InitAppTbl - eid.isempty()");
constexpr SinkTexts kContactTexts = SINK_TEXTS("InitContactTbl", nullptr);

#undef SINK_TEXTS

/// Opens the IPM subtree of the store.
/// Owner:  `value` is the caller's, so that it is freed also when a fault ends the call.
CComRef<IMAPIFolder> OpenSubtree(IMsgStore* store,
                                 const SinkTexts& texts,
                                 CMapiBuffer<SPropValue>& value)
{
    if (GetOneProp(store, PR_IPM_SUBTREE_ENTRYID, value) != S_OK)
    {
        SEND_TRACE(3, texts.function, "%s", texts.noSubtreeId);
        value.Reset();
    }
    if (!value || value->ulPropTag != PR_IPM_SUBTREE_ENTRYID || value->Value.bin.cb == 0)
    {
        if (texts.emptySubtreeId != nullptr)
        {
            SEND_TRACE(2, texts.function, "%s", texts.emptySubtreeId);
        }
        return nullptr;
    }
    ULONG objectType = 0;
    CComRef<IUnknown> object;
    const HRESULT status = store->OpenEntry(value->Value.bin.cb,
                                            reinterpret_cast<ENTRYID*>(value->Value.bin.lpb),
                                            nullptr,
                                            0,
                                            &objectType,
                                            object.Put());
    if (FAILED(status))
    {
        return nullptr;
    }
    if (objectType != MAPI_FOLDER)
    {
        object.Reset();
    }
    SEND_TRACE(3, texts.function, "%s[%d]", texts.rootOpened, static_cast<int>(objectType));
    return CComRef<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object.Detach()));
}

/// What stands for "any exception" of a missing store.
struct StoreIsMissing final
{
};

/// The guarded opening of the subtree: input, result, and whether the body threw. A fault unwinds
/// nothing, so what has to be given back stands here.
struct SubtreeCall
{
    IMsgStore* store;
    CMapiBuffer<SPropValue> subtreeId{};
    IMAPIFolder* root = nullptr; ///< one reference, handed over when the call finished
    bool isThrown = false;
};

void OpenSubtreeGuarded(void* context)
{
    auto& call = *static_cast<SubtreeCall*>(context);
    try
    {
        if (call.store == nullptr)
        {
            SEND_TRACE(3, kCalendarTexts.function, "%s", kCalendarTexts.storeIsNull);
            throw StoreIsMissing();
        }
        call.root = OpenSubtree(call.store, kCalendarTexts, call.subtreeId).Detach();
    }
    catch (...)
    {
        call.isThrown = true;
    }
}

void ReleaseGuarded(void* context)
{
    static_cast<IMAPIFolder*>(context)->Release();
}

/// Whether only the first calendar is to be watched.
bool IsReductionWanted(bool& isOnlyTopFolder)
{
    const WString profile = MapiDataStore().GetProfileName();
    isOnlyTopFolder =
        ReadPolicyFeature(L"FEATURE_ENABLE_TALVO_MEETINGS_DESKTOP_OUTLOOKMEETING_ONLYTOPFOLDER");
    return isOnlyTopFolder || profile.find(L"G Suite") != WString::npos;
}

void ReduceFolders(std::vector<MapiFolderInfo>& folders)
{
    const char* const function = kCalendarTexts.function;
    bool isOnlyTopFolder = false;
    if (!IsReductionWanted(isOnlyTopFolder))
    {
        SEND_TRACE(2, function, "CMapiCtrl.InitAppTbl - Folders dont need reduce");
        return;
    }
    SEND_TRACE(2,
               function,
               "CMapiCtrl.InitAppTbl - Folders need reduce, bOnlyTopFolder=%d",
               isOnlyTopFolder ? 1 : 0);
    for (const MapiFolderInfo& folder : folders)
    {
        SEND_TRACE(2,
                   function,
                   "CMapiCtrl.InitAppTbl - Folders, name[%s]",
                   NarrowText(folder.name).c_str());
    }
    if (folders.size() > 1)
    {
        folders.resize(1);
    }
}

/// Subscribes one opened folder and appends it to `sinks`.
void SubscribeFolder(const CComRef<IMAPIFolder>& folder,
                     MapiFolderInfo&& folderInfo,
                     ULONG kind,
                     const SinkTexts& texts,
                     std::vector<MAPI_TBLSinkInfo>& sinks)
{
    MAPI_TBLSinkInfo info;
    if (FAILED(folder->GetContentsTable(MAPI_UNICODE, info.table.Put())) || !info.table)
    {
        SEND_TRACE(2, texts.function, "%s", texts.tableFailed);
        return;
    }
    info.sink = CTableSink(new CMAPITableAdviseSink(folder.Get(), kind));
    const HRESULT status =
        AdviseTable(info.table.Get(), fnevTableModified, info.sink.Get(), &info.connection);
    if (FAILED(status))
    {
        SEND_TRACE(2,
                   texts.function,
                   "%s",
                   status == MAPI_E_NO_SUPPORT ? texts.noNotification : texts.adviseFailed);
        return;
    }
    info.folder = folder;
    info.folderInfo = std::move(folderInfo);
    sinks.push_back(std::move(info));
    SEND_TRACE(3, texts.function, "%s", texts.subscribed);
}

/// Ends all subscriptions of a list: first every sink, then folders and tables.
void EndSubscriptions(std::vector<MAPI_TBLSinkInfo>& sinks)
{
    for (MAPI_TBLSinkInfo& info : sinks)
    {
        if (info.table)
        {
            // Once more where it fails: a subscription left behind holds the table for good. The sink
            // goes in any case.
            if (FAILED(UnadviseTable(info.table.Get(), info.connection)))
            {
                (void)UnadviseTable(info.table.Get(), info.connection);
            }
        }
        info.sink.Reset();
        // No notification comes any more. Those that wait would meet a folder that is gone.
        if (const CWorkThreadUse worker; worker)
        {
            worker->DropTableWork(info.folder.Get());
        }
    }
    for (MAPI_TBLSinkInfo& info : sinks)
    {
        info.folder.Reset();
        info.table.Reset();
    }
    sinks.clear();
}

} // namespace

void COutlookCtrl::InitAppTbl()
{
    const char* const function = kCalendarTexts.function;
    SEND_TRACE(2, function, "InitAppTbl");
    // A provider may fault as soon as it is asked for the subtree; that must not end the process.
    SubtreeCall call{lpMsgStore.Get()};
    if (RunGuarded(&OpenSubtreeGuarded, &call) != 0 || call.isThrown)
    {
        SEND_TRACE(3, function, "CMapiCtrl::InitAppTbl - ******catch exception\n");
        return;
    }
    if (call.root == nullptr)
    {
        SEND_TRACE(2, function, "%s", kCalendarTexts.noRoot);
        return;
    }
    std::vector<MapiFolderInfo> folders;
    SEND_TRACE(3, function, "CMapiCtrl::InitAppTbl - to call RecFolders....");
    RecFolders(call.root, 0, WString(), folders, FolderKindAppointment);
    SEND_TRACE(3, function, "CMapiCtrl::InitAppTbl - after call RecFolders....");
    ReduceFolders(folders);
    if (RunGuarded(&ReleaseGuarded, call.root) != 0)
    {
        SEND_TRACE(0, function, "cCMapiCtrl::InitAppTbl - atch SAFE_RELEASE(ipmroot) error");
    }
    SEND_TRACE(3, function, "CMapiCtrl::InitAppTbl - after release ipmroot....");
    SubscribeFolders(std::move(folders), FolderKindAppointment);
}

void COutlookCtrl::InitContactTbl()
{
    const char* const function = kContactTexts.function;
    SEND_TRACE(2, function, "InitContactTbl");
    if (!lpMsgStore)
    {
        SEND_TRACE(3, function, "%s", kContactTexts.storeIsNull);
        return;
    }
    std::vector<MapiFolderInfo> folders;
    {
        CMapiBuffer<SPropValue> subtreeId;
        const CComRef<IMAPIFolder> root = OpenSubtree(lpMsgStore.Get(), kContactTexts, subtreeId);
        if (!root)
        {
            SEND_TRACE(2, function, "%s", kContactTexts.noRoot);
            return;
        }
        RecFolders(root.Get(), 0, WString(), folders, FolderKindContact);
    }
    SubscribeFolders(std::move(folders), FolderKindContact);
}

void COutlookCtrl::SubscribeFolders(std::vector<MapiFolderInfo> folders, ULONG kind)
{
    const bool isCalendar = kind == FolderKindAppointment;
    const SinkTexts& texts = isCalendar ? kCalendarTexts : kContactTexts;
    for (MapiFolderInfo& folderInfo : folders)
    {
        SEND_TRACE(3,
                   texts.function,
                   "%s, name[%s], entryid[%s]",
                   texts.toSink,
                   NarrowText(folderInfo.name).c_str(),
                   NarrowText(HexTextOf(folderInfo.entryId)).c_str());
        const CComRef<IMAPIFolder> folder = OpenFolder(folderInfo.entryId);
        if (!folder)
        {
            SEND_TRACE(2, texts.function, "%s", texts.openFailed);
            continue;
        }
        SubscribeFolder(folder,
                        std::move(folderInfo),
                        kind,
                        texts,
                        isCalendar ? m_CalendarSinks : m_ContactSinks);
    }
}

void COutlookCtrl::UnAdviceTableSink()
{
    SEND_TRACE(2, "COutlookCtrl::UnAdviceTableSink", "UnAdviceTableSink");
    EndSubscriptions(m_CalendarSinks);
}

void COutlookCtrl::UnAdviceContactTableSink()
{
    SEND_TRACE(2, "COutlookCtrl::UnAdviceContactTableSink", "UnAdviceContactTableSink");
    EndSubscriptions(m_ContactSinks);
}
