#include <gtest/gtest.h>

#include <algorithm>

#include "ChildProgram.h"

namespace
{

std::string Output(const std::wstring& mode)
{
    const ChildResult result = RunChild(OwnFolder() + L"\\work_probe.exe", {mode});
    EXPECT_EQ(result.exitCode, 0U);
    std::string output = result.output;
    output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
    return output;
}

} // namespace

TEST(WorkProbe, WithoutASemaphoreTasksWaitForEverWhileTheHeartbeatGoesOn)
{
    EXPECT_EQ(Output(L"no-semaphore"),
              "create semphore-WorkPending failed, Error Code=6\n"
              "ReleaseSemaphore-work failed, Error Code=6, count=4\n"
              "##dtOIEx##process##exist##\n"
              "calls 0\n");
}

TEST(WorkProbe, HungWorkThreadKeepsItsObjectAtProcessEnd)
{
    EXPECT_EQ(Output(L"hung-at-exit"), "ListAppointment(0, 0), pointer null\n");
}
