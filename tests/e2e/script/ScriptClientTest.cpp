#include <gtest/gtest.h>

#include <string>

#include "RemoteClient.h"
#include "ServerProcesses.h"
#include "TestPaths.h"

namespace
{
constexpr int kOnInitialize = 2;

std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

// Runs a script of the project in the system's own script host.
ProgramResult RunScript(const std::wstring& path)
{
    return RunProgram(L"C:\\windows\\system32\\cscript.exe",
                      L"//nologo \"Z:" + Wide(DT_SOURCE_DIR) + L"/" + path + L"\"");
}

class ScriptClientTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_server.IsRegistered());
        // A script has no window; somebody has to own the frame.
        ASSERT_EQ(m_frame.Result("frame"), 0U);
    }

    CRegisteredServer m_server{BuildPath(L"tests\\dtOIEx64-testhost.exe")};
    CRemoteClient m_frame;
};
} // namespace

TEST_F(ScriptClientTest, AScriptInitializesAndReleasesByName)
{
    const ProgramResult result = RunScript(L"tests/e2e/script/late-bound-client.js");

    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_EQ(result.output, "initialized\nreleased\n") << result.errors;
}

TEST_F(ScriptClientTest, WhatAScriptCallsReachesTheSameObjectAsOtherClients)
{
    ASSERT_EQ(m_frame.Result("create"), 0U);
    ASSERT_EQ(m_frame.Result("advise main"), 0U);

    const ProgramResult result = RunScript(L"tests/e2e/script/late-bound-client.js");
    EXPECT_EQ(result.exitCode, 0U);

    // Its ReleaseApp ended the work thread, which the next Initialize makes anew.
    ASSERT_EQ(m_frame.Result("initialize 1 CALENDARING"), 0U);
    EXPECT_EQ(m_frame.WaitForEvent(kOnInitialize).id, kOnInitialize);
    // 111 was the script's, 112 this client's.
    EXPECT_EQ(m_frame.Do("list 0").value, "113");
}

TEST_F(ScriptClientTest, AFailedCallRaisesItsCodeInAScript)
{
    const ProgramResult result = RunScript(L"tests/e2e/script/bad-mail-type.js");

    EXPECT_EQ(result.output, "failure 80004005\n") << result.errors;
}

TEST_F(ScriptClientTest, TheWorkedScriptOfTheInterfaceReferencePrintsTheProfile)
{
    const ProgramResult result = RunScript(L"client/example/profile-client.js");

    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_EQ(result.output,
              "<CurrentOLProfile><ProfileName><![CDATA[Test]]></ProfileName></CurrentOLProfile>\n")
        << result.errors;
}
