#include "ControllerTest.h"

#include <algorithm>

#include "FakeProviderApi.h"
#include "MailClientEnvironment.h"
#include "MapiDataStore.h"
#include "ProcAddress.h"
#include "RegKey.h"

namespace
{

constexpr const wchar_t* kMailClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const wchar_t* kAppPathKey =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe";

CRegKey MakeKey(HKEY hive, const wchar_t* key)
{
    CRegKey opened;
    EXPECT_EQ(
        RegCreateKeyExW(hive, key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, opened.Put(), nullptr),
        ERROR_SUCCESS);
    return opened;
}

void SetText(HKEY key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ)
{
    EXPECT_EQ(RegSetValueExW(key,
                             name,
                             0,
                             type,
                             reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

HMODULE Provider()
{
    return GetModuleHandleW(kFakeProviderFile);
}

HRESULT Initialize(void* start)
{
    g_fakeMapi->initializeFlags = static_cast<const MAPIINIT_0*>(start)->ulFlags;
    return g_fakeMapi->Enter("MAPIInitialize");
}

void Uninitialize()
{
    g_fakeMapi->Enter("MAPIUninitialize");
}

HRESULT LogonEx(const WCHAR* profile, ULONG flags, IMAPISession** session)
{
    *session = nullptr;
    g_fakeMapi->logonProfile = profile;
    g_fakeMapi->logonFlags = flags;
    const HRESULT answer = g_fakeMapi->Enter("MAPILogonEx");
    if (SUCCEEDED(answer))
    {
        *session = MakeFakeSession().Detach();
    }
    return answer;
}

HRESULT AdminProfiles(IProfAdmin** admin)
{
    *admin = nullptr;
    const HRESULT answer = g_fakeMapi->Enter("MAPIAdminProfiles");
    if (SUCCEEDED(answer))
    {
        *admin = MakeFakeProfAdmin().Detach();
    }
    return answer;
}

constexpr FakeProviderHooks kHooks{&Initialize, &Uninitialize, &LogonEx, &AdminProfiles};

LONG LiveBuffers()
{
    return ProcAddress<LiveBuffersFn>(Provider(), kLiveBuffersName)();
}

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new CMailClientEnvironment(L"", kFakeProviderFile));

} // namespace

void ControllerTest::SetUp()
{
    g_fakeMapi = &mapi;
    ASSERT_NE(Provider(), nullptr);
    ProcAddress<SetHooksFn>(Provider(), kSetHooksName)(&kHooks);
    RegisterPath(L"DllPathEx", ProviderPath(kFakeProviderFile).c_str());
    RegisterPath(L"DllPath", ProviderPath(kFakeProviderFile).c_str());
    RegisterMailClient(true);
    RegDeleteTreeW(HKEY_CURRENT_USER, kPolicyKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kPolicyKey);
    RegDeleteTreeW(HKEY_CURRENT_USER, kDeskToolsKey);
    MapiDataStore().SetLibraryPath(L"");
    MapiDataStore().SetProfileName(L"");
    MapiDataStore().SetUserFacts(L"", L"", L"");
    MapiDataStore().SetStoreFacts(L"", {}, L"");
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);

    mapi.profiles = {{{PR_DISPLAY_NAME_A, std::string("Work")}, {PR_DEFAULT_PROFILE, true}}};
    mapi.stores = {{{PR_ENTRYID, BinaryBlock{1, 2, 0xAB}},
                    {PR_DISPLAY_NAME_A, std::string("Mailbox")},
                    {PR_DEFAULT_STORE, true},
                    {PR_RECORD_KEY, BinaryBlock{0xCD, 0xEF}}}};
    mapi.storeProps = {{PR_IPM_SUBTREE_ENTRYID, FakeFolderId(L"")},
                       {PR_VALID_FOLDER_MASK, LONG{0xFF}},
                       {PR_IPM_OUTBOX_ENTRYID, FakeFolderId(L"Outbox")},
                       {PR_IPM_SENTMAIL_ENTRYID, FakeFolderId(L"Sent")},
                       {PR_IPM_WASTEBASKET_ENTRYID, FakeFolderId(L"Waste")}};
    mapi.user = {{PR_GIVEN_NAME_W, std::wstring(L"Ada")},
                 {PR_SURNAME_W, std::wstring(L"Stone")},
                 {PR_SMTP_ADDRESS_W, std::wstring(L"ada@example.org")},
                 {PR_DISPLAY_NAME_W, std::wstring(L"Ada Stone")},
                 {PR_EMAIL_ADDRESS_W, std::wstring(L"/o=Example/cn=ada")},
                 {PR_ADDRTYPE_W, std::wstring(L"EX")},
                 {PR_ACCOUNT_W, std::wstring(L"ada")}};
    mapi.folders = {{.name = L"Calendar", .containerClass = "IPF.Appointment"},
                    {.name = L"Contacts", .containerClass = "IPF.Contact"},
                    {.name = L"Inbox", .containerClass = "IPF.Note"},
                    {.name = L"Sent", .containerClass = "IPF.Note"}};
    trace.Clear();
}

void ControllerTest::TearDown()
{
    EXPECT_EQ(mapi.liveObjects, 0) << "objects of the mail system were not released";
    EXPECT_EQ(LiveBuffers(), 0) << "buffers of the mail system were not freed";
}

std::wstring ControllerTest::ProviderPath(const wchar_t* file)
{
    return ProgramFolder() + L"\\" + file;
}

void ControllerTest::RegisterPath(const wchar_t* valueName, const wchar_t* path, DWORD type)
{
    const CRegKey client = MakeKey(HKEY_LOCAL_MACHINE, kMailClientKey);
    if (path != nullptr)
    {
        SetText(client.Get(), valueName, path, type);
    }
    else
    {
        RegDeleteValueW(client.Get(), valueName);
    }
}

void ControllerTest::RegisterMailClient(bool isInstalled)
{
    const CRegKey key = MakeKey(HKEY_LOCAL_MACHINE, kAppPathKey);
    SetText(key.Get(), nullptr, isInstalled ? L"C:\\Office\\Outlook.exe" : L"");
}

void ControllerTest::SetUserDword(const wchar_t* key, const wchar_t* name, DWORD value)
{
    const CRegKey opened = MakeKey(HKEY_CURRENT_USER, key);
    RegSetValueExW(
        opened.Get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

void ControllerTest::SetMachineDword(const wchar_t* key, const wchar_t* name, DWORD value)
{
    const CRegKey opened = MakeKey(HKEY_LOCAL_MACHINE, key);
    RegSetValueExW(
        opened.Get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

std::vector<std::string> ControllerTest::LinesWith(const std::string& text) const
{
    std::vector<std::string> lines = Lines();
    std::erase_if(lines,
                  [&](const std::string& line) { return line.find(text) == std::string::npos; });
    return lines;
}

void ControllerTest::LogOn(CTestOutlook& outlook) const
{
    outlook.bMAPIX = 1;
    outlook.lpSession = MakeFakeSession();
    outlook.m_strProfile = L"Work";
    outlook.m_hrInit = 0;
}

void ControllerTest::OpenStore(CTestOutlook& outlook) const
{
    LogOn(outlook);
    outlook.lpMsgStore = MakeFakeStore();
}
