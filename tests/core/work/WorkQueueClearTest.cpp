#include <gtest/gtest.h>

#include <set>
#include <utility>
#include <vector>

#include "AtMemory.h"
#include "TraceCapture.h"
#include "WorkQueue.h"

// The queue frees through at_mem_free, and this program wraps that function: a block that is
// watched is noted when it is freed, so that a test can tell what was left.
namespace
{

std::set<void*> g_watched;
std::set<void*> g_freed;

} // namespace

extern "C" void __real_at_mem_free(void* block) noexcept; // NOLINT
extern "C" void __wrap_at_mem_free(void* block) noexcept; // NOLINT

void __wrap_at_mem_free(void* block) noexcept
{
    if (g_watched.contains(block))
    {
        g_freed.insert(block);
        return; // given back when the test ends
    }
    __real_at_mem_free(block);
}

namespace
{

class WorkQueueClearTest : public testing::TestWithParam<int>
{
protected:
    void TearDown() override
    {
        const std::set<void*> blocks = std::exchange(g_watched, {});
        for (void* block : blocks)
        {
            at_mem_free(block);
        }
        g_freed.clear();
    }

    static std::uint64_t Watched(WStringView text)
    {
        const std::uint64_t param = TaskText(text);
        g_watched.insert(reinterpret_cast<void*>(param));
        return param;
    }

    static bool WasFreed(std::uint64_t param)
    {
        return g_freed.contains(reinterpret_cast<void*>(param));
    }

    /// A task of this type whose three words are all watched texts.
    static WorkTask FullTask(int type)
    {
        WorkTask task;
        task.eTaskType = static_cast<TaskType>(type);
        task.Param1 = Watched(WTEXT("one"));
        task.Param2 = Watched(WTEXT("two"));
        task.Param3 = Watched(WTEXT("three"));
        return task;
    }
};

/// Which of the three words ClearPendingWork frees for a type.
struct ClearRow
{
    bool first;
    bool second;
    bool third;
};

ClearRow RowOf(int type)
{
    switch (type)
    {
    case 1:
        return {true, true, true};
    case 4:
        return {false, false, true};
    case 5:
    case 13:
    case 14:
    case 15:
    case 10:
    case 11:
    case 12:
    case 16:
    case 17:
    case 18:
        return {false, true, false};
    case 2:
    case 6:
    case 7:
        return {true, false, false};
    default:
        return {false, false, false};
    }
}

std::string TypeName(const testing::TestParamInfo<int>& info)
{
    return "Type" + std::to_string(info.param);
}

} // namespace

TEST_P(WorkQueueClearTest, FreesAndLeavesExactlyTheTextsOfItsTable)
{
    CWorkQueue queue;
    const WorkTask task = FullTask(GetParam());
    queue.Push(task);

    queue.Clear();

    const ClearRow expected = RowOf(GetParam());
    EXPECT_EQ(WasFreed(task.Param1), expected.first);
    EXPECT_EQ(WasFreed(task.Param2), expected.second);
    EXPECT_EQ(WasFreed(task.Param3), expected.third);
    WorkTask left;
    EXPECT_FALSE(queue.Pop(left));
}

INSTANTIATE_TEST_SUITE_P(AllTypes, WorkQueueClearTest, testing::Range(0, 23), TypeName);

TEST_F(WorkQueueClearTest, OnEmptyListsOnlyPrintsItsTrace)
{
    CWorkQueue queue;
    CTraceCapture capture;

    queue.Clear();

    EXPECT_EQ(capture.Messages(), (std::vector<std::string>{"3 ClearPendingWork"}));
}

TEST_F(WorkQueueClearTest, DroppingAFolderTakesItsNotificationsAloneWithAllTheirTexts)
{
    CWorkQueue queue;
    constexpr std::uint64_t kFolder = 0x1000;
    constexpr std::uint64_t kOther = 0x2000;
    std::vector<WorkTask> dropped;
    for (const int type : {10, 11, 12, 16, 17, 18})
    {
        WorkTask task;
        task.eTaskType = static_cast<TaskType>(type);
        task.Param1 = kFolder;
        task.Param2 = Watched(WTEXT("entry"));
        task.Param3 = Watched(WTEXT("instance"));
        dropped.push_back(task);
        queue.Push(task);
        task.Param1 = kOther;
        task.Param2 = Watched(WTEXT("entry"));
        task.Param3 = Watched(WTEXT("instance"));
        queue.Push(task);
    }
    WorkTask listing;
    listing.eTaskType = TaskType::GetAppointments;
    listing.Param1 = kFolder; // a time that happens to look like the folder
    queue.Push(listing);

    EXPECT_EQ(queue.DropFolder(kFolder), 6U);

    for (const WorkTask& task : dropped)
    {
        EXPECT_TRUE(WasFreed(task.Param2));
        EXPECT_TRUE(WasFreed(task.Param3));
    }
    EXPECT_EQ(g_freed.size(), 12U);
    std::vector<int> order;
    WorkTask task;
    while (queue.Pop(task))
    {
        order.push_back(static_cast<int>(task.eTaskType));
    }
    EXPECT_EQ(order, (std::vector<int>{10, 11, 12, 16, 17, 18, 3}));
}
