#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "RemoteClient.h"
#include "ServerProcesses.h"
#include "TestBehaviour.h"

constexpr unsigned long kOk = 0;
constexpr unsigned long kFail = 0x80004005;

/// Ids of the events.
constexpr int kOnCalendarUpdated = 1;
constexpr int kOnInitialize = 2;
constexpr int kOnListAppointment = 3;
constexpr int kOnContactUpdated = 10;
constexpr int kOnTrace = 14;

/// A registered test host, and clients that use it.
class ServerTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_server.IsRegistered()); }

    /// The one server process; null unless there is exactly one.
    [[nodiscard]] std::unique_ptr<CWatchedProcess> Server() const
    {
        const std::vector<DWORD> ids = m_server.Processes();
        EXPECT_EQ(ids.size(), 1U);
        return ids.size() == 1 ? std::make_unique<CWatchedProcess>(ids[0]) : nullptr;
    }

    [[nodiscard]] std::size_t ServerCount() const { return m_server.Processes().size(); }

    /// A client with frame window, object and a sink named "main".
    static void Connect(CRemoteClient& client)
    {
        ASSERT_EQ(client.Result("frame"), kOk);
        ASSERT_EQ(client.Result("create"), kOk);
        ASSERT_EQ(client.Result("advise main"), kOk);
    }

    /// Connect, and initialised for the calendar.
    static void ConnectAndInitialize(CRemoteClient& client)
    {
        Connect(client);
        ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
        ASSERT_EQ(client.WaitForEvent(kOnInitialize).id, kOnInitialize);
    }

    static std::string List(TestBehaviour behaviour)
    {
        return "list " + std::to_string(static_cast<unsigned>(behaviour));
    }

private:
    CRegisteredServer m_server{BuildPath(L"tests\\dtOIEx64-testhost.exe")};
};
