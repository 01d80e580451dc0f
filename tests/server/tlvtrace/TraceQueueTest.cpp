#include "TraceQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using tlvtrace::CTraceQueue;
using tlvtrace::QueueLimits;

namespace
{
constexpr DWORD kPatienceMs = 60000;

// A disk that can be made to hang or to refuse.
class CTestStore final : public tlvtrace::ITraceStore
{
public:
    CTestStore()
        : m_open(CreateEventW(nullptr, TRUE, TRUE, nullptr)),
          m_entered(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
          m_letGo(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
    }
    ~CTestStore() override
    {
        CloseHandle(m_open);
        CloseHandle(m_entered);
        CloseHandle(m_letGo);
    }

    bool Append(std::string_view lines) noexcept override
    {
        const bool stays = m_keepNext.exchange(false);
        if (!stays || m_keepBefore)
        {
            SetEvent(m_entered);
            WaitForSingleObject(stays ? m_letGo : m_open, kPatienceMs);
        }
        const bool taken = Take(lines);
        if (stays && !m_keepBefore)
        {
            SetEvent(m_entered);
            WaitForSingleObject(m_letGo, kPatienceMs);
        }
        return taken;
    }

    bool Holds(std::string_view lines) noexcept override
    {
        const std::scoped_lock hold(m_textLock);
        return m_text.find(lines) != std::string::npos;
    }

    // Keeps the next caller before or behind its writing, and no other, until LetGo.
    void KeepNext(bool before)
    {
        m_keepBefore = before;
        m_keepNext = true;
    }
    void LetGo() { SetEvent(m_letGo); }

    void Hang() { ResetEvent(m_open); }
    void GoOn() { SetEvent(m_open); }
    bool WaitUntilEntered() { return WaitForSingleObject(m_entered, kPatienceMs) == WAIT_OBJECT_0; }

    void Refuse(bool refuse)
    {
        const std::scoped_lock hold(m_textLock);
        m_refuse = refuse;
    }

    unsigned Appends()
    {
        const std::scoped_lock hold(m_textLock);
        return m_appends;
    }

    std::string Text()
    {
        const std::scoped_lock hold(m_textLock);
        return m_text;
    }

private:
    bool Take(std::string_view lines)
    {
        const std::scoped_lock hold(m_textLock);
        if (m_refuse)
        {
            return false;
        }
        m_text += lines;
        ++m_appends;
        return true;
    }

    HANDLE m_open;
    HANDLE m_entered;
    HANDLE m_letGo;
    std::atomic<bool> m_keepNext = false;
    std::atomic<bool> m_keepBefore = false;
    std::mutex m_textLock; // guards all below
    std::string m_text;
    unsigned m_appends = 0;
    bool m_refuse = false;
};

constexpr QueueLimits kSmall = {1000, 1};
const std::string kHundred(98, 'x'); // with its line end 100 bytes, counted as 198
} // namespace

TEST(TraceQueue, LinesAreWrittenInTheOrderOfTheirCalls)
{
    CTestStore store;
    CTraceQueue queue(store, QueueLimits{});
    ASSERT_TRUE(queue.Start());

    queue.Add("h1 ", "one");
    queue.Add("h2 ", "two");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(store.Text(), "h1 one\r\nh2 two\r\n");
}

TEST(TraceQueue, LinesGatherUntilSomebodyWaitsForThem)
{
    CTestStore store;
    QueueLimits forever;
    forever.gatherMs = kPatienceMs;
    CTraceQueue queue(store, forever);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");
    queue.Add("", "two");
    EXPECT_EQ(store.Text(), "");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));

    EXPECT_EQ(store.Text(), "one\r\ntwo\r\n");
    EXPECT_EQ(store.Appends(), 1U);
}

TEST(TraceQueue, ALineThatHurriesTakesThoseBeforeItAlong)
{
    CTestStore store;
    QueueLimits forever;
    forever.gatherMs = INFINITE;
    CTraceQueue queue(store, forever);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");

    queue.Add("", "two", true);

    ASSERT_TRUE(store.WaitUntilEntered());
    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(store.Text(), "one\r\ntwo\r\n");
    EXPECT_EQ(store.Appends(), 1U);
}

TEST(TraceQueue, LineEndsWithinATextDoNotMakeANewLine)
{
    CTestStore store;
    CTraceQueue queue(store, QueueLimits{});
    ASSERT_TRUE(queue.Start());

    queue.Add("h ", "a\r\nb\nc");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(store.Text(), "h a\\r\\nb\\nc\r\n");
}

TEST(TraceQueue, AHangingDiskDoesNotHoldTheCallerAndTheLossIsTold)
{
    CTestStore store;
    store.Hang();
    CTraceQueue queue(store, kSmall);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "first");
    ASSERT_TRUE(store.WaitUntilEntered()); // the writer hangs with the first line

    for (int line = 0; line < 50; ++line)
    {
        queue.Add("", kHundred);
    }
    const std::uint64_t lost = queue.LostLines();
    store.GoOn();

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(lost, 41U); // 1000 bytes take nine lines counted as 198, 100 each once written
    const std::string text = store.Text();
    EXPECT_NE(text.find(" W - - 41 trace lines lost here: the disk was too slow\r\n"),
              std::string::npos)
        << text;
}

TEST(TraceQueue, AfterALossNewLinesAreTakenAgain)
{
    CTestStore store;
    store.Hang();
    CTraceQueue queue(store, kSmall);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "first");
    ASSERT_TRUE(store.WaitUntilEntered());
    for (int line = 0; line < 20; ++line)
    {
        queue.Add("", kHundred);
    }
    store.GoOn();
    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    const std::uint64_t lost = queue.LostLines();

    queue.Add("", "last");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(queue.LostLines(), lost);
    EXPECT_TRUE(store.Text().ends_with("last\r\n"));
}

TEST(TraceQueue, WhatTheDiskRefusesIsCountedAndToldOnceItWritesAgain)
{
    CTestStore store;
    store.Refuse(true);
    CTraceQueue queue(store, QueueLimits{});
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");
    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    queue.Add("", "two");
    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    store.Refuse(false);

    queue.Add("", "three");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(queue.LostLines(), 2U);
    EXPECT_EQ(store.Text().rfind("three\r\n", 0), 0U);
    EXPECT_NE(store.Text().find(" 2 trace lines lost here"), std::string::npos);
}

TEST(TraceQueue, ALineLongerThanTheBufferIsLostAndCounted)
{
    CTestStore store;
    CTraceQueue queue(store, kSmall);
    ASSERT_TRUE(queue.Start());

    queue.Add("", std::string(2000, 'x'));
    queue.Add("", "short");

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(queue.LostLines(), 1U);
    EXPECT_EQ(store.Text().rfind("short\r\n", 0), 0U);
}

TEST(TraceQueue, EightThreadsTearNoLineAndLoseNone)
{
    constexpr int kThreads = 8;
    constexpr int kLines = 10000;
    CTestStore store;
    // Room for all of them, so that a slow machine cannot make this a test of the disk.
    CTraceQueue queue(store, {16 * 1024 * 1024, 1});
    ASSERT_TRUE(queue.Start());

    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back([&queue, thread] {
            for (int line = 0; line < kLines; ++line)
            {
                queue.Add("<" + std::to_string(thread) + " ", std::to_string(line) + ">");
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    ASSERT_TRUE(queue.WaitUntilWritten(kPatienceMs));
    EXPECT_EQ(queue.LostLines(), 0U);
    std::vector<int> next(kThreads, 0);
    std::istringstream text(store.Text());
    for (std::string line; std::getline(text, line);)
    {
        ASSERT_EQ(line.front(), '<');
        const int thread = line[1] - '0';
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << line;
        const std::string expected = "<" + std::to_string(thread) + " " +
                                     std::to_string(next[static_cast<std::size_t>(thread)]) + ">\r";
        ASSERT_EQ(line, expected);
        ++next[static_cast<std::size_t>(thread)];
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLines));
}

TEST(TraceQueue, StopWritesWhatWaits)
{
    CTestStore store;
    store.Hang();
    CTraceQueue queue(store, QueueLimits{});
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");
    ASSERT_TRUE(store.WaitUntilEntered());
    queue.Add("", "two");
    store.GoOn();

    queue.Stop();

    EXPECT_EQ(store.Text(), "one\r\ntwo\r\n");
}

TEST(TraceQueue, TheEndOfAProcessWritesWhatNoWriterTook)
{
    CTestStore store;
    CTraceQueue queue(store, kSmall);
    for (int line = 0; line < 20; ++line)
    {
        queue.Add("", kHundred);
    }

    queue.DrainAtExit();

    EXPECT_EQ(store.Text().rfind(kHundred + "\r\n", 0), 0U);
    EXPECT_NE(store.Text().find("trace lines lost here"), std::string::npos);
}

// The system ends the writer wherever it stands; here it is kept there.
TEST(TraceQueue, TheEndOfAProcessDoesNotWriteAgainWhatTheWriterHasWritten)
{
    CTestStore store;
    CTraceQueue queue(store, QueueLimits{});
    store.KeepNext(false);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");
    ASSERT_TRUE(store.WaitUntilEntered());
    queue.Add("", "two");

    queue.DrainAtExit();

    EXPECT_EQ(store.Text(), "one\r\ntwo\r\n");
    store.LetGo();
}

TEST(TraceQueue, TheEndOfAProcessWritesWhatTheWriterHadInHandAndDidNotWrite)
{
    CTestStore store;
    CTraceQueue queue(store, QueueLimits{});
    store.KeepNext(true);
    ASSERT_TRUE(queue.Start());
    queue.Add("", "one");
    ASSERT_TRUE(store.WaitUntilEntered());
    queue.Add("", "two");

    queue.DrainAtExit();

    EXPECT_EQ(store.Text(), "one\r\ntwo\r\n");
    store.LetGo();
}
