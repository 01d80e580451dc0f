#include <thread>

#include "EventWindow.h"
#include "FreedBlocks.h"
#include "Handle.h"
#include "HeapUse.h"
#include "MapiDataStore.h"
#include "MonitorFixture.h"
#include "TraceCapture.h"

namespace
{

using Fired = std::vector<std::wstring>;

class MonitorEventsTest : public MonitorTest
{
protected:
    /// Sends a text message for id 111, mapped to the client, and says whether the id is still mapped.
    bool SendText(UINT message, const std::wstring& text)
    {
        m_monitor->MapSequence(111, &m_client);
        Send(message, 111, WideBlock(text));
        IMonitorClient* found = nullptr;
        return m_monitor->FindClientBySequence(111, found);
    }
};

TEST_F(MonitorEventsTest, ResultsThatAreOverUnmapTheirId)
{
    EXPECT_FALSE(SendText(WM_EVENT_LIST_APPOINTMENT, L"<a/>"));
    EXPECT_FALSE(SendText(WM_EVENT_RESOLVE_NAME, L"<b/>"));
    EXPECT_FALSE(SendText(WM_EVENT_PERSONAL_CONTACT, L"<c/>"));
    EXPECT_FALSE(SendText(WM_EVENT_SEARCH_CONTACTS, L"<d/>"));
    EXPECT_FALSE(SendText(WM_EVENT_RESOLVE_BY_URI, L"<e/>"));
    EXPECT_FALSE(SendText(WM_EVENT_RESOLVE_BY_PHONE, L"<f/>"));

    EXPECT_EQ(m_client.fired,
              (Fired{L"OnListAppointment 111 <a/>",
                     L"OnResolveName <b/>",
                     L"OnGetPersonalContact <c/>",
                     L"OnSearchForContacts <d/>",
                     L"OnResolveByUri <e/>",
                     L"OnResolveByPhoneNumber <f/>"}));
}

TEST_F(MonitorEventsTest, FourEventsKeepTheirIdMapped)
{
    EXPECT_TRUE(SendText(WM_EVENT_LIST_RECURRENT, L"<a/>"));
    EXPECT_TRUE(SendText(WM_EVENT_GET_APPOINTMENT, L"<b/>"));
    EXPECT_TRUE(SendText(WM_EVENT_RECENT_EMAILS, L"<c/>"));
    EXPECT_TRUE(SendText(WM_EVENT_CONTACT_DETAIL, L"<d/>"));

    EXPECT_EQ(m_client.fired,
              (Fired{L"OnListRecurrentInstance 111 <a/>",
                     L"OnGetAppointment 111 <b/>",
                     L"OnGetRecentEmails 111 <c/>",
                     L"OnGetContactDetail 111 <d/>"}));
}

TEST_F(MonitorEventsTest, EventsLeaveNoBlockBehind)
{
    const std::wstring text(1000, L'x');
    const auto fireAll = [&] {
        for (UINT message = WM_EVENT_CALENDAR_UPDATED; message < WM_EVENT_TRACE; ++message)
        {
            SendText(message, text);
        }
        Send(WM_EVENT_TRACE, 0, NarrowBlock("a line"));
        const std::size_t count = m_client.fired.size();
        m_client.fired.clear();
        return count;
    };
    ASSERT_EQ(fireAll(), 13U);
    const HeapUse before = HeapsInUse();

    for (int round = 0; round < 100; ++round)
    {
        fireAll();
    }

    EXPECT_EQ(HeapsInUse(), before);
}

TEST_F(MonitorEventsTest, InitializeCarriesItsStatusSignedAndUnmapsItsId)
{
    CTraceCapture trace;
    m_monitor->MapSequence(111, &m_client);
    Send(WM_EVENT_INITIALIZE, 111, 0x80080002);

    EXPECT_EQ(m_client.fired, (Fired{L"OnInitialize -2146959358"}));
    EXPECT_EQ(trace.Messages(), (std::vector<std::string>{"3 pMapiClient->Fire_OnInitialize"}));
    Send(WM_EVENT_INITIALIZE, 111, 0);
    EXPECT_EQ(m_client.fired.size(), 1U);
}

TEST_F(MonitorEventsTest, ResultsGoToTheOwnerOfTheIdAlone)
{
    CFakeClient other;
    m_monitor->AddClient(&other);
    EXPECT_FALSE(SendText(WM_EVENT_LIST_APPOINTMENT, L"<a/>"));

    EXPECT_EQ(m_client.fired.size(), 1U);
    EXPECT_TRUE(other.fired.empty());
}

TEST_F(MonitorEventsTest, UpdatesAndTracesGoToEveryClient)
{
    CFakeClient other;
    m_monitor->AddClient(&other);
    Send(WM_EVENT_CALENDAR_UPDATED, ChangeModified, WideBlock(L"<a/>"));
    Send(WM_EVENT_CONTACT_UPDATED, ChangeAdded, WideBlock(L"<b/>"));
    Send(WM_EVENT_TRACE, 0, NarrowBlock("line"));

    const Fired expected = {
        L"OnCalendarUpdated 3 <a/>", L"OnContactUpdated 1 <b/>", L"OnTrace line"};
    EXPECT_EQ(m_client.fired, expected);
    EXPECT_EQ(other.fired, expected);
}

TEST_F(MonitorEventsTest, AnEmptyTextIsFiredAsAnEmptyText)
{
    EXPECT_FALSE(SendText(WM_EVENT_LIST_APPOINTMENT, L""));
    EXPECT_EQ(m_client.fired, (Fired{L"OnListAppointment 111 "}));
}

TEST_F(MonitorEventsTest, EveryTextMessageFreesItsBlock)
{
    for (UINT message = WM_EVENT_CALENDAR_UPDATED; message <= WM_EVENT_TRACE; message++)
    {
        const int before = FreedBlocks();
        Send(message, 999, message == WM_EVENT_TRACE ? NarrowBlock("x") : WideBlock(L"x"));
        EXPECT_EQ(FreedBlocks(), before + 1) << message;
    }
}

TEST_F(MonitorEventsTest, WhileReleasingNothingIsFiredAndTheTextIsFreed)
{
    for (ULONG id = 1525; id <= 1538; id++)
    {
        m_monitor->MapSequence(id, &m_client);
    }
    MapiDataStore().SetReleasing(1);
    const int before = FreedBlocks();
    Send(WM_EVENT_INITIALIZE, WM_EVENT_INITIALIZE, 0);
    for (UINT message = WM_EVENT_CALENDAR_UPDATED; message <= WM_EVENT_TRACE; message++)
    {
        Send(message, message, message == WM_EVENT_TRACE ? NarrowBlock("x") : WideBlock(L"x"));
    }

    EXPECT_TRUE(m_client.fired.empty());
    EXPECT_EQ(FreedBlocks(), before + 13);
}

TEST_F(MonitorEventsTest, AMessageWithoutTextDoesNothing)
{
    for (UINT message = WM_EVENT_CALENDAR_UPDATED; message <= WM_EVENT_TRACE; message++)
    {
        m_monitor->MapSequence(111, &m_client);
        EXPECT_EQ(Send(message, 111, 0), 0);
    }
    EXPECT_TRUE(m_client.fired.empty());
}

TEST_F(MonitorEventsTest, AClientGoneBetweenRequestAndResultGetsNothingAndTheTextIsFreed)
{
    m_monitor->MapSequence(111, &m_client);
    m_monitor->RemoveClient(&m_client);
    const int before = FreedBlocks();
    Send(WM_EVENT_LIST_APPOINTMENT, 111, WideBlock(L"<a/>"));

    EXPECT_TRUE(m_client.fired.empty());
    EXPECT_EQ(FreedBlocks(), before + 1);
}

TEST_F(MonitorEventsTest, PostedResultsAreFiredInTheirOrder)
{
    m_monitor->MapSequence(111, &m_client);
    m_monitor->MapSequence(112, &m_client);
    const HWND window = EventWindow();
    ASSERT_EQ(window, CClientMonitor::Window());
    PostMessageW(window, WM_EVENT_INITIALIZE, 111, 0);
    PostMessageW(window, WM_EVENT_LIST_APPOINTMENT, 112, WideBlock(L"<a/>"));
    PostMessageW(window, WM_EVENT_CALENDAR_UPDATED, ChangeDeleted, WideBlock(L"<b/>"));
    EXPECT_TRUE(m_client.fired.empty());

    MSG message;
    while (PeekMessageW(&message, window, WM_EVENT_CLIENT_NONEXIST, WM_EVENT_TRACE, PM_REMOVE) !=
           FALSE)
    {
        DispatchMessageW(&message);
    }
    EXPECT_EQ(
        m_client.fired,
        (Fired{L"OnInitialize 0", L"OnListAppointment 112 <a/>", L"OnCalendarUpdated 2 <b/>"}));
}

TEST_F(MonitorEventsTest, MessagesOutsideTheRangeGoToTheSystem)
{
    EXPECT_EQ(Send(WM_GETTEXTLENGTH, 0, 0), 16); // "ClientMonitorWnd"
    const int before = FreedBlocks();
    EXPECT_EQ(Send(WM_EVENT_CLIENT_NONEXIST - 1, 0, 0), 0);
    EXPECT_EQ(Send(WM_EVENT_TRACE + 1, 0, 0), 0);
    EXPECT_TRUE(m_client.fired.empty());
    EXPECT_EQ(FreedBlocks(), before);
    EXPECT_TRUE(m_host.steps.empty());
}

TEST_F(MonitorEventsTest, AClientMayCallBackWithinABroadcast)
{
    m_client.onFire = [this] { m_monitor->MapSequence(m_monitor->NextSequence(), &m_client); };
    Send(WM_EVENT_CALENDAR_UPDATED, ChangeAdded, WideBlock(L"<a/>"));

    IMonitorClient* found = nullptr;
    EXPECT_TRUE(m_monitor->FindClientBySequence(111, found));
}

TEST_F(MonitorEventsTest, AClientThatGoesWithinABroadcastIsNotCalledAnyMore)
{
    CFakeClient second;
    CFakeClient third;
    m_monitor->AddClient(&second);
    m_monitor->AddClient(&third);
    m_client.onFire = [&] {
        m_monitor->RemoveClient(&m_client);
        m_monitor->RemoveClient(&second);
    };
    Send(WM_EVENT_CALENDAR_UPDATED, ChangeAdded, WideBlock(L"<a/>"));

    EXPECT_EQ(m_client.fired.size(), 1U);
    EXPECT_TRUE(second.fired.empty());
    EXPECT_EQ(third.fired.size(), 1U);
}

TEST_F(MonitorEventsTest, ClientsAreCalledInTheOrderInWhichTheyCame)
{
    CFakeClient second;
    CFakeClient third;
    CFakeClient fourth;
    std::vector<const CFakeClient*> called;
    for (CFakeClient* const client : {&m_client, &second, &third, &fourth})
    {
        client->onFire = [&called, client] { called.push_back(client); };
        m_monitor->AddClient(client);
    }
    m_monitor->RemoveClient(&second);
    Send(WM_EVENT_CONTACT_UPDATED, ChangeAdded, WideBlock(L"<a/>"));
    Send(WM_EVENT_TRACE, 0, NarrowBlock("x"));

    EXPECT_EQ(
        called,
        (std::vector<const CFakeClient*>{&m_client, &third, &fourth, &m_client, &third, &fourth}));
}

TEST_F(MonitorEventsTest, AnotherThreadThatWantsTheBookOfClientsWaitsForABroadcast)
{
    for (const UINT message : {WM_EVENT_CALENDAR_UPDATED, WM_EVENT_CONTACT_UPDATED, WM_EVENT_TRACE})
    {
        const CHandle taken(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        std::thread other;
        DWORD during = WAIT_FAILED;
        m_client.onFire = [&] {
            other = std::thread([&] {
                m_monitor->NextSequence();
                SetEvent(taken.Get());
            });
            // What is shown is that nothing happens, so time has to pass.
            during = WaitForSingleObject(taken.Get(), 200);
        };
        Send(message, 0, message == WM_EVENT_TRACE ? NarrowBlock("x") : WideBlock(L"x"));
        other.join();

        EXPECT_EQ(during, static_cast<DWORD>(WAIT_TIMEOUT)) << message;
        EXPECT_EQ(WaitForSingleObject(taken.Get(), 0), WAIT_OBJECT_0);
    }
}

TEST_F(MonitorEventsTest, AnotherThreadDoesNotWaitForAnEventToOneClient)
{
    m_client.onFire = [this] {
        std::thread other([this] { m_monitor->NextSequence(); });
        other.join();
    };
    EXPECT_FALSE(SendText(WM_EVENT_LIST_APPOINTMENT, L"<a/>"));
    EXPECT_EQ(m_client.fired.size(), 1U);
}

TEST_F(MonitorEventsTest, AClientIsHeldWhileItIsCalled)
{
    LONG during = 0;
    m_client.onFire = [&] { during = m_client.references; };
    EXPECT_FALSE(SendText(WM_EVENT_LIST_APPOINTMENT, L"<a/>"));
    EXPECT_EQ(during, 2);
    EXPECT_EQ(m_client.references, 1);

    Send(WM_EVENT_TRACE, 0, NarrowBlock("x"));
    EXPECT_EQ(during, 2);
    EXPECT_EQ(m_client.references, 1);
}

TEST_F(MonitorEventsTest, WithoutMemoryTheEventIsLostAndNothingIsThrown)
{
    m_client.onFire = [] { throw std::bad_alloc(); };
    const int before = FreedBlocks();
    EXPECT_EQ(Send(WM_EVENT_CALENDAR_UPDATED, ChangeAdded, WideBlock(L"<a/>")), 0);
    EXPECT_EQ(FreedBlocks(), before + 1);
}

} // namespace
