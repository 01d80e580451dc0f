#include "CalendarFixture.h"

#include <array>
#include <vector>

namespace
{
constexpr const wchar_t* kClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const wchar_t* kClientsKey = L"Software\\Clients\\Mail";
constexpr const wchar_t* kAppPathKey =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe";
constexpr const wchar_t* kStoreKey = L"Software\\MapiStore";

void SetText(HKEY root, const wchar_t* key, const wchar_t* name, const std::wstring& text)
{
    RegSetKeyValueW(root,
                    key,
                    name,
                    REG_SZ,
                    text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::string ContentOf(const std::wstring& path)
{
    std::string content;
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return content;
    }
    std::array<char, 4096> block{};
    DWORD cbRead = 0;
    while (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &cbRead, nullptr) != 0 &&
           cbRead != 0)
    {
        content.append(block.data(), cbRead);
    }
    CloseHandle(file);
    return content;
}
} // namespace

void CalendarTest::SetUp()
{
    m_folder = BuildPath(L"tests\\e2e-calendar\\live");
    CreateDirectoryW(m_folder.c_str(), nullptr);
    DeleteFileW((m_folder + L"\\ledger.txt").c_str());
    PutStore(L"before.json");

    const std::wstring library = BuildPath(L"mapistore64.dll");
    SetText(HKEY_LOCAL_MACHINE, kClientsKey, nullptr, L"Microsoft Outlook");
    SetText(HKEY_LOCAL_MACHINE, kClientKey, L"DllPathEx", library);
    SetText(HKEY_LOCAL_MACHINE, kAppPathKey, nullptr, library);
    SetText(HKEY_CURRENT_USER, kStoreKey, L"Folder", m_folder);
    SetText(HKEY_CURRENT_USER, kStoreKey, L"Ledger", m_folder + L"\\ledger.txt");
    SetFaults(L"");
    m_server = std::make_unique<CRegisteredServer>(BuildPath(L"dtOIEx64.exe"));
    ASSERT_TRUE(m_server->IsRegistered());
}

void CalendarTest::TearDown()
{
    m_server.reset();
    RegDeleteTreeW(HKEY_CURRENT_USER, kStoreKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClientKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAppPathKey);
}

void CalendarTest::PutStore(const wchar_t* state) const
{
    const std::wstring made = BuildPath(std::wstring(L"tests\\e2e-calendar\\") + state);
    const std::wstring copy = m_folder + L"\\store.new";
    EXPECT_TRUE(CopyFileW(made.c_str(), copy.c_str(), FALSE));
    // The mail library may be reading the document at this moment, and nothing signals the end of that.
    const std::wstring live = m_folder + L"\\store.json";
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    BOOL moved = FALSE;
    do
    {
        moved = MoveFileExW(copy.c_str(), live.c_str(), MOVEFILE_REPLACE_EXISTING);
        SwitchToThread();
    } while (moved == 0 && GetTickCount64() < end);
    EXPECT_TRUE(moved);
}

void CalendarTest::SetFaults(const wchar_t* plan)
{
    SetText(HKEY_CURRENT_USER, kStoreKey, L"Faults", plan);
}

void CalendarTest::Connect(CRemoteClient& client)
{
    ASSERT_EQ(client.Result("frame"), kOk);
    ASSERT_EQ(client.Result("create"), kOk);
    ASSERT_EQ(client.Result("advise main"), kOk);
    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    const HeardEvent answer = client.WaitForEvent(kOnInitialize);
    ASSERT_EQ(answer.id, kOnInitialize);
    ASSERT_EQ(answer.number, 0U);
}

std::unique_ptr<CWatchedProcess> CalendarTest::Server() const
{
    const std::vector<DWORD> ids = m_server->Processes();
    EXPECT_EQ(ids.size(), 1U);
    return ids.size() == 1 ? std::make_unique<CWatchedProcess>(ids[0]) : nullptr;
}

std::string CalendarTest::Ledger() const
{
    return ContentOf(m_folder + L"\\ledger.txt");
}
