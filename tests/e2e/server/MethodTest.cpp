#include "ServerFixture.h"

TEST_F(ServerTest, TheTenEmptyMethodsAnswerThroughTheTable)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    const CommandAnswer answer = client.Do("empties vtable");

    EXPECT_EQ(answer.result, kOk);
    EXPECT_EQ(answer.value, "10");
}

TEST_F(ServerTest, TheEmptyMethodsAnswerByName)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    const CommandAnswer answer = client.Do("empties dispatch");

    EXPECT_EQ(answer.result, kOk);
    EXPECT_EQ(answer.value, "9");
}

TEST_F(ServerTest, NoEventFollowsAnEmptyMethod)
{
    CRemoteClient client;
    ConnectAndInitialize(client);
    ASSERT_EQ(client.Do("empties vtable").value, "10");

    // The listing comes after whatever the empty methods might have queued.
    ASSERT_EQ(client.Result(List(TestBehaviour::EmptyListing)), kOk);
    HeardEvent event;
    do
    {
        event = client.WaitForEvent(kOnListAppointment);
        ASSERT_EQ(event.id, kOnListAppointment);
    } while (event.number != 112);
    EXPECT_TRUE(client.Waiting().empty());
}

TEST_F(ServerTest, SequenceIdsCountFromOneHundredAndElevenForAllClients)
{
    CRemoteClient first;
    CRemoteClient second;
    Connect(first);
    Connect(second);

    EXPECT_EQ(first.Do(List(TestBehaviour::EmptyListing)).value, "111");
    EXPECT_EQ(second.Do(List(TestBehaviour::EmptyListing)).value, "112");
    EXPECT_EQ(first.Do(List(TestBehaviour::EmptyListing)).value, "113");
}

TEST_F(ServerTest, InitializeTakesASequenceIdOfItsOwn)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    EXPECT_EQ(client.Do(List(TestBehaviour::EmptyListing)).value, "112");
}

TEST_F(ServerTest, AListingBeforeInitializeIsAnsweredWithAnEmptyText)
{
    CRemoteClient client;
    Connect(client);

    ASSERT_EQ(client.Do(List(TestBehaviour::OneAppointment)).value, "111");

    const HeardEvent event = client.WaitForEvent(kOnListAppointment);
    EXPECT_EQ(event.number, 111U);
    EXPECT_EQ(event.text, "");
}

TEST_F(ServerTest, AListingBringsItsDocumentUnderTheIdOfTheCall)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    const CommandAnswer answer = client.Do(List(TestBehaviour::OneAppointment));

    const HeardEvent event = client.WaitForEvent(kOnListAppointment);
    EXPECT_EQ(std::to_string(event.number), answer.value);
    EXPECT_EQ(event.text,
              "<appointments><appointment><subject><![CDATA[Test]]></subject></appointment>"
              "</appointments>");
}

TEST_F(ServerTest, AListingWithoutAWindowIsRefused)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    // The proxy refuses a null record before the server sees it, or the server does.
    EXPECT_NE(client.Result("nulllist"), kOk);
    EXPECT_EQ(client.Do(List(TestBehaviour::EmptyListing)).value, "112");
}

TEST_F(ServerTest, MailTypesOutsideOneToSixteenAreRefusedWithoutASequenceId)
{
    CRemoteClient client;
    Connect(client);

    EXPECT_EQ(client.Result("initialize 0 CALENDARING"), kFail);
    EXPECT_EQ(client.Result("initialize 17 CALENDARING"), kFail);
    EXPECT_EQ(client.Do(List(TestBehaviour::EmptyListing)).value, "111");
}

TEST_F(ServerTest, AnUnsupportedMailTypeIsTakenAndItsEventTellsTheFailure)
{
    CRemoteClient client;
    Connect(client);

    EXPECT_EQ(client.Result("initialize 2 CALENDARING"), kOk);

    const HeardEvent event = client.WaitForEvent(kOnInitialize);
    EXPECT_EQ(event.id, kOnInitialize);
    EXPECT_EQ(event.number, 1U);
}

TEST_F(ServerTest, TheProfileIsUntouchedUntilInitializationIsDone)
{
    CRemoteClient client;
    Connect(client);
    const CommandAnswer before = client.Do("profile");
    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    ASSERT_EQ(client.WaitForEvent(kOnInitialize).number, 0U);

    const CommandAnswer after = client.Do("profile");

    EXPECT_EQ(before.result, kOk);
    EXPECT_EQ(before.value, "untouched");
    EXPECT_EQ(after.result, kOk);
    EXPECT_EQ(after.value,
              "<CurrentOLProfile><ProfileName><![CDATA[Test]]></ProfileName></CurrentOLProfile>");
}

TEST_F(ServerTest, PostEventAlwaysFailsWithOutlook)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    for (const char* const type : {"0", "1", "2", "3", "4"})
    {
        EXPECT_EQ(client.Result(std::string("postevent ") + type + " key"), kFail) << type;
    }
}

TEST_F(ServerTest, ALargeDocumentArrivesWhole)
{
    CRemoteClient client;
    ConnectAndInitialize(client);

    ASSERT_EQ(client.Result(List(TestBehaviour::LargeDocument)), kOk);

    const HeardEvent event = client.WaitForEvent(kOnListAppointment);
    EXPECT_EQ(event.text, std::string(400, 'x') + " of " + std::to_string(kLargeUnits));
}
