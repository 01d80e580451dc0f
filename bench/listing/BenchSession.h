#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "ProcessFigures.h"
#include "SampleStore.h"
#include "ServerProcesses.h"
#include "ServerSession.h"

/// The product, registered over a store of its own which it finds by the registered mail client's library.
///
/// Owner: takes the registration back at its end.
class CBenchMachine
{
public:
    CBenchMachine();
    CBenchMachine(const CBenchMachine&) = delete;
    CBenchMachine& operator=(const CBenchMachine&) = delete;
    ~CBenchMachine();

    /// Puts another document in place, in one step, also under a running server.
    void PutStore(const SampleShape& shape) const;
    [[nodiscard]] const std::wstring& Folder() const { return m_folder; }

private:
    std::wstring m_folder;
    std::unique_ptr<CRegisteredServer> m_server;
};

/// A fresh server process with an initialised session in it.
class CBenchSession
{
public:
    CBenchSession() = default;
    CBenchSession(const CBenchSession&) = delete;
    CBenchSession& operator=(const CBenchSession&) = delete;
    /// Lets go of the server and waits for its end.
    ~CBenchSession();

    /// False, with a line on standard error, when the server does not come up.
    bool Start();

    /// Lists the first week of the sample store. Gives the milliseconds from the call to the event.
    double List();
    /// Text of the last listing.
    [[nodiscard]] const std::wstring& Document() const { return m_document; }
    [[nodiscard]] std::size_t Appointments() const;

    [[nodiscard]] ProcessFigures Server() const;
    /// A meter of the server's processor time from now on.
    [[nodiscard]] CCpuMeter Meter() const;
    dtclient::CServerSession& Session() { return *m_session; }

private:
    std::unique_ptr<dtclient::CServerSession> m_session;
    HANDLE m_process = nullptr;
    std::wstring m_document;
};
