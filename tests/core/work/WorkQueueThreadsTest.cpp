#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "StartLine.h"
#include "WorkQueue.h"

namespace
{

constexpr std::uint32_t kProducers = 4;
constexpr std::uint32_t kTasksEach = 25000;

/// The low half of the id counts within a producer, the high bits name it.
std::uint32_t Id(std::uint32_t producer, std::uint32_t index)
{
    return (producer << 24) | index;
}

} // namespace

TEST(WorkQueueThreads, FourProducersLoseNothingAndEachKeepsItsOrder)
{
    CWorkQueue queue;
    CStartLine start(kProducers);
    std::vector<std::thread> producers;
    for (std::uint32_t p = 0; p < kProducers; p++)
    {
        producers.emplace_back([&queue, &start, p] {
            start.ArriveAndWait();
            for (std::uint32_t i = 0; i < kTasksEach; i++)
            {
                WorkTask task;
                task.ulSequenceID = Id(p, i);
                task.eTaskType = TaskType::GetAppointment;
                task.Param1 = TaskText(WTEXT("00"));
                queue.Push(task);
            }
        });
    }

    std::vector<std::uint32_t> next(kProducers, 0);
    std::uint32_t taken = 0;
    bool ordered = true;
    while (taken < kProducers * kTasksEach)
    {
        WorkTask task;
        if (!queue.Pop(task))
        {
            std::this_thread::yield();
            continue;
        }
        const std::uint32_t producer = task.ulSequenceID >> 24;
        ordered = ordered && (task.ulSequenceID & 0xFFFFFF) == next[producer];
        next[producer]++;
        FreeTaskTexts(task);
        taken++;
    }
    for (std::thread& producer : producers)
    {
        producer.join();
    }

    EXPECT_TRUE(ordered);
    EXPECT_EQ(next, std::vector<std::uint32_t>(kProducers, kTasksEach));
    WorkTask task;
    EXPECT_FALSE(queue.Pop(task));
}

TEST(WorkQueueThreads, ClearingWhileOthersPushAndPopLeavesWholeTasks)
{
    CWorkQueue queue;
    std::atomic<bool> stop{false};
    CStartLine start(3);
    std::thread producer([&] {
        start.ArriveAndWait();
        for (std::uint32_t i = 0; i < kTasksEach; i++)
        {
            WorkTask task;
            task.eTaskType = (i % 2) == 0 ? TaskType::GetSmtpAddress : TaskType::SendMail;
            task.Param1 = TaskText(WTEXT("a"));
            task.Param2 = task.eTaskType == TaskType::SendMail ? TaskText(WTEXT("b")) : 0;
            queue.Push(task);
        }
        stop = true;
    });
    std::thread consumer([&] {
        start.ArriveAndWait();
        while (!stop)
        {
            WorkTask task;
            if (queue.Pop(task))
            {
                EXPECT_EQ(TextOfParam(task.Param1), WTEXT("a"));
                FreeTaskTexts(task);
            }
        }
    });
    start.ArriveAndWait();
    while (!stop)
    {
        queue.Clear();
    }
    producer.join();
    consumer.join();

    queue.Clear();
    WorkTask task;
    EXPECT_FALSE(queue.Pop(task));
}
