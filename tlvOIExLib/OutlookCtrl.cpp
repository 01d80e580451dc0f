#include "OutlookCtrl.h"

#include "BringUpResult.h"
#include "MapiDataStore.h"
#include "ProfileXml.h"
#include "Trace.h"

namespace
{

constexpr const char* kInit = "COutlookCtrl::Init";

} // namespace

COutlookCtrl::COutlookCtrl()
{
    m_strInstallKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe";
}

ULONG COutlookCtrl::Init(ULONG initType)
{
    SEND_TRACE(0, kInit, "initType[%d]", static_cast<int>(initType));
    if (initType == InitTypeNone)
    {
        SEND_TRACE(0, kInit, "Error init type [NO_INITIALIZATION]");
        return BringUpRefused;
    }
    const bool isFirst = m_bInitialized == 0;
    if (isFirst && BringUp() != BringUpReady)
    {
        return m_hrInit;
    }
    // A later type is subscribed also when the bring-up had failed: it copes with a missing store.
    if (initType == InitTypeCalendar)
    {
        InitAppTbl();
    }
    else if (initType == InitTypeContacts)
    {
        InitContactTbl();
    }
    if (isFirst)
    {
        (void)OpenAddressbook(); // without it, names are not resolved
    }
    return m_hrInit;
}

ULONG COutlookCtrl::BringUp()
{
    if (CMailCtrl::Init() != BringUpReady)
    {
        return m_hrInit;
    }
    bMAPIX = 1;
    if (!SetStub())
    {
        return FailBringUp("Set stub failed", BringUpNoLibrary);
    }
    if (!LoadLib())
    {
        return FailBringUp("can not load MAPI dll", BringUpNoLibrary);
    }
    if (!MAPIXInit())
    {
        return FailBringUp("MAPI Initialize failed", BringUpNoLibrary);
    }
    if (!LogonDefaultMAPIProfile())
    {
        return FailBringUp("logon failed",
                           m_bNoDefaultProfile != 0 ? BringUpNoDefaultProfile : BringUpNoSession);
    }
    m_hrInit = BringUpReady; // the logon may have set it on its way through Logoff
    if (!GetCurrentUserInfo())
    {
        return FailBringUp("Get current user failed", BringUpNoSession);
    }
    if (!OpenDefaultMessageStore())
    {
        return FailBringUp("Get default message store failed", BringUpNoSession);
    }
    GetCommonEids();
    return m_hrInit;
}

ULONG COutlookCtrl::FailBringUp(const char* message, ULONG result)
{
    // What was achieved so far stays in place until FreeLib.
    SEND_TRACE(0, kInit, "%s", message);
    m_hrInit = result;
    return result;
}

void COutlookCtrl::FreeLib()
{
    m_pInbox.Reset();
    m_pSentFolder.Reset();
    Logoff();
    MAPIUninit();
    if (m_hMAPIDll)
    {
        SEND_TRACE(3, "COutlookCtrl::FreeLib", "CMapiCtrl::FreeLib - Free MAPI Library");
        m_hMAPIDll.Reset();
    }
}

ULONG COutlookCtrl::ProfileInfoFromStore(BSTR* profile)
{
    const WString document = BuildProfileXml(MapiDataStore());
    if (profile != nullptr)
    {
        *profile = SysAllocStringLen(document.data(), static_cast<UINT>(document.size()));
    }
    return 1;
}

void COutlookCtrl::ClearDataStore()
{
    MapiDataStore().ClearDataStore();
}
