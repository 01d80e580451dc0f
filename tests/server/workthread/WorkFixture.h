#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "EventInbox.h"
#include "Handle.h"
#include "MailScript.h"
#include "TraceCapture.h"
#include "WorkThread.h"

/// An event that a test and the work thread meet at.
class CSignal final
{
public:
    CSignal() : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    void Set() const { SetEvent(m_event.Get()); }
    /// Fails the test when nobody signals within a minute.
    void Wait() const { EXPECT_EQ(WaitForSingleObject(m_event.Get(), 60000), WAIT_OBJECT_0); }

private:
    CHandle m_event;
};

/// The process's work thread over a scripted mail system, with an event window of the test's own and a
/// capture of the trace. The thread is ended after each test.
class WorkThreadTest : public testing::Test
{
protected:
    void TearDown() override;

    /// Makes the work thread.
    void Start();
    /// Makes the work thread and brings the mail system up, and takes the answer out of the inbox.
    void StartReady();

    static WorkTask Task(TaskType type, ULONG sequence = 0);
    /// Queues on the process's work thread.
    static void Queue(const WorkTask& task);
    static void Queue(TaskType type, ULONG sequence = 0) { Queue(Task(type, sequence)); }
    /// Queues a task behind all others and waits until it has run; so have those before it. Uses the
    /// script's deletion.
    void Flush();

    static std::uint64_t Text(WStringView text) { return TaskText(text); }

    CEventInbox m_inbox;
    CTraceCapture m_trace;
    CMailScript m_script;
};
