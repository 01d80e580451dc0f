// What stays on the heaps of the process, the mail library's blocks among them, behind listings, changes and
// whole sessions: as much as before.

#include <cstdint>

#include "CalendarStoreTest.h"
#include "EventMessages.h"
#include "HangingCall.h"
#include "HeapUse.h"
#include "MapiDataStore.h"
#include "WorkThread.h"

namespace
{

constexpr int kRounds = 50;
constexpr const char* kStart = "2026-11-02T00:00:00";
constexpr const char* kEnd = "2026-11-03T00:00:00";

template <class Base>
class MemoryTest : public Base
{
protected:
    void SetUp() override
    {
        Base::SetUp();
        // Guarded buffers are no heap blocks, and their ranges stay reserved for a while.
        Base::Configure(L"Guard", L"0");
    }

    /// Appointments, a series with a changed instance, and people of each kind.
    void Fill(int count)
    {
        for (int number = 10; number < 10 + count; ++number)
        {
            m_last = Base::calendar
                         .Add("Event " + std::to_string(number),
                              "2026-11-02T10:00:00Z",
                              "2026-11-02T11:00:00Z")
                         .id;
        }
        Base::calendar.Item(m_last).recipients = {SmtpRecipient("Host", "host@nordlys.example", 3),
                                                  DirectoryRecipient("Bo", "/o=nordlys/cn=bo")};
        StoreItem changed;
        changed.SetTimes("2026-11-02T12:00:00Z", "2026-11-02T13:00:00Z");
        changed.SetText("PR_BODY_W", "changed");
        changed.recipients = {SmtpRecipient("Guest", "guest@nordlys.example")};
        Base::calendar
            .AddDaily("series",
                      "2026-11-01",
                      "2026-11-30",
                      R"({ "original": "2026-11-02T09:00", "start": "2026-11-02T12:00",
                           "end": "2026-11-02T13:00", "subject": "moved" })")
            .attachments = {EmbeddedMessage(changed)};
    }

    /// Lists the day and lets go of the document.
    void ListDay()
    {
        ASSERT_FALSE(Base::List(kStart, kEnd).empty());
        WString().swap(Base::xml);
    }

    /// What is in use beside the shells of released objects, of which the library keeps a bounded number.
    static HeapUse InUse()
    {
        Base::DropShells();
        return HeapsInUse();
    }

    /// Trace lines are collected in memory; from here on they are not.
    void StopCapture() { m_capture = SetTraceRoute(nullptr); }
    void ResumeCapture() { SetTraceRoute(m_capture); }

    int m_last = 0;

private:
    ITraceRoute* m_capture = nullptr;
};

using ListingMemoryTest = MemoryTest<ListingStoreTest>;

TEST_F(ListingMemoryTest, ListingsFromTheDataStoreLeaveNoBlockBehind)
{
    Fill(100);
    Start();
    StopCapture();
    const auto list = [this] {
        for (int round = 0; round < kRounds; ++round)
        {
            ListDay();
        }
    };
    list();
    const HeapUse before = InUse();

    list();

    EXPECT_EQ(InUse(), before);
    ResumeCapture();
}

TEST_F(ListingMemoryTest, ListingsThatReadEveryMessageAnewLeaveNoBlockBehind)
{
    Fill(100);
    Start();
    StopCapture();
    const auto listAnew = [this] {
        for (int round = 0; round < kRounds; ++round)
        {
            MapiDataStore().ClearDataStore();
            ListDay();
        }
    };
    listAnew();
    const HeapUse before = InUse();

    listAnew();

    EXPECT_EQ(InUse(), before);
    ResumeCapture();
}

class ChangeMemoryTest : public MemoryTest<ChangeStoreTest>
{
protected:
    /// Changes an appointment and hears of it. Texts are as long every time.
    void Change()
    {
        PublishChange();
        Hear();
    }

    /// The same, and what is in use while the work thread stands still inside of it. The thread that
    /// notified may still have a block in hand, hence the least of several.
    HeapUse InUseWithinAChange()
    {
        HeapUse least{SIZE_MAX, SIZE_MAX};
        for (int number = 0; number < 8; ++number)
        {
            const CHangingCall reading(L"reading");
            SetFaultsAtOnce("IMAPIFolder::OpenEntry(message) call 1 hang reading");
            PublishChange();
            EXPECT_TRUE(reading.WaitUntilReached());
            const HeapUse now = InUse();
            least = now.bytes < least.bytes ? now : least;
            reading.LetGo();
            Hear();
        }
        return least;
    }

private:
    void PublishChange()
    {
        m_revision = (m_revision + 1) % 90;
        calendar.Item(m_last).SetText("PR_SUBJECT_W", "Event " + std::to_string(10 + m_revision));
        Publish();
    }
    void Hear() { ASSERT_EQ(inbox.Next().message, static_cast<UINT>(WM_EVENT_CALENDAR_UPDATED)); }

    int m_revision = 0;
};

TEST_F(ChangeMemoryTest, ChangesLeaveNoBlockBehind)
{
    Fill(100);
    Start();
    StopCapture();
    ListDay();
    Change();
    const HeapUse before = InUseWithinAChange();

    for (int round = 0; round < kRounds; ++round)
    {
        Change();
    }

    EXPECT_EQ(InUseWithinAChange(), before);
    ResumeCapture();
}

TEST_F(ChangeMemoryTest, SessionsLeaveNoBlockBehind)
{
    Fill(10);
    StopCapture();
    const auto liveThrough = [this] {
        Start();
        ListDay();
        Change();
        ReleaseWorkThread(true);
        ReleaseWorkThread(false);
        ASSERT_EQ(g_pWorkThread.load(), nullptr);
        MapiDataStore().ClearDataStore();
    };
    liveThrough();
    liveThrough();
    const HeapUse before = InUse();

    for (int round = 0; round < kRounds; ++round)
    {
        liveThrough();
    }

    EXPECT_EQ(InUse(), before);
    ResumeCapture();
}

} // namespace
