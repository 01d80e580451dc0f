#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "HangingCall.h"
#include "RemoteClient.h"
#include "ServerProcesses.h"

constexpr unsigned long kOk = 0;

/// Ids of the events.
constexpr int kOnCalendarUpdated = 1;
constexpr int kOnInitialize = 2;
constexpr int kOnListAppointment = 3;

/// Lists the first of January 2020, where the store has its appointments.
constexpr const char* kListTheDay = "list 0";

/// The registered product over a store folder of its own, which it finds by the registered mail
/// client's library.
class CalendarTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// Puts the store into its other state, in one step.
    void ChangeStore() const { PutStore(L"after.json"); }

    /// Makes calls of the mail library fail, hang or crash from the next server on.
    static void SetFaults(const wchar_t* plan);

    /// A client with frame window, object, sink and an answered Initialize.
    static void Connect(CRemoteClient& client);

    [[nodiscard]] std::unique_ptr<CWatchedProcess> Server() const;

    /// What the mail library reports at the end of each session: the sums, and what was not given back.
    [[nodiscard]] std::string Ledger() const;

private:
    void PutStore(const wchar_t* state) const;

    std::wstring m_folder;
    std::unique_ptr<CRegisteredServer> m_server;
};
