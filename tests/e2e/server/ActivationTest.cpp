#include "ServerFixture.h"

TEST_F(ServerTest, TheFirstActivationStartsTheServer)
{
    EXPECT_EQ(ServerCount(), 0U);
    CRemoteClient client;

    EXPECT_EQ(client.Result("frame"), kOk);
    EXPECT_EQ(client.Result("create"), kOk);

    EXPECT_EQ(ServerCount(), 1U);
}

TEST_F(ServerTest, TwoClientProcessesShareOneObjectInOneServer)
{
    CRemoteClient first;
    CRemoteClient second;
    Connect(first);
    Connect(second);

    EXPECT_EQ(ServerCount(), 1U);
    // One object: the answer to the first client's call reaches the sink of the second.
    ASSERT_EQ(first.Result("initialize 1 CALENDARING"), kOk);
    EXPECT_EQ(second.WaitForEvent(kOnInitialize).id, kOnInitialize);
}

TEST_F(ServerTest, ARunningServerIsSeenByItsNamedEvents)
{
    CRemoteClient client;
    Connect(client);

    for (const wchar_t* const name :
         {L"EVENT_DTOUTLOOK64_INTEGRATION_EXE", L"DTEVENT_CONNECT_MAPI_RUN"})
    {
        HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, name);
        EXPECT_NE(event, nullptr) << GetLastError();
        CloseHandle(event);
    }
    HANDLE semaphore =
        OpenSemaphoreW(SYNCHRONIZE, FALSE, L"dtOIEx-aWorkThread-Semaphore-WorkPending-x64");
    EXPECT_NE(semaphore, nullptr);
    CloseHandle(semaphore);
    EXPECT_NE(FindWindowW(L"Tlv_OI_EXE_2EC77A10-29E1-4d80-B7F7-778072404185", L"ClientMonitorWnd"),
              nullptr);
}

TEST_F(ServerTest, TheObjectSupportsErrorInformationForItsInterface)
{
    CRemoteClient client;
    Connect(client);

    EXPECT_EQ(client.Result("errorinfo"), kOk);
}

TEST_F(ServerTest, AnObjectCreatedAfterTheServerEndedIsANewOne)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(client.Result("release"), kOk);
    ASSERT_TRUE(server->WaitForEnd());

    ASSERT_EQ(client.Result("create"), kOk);
    ASSERT_EQ(client.Result("advise main"), kOk);

    // The counter of a new process.
    EXPECT_EQ(client.Do(List(TestBehaviour::EmptyListing)).value, "111");
}
