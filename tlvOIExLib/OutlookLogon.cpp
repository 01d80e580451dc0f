// COutlookCtrl: profile, logon, address book, logoff.

#include "MapiDataStore.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "NarrowText.h"
#include "OutlookCtrl.h"
#include "Trace.h"

namespace
{

// No MAPI_LOGON_UI: the logon never shows a dialog.
constexpr ULONG kLogonFlags =
    MAPI_UNICODE | MAPI_TIMEOUT_SHORT | MAPI_EXTENDED | MAPI_EXPLICIT_PROFILE | MAPI_NEW_SESSION;
static_assert(kLogonFlags == 0x80100032);

/// The name in a row of the profile table, if it is the default profile's.
WString DefaultProfileName(const SRow& row)
{
    const char* name = nullptr;
    bool isDefault = false;
    for (ULONG column = 0; column < row.cValues; ++column)
    {
        const SPropValue& value = row.lpProps[column];
        if (value.ulPropTag == PR_DISPLAY_NAME_A)
        {
            name = value.Value.lpszA;
        }
        else if (value.ulPropTag == PR_DEFAULT_PROFILE)
        {
            isDefault = value.Value.b != 0;
        }
    }
    return isDefault && name != nullptr ? WidenText(name) : WString();
}

} // namespace

void COutlookCtrl::GetProfiles(std::vector<WString>& profiles)
{
    constexpr const char* kFunction = "COutlookCtrl::GetProfiles";
    CComRef<IProfAdmin> admin;
    if (FAILED(MAPIAdminProfiles(0, admin.Put())) || !admin)
    {
        SEND_TRACE(0, kFunction, "CMapiCtrl::GetProfiles - failed MAPIAdminProfiles");
        return;
    }
    CComRef<IMAPITable> table;
    if (FAILED(admin->GetProfileTable(0, table.Put())) || !table)
    {
        SEND_TRACE(0, kFunction, "CMapiCtrl::GetProfiles - failed GetProfileTable");
        return;
    }
    SizedSPropTagArray(2, columns) = {2, {PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE}};
    CMapiRows rows;
    (void)CUtil::QueryAllRows(table.Get(),
                              reinterpret_cast<SPropTagArray*>(&columns),
                              nullptr,
                              nullptr,
                              0,
                              rows,
                              TBL_NOADVANCE); // a table that cannot be read has no profiles
    for (const SRow& row : rows)
    {
        const WString name = DefaultProfileName(row);
        if (!name.empty())
        {
            profiles.push_back(name);
            SEND_TRACE(2,
                       kFunction,
                       "CMapiCtrl::GetProfiles - get default profile[%s]",
                       NarrowText(name).c_str());
        }
    }
}

bool COutlookCtrl::LogonDefaultMAPIProfile()
{
    constexpr const char* kFunction = "COutlookCtrl::LogonDefaultMAPIProfile";
    SEND_TRACE(2, kFunction, "LogonDefaultMAPIProfile");
    m_bNoDefaultProfile = 0;
    if (bMAPIXInited == 0 || bMAPIX == 0)
    {
        return false;
    }
    std::vector<WString> profiles;
    GetProfiles(profiles);
    const WString profile = profiles.empty() ? WString() : profiles.front();
    if (m_strProfile != profile)
    {
        Logoff(); // also before the first logon, when there is nothing to log off from
    }
    bool isLoggedOn = false;
    if (profile.empty() || lpSession)
    {
        SEND_TRACE(
            0, kFunction, "CMapiCtrl::Logon - strDefaultProfile [%s]", NarrowText(profile).c_str());
    }
    else
    {
        SEND_TRACE(3, kFunction, "CMapiCtrl::Logon - to call MAPILogonEx");
        // Wide, as MAPI_UNICODE promises.
        WString name(profile);
        const HRESULT status = MAPILogonEx(0, name.data(), nullptr, kLogonFlags, lpSession.Put());
        isLoggedOn = SUCCEEDED(status) && lpSession;
        if (isLoggedOn)
        {
            m_strProfile = profile;
            SEND_TRACE(2,
                       kFunction,
                       "CMapiCtrl::Logon - mapi logon profile [%s] successful",
                       NarrowText(profile).c_str());
            MapiDataStore().SetProfileName(profile);
        }
        else
        {
            SEND_TRACE(2,
                       kFunction,
                       "CMapiCtrl::Logon - mapi logon failed, hr[0x%x]",
                       static_cast<unsigned>(status));
            lpSession.Reset();
        }
    }
    if (profile.empty())
    {
        m_bNoDefaultProfile = 1;
    }
    return isLoggedOn;
}

ULONG COutlookCtrl::OpenAddressbook()
{
    constexpr const char* kFunction = "COutlookCtrl::OpenAddressbook";
    if (!lpSession)
    {
        SEND_TRACE(3, kFunction, "CMapiCtrl::OpenAddressbook - lpSession is NULL");
        return 0;
    }
    const HRESULT status = lpSession->OpenAddressBook(0, nullptr, AB_NO_DIALOG, m_lpAdrBook.Put());
    if (status != S_OK || !m_lpAdrBook)
    {
        SEND_TRACE(3, kFunction, "open address book failed");
        m_lpAdrBook.Reset();
        return 0;
    }
    SEND_TRACE(3, kFunction, "open address book successful");
    return 1;
}

ULONG COutlookCtrl::Logoff()
{
    SEND_TRACE(2, "COutlookCtrl::Logoff", "Logoff");
    m_hrInit = 1;
    UnAdviceTableSink();
    UnAdviceContactTableSink();
    CloseAddressbook();
    CloseMessageStore();
    LogoffMAPISession();
    return 1;
}
