// Finding, loading and starting the mail client's library.

#include <algorithm>
#include <cstdio>

#include "ControllerTest.h"
#include "FakeProviderApi.h"
#include "MapiDataStore.h"
#include "MAPIPathIterator.h"
#include "NarrowText.h"

namespace
{

constexpr const wchar_t* kMailClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";

} // namespace

class LibraryTest : public ControllerTest
{
protected:
    void TearDown() override
    {
        const HKEY machine = HKEY_LOCAL_MACHINE;
        for (const wchar_t* const name : {L"MSIComponentID", L"MSIApplicationLCID"})
        {
            RegDeleteKeyValueW(machine, kMailClientKey, name);
        }
        ControllerTest::TearDown();
    }

    static std::vector<std::wstring> AllPaths()
    {
        MAPIPathIterator iterator;
        std::vector<std::wstring> paths;
        std::wstring path;
        iterator.GetNextMAPIPath(path);
        while (!path.empty())
        {
            paths.push_back(path);
            iterator.GetNextMAPIPath(path);
        }
        return paths;
    }
};

TEST_F(LibraryTest, SourcesAreAskedInOrderEachOnce)
{
    RegisterPath(L"DllPathEx", L"C:\\one.dll");
    RegisterPath(L"DllPath", L"C:\\two.dll");

    EXPECT_EQ(AllPaths(),
              (std::vector<std::wstring>{
                  L"C:\\one.dll", L"C:\\two.dll", L"C:\\windows\\system32\\mapi32.dll"}));
}

TEST_F(LibraryTest, WithoutValuesTheSystemDirectoryIsTheLastSource)
{
    RegisterPath(L"DllPathEx", nullptr);
    RegisterPath(L"DllPath", nullptr);

    EXPECT_EQ(AllPaths(), (std::vector<std::wstring>{L"C:\\windows\\system32\\mapi32.dll"}));

    EXPECT_EQ(LinesWith("Err"),
              (Strings{"2 RegQueryWszExpand: Err = 0x00000002",
                       "2 RegQueryWszExpand: Err = 0x00000002"}));
}

TEST_F(LibraryTest, ExpandableTextIsExpanded)
{
    SetEnvironmentVariableW(L"DT_MAIL_FOLDER", L"C:\\mail");
    RegisterPath(L"DllPathEx", L"%DT_MAIL_FOLDER%\\client.dll", REG_EXPAND_SZ);
    RegisterPath(L"DllPath", L"%DT_MAIL_FOLDER%\\client.dll");

    const std::vector<std::wstring> paths = AllPaths();

    ASSERT_EQ(paths.size(), 3U);
    EXPECT_EQ(paths[0], L"C:\\mail\\client.dll");
    EXPECT_EQ(paths[1], L"%DT_MAIL_FOLDER%\\client.dll");
}

TEST_F(LibraryTest, ExpansionBeyondTheLimitGivesNoPath)
{
    // Eleven letters and a terminator stand behind the folder.
    SetEnvironmentVariableW(L"DT_MAIL_FOLDER", std::wstring(508, L'x').c_str());
    RegisterPath(L"DllPathEx", L"%DT_MAIL_FOLDER%\\client.dll", REG_EXPAND_SZ);
    RegisterPath(L"DllPath", nullptr);
    const std::vector<std::wstring> paths = AllPaths();
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(paths[0].size(), 519U);

    SetEnvironmentVariableW(L"DT_MAIL_FOLDER", std::wstring(509, L'x').c_str());
    trace.Clear();
    EXPECT_EQ(AllPaths().size(), 1U);

    const Strings lines = LinesWith("ExpandEnvironmentStrings");
    ASSERT_EQ(lines.size(), 1U);
    unsigned error = 0;
    unsigned result = 0;
    EXPECT_EQ(std::sscanf(lines[0].c_str(),
                          "2 RegQueryWszExpand: ExpandEnvironmentStrings error,cch=521,Err=0x%x, "
                          "ret=0x%8x",
                          &error,
                          &result),
              2)
        << lines[0];
    EXPECT_EQ(result, static_cast<unsigned>(HRESULT_FROM_WIN32(error)));
}

TEST_F(LibraryTest, TextThatFillsTheBufferIsTakenWhole)
{
    // 520 bytes without a terminator: one letter more stands behind them, or the platform would
    // store the zero that it finds there as well.
    const std::wstring text(261, L'x');
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kMailClientKey, L"DllPathEx", REG_SZ, text.data(), 520);

    EXPECT_EQ(AllPaths().front(), std::wstring(260, L'x'));
}

TEST_F(LibraryTest, WithoutTheKeyTheSystemDirectoryIsTheLastSource)
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kMailClientKey);

    EXPECT_EQ(AllPaths(), (std::vector<std::wstring>{L"C:\\windows\\system32\\mapi32.dll"}));

    EXPECT_EQ(
        LinesWith("Registered"),
        (Strings{"3 GetRegisteredMapiClient:bDLL[0],bDLLEx[0]",
                 "3 GetRegisteredMapiClient:fail to open Outlook Mapi Client key, error = 0x2",
                 "3 GetRegisteredMapiClient:bDLL[1],bDLLEx[1]",
                 "3 GetRegisteredMapiClient:fail to open Outlook Mapi Client key, error = 0x2",
                 "3 GetRegisteredMapiClient:bDLL[1],bDLLEx[0]",
                 "3 GetRegisteredMapiClient:fail to open Outlook Mapi Client key, error = "
                 "0x2"}));
}

TEST_F(LibraryTest, BinaryValueGivesNoPathAndNoLine)
{
    RegisterPath(L"DllPathEx", L"C:\\one.dll", REG_BINARY);
    RegisterPath(L"DllPath", L"C:\\two.dll");

    EXPECT_EQ(AllPaths().front(), L"C:\\two.dll");

    EXPECT_EQ(LinesWith("Err"), Strings{});
}

TEST_F(LibraryTest, TextBeyondTheBufferGivesNoPath)
{
    RegisterPath(L"DllPathEx", std::wstring(300, L'x').c_str());
    RegisterPath(L"DllPath", L"C:\\two.dll");

    EXPECT_EQ(AllPaths().front(), L"C:\\two.dll");

    EXPECT_EQ(LinesWith("Err"), (Strings{"2 RegQueryWszExpand: Err = 0x000000EA"}));
}

TEST_F(LibraryTest, EveryLineOfTheWalkInItsOrder)
{
    RegisterPath(L"DllPathEx", L"C:\\one.dll");
    MAPIPathIterator iterator;
    std::wstring path;

    iterator.GetNextMAPIPath(path);

    Strings lines = Lines();
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_TRUE(lines[4].starts_with("2 GetMailClientFromDllPath: hkeyMapiClient["));
    EXPECT_TRUE(lines[4].ends_with("], bDLLEx[1]"));
    lines.erase(lines.begin() + 4);
    EXPECT_EQ(lines,
              (Strings{"2 GetNextMAPIPath:CurrentSource[0]",
                       "3 GetRegisteredMapiClient:bDLL[0],bDLLEx[0]",
                       "3 GetMailClientFromMSIData:fail to query Outlook Mapi Client key "
                       "value[MSIComponentID], error = 0x2",
                       "3 GetRegisteredMapiClient:bDLL[1],bDLLEx[1]",
                       "3 GetMailClientFromDllPath: szPath = C:\\one.dll",
                       "3 GetNextMAPIPath:full MAPI path[C:\\one.dll]"}));
}

TEST_F(LibraryTest, ExhaustedIteratorStaysEmpty)
{
    MAPIPathIterator iterator;
    std::wstring path;
    for (int source = 0; source < 5; ++source)
    {
        iterator.GetNextMAPIPath(path);
    }
    trace.Clear();

    iterator.GetNextMAPIPath(path);

    EXPECT_EQ(path, L"");
    EXPECT_EQ(
        Lines(),
        (Strings{"2 GetNextMAPIPath:CurrentSource[4]", "3 GetNextMAPIPath:full MAPI path[]"}));
}

TEST_F(LibraryTest, InstallerComponentIsLookedUpByTheSystemLibrary)
{
    RegisterPath(L"MSIComponentID", L"{ABC}");
    RegisterPath(L"MSIApplicationLCID", L"1033");
    MAPIPathIterator iterator;
    std::wstring path;

    iterator.GetNextMAPIPath(path);

    EXPECT_EQ(LinesWith("omponentPath"),
              (Strings{"2 GetComponentPath: szComponent[{ABC}], szQualifier[1033], "
                       "cchBufferSize[0x00000104]",
                       "2 GetComponentPath: bReturn[0]",
                       "2 GetMailClientFromMSIData: GetComponentPath failed"}));
    EXPECT_EQ(path, ProviderPath(kFakeProviderFile));
}

TEST_F(LibraryTest, SecondInstallerValueMissingEndsTheLookUp)
{
    RegisterPath(L"MSIComponentID", L"{ABC}");
    MAPIPathIterator iterator;
    std::wstring path;

    iterator.GetNextMAPIPath(path);

    EXPECT_EQ(LinesWith("GetMailClientFromMSIData"),
              (Strings{"3 GetMailClientFromMSIData:fail to query Outlook Mapi Client key "
                       "value[MSIApplicationLCID], error = 0x2"}));
}

TEST_F(LibraryTest, InstallerTextBeyondItsBufferEndsTheLookUp)
{
    RegisterPath(L"MSIComponentID", std::wstring(260, L'x').c_str());
    RegisterPath(L"MSIApplicationLCID", L"1033");

    (void)AllPaths();

    EXPECT_EQ(LinesWith("GetMailClientFromMSIData"),
              (Strings{"3 GetMailClientFromMSIData:fail to query Outlook Mapi Client key "
                       "value[MSIComponentID], error = 0xea"}));
}

TEST_F(LibraryTest, FirstLoadablePathWins)
{
    RegisterPath(L"DllPathEx", L"C:\\no\\such\\client.dll");
    CTestOutlook outlook;

    EXPECT_TRUE(outlook.LoadLib());

    EXPECT_EQ(LinesWith("load error"),
              (Strings{"3 CMapiCtrl::LoadLib - load error=0x7e, hRes=0x8007007e"}));
    EXPECT_TRUE(trace.Has(3, "CMapiCtrl::LoadLib - MAPI dll load success"));
    EXPECT_FALSE(trace.Has(0, "CMapiCtrl::LoadLib, MAPI dll load failed"));
    EXPECT_EQ(MapiDataStore().GetLibraryPath(), ProviderPath(kFakeProviderFile));
    EXPECT_EQ(outlook.m_hMAPIDll.Get(), GetModuleHandleW(kFakeProviderFile));
}

TEST_F(LibraryTest, LoadingTracesPathLongPathAndVersion)
{
    RegisterPath(L"DllPathEx", L"C:\\no\\such\\client.dll");
    RegisterPath(L"DllPath", nullptr);
    CTestOutlook outlook;

    EXPECT_TRUE(outlook.LoadLib());

    const Strings lines = LinesWith("try to load");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0],
              "3 CMapiCtrl::LoadLib -try to load MAPI Dll path is [C:\\no\\such\\client.dll], "
              "full path [], file version []");
    EXPECT_TRUE(lines[1].starts_with("3 CMapiCtrl::LoadLib -try to load MAPI Dll path is "
                                     "[C:\\windows\\system32\\mapi32.dll], full path "
                                     "[C:\\windows\\system32\\mapi32.dll], file version ["));
}

TEST_F(LibraryTest, SecondLoadFailsThoughTheLibraryIsLoaded)
{
    CTestOutlook outlook;
    ASSERT_TRUE(outlook.LoadLib());
    trace.Clear();

    EXPECT_FALSE(outlook.LoadLib());

    EXPECT_EQ(Lines(), (Strings{"0 CMapiCtrl::LoadLib, MAPI dll load failed"}));
    EXPECT_TRUE(outlook.m_hMAPIDll);
}

TEST_F(LibraryTest, StartWithoutALibraryFails)
{
    CTestOutlook outlook;
    outlook.bMAPIX = 1;

    EXPECT_FALSE(outlook.MAPIXInit());

    EXPECT_EQ(Lines(), (Strings{"0 CMapiCtrl::MAPIXInit - hMAPIDll is NULL"}));
}

TEST_F(LibraryTest, LibraryWithoutAllFunctionsIsRefusedAndStaysLoaded)
{
    RegisterPath(L"DllPathEx", ProviderPath(kIncompleteProviderFile).c_str());
    CTestOutlook outlook;

    EXPECT_EQ(outlook.Init(1), 0x80080002U);

    EXPECT_EQ(LinesWith("MAPIXInit"),
              (Strings{"0 CMapiCtrl::MAPIXInit - simple MAPI functions are unavailable"}));
    EXPECT_TRUE(trace.Has(0, "MAPI Initialize failed"));
    EXPECT_TRUE(outlook.m_hMAPIDll);
    outlook.FreeLib();
    EXPECT_FALSE(outlook.m_hMAPIDll);
}

TEST_F(LibraryTest, StartIsRefusedBeforeItIsDueAndWhenItWasDone)
{
    CTestOutlook outlook;
    ASSERT_TRUE(outlook.LoadLib());
    EXPECT_FALSE(outlook.MAPIXInit());
    EXPECT_TRUE(trace.Has(0, "CMapiCtrl::MAPIXInit - bMAPIInited[0], bMAPIX[0]"));
    outlook.bMAPIX = 1;
    ASSERT_TRUE(outlook.MAPIXInit());

    EXPECT_FALSE(outlook.MAPIXInit());

    EXPECT_TRUE(trace.Has(0, "CMapiCtrl::MAPIXInit - bMAPIInited[1], bMAPIX[1]"));
    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    outlook.MAPIUninit();
}

TEST_F(LibraryTest, FailedStartTracesAndIsNotUndone)
{
    mapi.answers["MAPIInitialize"] = {MAPI_E_UNCONFIGURED};
    CTestOutlook outlook;
    ASSERT_TRUE(outlook.LoadLib());
    outlook.bMAPIX = 1;
    trace.Clear();

    EXPECT_FALSE(outlook.MAPIXInit());
    outlook.MAPIUninit();

    EXPECT_EQ(Lines(),
              (Strings{"2 COutlookCtrl::MAPIXInit Before call MAPIInitialize",
                       "2 COutlookCtrl::MAPIXInit After call MAPIInitialize",
                       "2 CMapiCtrl::MAPIXInit - MAPIInitialize failed",
                       "3 CMapiCtrl::MAPIUninit - bMAPIXInited[0]"}));
    EXPECT_EQ(mapi.CountCalls("MAPIUninitialize"), 0U);
}

TEST_F(LibraryTest, FileNameStandsBehindTheLastSeparator)
{
    EXPECT_EQ(FileNameOfPath(L"C:\\dir\\program.exe"), L"program.exe");
    EXPECT_EQ(FileNameOfPath(L"C:\\dir/program.exe"), L"program.exe");
    EXPECT_EQ(FileNameOfPath(L"C:program.exe"), L"program.exe");
    EXPECT_EQ(FileNameOfPath(L"program.exe"), L"program.exe");
    EXPECT_EQ(FileNameOfPath(L"C:\\dir\\"), L"");
}

TEST_F(LibraryTest, StubEntryOfThisProgramNamesTheMailClient)
{
    CTestOutlook outlook;
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, outlook.m_strStubKey.c_str());

    EXPECT_TRUE(outlook.SetStub());

    wchar_t text[64] = {};
    DWORD cbText = sizeof text;
    EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE,
                           outlook.m_strStubKey.c_str(),
                           L"controller_tests.exe",
                           RRF_RT_REG_SZ,
                           nullptr,
                           text,
                           &cbText),
              ERROR_SUCCESS);
    EXPECT_STREQ(text, L"Microsoft Outlook");
    EXPECT_EQ(Lines(), Strings{});
}

TEST_F(LibraryTest, OnlyAnEmptyFileNameFailsTheStub)
{
    const CTestOutlook outlook;

    EXPECT_FALSE(outlook.WriteStub(L""));

    EXPECT_EQ(Lines(), (Strings{"0 Write stub failed"}));
}

TEST_F(LibraryTest, StubListThatCannotBeWrittenIsNotNoticed)
{
    CTestOutlook outlook;
    outlook.m_strStubKey = std::wstring(300, L'k'); // no key may have such a name

    EXPECT_TRUE(outlook.SetStub());

    EXPECT_EQ(Lines(), Strings{});
}
