#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "RemoteClient.h"
#include "ServerProcesses.h"
#include "TestBehaviour.h"

namespace
{
constexpr int kOnInitialize = 2;

std::wstring DataFile(const wchar_t* name)
{
    std::array<wchar_t, MAX_PATH> folder{};
    SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_APPDATA, TRUE);
    return std::wstring(folder.data()) + L"\\Talvo Connect\\" + name;
}

std::string ContentOf(const std::wstring& path)
{
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    std::string content;
    if (file == INVALID_HANDLE_VALUE)
    {
        return content;
    }
    std::vector<char> block(65536);
    DWORD cbRead = 0;
    while (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &cbRead, nullptr) != 0 &&
           cbRead != 0)
    {
        content.append(block.data(), cbRead);
    }
    CloseHandle(file);
    return content;
}

bool Exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A server whose next listing crashes, in a data folder without the files of an older crash.
class ServerCrashTest : public testing::Test
{
protected:
    void SetUp() override
    {
        // The server looks for the trace library beside its own file.
        ASSERT_TRUE(CopyFileW(BuildPath(L"tlvtraceX64.dll").c_str(),
                              BuildPath(L"tests\\tlvtraceX64.dll").c_str(),
                              FALSE));
        ASSERT_TRUE(m_server.IsRegistered());
        DeleteFileW(m_dump.c_str());
        DeleteFileW(m_traceCopy.c_str());
        ASSERT_EQ(m_client.Result("frame"), 0U);
        ASSERT_EQ(m_client.Result("create"), 0U);
        ASSERT_EQ(m_client.Result("advise main"), 0U);
        ASSERT_EQ(m_client.Result("initialize 1 CALENDARING"), 0U);
        ASSERT_EQ(m_client.WaitForEvent(kOnInitialize).id, kOnInitialize);
        const std::vector<DWORD> ids = m_server.Processes();
        ASSERT_EQ(ids.size(), 1U);
        m_process = std::make_unique<CWatchedProcess>(ids[0]);
    }

    void TearDown() override
    {
        m_process.reset();
        DeleteFileW(m_dump.c_str());
        DeleteFileW(m_traceCopy.c_str());
        DeleteFileW(BuildPath(L"tests\\tlvtraceX64.dll").c_str());
    }

    // Asks for a listing in which the server crashes, and waits for its end.
    [[nodiscard]] bool CrashServer(TestBehaviour behaviour)
    {
        m_client.Do("list " + std::to_string(static_cast<unsigned>(behaviour)));
        return m_process->WaitForEnd();
    }

    const std::wstring m_dump = DataFile(L"dtOIEx64.exe.300.dmp");
    const std::wstring m_traceCopy = DataFile(L"strato_mapi_last_crash.txt");
    CRegisteredServer m_server{BuildPath(L"tests\\dtOIEx64-testhost.exe")};
    CRemoteClient m_client;
    std::unique_ptr<CWatchedProcess> m_process;
};
} // namespace

TEST_F(ServerCrashTest, ACrashOfTheWorkThreadLeavesDumpAndTrace)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::AccessViolation));

    EXPECT_EQ(ContentOf(m_dump).substr(0, 4), "MDMP");
    EXPECT_NE(ContentOf(m_traceCopy).find("CMapiClient::FinalConstruct"), std::string::npos);
}

TEST_F(ServerCrashTest, TheCopyOfTheTraceHoldsTheLastLines)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::AccessViolation));

    const std::string copy = ContentOf(m_traceCopy);
    EXPECT_NE(copy.find("CRASH!!! ####################"), std::string::npos)
        << copy.substr(copy.size() - std::min<std::size_t>(copy.size(), 2000));
}

TEST_F(ServerCrashTest, AnExceptionThatNobodyCatchesLeavesTheSame)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::EscapingException));

    EXPECT_EQ(ContentOf(m_dump).substr(0, 4), "MDMP");
    EXPECT_NE(ContentOf(m_traceCopy).find("CMapiClient::FinalConstruct"), std::string::npos);
}

TEST_F(ServerCrashTest, AFilterThatALibrarySetsLaterChangesNothing)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::FilterTakenAway));

    EXPECT_NE(m_process->ExitCode(), 95U); // that of the other filter
    EXPECT_EQ(ContentOf(m_dump).substr(0, 4), "MDMP");
}

TEST_F(ServerCrashTest, ACrashInsideTheFilterMakesNoDump)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::CrashInFilter));

    EXPECT_FALSE(Exists(m_dump));
    EXPECT_FALSE(Exists(m_traceCopy));
}

TEST_F(ServerCrashTest, TheClientIsToldByTheNextCall)
{
    ASSERT_TRUE(CrashServer(TestBehaviour::AccessViolation));

    const CommandAnswer answer = m_client.Do("empties vtable");

    EXPECT_EQ(answer.value, "0");
    EXPECT_NE(answer.result, 0U);
}
