#include "MailClientEnvironment.h"

#include <array>

#include "Handle.h"
#include "RegKey.h"

namespace
{

constexpr const wchar_t* kMailClients = L"Software\\Clients\\Mail";
constexpr const wchar_t* kMailClient = L"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr const wchar_t* kAppPath =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe";
constexpr const wchar_t* kBeforeVariable = L"DT_MAIL_CLIENT_BEFORE";

std::wstring DefaultMailClient()
{
    std::array<wchar_t, 260> text{};
    DWORD cbText = sizeof text;
    (void)RegGetValueW(
        HKEY_LOCAL_MACHINE, kMailClients, nullptr, RRF_RT_REG_SZ, nullptr, text.data(), &cbText);
    return text.data();
}

} // namespace

std::wstring ProgramFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    path.resize(path.find_last_of(L'\\'));
    return path;
}

void SetMachineText(const wchar_t* key, const wchar_t* name, const std::wstring& text, DWORD type)
{
    CRegKey opened;
    ASSERT_EQ(
        RegCreateKeyExW(
            HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, opened.Put(), nullptr),
        ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExW(opened.Get(),
                             name,
                             0,
                             type,
                             reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

std::wstring CMailClientEnvironment::LibraryPath() const
{
    const std::wstring folder = m_folder.empty() ? L"" : L"\\" + m_folder;
    std::array<wchar_t, MAX_PATH> path{};
    GetFullPathNameW(
        (ProgramFolder() + folder + L"\\" + m_file).c_str(), MAX_PATH, path.data(), nullptr);
    return path.data();
}

void CMailClientEnvironment::Register() const
{
    SetMachineText(kMailClients, nullptr, L"Microsoft Outlook");
    SetMachineText(kMailClient, L"DLLPathEx", LibraryPath());
    SetMachineText(kMailClient, L"DLLPath", LibraryPath());
    SetMachineText(kAppPath, nullptr, LibraryPath());
}

void CMailClientEnvironment::SetUp()
{
    if (GetModuleHandleW(m_file.c_str()) != nullptr)
    {
        return;
    }
    ASSERT_EQ(GetEnvironmentVariableW(kBeforeVariable, nullptr, 0), 0U)
        << "MAPI32.dll did not load the registered library";
    // Never empty, so that the second run knows that it is one.
    SetEnvironmentVariableW(kBeforeVariable, (L"=" + DefaultMailClient()).c_str());
    Register();
    RunAgain();
}

void CMailClientEnvironment::RunAgain()
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    std::wstring commandLine = GetCommandLineW();
    ASSERT_TRUE(CreateProcessW(nullptr,
                               commandLine.data(),
                               nullptr,
                               nullptr,
                               TRUE,
                               0,
                               nullptr,
                               nullptr,
                               &startup,
                               &process));
    const CHandle ended(process.hProcess);
    const CHandle thread(process.hThread);
    WaitForSingleObject(ended.Get(), INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(ended.Get(), &code);
    ExitProcess(code);
}

void CMailClientEnvironment::TearDown()
{
    std::array<wchar_t, 260> before{};
    GetEnvironmentVariableW(kBeforeVariable, before.data(), static_cast<DWORD>(before.size()));
    SetMachineText(kMailClients, nullptr, before[0] == L'=' ? &before[1] : L"");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kMailClient);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAppPath);
}
