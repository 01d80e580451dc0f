#include <map>
#include <optional>

#include "StoreFixture.h"
#include "TestPaths.h"

using namespace mapitest;

namespace
{

#define DT_WIDEN(text) L##text
#define DT_WIDE(text) DT_WIDEN(text)

constexpr const wchar_t* kClients = L"Software\\Clients\\Mail";
constexpr const wchar_t* kClient = L"Software\\Clients\\Mail\\mapistore test";
const std::wstring kLibrary = L"Z:" DT_WIDE(DT_BINARY_DIR) L"/mapistore64.dll";

/// Makes the library the default mail client of the machine, and the former one again at the end.
class CDefaultMailClient
{
public:
    explicit CDefaultMailClient(const std::wstring& library)
    {
        wchar_t before[256] = {};
        DWORD cb = sizeof(before);
        if (RegGetValueW(
                HKEY_LOCAL_MACHINE, kClients, nullptr, RRF_RT_REG_SZ, nullptr, before, &cb) ==
            ERROR_SUCCESS)
        {
            m_before = before;
        }
        Set(kClients, nullptr, L"mapistore test");
        Set(kClient, L"DLLPathEx", library);
    }
    ~CDefaultMailClient()
    {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClient);
        if (m_before)
        {
            Set(kClients, nullptr, *m_before);
        }
        else
        {
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kClients, nullptr);
        }
    }
    CDefaultMailClient(const CDefaultMailClient&) = delete;
    CDefaultMailClient& operator=(const CDefaultMailClient&) = delete;

private:
    static void Set(const wchar_t* key, const wchar_t* name, const std::wstring& value)
    {
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE,
                                  key,
                                  name,
                                  REG_SZ,
                                  value.c_str(),
                                  static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    std::optional<std::wstring> m_before;
};

class DllTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(R"({ "id": 100, "folder": 4, "class": "IPM.Note",
            "properties": { "PR_SUBJECT_W": "one" } },
          { "id": 101, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "two" } })"));
    }
    /// What a process saw that loaded `library`.
    std::string Call(const std::wstring& library)
    {
        EXPECT_EQ(Run(library), 0U);
        const std::wstring stream = Output() + L".stream";
        EXPECT_EQ(ReadFileText(stream), "text");
        DeleteFileW(stream.c_str());
        return ReadFileText(Output());
    }
    /// The exit code of such a process.
    DWORD Run(const std::wstring& library)
    {
        std::wstring command = L"\"Z:" DT_WIDE(DT_BINARY_DIR) L"/tests/mapistore_caller.exe\" \"" +
                               library + L"\" \"" + Output() + L"\"";
        SetEnvironmentVariableW(L"MAPISTORE_FOLDER", StorePath().c_str());
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(nullptr,
                                   command.data(),
                                   nullptr,
                                   nullptr,
                                   FALSE,
                                   0,
                                   nullptr,
                                   nullptr,
                                   &startup,
                                   &process));
        SetEnvironmentVariableW(L"MAPISTORE_FOLDER", nullptr);
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD code = 99;
        GetExitCodeProcess(process.hProcess, &code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return code;
    }
    std::wstring Output() const { return StorePath() + L"\\seen.txt"; }
};

const char* const kSeen = R"(MAPIInitialize 0x00000000
MAPIAllocateBuffer 0x00000000
MAPIAllocateMore 0x00000000
MAPIFreeBuffer 0x00000000
MAPIFreeBuffer again 0x80070057
ScInitMapiUtil 0x00000000
HrThisThreadAdviseSink 0x00000000
the sink itself: 1
allocator: 1
WrapCompressedRTFStream 0x80040102
OpenStreamOnFile missing 0x8004010F
OpenStreamOnFile 0x00000000
Write 0x00000000
MAPIAdminProfiles 0x00000000
GetProfileTable 0x00000000
profiles 0x00000000
  Demo
MAPILogonEx 0x00000000
GetMsgStoresTable 0x00000000
QueryRows 0x00000000
OpenMsgStore 0x00000000
GetReceiveFolder 0x00000000
OpenEntry 0x00000000
GetContentsTable 0x00000000
inbox 0x00000000
  two
  one
Logoff 0x00000000
misuse MAPIFreeBuffer 0x80070057 freed a pointer that is no live head of a buffer
summary handed interfaces 7 buffers 9 connections 0 left interfaces 0 buffers 0 connections 0 misuse 1
)";

TEST_F(DllTest, LoadedDirectlyItServesAnApplication)
{
    EXPECT_EQ(Call(kLibrary), kSeen);
}

TEST_F(DllTest, AsTheDefaultMailClientItServesThroughTheSystemsMapi32)
{
    const CDefaultMailClient client(kLibrary);
    EXPECT_EQ(Call(L"mapi32.dll"), kSeen);
}

TEST_F(DllTest, EveryNameThatTheSystemsMapi32AsksForIsExported)
{
    HMODULE library = LoadLibraryW(kLibrary.c_str());
    ASSERT_NE(library, nullptr);
    for (const char* const name : {"DeinitMapiUtil@0",
                                   "DllGetClassObject",
                                   "FGetComponentPath",
                                   "HrQueryAllRows@24",
                                   "HrThisThreadAdviseSink@8",
                                   "MAPIAdminProfiles",
                                   "MAPIAllocateBuffer",
                                   "MAPIAllocateMore",
                                   "MAPIFreeBuffer",
                                   "MAPIGetDefaultMalloc@0",
                                   "MAPIInitialize",
                                   "MAPILogonEx",
                                   "MAPIOpenLocalFormContainer",
                                   "MAPIUninitialize",
                                   "OpenStreamOnFile@24",
                                   "ScInitMapiUtil@4",
                                   "WrapCompressedRTFStream@12"})
    {
        EXPECT_NE(GetProcAddress(library, name), nullptr) << name;
    }
    FreeLibrary(library);
}

TEST_F(DllTest, PlannedCrashEndsTheProcessAtTheOperation)
{
    constexpr DWORD kAccessViolation = 0xC0000005;
    SetEnvironmentVariableW(L"MAPISTORE_FAULTS", L"IMsgStore::GetReceiveFolder call 1 crash");
    EXPECT_EQ(Run(kLibrary), kAccessViolation);
    SetEnvironmentVariableW(L"MAPISTORE_FAULTS", L"IMsgStore::GetReceiveFolder call 2 crash");
    EXPECT_EQ(Run(kLibrary), 0U);
    SetEnvironmentVariableW(L"MAPISTORE_FAULTS", nullptr);
}

} // namespace
