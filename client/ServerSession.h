#pragma once

#include <windows.h>

#include <ocidl.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "Arguments.h"
#include "CalendarTime.h"
#include "ClientFrame.h"
#include "ComOwners.h"
#include "dtOIEx64_i.h"
#include "EventSink.h"
#include "MessagePump.h"

namespace dtclient
{
/// What became of a step: done, or a text for the user that says what was tried, the code and what
/// to do about it.
class CStepResult
{
public:
    static CStepResult Done() { return CStepResult(true, {}); }
    static CStepResult Failed(std::string message)
    {
        return CStepResult(false, std::move(message));
    }

    /// The user pressed Ctrl+C: not done, and nothing to say about it.
    static CStepResult Interrupted() { return CStepResult(false, {}); }

    [[nodiscard]] bool IsDone() const { return m_done; }
    [[nodiscard]] const std::string& Message() const { return m_message; }

private:
    CStepResult(bool done, std::string message) : m_done(done), m_message(std::move(message)) {}

    bool m_done;
    std::string m_message;
};

/// One client's use of the server, from activation to the last reference.
///
/// It never calls ReleaseApp: all clients share one object in the server, and the first ReleaseApp
/// of any of them silences the others. Dropping the reference is enough, for the server ends when
/// the last one goes.
///
/// Thread: one, which is a single threaded apartment and pumps messages through Pump().
class CServerSession
{
public:
    CServerSession() = default;
    CServerSession(const CServerSession&) = delete;
    CServerSession& operator=(const CServerSession&) = delete;
    ~CServerSession();

    /// Owns the frame window, enters the apartment, creates the object and advises the sink.
    CStepResult Open();

    /// Called for every event from now on, besides what this class makes of it.
    void SetEventHandler(CEventSink::Handler handler);

    /// Calls Initialize and waits for OnInitialize.
    CStepResult Initialize(WorkType type, std::chrono::seconds timeout);

    /// Asks for a window of local time and waits for its document.
    CStepResult List(const ListWindow& window,
                     std::chrono::seconds timeout,
                     std::wstring& document);

    /// Asks for the profile document; empty when the server has none.
    CStepResult Profile(std::wstring& document);

    /// One of the calls that do nothing, for timing and as a sign of life.
    HRESULT EmptyCall();

    CMessagePump& Pump() { return m_pump; }

    /// The server's object; borrowed, and null before Open.
    [[nodiscard]] IMapiDtClient* Object() const { return m_server.Get(); }

private:
    void OnEvent(const ServerEvent& event);
    CStepResult WaitFor(const std::function<bool()>& done,
                        std::chrono::seconds timeout,
                        const std::string& what);

    CMessagePump m_pump;
    CClientFrame m_frame;
    bool m_comEntered = false;
    CComRef<IMapiDtClient> m_server;
    CComRef<IConnectionPoint> m_point;
    CComRef<CEventSink> m_sink;
    DWORD m_cookie = 0;
    CEventSink::Handler m_handler;

    bool m_initializeAnswered = false;
    std::uint32_t m_initializeResult = 0;
    // Answers by sequence id while a listing is awaited. An answer may come before its own call has
    // returned the id, and answers to other clients come here as well.
    bool m_listing = false;
    std::map<std::uint32_t, std::wstring> m_listAnswers;
};
} // namespace dtclient
