// Which runs of the product install the crash filter. A probe in the place of the trace library looks from
// within.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ChildProcess.h"
#include "ChildProgram.h"

namespace
{
class FilterInstallTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(CopyFileW(BuildPath(L"dtOIEx64.exe").c_str(), m_server.c_str(), FALSE));
        DeleteFileW(m_report.c_str());
        SetEnvironmentVariableW(L"FILTER_PROBE_REPORT", m_report.c_str());
    }

    void TearDown() override
    {
        SetEnvironmentVariableW(L"FILTER_PROBE_REPORT", nullptr);
        DeleteFileW(m_report.c_str());
        DeleteFileW(m_server.c_str());
    }

    // Runs the server to its end and gives what the probe saw.
    std::string Watch(const std::wstring& arguments)
    {
        DeleteFileW(m_report.c_str());
        EXPECT_EQ(RunProgram(m_server, arguments).exitCode, 0U);
        return FileBytes(m_report);
    }

private:
    // The probe stands in this folder under the trace library's name.
    const std::wstring m_folder = BuildPath(L"tests\\filter_probe\\");
    const std::wstring m_server = m_folder + L"dtOIEx64.exe";
    const std::wstring m_report = m_folder + L"report.txt";
};
} // namespace

TEST_F(FilterInstallTest, ARunWithAnyOfTheFourVerbsLeavesTheRuntimesFilterInPlace)
{
    for (const wchar_t* const verb :
         {L"-RegServer", L"/UnregServer", L"/RegServerPerUser", L"-UnregServerPerUser"})
    {
        EXPECT_EQ(Watch(verb), "start runtime's\nend runtime's\n") << verb;
    }
}

TEST_F(FilterInstallTest, AServerRunInstallsItsFilterAndLocksItInBeforeItServes)
{
    // Without a client's frame window it ends by itself.
    const std::string seen = Watch(L"-Embedding");

    EXPECT_EQ(seen.rfind("start runtime's\nserving locked\n", 0), 0U) << seen;
}

TEST_F(FilterInstallTest, AWordThatMerelyBeginsWithAVerbIsAServerRun)
{
    const std::string seen = Watch(L"-UnregServerPerUserX");

    EXPECT_EQ(seen.rfind("start runtime's\nserving locked\n", 0), 0U) << seen;
}
