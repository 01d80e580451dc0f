#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeMapi.h"
#include "OutlookCtrl.h"
#include "TraceCapture.h"

/// The controller with its inner steps in reach.
class CTestOutlook : public COutlookCtrl
{
public:
    using CABbase::CloseAddressbook;
    using CABbase::GetABEmailAddress;
    using CABbase::ListABContainer;
    using CABbase::ListABContainerByType;
    using CABbase::ListABEmailWithKey;
    using CABbase::ListABEmailWithName;
    using CABbase::m_lpAdrBook;
    using CMailCtrl::m_bInitialized;
    using CMailCtrl::m_hrInit;
    using CMailCtrl::m_strInstallKey;
    using CMessageStoreBase::GetCommonEids;
    using CMessageStoreBase::GetCurrentUserInfo;
    using CMessageStoreBase::GetInboxFolder;
    using CMessageStoreBase::GetOutboxFolder;
    using CMessageStoreBase::lpMsgStore;
    using CMessageStoreBase::lpSession;
    using CMessageStoreBase::m_bNeedRealEntryID;
    using CMessageStoreBase::m_OutboxEid;
    using CMessageStoreBase::m_SentEid;
    using CMessageStoreBase::m_StoreEid;
    using CMessageStoreBase::m_strProfile;
    using CMessageStoreBase::m_strStoreName;
    using CMessageStoreBase::m_strUserEmail;
    using CMessageStoreBase::m_strUserName;
    using CMessageStoreBase::OpenDefaultMessageStore;
    using CMessageStoreBase::OpenFolder;
    using CMessageStoreBase::OpenMAPIMessage;
    using COutlookCtrl::bMAPIX;
    using COutlookCtrl::bMAPIXInited;
    using COutlookCtrl::GetProfiles;
    using COutlookCtrl::InitAppTbl;
    using COutlookCtrl::InitContactTbl;
    using COutlookCtrl::LoadLib;
    using COutlookCtrl::Logoff;
    using COutlookCtrl::LogonDefaultMAPIProfile;
    using COutlookCtrl::m_bNoDefaultProfile;
    using COutlookCtrl::m_CalendarSinks;
    using COutlookCtrl::m_ContactSinks;
    using COutlookCtrl::m_hMAPIDll;
    using COutlookCtrl::m_strStubKey;
    using COutlookCtrl::MAPIUninit;
    using COutlookCtrl::MAPIXInit;
    using COutlookCtrl::OpenAddressbook;
    using COutlookCtrl::SetStub;
    using COutlookCtrl::UnAdviceContactTableSink;
    using COutlookCtrl::UnAdviceTableSink;
    using COutlookCtrl::WriteStub;
};

/// A registered mail client, a small mail system behind it, and the trace. At the end of each test
/// every object of the mail system and every buffer has to be given back.
class ControllerTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// The path of the library that stands for the mail client's.
    static std::wstring ProviderPath(const wchar_t* file);
    /// Registers or, with null, removes the mail client's library path ("DllPathEx" or "DllPath").
    static void RegisterPath(const wchar_t* valueName, const wchar_t* path, DWORD type = 1);
    static void RegisterMailClient(bool isInstalled);
    static void SetUserDword(const wchar_t* key, const wchar_t* name, DWORD value);
    static void SetMachineDword(const wchar_t* key, const wchar_t* name, DWORD value);

    /// The lines of the trace as "level message".
    [[nodiscard]] std::vector<std::string> Lines() const { return trace.Messages(); }
    /// Only those that contain `text`.
    [[nodiscard]] std::vector<std::string> LinesWith(const std::string& text) const;

    /// Brings the controller to where the bring-up would have it after the logon.
    void LogOn(CTestOutlook& outlook) const;
    /// The same, with the store open.
    void OpenStore(CTestOutlook& outlook) const;

    FakeMapi mapi;
    CTraceCapture trace;
};

using Strings = std::vector<std::string>;

inline constexpr const wchar_t* kPolicyKey = L"SOFTWARE\\Policies\\VantorTalvo";
inline constexpr const wchar_t* kDeskToolsKey = L"SOFTWARE\\Talvo\\DeskTools";
