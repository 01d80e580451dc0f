#include "Registration.h"

#include <gtest/gtest.h>

#include <array>

#include "ModulePath.h"
#include "RegistryTree.h"
#include "Resource.h"
#include "TestPaths.h"

namespace
{

using Lines = std::vector<std::wstring>;

constexpr const wchar_t* kAppId = L"{D0418E03-DEDF-40BE-8DCD-9189B3197D23}";
constexpr const wchar_t* kClassId = L"{1019ADC7-17CB-4489-AFD5-6642C7400ACE}";
constexpr const wchar_t* kLibraryId = L"{A470B11E-041B-407E-BE88-C2039972F999}";
constexpr std::array<UINT, 2> kScripts = {IDR_APPID, IDR_MAPICLIENT};

/// Leads a predefined key of this process into the scratch key for as long as it lives.
class CRedirect final
{
public:
    CRedirect(HKEY predefined, const std::wstring& path) : m_predefined(predefined)
    {
        HKEY target = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER,
                        path.c_str(),
                        0,
                        nullptr,
                        0,
                        KEY_ALL_ACCESS,
                        nullptr,
                        &target,
                        nullptr);
        EXPECT_EQ(RegOverridePredefKey(predefined, target), ERROR_SUCCESS);
        RegCloseKey(target);
    }
    CRedirect(const CRedirect&) = delete;
    CRedirect& operator=(const CRedirect&) = delete;
    ~CRedirect() { RegOverridePredefKey(m_predefined, nullptr); }

private:
    const HKEY m_predefined;
};

/// A machine of the test's own: its keys, and the classes root among them.
class CScratchMachine final
{
public:
    explicit CScratchMachine(const std::wstring& path)
        : m_root(HKEY_CLASSES_ROOT, path + L"\\SOFTWARE\\Classes"),
          m_machine(HKEY_LOCAL_MACHINE, path)
    {
    }

private:
    CRedirect m_root;
    CRedirect m_machine;
};

/// Registers this test program in the server's place, in a registry of its own.
class RegistrationTest : public testing::Test
{
protected:
    RegistrationTest()
    {
        m_data.module = GetModuleHandleW(nullptr);
        m_data.file = ModulePath(nullptr);
        m_data.scripts = kScripts;
        m_data.replacements = {{L"APPID", kAppId}};
    }

    [[nodiscard]] std::wstring Machine() const { return m_scratch.Path() + L"\\Machine"; }
    [[nodiscard]] std::wstring MachineClasses() const { return Machine() + L"\\SOFTWARE\\Classes"; }

    static void MakeKey(const std::wstring& path)
    {
        HKEY key = nullptr;
        RegCreateKeyExW(
            HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        RegCloseKey(key);
    }

    /// The keys that stand on every machine, so that their spelling is not the registration's.
    static void MakeSharedKeys(const std::wstring& classes)
    {
        for (const wchar_t* const name : {L"AppID", L"CLSID", L"Interface", L"TypeLib"})
        {
            MakeKey(classes + L"\\" + name);
        }
    }

    [[nodiscard]] std::wstring Folder() const
    {
        return m_data.file.substr(0, m_data.file.find_last_of(L'\\'));
    }

    /// What a registration writes, by lines as RegistryLines gives them.
    [[nodiscard]] Lines Expected() const
    {
        const std::wstring classKey = std::wstring(L"CLSID\\") + kClassId;
        const std::wstring libraryKey = std::wstring(L"TypeLib\\") + kLibraryId;
        Lines lines = {
            L"",
            L"AppID",
            std::wstring(L"AppID\\") + kAppId,
            std::wstring(L"AppID\\") + kAppId + L" @=s:dtOIEx64",
            L"AppID\\dtOIEx64.EXE",
            std::wstring(L"AppID\\dtOIEx64.EXE AppID=s:") + kAppId,
            L"CLSID",
            classKey,
            classKey + L" @=s:MapiClient Class",
            classKey + L" AppID=s:" + kAppId,
            classKey + L"\\LocalServer32",
            classKey + L"\\LocalServer32 @=s:" + m_data.file,
            classKey + L"\\ProgID",
            classKey + L"\\ProgID @=s:dtOIEx64.MapiClient.1",
            classKey + L"\\Programmable",
            classKey + L"\\TypeLib",
            classKey + L"\\TypeLib @=s:" + kLibraryId,
            classKey + L"\\VersionIndependentProgID",
            classKey + L"\\VersionIndependentProgID @=s:dtOIEx64.MapiClient",
            L"Interface",
            L"TypeLib",
            libraryKey,
            libraryKey + L"\\1.0",
            libraryKey + L"\\1.0 @=s:dtOIEx64 1.0 Type Library",
            libraryKey + L"\\1.0\\0",
            libraryKey + L"\\1.0\\0\\win64",
            libraryKey + L"\\1.0\\0\\win64 @=s:" + m_data.file,
            libraryKey + L"\\1.0\\FLAGS",
            libraryKey + L"\\1.0\\HELPDIR",
            libraryKey + L"\\1.0\\HELPDIR @=s:" + Folder(),
            L"dtOIEx64.MapiClient",
            L"dtOIEx64.MapiClient @=s:MapiClient Class",
            L"dtOIEx64.MapiClient.1",
            L"dtOIEx64.MapiClient.1 @=s:MapiClient Class",
            L"dtOIEx64.MapiClient.1\\CLSID",
            std::wstring(L"dtOIEx64.MapiClient.1\\CLSID @=s:") + kClassId,
            L"dtOIEx64.MapiClient\\CLSID",
            std::wstring(L"dtOIEx64.MapiClient\\CLSID @=s:") + kClassId,
            L"dtOIEx64.MapiClient\\CurVer",
            L"dtOIEx64.MapiClient\\CurVer @=s:dtOIEx64.MapiClient.1",
        };
        AddInterface(lines,
                     L"{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}",
                     L"IMapiDtClient",
                     L"{00020424-0000-0000-C000-000000000046}");
        AddInterface(lines,
                     L"{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}",
                     L"_IMapiDtClientEvents",
                     L"{00020420-0000-0000-C000-000000000046}");
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /// The lines below a key, without those that the system's own library registration varies in: the
    /// flags' value, and the view of 32-bit clients.
    static Lines Written(const std::wstring& path)
    {
        Lines lines = RegistryLines(HKEY_CURRENT_USER, path);
        std::erase_if(lines, [](const std::wstring& line) {
            return line.find(L"\\FLAGS @=") != std::wstring::npos ||
                   line.starts_with(L"Wow6432Node");
        });
        return lines;
    }

    static void AddInterface(Lines& lines,
                             const std::wstring& iid,
                             const std::wstring& name,
                             const std::wstring& proxy)
    {
        const std::wstring key = L"Interface\\" + iid;
        lines.insert(lines.end(),
                     {key,
                      key + L" @=s:" + name,
                      key + L"\\ProxyStubClsid",
                      key + L"\\ProxyStubClsid @=s:" + proxy,
                      key + L"\\ProxyStubClsid32",
                      key + L"\\ProxyStubClsid32 @=s:" + proxy,
                      key + L"\\TypeLib",
                      key + L"\\TypeLib @=s:" + kLibraryId,
                      key + L"\\TypeLib Version=s:1.0"});
    }

    CScratchKey m_scratch;
    RegistrationData m_data{};
};

TEST_F(RegistrationTest, TheMachinesRegistrationWritesExactlyItsKeys)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(RegisterServer(m_data, false), S_OK);
    }
    EXPECT_EQ(Written(classes), Expected());
}

TEST_F(RegistrationTest, TheMachinesUnregistrationLeavesNothingOfIt)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(RegisterServer(m_data, false), S_OK);
        EXPECT_EQ(UnregisterServer(m_data, false), S_OK);
    }
    // The shared keys that stand on every machine are all that is left.
    EXPECT_EQ(Written(classes), (Lines{L"", L"AppID", L"CLSID", L"Interface", L"TypeLib"}));
}

TEST_F(RegistrationTest, TheUsersRegistrationWritesTheSameKeysIntoTheUsersView)
{
    const std::wstring user = m_scratch.Path() + L"\\User";
    MakeSharedKeys(user + L"\\Software\\Classes");
    const std::wstring machine = m_scratch.Path() + L"\\Machine";
    {
        // The classes root last: the per-user view replaces this one with the user's.
        const CRedirect machineKey(HKEY_LOCAL_MACHINE, machine);
        const CRedirect userKey(HKEY_CURRENT_USER, user);
        EXPECT_EQ(RegisterServer(m_data, true), S_OK);
    }
    EXPECT_EQ(Written(user + L"\\Software\\Classes"), Expected());
    EXPECT_EQ(Written(machine), (Lines{L""}));
}

TEST_F(RegistrationTest, TheUsersUnregistrationLeavesNothingOfIt)
{
    const std::wstring user = m_scratch.Path() + L"\\User";
    MakeSharedKeys(user + L"\\Software\\Classes");
    {
        const CRedirect userKey(HKEY_CURRENT_USER, user);
        EXPECT_EQ(RegisterServer(m_data, true), S_OK);
        EXPECT_EQ(UnregisterServer(m_data, true), S_OK);
    }
    EXPECT_EQ(Written(user + L"\\Software\\Classes"),
              (Lines{L"", L"AppID", L"CLSID", L"Interface", L"TypeLib"}));
}

TEST_F(RegistrationTest, UnregisteringWhatIsNotRegisteredSucceeds)
{
    const CScratchMachine machine(Machine());
    EXPECT_EQ(UnregisterServer(m_data, false), S_OK);
}

TEST_F(RegistrationTest, UnregisteringTakesInterfacesWhoseLibraryKeyIsGone)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(RegisterServer(m_data, false), S_OK);
        RegDeleteTreeW(HKEY_CLASSES_ROOT, (std::wstring(L"TypeLib\\") + kLibraryId).c_str());
        EXPECT_EQ(UnregisterServer(m_data, false), S_OK);
    }
    EXPECT_EQ(Written(classes), (Lines{L"", L"AppID", L"CLSID", L"Interface", L"TypeLib"}));
}

TEST_F(RegistrationTest, APathWithBlanksIsQuoted)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    m_data.file = L"C:\\no such folder\\dtOIEx64.exe";
    {
        const CScratchMachine machine(Machine());
        RegisterServer(m_data, false);
    }
    EXPECT_EQ(
        RegistryLines(HKEY_CURRENT_USER, classes + L"\\CLSID\\" + kClassId + L"\\LocalServer32"),
        (Lines{L"", L" @=s:\"C:\\no such folder\\dtOIEx64.exe\""}));
}

TEST_F(RegistrationTest, WithoutATypeLibraryTheRegistrationFails)
{
    const CScratchMachine machine(Machine());
    m_data.file = L"C:\\nosuchfolder\\dtOIEx64.exe";
    EXPECT_TRUE(FAILED(RegisterServer(m_data, false)));
}

TEST_F(RegistrationTest, TheTypeLibraryMayStandBesideTheFile)
{
    // A file without a library, and the library beside it under the same name.
    wchar_t folder[MAX_PATH]{};
    GetTempPathW(MAX_PATH, folder);
    m_data.file = std::wstring(folder) + L"dtOIEx64Beside.exe";
    const std::wstring library = std::wstring(folder) + L"dtOIEx64Beside.tlb";
    std::wstring built = L"" DT_BINARY_DIR "/idl/dtOIEx64.tlb";
    ASSERT_NE(CopyFileW((L"Z:" + built).c_str(), library.c_str(), FALSE), FALSE);
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(RegisterServer(m_data, false), S_OK);
    }
    DeleteFileW(library.c_str());

    const Lines lines = Written(classes);
    EXPECT_NE(
        std::find(lines.begin(),
                  lines.end(),
                  std::wstring(L"TypeLib\\") + kLibraryId + L"\\1.0\\0\\win64 @=s:" + library),
        lines.end());
}

TEST_F(RegistrationTest, AMissingScriptIsTold)
{
    constexpr std::array<UINT, 1> kNone = {999};
    m_data.scripts = kNone;
    const CScratchMachine machine(Machine());
    EXPECT_EQ(RegisterServer(m_data, false), HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND));
}

TEST_F(RegistrationTest, TheMachinesKeysAreDeletedButNotTheClass)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(RegisterServer(m_data, false), S_OK);
        DeleteMachineKeys();
    }
    Lines expected = Expected();
    std::erase_if(expected, [](const std::wstring& line) {
        return line.starts_with(L"dtOIEx64.") || line.starts_with(L"AppID\\") ||
               line.starts_with(L"TypeLib\\") || line.starts_with(L"Interface\\");
    });
    EXPECT_EQ(Written(classes), expected);
}

TEST_F(RegistrationTest, UnregisteringTakesTheInterfacesOfBothViews)
{
    const std::wstring classes = MachineClasses();
    MakeSharedKeys(classes);
    const std::wstring key = L"Interface\\{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}";
    MakeKey(classes + L"\\" + key);
    MakeKey(classes + L"\\Wow6432Node\\" + key);
    {
        const CScratchMachine machine(Machine());
        EXPECT_EQ(UnregisterServer(m_data, false), S_OK);
    }
    EXPECT_TRUE(RegistryLines(HKEY_CURRENT_USER, classes + L"\\" + key).empty());
    EXPECT_TRUE(RegistryLines(HKEY_CURRENT_USER, classes + L"\\Wow6432Node\\" + key).empty());
}

} // namespace
