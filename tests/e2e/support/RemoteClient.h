#pragma once

#include <windows.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"

/// One event that a client process heard.
struct HeardEvent
{
    std::string sink;
    int id = 0;
    unsigned long number = 0;
    std::string text;
};

/// Answer to one command.
struct CommandAnswer
{
    bool came = false;
    unsigned long result = 0xFFFFFFFF; ///< The HRESULT.
    std::string value;
};

/// The test's side of one e2e_client.exe: sends commands and collects answers and events. The commands
/// stand in ScriptedClient.h.
///
/// Thread: used by the thread of the test.
class CRemoteClient
{
public:
    CRemoteClient();
    CRemoteClient(const CRemoteClient&) = delete;
    CRemoteClient& operator=(const CRemoteClient&) = delete;
    /// Closes the client's input, upon which it releases all and ends.
    ~CRemoteClient();

    /// Sends a command and waits for its answer.
    CommandAnswer Do(const std::string& command);

    /// Waits for the answer that an action inside an event gives.
    CommandAnswer AnswerOf(const std::string& name);

    /// The HRESULT of a command; a command that is not answered gives 0xFFFFFFFF.
    unsigned long Result(const std::string& command) { return Do(command).result; }

    /// Waits for the next event with this id to a sink, and takes it and all before it. The sink
    /// "*" is any. An event that does not come has the id 0.
    HeardEvent WaitForEvent(int id, const std::string& sink = "*");

    /// Events that have come and were not taken yet.
    std::vector<HeardEvent> Waiting();

    /// Ends the process as a crash would, and waits until it is gone.
    void Kill();

    [[nodiscard]] DWORD Id() const { return m_process.Id(); }

private:
    void ReadAll();

    CChildProcess m_process;
    std::mutex m_linesLock; // guards the three below
    std::condition_variable m_came;
    std::deque<HeardEvent> m_events;
    std::deque<std::pair<std::string, CommandAnswer>> m_answers;
    bool m_ended = false;
    std::thread m_reader;
};
