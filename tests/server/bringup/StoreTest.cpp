#include "StoreTest.h"

#include <cstdio>

#include "MapiDataStore.h"
#include "ProcAddress.h"
#include "RegKey.h"
#include "StoreText.h"

namespace
{

constexpr const wchar_t* kLibrary = L"mapistore64.dll";

HMODULE Library()
{
    return GetModuleHandleW(kLibrary);
}

template <typename Fn>
Fn Function(const char* name)
{
    const Fn function = ProcAddress<Fn>(Library(), name);
    EXPECT_NE(function, nullptr) << name;
    return function;
}

std::wstring ProgramFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    path.resize(path.find_last_of(L'\\'));
    return path;
}

std::wstring StoreFolder()
{
    return ProgramFolder() + L"\\bringup-store";
}

void SetText(const wchar_t* keyName, const wchar_t* name, const std::wstring& text)
{
    CRegKey key;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                              keyName,
                              0,
                              nullptr,
                              0,
                              KEY_ALL_ACCESS,
                              nullptr,
                              key.Put(),
                              nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExW(key.Get(),
                             name,
                             0,
                             REG_SZ,
                             reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

void Register()
{
    // The library lies in the build's root, the tests in a folder below.
    const std::wstring folder = ProgramFolder();
    const std::wstring library = folder.substr(0, folder.find_last_of(L'\\')) + L"\\" + kLibrary;
    SetText(L"Software\\Clients\\Mail", nullptr, L"Microsoft Outlook");
    SetText(L"Software\\Clients\\Mail\\Microsoft Outlook", L"DLLPathEx", library);
    SetText(L"Software\\Clients\\Mail\\Microsoft Outlook", L"DLLPath", library);
    SetText(
        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe", nullptr, library);
}

/// The system's MAPI32.dll reads the registration when it is loaded, which is before the first line
/// of a program that links it. So the first run of this program registers, and a second one tests.
class CLibraryEnvironment final : public testing::Environment
{
public:
    void SetUp() override
    {
        if (Library() != nullptr)
        {
            return;
        }
        Register();
        ASSERT_EQ(GetEnvironmentVariableW(L"DT_LIBRARY_REGISTERED", nullptr, 0), 0U)
            << "MAPI32.dll did not load the registered library";
        SetEnvironmentVariableW(L"DT_LIBRARY_REGISTERED", L"1");
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
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD code = 1;
        GetExitCodeProcess(process.hProcess, &code);
        ExitProcess(code);
    }
};

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new CLibraryEnvironment());

} // namespace

void StoreTest::SetUp()
{
    ASSERT_NE(Library(), nullptr);
    CreateDirectoryW(StoreFolder().c_str(), nullptr);
    WriteDocument(kStoreDocument);
    const auto configure = Function<decltype(&MapiStoreConfigure)>("MapiStoreConfigure");
    ASSERT_EQ(configure(L"Folder", StoreFolder().c_str()), S_OK);
    ASSERT_EQ(configure(L"Guard", L"1"), S_OK);
    ASSERT_EQ(configure(L"Watch", L"0"), S_OK);
    SetFaults("");
    for (HKEY const hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        RegDeleteTreeW(hive, L"SOFTWARE\\Policies\\VantorTalvo");
        RegDeleteTreeW(hive, L"SOFTWARE\\Talvo\\DeskTools");
    }
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);
    trace.Clear();
}

void StoreTest::TearDown()
{
    ExpectCleanLedger();
    SetFaults("");
}

void StoreTest::WriteDocument(const std::string& text)
{
    const std::wstring path = StoreFolder() + L"\\store.json";
    FILE* const file = _wfopen(path.c_str(), L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
    EXPECT_EQ(std::fclose(file), 0);
}

std::string StoreTest::DocumentWith(const std::string& from, const std::string& to)
{
    std::string text = kStoreDocument;
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

void StoreTest::SetFaults(const std::string& plan)
{
    const std::wstring wide(plan.begin(), plan.end());
    ASSERT_EQ(
        Function<decltype(&MapiStoreConfigure)>("MapiStoreConfigure")(L"Faults", wide.c_str()),
        S_OK);
}

MapiStoreCounts StoreTest::Counts()
{
    MapiStoreCounts counts{};
    Function<decltype(&MapiStoreGetCounts)>("MapiStoreGetCounts")(&counts);
    return counts;
}

std::string StoreTest::Report()
{
    const auto get = Function<decltype(&MapiStoreGetReport)>("MapiStoreGetReport");
    std::string text(get(nullptr, 0), '\0');
    get(text.data(), static_cast<ULONG>(text.size()));
    return text.c_str();
}

void StoreTest::Refresh()
{
    ASSERT_EQ(Function<decltype(&MapiStoreRefresh)>("MapiStoreRefresh")(), S_OK);
}

void StoreTest::ExpectCleanLedger()
{
    const MapiStoreCounts counts = Counts();
    if (counts.interfacesLeft + counts.buffersLeft + counts.connectionsLeft + counts.misuse != 0)
    {
        ADD_FAILURE() << Report();
    }
}
