// Finding, loading and starting the mail client's library where the system answers otherwise than it
// does on the machine of the tests: its functions are replaced by the test's.

#include <cstring>

#include "ControllerTest.h"
#include "FakeProviderApi.h"
#include "MapiDataStore.h"
#include "MAPIPathIterator.h"
#include "PatchedImport.h"
#include "ProcAddress.h"

namespace
{

/// The system's own function, which a replacement may want to call.
template <typename Fn>
Fn* SystemFunction(Fn*, const char* name)
{
    return ProcAddress<Fn*>(GetModuleHandleW(L"kernel32.dll"), name);
}

auto* const g_getProcAddress = SystemFunction(&GetProcAddress, "GetProcAddress");
auto* const g_loadLibrary = SystemFunction(&LoadLibraryW, "LoadLibraryW");
auto* const g_freeLibrary = SystemFunction(&FreeLibrary, "FreeLibrary");

/// What the replacements answer, and what they were asked. One test's at a time.
struct SystemCalls
{
    std::string missingFunction;        ///< GetProcAddress does not know it
    std::wstring missingLibrary;        ///< LoadLibraryW does not find it
    std::wstring programPath;           ///< of GetModuleFileNameW
    BOOL componentAnswer = FALSE;       ///< of FGetComponentPath
    std::string componentPath;          ///< what FGetComponentPath writes
    Strings componentAsked = {};        ///< component, qualifier, size and whether to install
    std::vector<std::wstring> loaded;   ///< paths given to LoadLibraryW
    int freed = 0;                      ///< calls of FreeLibrary
    std::wstring valueName, valueText;  ///< of RegSetValueExW
    DWORD valueType = 0, valueSize = 0; ///< of RegSetValueExW
};

SystemCalls* g_system = nullptr;

BOOL STDAPICALLTYPE FakeComponentPath(
    const char* component, const char* qualifier, char* path, DWORD cbPath, BOOL install)
{
    g_system->componentAsked = {
        component, qualifier, std::to_string(cbPath), std::to_string(install)};
    std::strcpy(path, g_system->componentPath.c_str());
    return g_system->componentAnswer;
}

FARPROC WINAPI FakeGetProcAddress(HMODULE library, const char* name)
{
    if (!IS_INTRESOURCE(name) && g_system->missingFunction == name)
    {
        return nullptr;
    }
    if (!IS_INTRESOURCE(name) && std::strcmp(name, "FGetComponentPath") == 0)
    {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&FakeComponentPath));
    }
    return g_getProcAddress(library, name);
}

HMODULE WINAPI FakeLoadLibrary(const wchar_t* path)
{
    g_system->loaded.emplace_back(path);
    if (g_system->missingLibrary == path)
    {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return g_loadLibrary(path);
}

BOOL WINAPI FakeFreeLibrary(HMODULE library)
{
    ++g_system->freed;
    return g_freeLibrary(library);
}

DWORD WINAPI FakeGetModuleFileName(HMODULE, wchar_t* path, DWORD size)
{
    g_system->programPath.copy(path, size - 1);
    return static_cast<DWORD>(g_system->programPath.size());
}

UINT WINAPI FailingGetSystemDirectory(wchar_t*, UINT)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return 0;
}

LSTATUS WINAPI
FakeRegSetValue(HKEY, const wchar_t* name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    g_system->valueName = name;
    g_system->valueType = type;
    g_system->valueSize = size;
    g_system->valueText.assign(reinterpret_cast<const wchar_t*>(data), size / sizeof(wchar_t));
    return ERROR_SUCCESS;
}

constexpr const wchar_t* kMailClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";

} // namespace

class LibraryFaultTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        g_system = &m_system;
    }
    void TearDown() override
    {
        for (const wchar_t* const name : {L"MSIComponentID", L"MSIApplicationLCID"})
        {
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kMailClientKey, name);
        }
        g_system = nullptr;
        ControllerTest::TearDown();
    }

    static void RegisterComponent()
    {
        RegisterPath(L"MSIComponentID", L"{ABC}");
        RegisterPath(L"MSIApplicationLCID", L"1033");
    }
    static std::wstring FirstPath()
    {
        MAPIPathIterator iterator;
        std::wstring path;
        iterator.GetNextMAPIPath(path);
        return path;
    }

    SystemCalls m_system;
};

TEST_F(LibraryFaultTest, InstallerComponentIsTheFirstSourceAndNothingIsInstalled)
{
    RegisterComponent();
    m_system.componentAnswer = TRUE;
    m_system.componentPath = "C:\\Office\\client.dll";
    const CPatchedImport find("GetProcAddress", &FakeGetProcAddress);
    const CPatchedImport load("LoadLibraryW", &FakeLoadLibrary);
    const CPatchedImport free("FreeLibrary", &FakeFreeLibrary);

    EXPECT_EQ(FirstPath(), L"C:\\Office\\client.dll");

    EXPECT_EQ(m_system.componentAsked, (Strings{"{ABC}", "1033", "260", "0"}));
    EXPECT_EQ(m_system.loaded, (std::vector<std::wstring>{L"mapi32.dll"}));
    EXPECT_EQ(m_system.freed, 1);
    EXPECT_EQ(Lines(),
              (Strings{"2 GetNextMAPIPath:CurrentSource[0]",
                       "3 GetRegisteredMapiClient:bDLL[0],bDLLEx[0]",
                       "2 GetComponentPath: szComponent[{ABC}], szQualifier[1033], "
                       "cchBufferSize[0x00000104]",
                       "2 GetComponentPath: bReturn[1]",
                       "2 GetMailClientFromMSIData: szPath = C:\\Office\\client.dll",
                       "3 GetNextMAPIPath:full MAPI path[C:\\Office\\client.dll]"}));
}

TEST_F(LibraryFaultTest, OnlyTheLowByteOfTheComponentsAnswerCounts)
{
    RegisterComponent();
    m_system.componentAnswer = 0x100;
    m_system.componentPath = "C:\\Office\\client.dll";
    const CPatchedImport find("GetProcAddress", &FakeGetProcAddress);

    EXPECT_EQ(FirstPath(), ProviderPath(kFakeProviderFile));

    EXPECT_TRUE(trace.Has(2, "GetComponentPath: bReturn[0]"));
    EXPECT_TRUE(trace.Has(2, "GetMailClientFromMSIData: GetComponentPath failed"));
}

TEST_F(LibraryFaultTest, ComponentIsLookedUpByTheStubLibraryWithoutTheOther)
{
    RegisterComponent();
    m_system.missingLibrary = L"mapi32.dll";
    m_system.componentAnswer = TRUE;
    m_system.componentPath = "C:\\Office\\client.dll";
    const CPatchedImport find("GetProcAddress", &FakeGetProcAddress);
    const CPatchedImport load("LoadLibraryW", &FakeLoadLibrary);

    EXPECT_EQ(FirstPath(), L"C:\\Office\\client.dll");

    EXPECT_EQ(m_system.loaded, (std::vector<std::wstring>{L"mapi32.dll", L"mapistub.dll"}));
}

TEST_F(LibraryFaultTest, LookUpThatTheSystemLacksFindsNothing)
{
    RegisterComponent();
    m_system.missingFunction = "FGetComponentPath";
    const CPatchedImport find("GetProcAddress", &FakeGetProcAddress);

    EXPECT_EQ(FirstPath(), ProviderPath(kFakeProviderFile));

    EXPECT_TRUE(trace.Has(2, "GetComponentPath: bReturn[0]"));
}

TEST_F(LibraryFaultTest, SystemDirectoryThatIsNotToldGivesNoPath)
{
    RegisterPath(L"DllPathEx", nullptr);
    RegisterPath(L"DllPath", nullptr);
    const CPatchedImport directory("GetSystemDirectoryW", &FailingGetSystemDirectory);

    EXPECT_EQ(FirstPath(), L"");

    EXPECT_EQ(LinesWith("ystem"),
              (Strings{"3 GetMAPISystemDir",
                       "2 GetPathFromSystemDir: Fail to Get system directory ,dwErr=0x5, "
                       "hRes=0x80070005"}));
}

TEST_F(LibraryFaultTest, WithoutALoadableLibraryTheBringUpFails)
{
    RegisterPath(L"DllPathEx", L"C:\\no\\such\\client.dll");
    RegisterPath(L"DllPath", nullptr);
    const CPatchedImport directory("GetSystemDirectoryW", &FailingGetSystemDirectory);
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080002U);

    const Strings lines = Lines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(Strings(lines.end() - 3, lines.end()),
              (Strings{"3 CMapiCtrl::LoadLib - Fail to get MAPI dll path!!",
                       "0 CMapiCtrl::LoadLib, MAPI dll load failed",
                       "0 can not load MAPI dll"}));
    EXPECT_EQ(outlook.m_hrInit, 0x80080002U);
    EXPECT_EQ(MapiDataStore().GetLibraryPath(), L"");
    EXPECT_EQ(mapi.calls, Strings{});
}

TEST_F(LibraryFaultTest, LibraryIsLoadedByItsPathAsItCame)
{
    const std::wstring path = ProviderPath(kFakeProviderFile);
    std::wstring shortPath(MAX_PATH, L'\0');
    shortPath.resize(GetShortPathNameW(path.c_str(), shortPath.data(), MAX_PATH));
    ASSERT_NE(shortPath, path) << "the file has no short name to tell the two by";
    RegisterPath(L"DllPathEx", shortPath.c_str());
    const CPatchedImport load("LoadLibraryW", &FakeLoadLibrary);
    CTestOutlook outlook;

    EXPECT_TRUE(outlook.LoadLib());

    EXPECT_EQ(m_system.loaded, (std::vector<std::wstring>{shortPath}));
    EXPECT_EQ(MapiDataStore().GetLibraryPath(), shortPath);
    const Strings lines = LinesWith("try to load");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find("fakemapi64.dll], file version ["), std::string::npos) << lines[0];
}

TEST_F(LibraryFaultTest, EachOfTheSixFunctionsIsNeeded)
{
    const CPatchedImport find("GetProcAddress", &FakeGetProcAddress);
    for (const char* const name : {"MAPIInitialize",
                                   "MAPILogonEx",
                                   "MAPIAdminProfiles",
                                   "MAPIUninitialize",
                                   "MAPIAllocateBuffer",
                                   "MAPIFreeBuffer"})
    {
        SCOPED_TRACE(name);
        m_system.missingFunction = name;
        CTestOutlook outlook;
        ASSERT_TRUE(outlook.LoadLib());
        outlook.bMAPIX = 1;
        trace.Clear();

        EXPECT_FALSE(outlook.MAPIXInit());

        EXPECT_EQ(Lines(),
                  (Strings{"0 CMapiCtrl::MAPIXInit - simple MAPI functions are unavailable"}));
    }
    EXPECT_EQ(mapi.calls, Strings{});
}

TEST_F(LibraryFaultTest, ProgramWithoutAFileNameFailsTheBringUp)
{
    const CPatchedImport program("GetModuleFileNameW", &FakeGetModuleFileName);
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080002U);

    EXPECT_EQ(Lines(), (Strings{"0 initType[1]", "0 Write stub failed", "0 Set stub failed"}));
    EXPECT_EQ(outlook.m_hrInit, 0x80080002U);
    EXPECT_EQ(outlook.bMAPIX, 1U);
    EXPECT_FALSE(outlook.m_hMAPIDll);
}

TEST_F(LibraryFaultTest, StubEntryIsNamedAfterTheLastSeparatorAndHasNoTerminator)
{
    m_system.programPath = L"C:\\programs/server.exe";
    const CPatchedImport program("GetModuleFileNameW", &FakeGetModuleFileName);
    const CPatchedImport write("RegSetValueExW", &FakeRegSetValue);
    CTestOutlook outlook;

    EXPECT_TRUE(outlook.SetStub());

    EXPECT_EQ(m_system.valueName, L"server.exe");
    EXPECT_EQ(m_system.valueType, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(m_system.valueSize, 34U); // 17 letters
    EXPECT_EQ(m_system.valueText, L"Microsoft Outlook");
}
