// CMessageStoreBase: who the user of the session is.

#include <array>

#include "MapiDataStore.h"
#include "MapiMemory.h"
#include "MessageStoreBase.h"
#include "NarrowText.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CMessageStoreBase::GetCurrentUserInfo";
constexpr DWORD kNetworkPauseMs = 1000;

enum UserValue : std::size_t
{
    FirstName,
    LastName,
    SmtpAddress,
    DisplayName,
    Address,
    AddressType,
    Account,
    UserValueCount
};

/// The identity as the directory tells it. What it does not tell is empty.
using UserValues = std::array<WString, UserValueCount>;

unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

CComRef<IUnknown> OpenUser(IMAPISession* session, ULONG cbEntryId, ENTRYID* entryId)
{
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        ULONG objectType = 0;
        CComRef<IUnknown> user;
        const HRESULT status = session->OpenEntry(
            cbEntryId, entryId, nullptr, MAPI_DEFERRED_ERRORS, &objectType, user.Put());
        if (SUCCEEDED(status) && user)
        {
            return user;
        }
        SEND_TRACE(
            2, kFunction, "CMapiCtrl::GetCurrentUserInfo - OpenEntry, hr[0x%x]", Code(status));
        if (status != MAPI_E_NETWORK_ERROR || attempt != 0)
        {
            break;
        }
        Sleep(kNetworkPauseMs);
        SEND_TRACE(
            3, kFunction, "CMapiCtrl::GetCurrentUserInfo - network error, try again to OpenEntry");
    }
    return nullptr;
}

void ReadValues(IMAPIProp* properties, UserValues& user)
{
    SizedSPropTagArray(UserValueCount, tags) = {UserValueCount,
                                                {PR_GIVEN_NAME_W,
                                                 PR_SURNAME_W,
                                                 PR_SMTP_ADDRESS_W,
                                                 PR_DISPLAY_NAME_W,
                                                 PR_EMAIL_ADDRESS_W,
                                                 PR_ADDRTYPE_W,
                                                 PR_ACCOUNT_W}};
    ULONG cValues = 0;
    CMapiBuffer<SPropValue> values;
    // What could not be read is told value by value, whatever the status.
    (void)properties->GetProps(reinterpret_cast<SPropTagArray*>(&tags), 0, &cValues, values.Put());
    if (cValues == UserValueCount && values)
    {
        for (std::size_t index = 0; index < UserValueCount; ++index)
        {
            const SPropValue& value = values[index];
            if (PROP_TYPE(value.ulPropTag) == PT_UNICODE && value.Value.lpszW != nullptr)
            {
                user[index] = value.Value.lpszW;
            }
        }
    }
    SEND_TRACE(3,
               kFunction,
               "CMapiCtrl::GetCurrentUserInfo - First Name[%s], Last Name[%s], SMTP[%s], Display "
               "Name[%s], Address[%s], AddressType[%s], account[%s]",
               NarrowText(user[FirstName]).c_str(),
               NarrowText(user[LastName]).c_str(),
               NarrowText(user[SmtpAddress]).c_str(),
               NarrowText(user[DisplayName]).c_str(),
               NarrowText(user[Address]).c_str(),
               NarrowText(user[AddressType]).c_str(),
               NarrowText(user[Account]).c_str());
}

void ReadUser(IUnknown* opened, UserValues& user)
{
    CComRef<IMailUser> mailUser;
    SEND_TRACE(3, kFunction, "CMapiCtrl::GetCurrentUserInfo - to Query Interface IID_IMailUser");
    // Asked for only to see that this is a mail user.
    HRESULT status = opened->QueryInterface(IID_IMailUser, mailUser.PutVoid());
    if (FAILED(status) || !mailUser)
    {
        SEND_TRACE(2,
                   kFunction,
                   "CMapiCtrl::GetCurrentUserInfo - Query Interface IID_IMailUser, hr[0x%x]",
                   Code(status));
        return;
    }
    CComRef<IMAPIProp> properties;
    SEND_TRACE(3, kFunction, "CMapiCtrl::GetCurrentUserInfo - to Query Interface IID_IMAPIProp");
    status = opened->QueryInterface(IID_IMAPIProp, properties.PutVoid());
    if (FAILED(status) || !properties)
    {
        SEND_TRACE(2,
                   kFunction,
                   "CMapiCtrl::GetCurrentUserInfo - Query Interface IID_IMAPIProp, hr[0x%x]",
                   Code(status));
        return;
    }
    ReadValues(properties.Get(), user);
}

bool IsUsable(const WString& address) noexcept
{
    // U+0001 in front marks an address that the directory made up.
    return !address.empty() && address.front() != L'\x1';
}

WString EmailOf(const UserValues& user)
{
    const bool isSmtp = lstrcmpW(user[AddressType].c_str(), L"SMTP") == 0;
    WString email = isSmtp ? user[Address] : user[SmtpAddress];
    if (!email.empty())
    {
        return email;
    }
    if (IsUsable(user[SmtpAddress]))
    {
        email = user[SmtpAddress];
    }
    else if (IsUsable(user[Address]))
    {
        email = user[Address];
    }
    else
    {
        return email;
    }
    SEND_TRACE(3,
               kFunction,
               "CMapiCtrl::GetCurrentUserInfo TALVO-8173 - strEmail = %s",
               NarrowText(email).c_str());
    return email;
}

} // namespace

bool CMessageStoreBase::GetCurrentUserInfo()
{
    if (!lpSession)
    {
        SEND_TRACE(2, kFunction, "CMapiCtrl::GetCurrentUserInfo - lpSession is NULL");
        return false;
    }
    SEND_TRACE(3, kFunction, "CMapiCtrl::GetCurrentUserInfo - to QueryIdentity");
    UserValues user;
    {
        ULONG cbEntryId = 0;
        CMapiBuffer<ENTRYID> entryId;
        const HRESULT status = lpSession->QueryIdentity(&cbEntryId, entryId.Put());
        if (FAILED(status) || cbEntryId == 0 || !entryId)
        {
            SEND_TRACE(3,
                       kFunction,
                       "CMapiCtrl::GetCurrentUserInfo - QueryIdentity hr[0x%x], ulEntryIDLen[%d]",
                       Code(status),
                       static_cast<int>(cbEntryId));
            return false;
        }
        SEND_TRACE(3, kFunction, "CMapiCtrl::GetCurrentUserInfo - to OpenEntry");
        if (const CComRef<IUnknown> opened = OpenUser(lpSession.Get(), cbEntryId, entryId.Get()))
        {
            ReadUser(opened.Get(), user);
        }
    }
    const WString email = EmailOf(user);
    const bool isKnown = !email.empty() && !user[DisplayName].empty();
    if (isKnown)
    {
        m_strUserEmail = email;
        m_strUserName = user[DisplayName];
    }
    MapiDataStore().SetUserFacts(m_strUserEmail, user[FirstName], user[LastName]);
    return isKnown;
}
