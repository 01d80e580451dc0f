#include "WorkQueue.h"

#include <gtest/gtest.h>

#include <vector>

#include "TraceCapture.h"

namespace
{

WorkTask Task(int type, std::uint32_t sequence)
{
    WorkTask task;
    task.eTaskType = static_cast<TaskType>(type);
    task.ulSequenceID = sequence;
    return task;
}

/// The sequence ids of everything that waits, in the order in which it comes out.
std::vector<std::uint32_t> Drain(CWorkQueue& queue)
{
    std::vector<std::uint32_t> order;
    WorkTask task;
    while (queue.Pop(task))
    {
        order.push_back(task.ulSequenceID);
    }
    return order;
}

} // namespace

TEST(WorkQueue, FirstListComesOutInOrderBeforeAnyLowTask)
{
    CWorkQueue queue;
    queue.Push(Task(2, 1));
    queue.Push(Task(3, 2));
    queue.Push(Task(20, 3));
    queue.Push(Task(0, 4));
    queue.Push(Task(19, 5));
    queue.Push(Task(9, 6));

    EXPECT_EQ(Drain(queue), (std::vector<std::uint32_t>{2, 4, 6, 1, 3, 5}));
}

TEST(WorkQueue, LowTaskWaitsWhileFirstListTasksKeepComing)
{
    CWorkQueue queue;
    WorkTask task;
    queue.Push(Task(21, 100));
    for (std::uint32_t i = 0; i < 1000; i++)
    {
        queue.Push(Task(11, i));
        ASSERT_TRUE(queue.Pop(task));
        ASSERT_EQ(task.ulSequenceID, i);
    }

    ASSERT_TRUE(queue.Pop(task));
    EXPECT_EQ(task.ulSequenceID, 100U);
}

TEST(WorkQueue, TypesTwoAndNineteenToTwentyTwoAreLow)
{
    for (int type = 0; type <= 22; type++)
    {
        CWorkQueue queue;
        queue.Push(Task(type, 1));
        queue.Push(Task(8, 2));
        const bool low = type == 2 || type >= 19;

        EXPECT_EQ(Drain(queue).front(), low ? 2U : 1U) << "type " << type;
    }
}

TEST(WorkQueue, RecordComesBackAsItWentIn)
{
    CWorkQueue queue;
    WorkTask task = Task(3, 111);
    task.Param1 = 0x1122334455667788ULL;
    task.Param2 = 0x99AABBCCDDEEFF00ULL;
    task.Param3 = 7;
    queue.Push(task);

    WorkTask back;
    ASSERT_TRUE(queue.Pop(back));
    EXPECT_EQ(back.ulSequenceID, 111U);
    EXPECT_EQ(back.eTaskType, TaskType::GetAppointments);
    EXPECT_EQ(back.Param1, 0x1122334455667788ULL);
    EXPECT_EQ(back.Param2, 0x99AABBCCDDEEFF00ULL);
    EXPECT_EQ(back.Param3, 7U);
}

TEST(WorkQueue, PopOnEmptyListsFailsWithoutATrace)
{
    CWorkQueue queue;
    WorkTask task = Task(5, 42);
    CTraceCapture capture;

    EXPECT_FALSE(queue.Pop(task));
    EXPECT_TRUE(capture.Lines().empty());
    EXPECT_EQ(task.ulSequenceID, 42U);
}

TEST(WorkQueue, PushAndPopTraceTheType)
{
    CWorkQueue queue;
    WorkTask task;
    CTraceCapture capture;

    queue.Push(Task(17, 1));
    queue.Pop(task);

    EXPECT_EQ(capture.Messages(),
              (std::vector<std::string>{"3 PushPendingWork tasktype[17]",
                                        "3 PopPendingWork tasktype[17]"}));
}

TEST(WorkQueue, UnknownTypeGoesOnNoListAndIsTraced)
{
    for (const int type : {23, -1})
    {
        CWorkQueue queue;
        CTraceCapture capture;

        queue.Push(Task(type, 1));

        EXPECT_EQ(
            capture.Messages(),
            (std::vector<std::string>{"3 PushPendingWork tasktype[" + std::to_string(type) + "]"}));
        EXPECT_TRUE(Drain(queue).empty());
    }
}

TEST(WorkQueue, UnknownTypeKeepsItsTexts)
{
    CWorkQueue queue;
    WorkTask task = Task(23, 1);
    task.Param1 = TaskText(WTEXT("mine"));

    queue.Push(task);

    EXPECT_EQ(TextOfParam(task.Param1), WTEXT("mine"));
    task.eTaskType = TaskType::GetAppointment;
    FreeTaskTexts(task);
}
