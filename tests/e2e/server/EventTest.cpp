#include "ServerFixture.h"

TEST_F(ServerTest, EverySinkOfEveryClientHearsAnAnswer)
{
    CRemoteClient first;
    CRemoteClient second;
    ConnectAndInitialize(first);
    Connect(second);
    ASSERT_EQ(second.Result("advise other"), kOk);

    const CommandAnswer answer = first.Do(List(TestBehaviour::OneAppointment));

    EXPECT_EQ(std::to_string(first.WaitForEvent(kOnListAppointment, "main").number), answer.value);
    EXPECT_EQ(std::to_string(second.WaitForEvent(kOnListAppointment, "main").number), answer.value);
    EXPECT_EQ(std::to_string(second.WaitForEvent(kOnListAppointment, "other").number),
              answer.value);
}

TEST_F(ServerTest, ASinkThatFailsDoesNotStopTheNext)
{
    CRemoteClient client;
    ASSERT_EQ(client.Result("frame"), kOk);
    ASSERT_EQ(client.Result("create"), kOk);
    ASSERT_EQ(client.Result("advise failing fail"), kOk);
    ASSERT_EQ(client.Result("advise good"), kOk);

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);

    EXPECT_EQ(client.WaitForEvent(kOnInitialize, "failing").id, kOnInitialize);
    EXPECT_EQ(client.WaitForEvent(kOnInitialize, "good").id, kOnInitialize);
}

TEST_F(ServerTest, TheSinksOfADeadClientDoNotStopTheOthers)
{
    CRemoteClient dead;
    CRemoteClient living;
    Connect(dead);
    ConnectAndInitialize(living);
    dead.Kill();

    const CommandAnswer answer = living.Do(List(TestBehaviour::OneAppointment));

    EXPECT_EQ(std::to_string(living.WaitForEvent(kOnListAppointment).number), answer.value);
}

TEST_F(ServerTest, AnUnadvisedSinkHearsNothingMore)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    ASSERT_EQ(client.Result("advise other"), kOk);
    ASSERT_EQ(client.Result("unadvise main"), kOk);

    ASSERT_EQ(client.Result(List(TestBehaviour::OneAppointment)), kOk);

    EXPECT_EQ(client.WaitForEvent(kOnListAppointment).sink, "other");
}

TEST_F(ServerTest, ChangesReachEveryClientWithTheirTypeWord)
{
    CRemoteClient first;
    CRemoteClient second;
    ConnectAndInitialize(first);
    Connect(second);

    ASSERT_EQ(first.Result(List(TestBehaviour::OneChangeEach)), kOk);

    for (CRemoteClient* const client : {&first, &second})
    {
        for (const unsigned long type : {1UL, 2UL, 3UL})
        {
            const HeardEvent calendar = client->WaitForEvent(kOnCalendarUpdated);
            EXPECT_EQ(calendar.number, type);
            EXPECT_EQ(calendar.text, "calendar");
            const HeardEvent contact = client->WaitForEvent(kOnContactUpdated);
            EXPECT_EQ(contact.number, type);
            EXPECT_EQ(contact.text, "contact");
        }
    }
}

TEST_F(ServerTest, ABurstOfChangesArrivesWholeAndInOrder)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    ASSERT_EQ(client.Result(List(TestBehaviour::ManyChanges)), kOk);

    for (unsigned change = 0; change < kManyChanges; ++change)
    {
        const HeardEvent event = client.WaitForEvent(kOnCalendarUpdated);
        ASSERT_EQ(event.text, "change " + std::to_string(change));
    }
    EXPECT_EQ(client.WaitForEvent(kOnListAppointment).id, kOnListAppointment);
}

TEST_F(ServerTest, AnIdleServerSendsHeartbeats)
{
    CRemoteClient client;
    Connect(client);

    const HeardEvent event = client.WaitForEvent(kOnTrace);

    EXPECT_EQ(event.id, kOnTrace);
    EXPECT_NE(event.text.find("##dtOIEx##process##exist##"), std::string::npos) << event.text;
    EXPECT_EQ(event.text.front(), '[');
}

TEST_F(ServerTest, ReleaseAppSilencesEveryClient)
{
    CRemoteClient first;
    CRemoteClient second;
    ConnectAndInitialize(first);
    ConnectAndInitialize(second);

    // Two calls of Initialize and one of ReleaseApp: nothing is released, yet all events end.
    ASSERT_EQ(first.Result("releaseapp 0"), kOk);
    while (!second.Waiting().empty())
    {
        second.WaitForEvent(second.Waiting().front().id);
    }
    ASSERT_EQ(second.Result(List(TestBehaviour::OneAppointment)), kOk);
    // The listing has been answered, and the answer dropped, once its profile is still there and the
    // work thread takes the next one.
    ASSERT_EQ(second.Result(List(TestBehaviour::Hang)), kOk);
    HANDLE hangs = CreateEventW(nullptr, TRUE, FALSE, kHangsEvent);
    EXPECT_EQ(WaitForSingleObject(hangs, kPatienceMs), WAIT_OBJECT_0);
    CloseHandle(hangs);

    // A synchronous call goes through the same message loop behind the posted answer.
    EXPECT_EQ(second.Do("empties vtable").value, "10");
    EXPECT_TRUE(second.Waiting().empty());
    HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent);
    SetEvent(goOn);
    EXPECT_EQ(first.Result("release"), kOk);
    EXPECT_EQ(second.Result("release"), kOk);
    CloseHandle(goOn);
}

TEST_F(ServerTest, ReleaseAppWithoutInitializeSilencesAsWell)
{
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result("releaseapp 0"), kOk);

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    ASSERT_EQ(client.Result(List(TestBehaviour::Hang)), kOk);
    HANDLE hangs = CreateEventW(nullptr, TRUE, FALSE, kHangsEvent);
    EXPECT_EQ(WaitForSingleObject(hangs, kPatienceMs), WAIT_OBJECT_0);
    CloseHandle(hangs);

    EXPECT_EQ(client.Do("empties vtable").value, "10");
    EXPECT_TRUE(client.Waiting().empty());
    HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent);
    SetEvent(goOn);
    EXPECT_EQ(client.Result("release"), kOk);
    CloseHandle(goOn);
}

TEST_F(ServerTest, AfterAReleaseTheNextInitializeIsHeardAgain)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    ASSERT_EQ(client.Result("releaseapp 0"), kOk); // ends the work thread

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);

    EXPECT_EQ(client.WaitForEvent(kOnInitialize).number, 0U);
}

TEST_F(ServerTest, AfterAHibernateTheServerWorksButStaysSilent)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    ASSERT_EQ(client.Result("releaseapp -1"), kOk);

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    ASSERT_EQ(client.Result(List(TestBehaviour::Hang)), kOk);
    HANDLE hangs = CreateEventW(nullptr, TRUE, FALSE, kHangsEvent);
    EXPECT_EQ(WaitForSingleObject(hangs, kPatienceMs), WAIT_OBJECT_0);
    CloseHandle(hangs);

    // Initialised anew: the work thread hangs in a listing, which it takes only when it is ready.
    EXPECT_EQ(client.Do("empties vtable").value, "10");
    EXPECT_TRUE(client.Waiting().empty());
    HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent);
    SetEvent(goOn);
    EXPECT_EQ(client.Result("release"), kOk);
    CloseHandle(goOn);
}

TEST_F(ServerTest, AClientMayReleaseTheServerInsideAnEvent)
{
    CRemoteClient client;
    Connect(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(client.Result("onevent release"), kOk);

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);

    EXPECT_EQ(client.AnswerOf("onevent-release").result, kOk);
    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(ServerTest, AClientMayCallReleaseAppInsideAnEvent)
{
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result("onevent releaseapp"), kOk);

    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);

    EXPECT_EQ(client.AnswerOf("onevent-releaseapp").result, kOk);
    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    EXPECT_EQ(client.WaitForEvent(kOnInitialize).id, kOnInitialize);
}
