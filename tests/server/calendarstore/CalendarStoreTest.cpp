#include "CalendarStoreTest.h"

#include <algorithm>

#include "Base64.h"
#include "EventMessages.h"
#include "MapiCtrl.h"
#include "WorkThread.h"

namespace
{

constexpr ULONG kInitSequence = 111;
constexpr ULONG kListSequence = 112;

} // namespace

bool CalendarStoreTest::WasRead(const std::string& subject) const
{
    std::string name;
    Base64EncodeForAString(subject, name);
    const std::string beginning = "get again- name=[" + name + "],";
    const std::vector<TraceLine> lines = trace.Lines();
    return std::any_of(lines.begin(), lines.end(), [&](const TraceLine& line) {
        return line.message.starts_with(beginning);
    });
}

void ListingStoreTest::Start()
{
    Write();
    ASSERT_EQ(outlook.Init(InitTypeCalendar), 0U);
    List("2001-01-01T00:00:00", "2001-01-02T00:00:00");
    trace.Clear();
}

void ListingStoreTest::TearDown()
{
    outlook.FreeLib();
    MailStoreTest::TearDown();
}

Texts ListingStoreTest::List(const std::string& start, const std::string& end)
{
    CEventText listing;
    listed = outlook.ListAppointment(MachineTimeOf(start), MachineTimeOf(end), listing);
    xml = listing.View();
    return Values(L"subject");
}

std::wstring CalendarEvent::Value(const std::wstring& element) const
{
    const Texts values = ElementValues(xml, element);
    return values.empty() ? std::wstring() : values.front();
}

void ChangeStoreTest::Start()
{
    Write();
    SetMailSwitchFactory(&MakeMapiCtrl);
    ASSERT_TRUE(EnsureWorkThread());
    {
        const CWorkThreadUse work;
        work->AddInitWork(kInitSequence, MailTypeOutlook, InitTypeCalendar);
    }
    const InboxMessage answer = inbox.Next();
    ASSERT_EQ(answer.message, static_cast<UINT>(WM_EVENT_INITIALIZE));
    ASSERT_EQ(answer.lParam, 0);
}

void ChangeStoreTest::TearDown()
{
    ReleaseWorkThread(false);
    EXPECT_EQ(g_pWorkThread.load(), nullptr) << "the work thread did not end";
    SetMailSwitchFactory(nullptr);
    MailStoreTest::TearDown();
}

Texts ChangeStoreTest::List(const std::string& start, const std::string& end)
{
    {
        const CWorkThreadUse work;
        work->AddListAppointmentWork(MachineTimeOf(start), MachineTimeOf(end), kListSequence);
    }
    const InboxMessage answer = inbox.Next();
    EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_LIST_APPOINTMENT));
    EXPECT_EQ(answer.wParam, kListSequence);
    xml = answer.text;
    return ElementValues(xml, L"subject");
}

void ChangeStoreTest::Publish()
{
    Write();
    Refresh();
}

std::vector<CalendarEvent> ChangeStoreTest::Events()
{
    // A folder of its own, so that it is in nobody's way. Notifications of all tables keep their order.
    const std::string subject = "fence " + std::to_string(++m_fences);
    calendar.Add(subject, "2030-01-01T00:00:00Z", "2030-01-01T01:00:00Z", CStoreCalendar::kRooms);
    Publish();
    std::vector<CalendarEvent> events;
    for (;;)
    {
        const InboxMessage message = inbox.Next();
        if (message.message != WM_EVENT_CALENDAR_UPDATED)
        {
            ADD_FAILURE() << "message " << message.message << " among the changes";
            return events;
        }
        CalendarEvent event{static_cast<ULONG>(message.wParam), message.text};
        if (event.Value(L"subject") == std::wstring(subject.begin(), subject.end()))
        {
            return events;
        }
        events.push_back(std::move(event));
    }
}

Texts KindsOf(const std::vector<CalendarEvent>& events)
{
    Texts kinds;
    for (const CalendarEvent& event : events)
    {
        kinds.push_back(std::to_wstring(event.type) + L" " + event.Value(L"subject"));
    }
    return kinds;
}
