#include "ServerFixture.h"

namespace
{
// Lets a hanging listing go on when the test is over, however it ends.
class CGoOn
{
public:
    CGoOn()
        : m_goOn(CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent)),
          m_hangs(CreateEventW(nullptr, TRUE, FALSE, kHangsEvent))
    {
    }
    CGoOn(const CGoOn&) = delete;
    CGoOn& operator=(const CGoOn&) = delete;
    ~CGoOn()
    {
        SetEvent(m_goOn);
        CloseHandle(m_goOn);
        CloseHandle(m_hangs);
    }

    [[nodiscard]] bool WaitUntilItHangs() const
    {
        return WaitForSingleObject(m_hangs, kPatienceMs) == WAIT_OBJECT_0;
    }

private:
    HANDLE m_goOn;
    HANDLE m_hangs;
};
} // namespace

TEST_F(ServerTest, TheServerEndsWhenTheLastReferenceGoes)
{
    CRemoteClient first;
    CRemoteClient second;
    ConnectAndInitialize(first);
    Connect(second);
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    EXPECT_EQ(first.Result("release"), kOk);
    EXPECT_EQ(second.Do("empties vtable").value, "10"); // it still serves the other one
    EXPECT_EQ(second.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, TheServerEndsWhenTheLastReferenceGoesThoughReleaseAppWasCalled)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(client.Result("releaseapp 0"), kOk);

    EXPECT_EQ(client.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, TheServerEndsThoughItsWorkThreadHangsWhenTheLastReferenceGoes)
{
    const CGoOn goOn;
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(client.Result(List(TestBehaviour::Hang)), kOk);
    ASSERT_TRUE(goOn.WaitUntilItHangs());

    EXPECT_EQ(client.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
}

TEST_F(ServerTest, TheServerEndsWhenTheClientsFrameWindowGoes)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    ASSERT_EQ(client.Result("closeframe"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, TheServerEndsWithTheFrameWindowThoughItsWorkThreadHangs)
{
    const CGoOn goOn;
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(client.Result(List(TestBehaviour::Hang)), kOk);
    ASSERT_TRUE(goOn.WaitUntilItHangs());

    ASSERT_EQ(client.Result("closeframe"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, AnotherClientsFrameWindowKeepsTheServer)
{
    CRemoteClient first;
    CRemoteClient second;
    ConnectAndInitialize(first);
    Connect(second);
    ASSERT_EQ(first.Result("closeframe"), kOk);

    // Three heartbeats take longer than the two polls that would end the server.
    for (int beat = 0; beat < 2; ++beat)
    {
        ASSERT_EQ(second.WaitForEvent(kOnTrace).id, kOnTrace);
    }

    EXPECT_EQ(ServerCount(), 1U);
    EXPECT_EQ(first.Do("empties vtable").value, "10");
}

TEST_F(ServerTest, ASecondServerIsNotTurnedAwayAndEndsWithTheFrameWindow)
{
    CRemoteClient client;
    Connect(client);
    const auto first = Server();
    ASSERT_NE(first, nullptr);
    CChildProcess second;
    ASSERT_TRUE(second.Start(BuildPath(L"tests\\dtOIEx64-testhost.exe"), L"", false));

    // Longer than the polls that would end a server without a client.
    for (int beat = 0; beat < 2; ++beat)
    {
        ASSERT_EQ(client.WaitForEvent(kOnTrace).id, kOnTrace);
    }
    EXPECT_EQ(ServerCount(), 2U);
    ASSERT_EQ(client.Result("closeframe"), kOk);

    EXPECT_EQ(second.Wait(), 0U);
    EXPECT_TRUE(first->WaitForEnd());
}

TEST_F(ServerTest, AClientThatDiesWithoutReleasingLeavesNoServerBehind)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    client.Kill();

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, AServerThatFindsNoFrameWindowEndsByItself)
{
    CRemoteClient client;
    ASSERT_EQ(client.Result("create"), kOk); // without a frame window
    const std::unique_ptr<CWatchedProcess> server = Server();
    ASSERT_NE(server, nullptr);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, AServerStartedByHandWithoutAClientEndsByItself)
{
    CChildProcess server;
    ASSERT_TRUE(server.Start(BuildPath(L"tests\\dtOIEx64-testhost.exe"), L"", false));

    EXPECT_EQ(server.Wait(), 0U);
}
