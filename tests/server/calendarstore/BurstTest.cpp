// Many changes at once: clients hear what the rules allow, no more and no less.

#include <algorithm>

#include "CalendarStoreTest.h"
#include "EventMessages.h"
#include "HangingCall.h"
#include "MapiDataStore.h"
#include "WorkThread.h"

namespace
{

constexpr int kMany = 1000;

class BurstTest : public ChangeStoreTest
{
protected:
    /// `count` listed appointments "Event N"; their ids.
    std::vector<int> StartWith(int count)
    {
        std::vector<int> ids;
        for (int number = 0; number < count; ++number)
        {
            ids.push_back(calendar
                              .Add("Event " + std::to_string(number),
                                   "2026-11-02T10:00:00Z",
                                   "2026-11-02T11:00:00Z")
                              .id);
        }
        Start();
        EXPECT_EQ(ListDay().size(), static_cast<std::size_t>(count));
        return ids;
    }
    Texts ListDay() { return List("2026-11-02T00:00:00", "2026-11-03T00:00:00"); }
    static Texts Sorted(Texts texts)
    {
        std::sort(texts.begin(), texts.end());
        return texts;
    }
};

TEST_F(BurstTest, AThousandChangesOfRowsTellEachRealOneOnce)
{
    const std::vector<int> ids = StartWith(kMany);
    Texts expected;
    for (int number = 0; number < kMany; ++number)
    {
        const int id = ids[static_cast<std::size_t>(number)];
        const std::string text = std::to_string(number);
        const std::wstring wide = std::to_wstring(number);
        switch (number % 5)
        {
        case 0:
            calendar.Item(id).SetText("PR_SUBJECT_W", "Moved " + text);
            expected.push_back(L"3 Moved " + wide);
            break;
        case 1:
            calendar.Item(id).SetTimes("2026-11-02T10:00:59Z", "2026-11-02T11:00:59Z");
            break;
        case 2:
            calendar.Remove(id);
            expected.push_back(L"2 Event " + wide);
            break;
        case 3:
            calendar.Item(id).Set("PR_IMPORTANCE", "2");
            break;
        default:
            calendar.Add("New " + text, "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z");
            expected.push_back(L"1 New " + wide);
            break;
        }
    }

    const std::vector<CalendarEvent> events = PublishAndHear();

    EXPECT_EQ(Sorted(KindsOf(events)), Sorted(expected));
    EXPECT_EQ(trace.Count("CMAPITableAdviseSink::OnNotify TABLE_ROW_MODIFIED"), 600U);
}

TEST_F(BurstTest, AThousandChangesOfSecondsTellNothing)
{
    for (const int id : StartWith(kMany))
    {
        calendar.Item(id).SetTimes("2026-11-02T10:00:20Z", "2026-11-02T11:00:40Z");
    }

    EXPECT_EQ(KindsOf(PublishAndHear()), Texts{});
}

TEST_F(BurstTest, AThousandChangesOfOneRowEachReadBeforeTheNextAreAThousandEvents)
{
    const int id = StartWith(1).front();
    for (int number = 0; number < kMany; ++number)
    {
        const std::string subject = "Step " + std::to_string(number);
        calendar.Item(id).SetText("PR_SUBJECT_W", subject);
        Publish();

        const InboxMessage told = inbox.Next();

        ASSERT_EQ(told.message, static_cast<UINT>(WM_EVENT_CALENDAR_UPDATED));
        ASSERT_EQ(told.wParam, static_cast<WPARAM>(ChangeModified));
        ASSERT_EQ(ElementValues(told.text, L"subject"),
                  Texts{std::wstring(subject.begin(), subject.end())});
    }
    EXPECT_EQ(KindsOf(Events()), Texts{});
}

TEST_F(BurstTest, ChangesOfOneRowThatWaitTogetherAreOneEventWithItsLastState)
{
    const int id = StartWith(1).front();
    const CHangingCall reading(L"reading");
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 1 hang reading");
    for (int number = 0; number < 200; ++number)
    {
        calendar.Item(id).SetText("PR_SUBJECT_W", "Step " + std::to_string(number));
        Publish();
        if (number == 0)
        {
            ASSERT_TRUE(reading.WaitUntilReached());
        }
    }
    reading.LetGo();

    EXPECT_EQ(KindsOf(Events()), Texts{L"3 Step 199"});

    EXPECT_EQ(trace.Count("CMAPITableAdviseSink::OnNotify TABLE_ROW_MODIFIED"), 200U);
}

TEST_F(BurstTest, ARowThatComesChangesAndGoesWhileItWaitsIsForgottenAgain)
{
    const int id = StartWith(1).front();
    const CHangingCall reading(L"reading");
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 1 hang reading");
    calendar.Item(id).SetText("PR_SUBJECT_W", "held up");
    Publish();
    ASSERT_TRUE(reading.WaitUntilReached());
    const int brief = calendar.Add("brief", "2026-11-02T10:00:00Z", "2026-11-02T11:00:00Z").id;
    Publish();
    calendar.Item(brief).SetText("PR_SUBJECT_W", "briefer");
    Publish();
    calendar.Remove(brief);
    Publish();
    reading.LetGo();

    // By the time that its tasks run there is nothing to read, and so nothing to delete.
    EXPECT_EQ(KindsOf(Events()), Texts{L"3 held up"});
}

TEST_F(BurstTest, AReleaseWhileAListingRunsAnswersWithWhatWasGatheredAndLeavesNothing)
{
    const std::vector<int> ids = StartWith(20);
    MapiDataStore().ClearDataStore();
    const CHangingCall middle(L"middle");
    SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 5 hang middle");
    {
        const CWorkThreadUse work;
        work->AddListAppointmentWork(
            MachineTimeOf("2026-11-02T00:00:00"), MachineTimeOf("2026-11-03T00:00:00"), 222);
    }
    ASSERT_TRUE(middle.WaitUntilReached());
    calendar.Item(ids[0]).SetText("PR_SUBJECT_W", "too late");
    Publish();

    ReleaseWorkThread(true);
    middle.LetGo();

    // The window of the server would drop it: the releasing flag is set.
    const InboxMessage answer = inbox.Next();
    EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_LIST_APPOINTMENT));
    EXPECT_EQ(ElementValues(answer.text, L"subject"),
              (Texts{L"Event 0", L"Event 1", L"Event 2", L"Event 3", L"Event 4"}));
    EXPECT_TRUE(trace.Has(2, "quit this task for release"));
}

} // namespace
