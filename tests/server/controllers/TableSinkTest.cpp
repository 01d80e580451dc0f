// From a notification to the task that the work thread runs.

#include <algorithm>
#include <thread>

#include "ControllerTest.h"
#include "FailingNew.h"
#include "MAPITableAdviseSink.h"
#include "RecordingSwitch.h"
#include "RowEvent.h"
#include "WorkThread.h"

class TableSinkTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        g_asked = &asked;
        SetMailSwitchFactory(&MakeRecordingSwitch);
        folder = MakeFakeFolder(L"Calendar");
        calendar = CTableSink(new CMAPITableAdviseSink(folder.Get(), 5));
        contacts = CTableSink(new CMAPITableAdviseSink(folder.Get(), 6));
    }
    void TearDown() override
    {
        calendar.Reset();
        contacts.Reset();
        folder.Reset();
        ReleaseWorkThread(false);
        SetMailSwitchFactory(nullptr);
        g_asked = nullptr;
        ControllerTest::TearDown();
    }

    Asked asked;
    CComRef<IMAPIFolder> folder;
    CTableSink calendar;
    CTableSink contacts;
};

TEST_F(TableSinkTest, CalendarEventsBecomeTasksOfTheCalendar)
{
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1, 0xAB}});
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {{0xE2}});
    CRowEvent deleted(TABLE_ROW_DELETED, {0x3C}, {{0xE3}});
    NOTIFICATION events[] = {added.Get(), modified.Get(), deleted.Get()};

    EXPECT_EQ(calendar.Get()->OnNotify(3, events), 0U);

    EXPECT_EQ(asked.WaitFor(3),
              (Strings{"appointment E1AB 1A", "appointment E2 2B", "appointment deleted  3C"}));
    EXPECT_EQ(asked.folders[0], folder.Get());
}

TEST_F(TableSinkTest, EventsAreTracedInTheirOrder)
{
    EnsureWorkThread();
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {{0xE2}});
    CRowEvent deleted(TABLE_ROW_DELETED, {0x3C}, {});
    NOTIFICATION events[] = {added.Get(), modified.Get(), deleted.Get()};

    calendar.Get()->OnNotify(3, events);

    Strings lines = Lines();
    std::erase_if(lines, [](const std::string& line) {
        return line.find("OnNotify") == std::string::npos &&
               line.find("PushPendingWork") == std::string::npos;
    });
    EXPECT_EQ(lines,
              (Strings{"3 CMAPITableAdviseSink::OnNotify, cNotify number[3]",
                       "2 CMAPITableAdviseSink::OnNotify TABLE_ROW_ADDED",
                       "3 PushPendingWork tasktype[12]",
                       "2 CMAPITableAdviseSink::OnNotify TABLE_ROW_MODIFIED",
                       "3 PushPendingWork tasktype[11]",
                       "2 CMAPITableAdviseSink::OnNotify TABLE_ROW_DELETED",
                       "3 PushPendingWork tasktype[10]"}));
    asked.WaitFor(3);
}

TEST_F(TableSinkTest, ContactEventsBecomeTasksOfTheContacts)
{
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {{0xE2}});
    CRowEvent deleted(TABLE_ROW_DELETED, {0x3C}, {});
    NOTIFICATION events[] = {added.Get(), modified.Get(), deleted.Get()};

    EXPECT_EQ(contacts.Get()->OnNotify(3, events), 0U);

    EXPECT_EQ(asked.WaitFor(3), (Strings{"contact E1 1A", "contact E2 2B", "contact deleted  3C"}));
    EXPECT_EQ(trace.Count("PushPendingWork tasktype[18]"), 1U);
    EXPECT_EQ(trace.Count("PushPendingWork tasktype[17]"), 1U);
    EXPECT_EQ(trace.Count("PushPendingWork tasktype[16]"), 1U);
}

TEST_F(TableSinkTest, LastIdentifierOfARowWins)
{
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {{0xE1}, {0xE2}});

    calendar.Get()->OnNotify(1, &modified.Get());

    EXPECT_EQ(asked.WaitFor(1), (Strings{"appointment E2 2B"}));
}

TEST_F(TableSinkTest, RowWithoutAnIdentifierGivesAnEmptyOne)
{
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {});

    calendar.Get()->OnNotify(1, &modified.Get());

    EXPECT_EQ(asked.WaitFor(1), (Strings{"appointment  2B"}));
}

TEST_F(TableSinkTest, MissingRowIsTracedAndTheNextOneFollows)
{
    CRowEvent broken(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    broken.Get().info.tab.row.lpProps = nullptr;
    CRowEvent added(TABLE_ROW_ADDED, {0x2B}, {{0xE2}});
    NOTIFICATION events[] = {broken.Get(), added.Get()};

    EXPECT_EQ(calendar.Get()->OnNotify(2, events), 0U);

    EXPECT_EQ(asked.WaitFor(1), (Strings{"appointment E2 2B"}));
    EXPECT_TRUE(trace.Has(1, "lpRow == NULL"));
}

TEST_F(TableSinkTest, ValuesOfAnotherTypeAreEmptyTexts)
{
    CRowEvent modified(TABLE_ROW_MODIFIED, {0x2B}, {{0xE1}});
    TABLE_NOTIFICATION& table = modified.Get().info.tab;
    table.propIndex.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(PR_INSTANCE_KEY));
    table.row.lpProps[0].ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(PR_ENTRYID));

    EXPECT_EQ(calendar.Get()->OnNotify(1, &modified.Get()), 0U);

    EXPECT_EQ(asked.WaitFor(1), (Strings{"appointment  "}));
}

TEST_F(TableSinkTest, WantOfMemoryIsAnsweredAndThrowsNothingAtTheProvider)
{
    EnsureWorkThread();
    CRowEvent large(TABLE_ROW_ADDED, BinaryBlock(kFailingBytes, 0x1A), {{0xE1}});
    CRowEvent small(TABLE_ROW_ADDED, {0x2B}, {{0xE2}});

    {
        const CFailingNew noMemory;
        EXPECT_EQ(calendar.Get()->OnNotify(1, &large.Get()), 0x8007000EU);
    }
    EXPECT_EQ(calendar.Get()->OnNotify(1, &small.Get()), 0U);

    EXPECT_EQ(asked.WaitFor(1), (Strings{"appointment E2 2B"}));
}

TEST_F(TableSinkTest, OtherEventsAreIgnored)
{
    CRowEvent changed(TABLE_CHANGED, {0x1A}, {{0xE1}});
    CRowEvent reload(TABLE_RELOAD, {0x1A}, {{0xE1}});
    CRowEvent otherType(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    otherType.Get().ulEventType = fnevObjectModified;
    NOTIFICATION events[] = {changed.Get(), reload.Get(), otherType.Get()};

    EXPECT_EQ(calendar.Get()->OnNotify(3, events), 0U);

    EXPECT_EQ(Lines(), (Strings{"3 CMAPITableAdviseSink::OnNotify, cNotify number[3]"}));
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
}

TEST_F(TableSinkTest, SinkOfAnotherKindIgnoresEverything)
{
    CTableSink other(new CMAPITableAdviseSink(folder.Get(), 11));
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});

    EXPECT_EQ(other.Get()->OnNotify(1, &added.Get()), 0U);

    EXPECT_EQ(Lines(), (Strings{"3 CMAPITableAdviseSink::OnNotify, cNotify number[1]"}));
}

TEST_F(TableSinkTest, NoNotificationsAtAllIsAnError)
{
    EXPECT_EQ(calendar.Get()->OnNotify(1, nullptr), 0x80004005U);
    EXPECT_EQ(Lines(), Strings{});

    NOTIFICATION unused{};
    EXPECT_EQ(calendar.Get()->OnNotify(0, &unused), 0U);
    EXPECT_EQ(Lines(), (Strings{"3 CMAPITableAdviseSink::OnNotify, cNotify number[0]"}));
}

TEST_F(TableSinkTest, InterfacesAreAnsweredWithAReference)
{
    void* object = nullptr;
    EXPECT_EQ(calendar.Get()->QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(object, calendar.Get());
    EXPECT_EQ(calendar.Get()->QueryInterface(IID_IMAPIAdviseSink, &object), S_OK);
    EXPECT_EQ(calendar.Get()->QueryInterface(IID_IMAPITable, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(calendar.Get()->QueryInterface(IID_IUnknown, nullptr), E_INVALIDARG);

    EXPECT_EQ(calendar.Get()->Release(), 2U);
    EXPECT_EQ(calendar.Get()->Release(), 1U);
    EXPECT_EQ(Lines(),
              (Strings{"3 CMAPITableAdviseSink.m_cRef increased to 2.",
                       "3 CMAPITableAdviseSink.m_cRef increased to 3.",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 2.",
                       "3 CMAPITableAdviseSink.m_cRef decreased to 1."}));
}

TEST_F(TableSinkTest, DestroyingLetsTheFolderGoWhateverTheCountAndWithoutALine)
{
    CMAPITableAdviseSink* const late = contacts.Get();
    late->AddRef(); // a provider that keeps its reference too long
    trace.Clear();

    calendar.Reset();
    contacts.Reset();
    folder.Reset();

    EXPECT_EQ(mapi.liveObjects, 0);
    EXPECT_EQ(Lines(), Strings{});
    CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
    EXPECT_EQ(late->OnNotify(1, &added.Get()), 0U);
    EXPECT_EQ(g_pWorkThread.load(), nullptr);
    EXPECT_EQ(late->Release(), 0U);
}

TEST_F(TableSinkTest, NotificationsFromManyThreadsAreAllQueuedAndNoneAfterTheEnd)
{
    constexpr int kThreads = 4;
    constexpr int kEvents = 50;
    EnsureWorkThread();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back([&] {
            CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
            for (int event = 0; event < kEvents; ++event)
            {
                calendar.Get()->OnNotify(1, &added.Get());
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(asked.WaitFor(kThreads * kEvents).size(), std::size_t{kThreads * kEvents});
}

TEST_F(TableSinkTest, EndWaitsForANotificationUnderWay)
{
    EnsureWorkThread();
    CMAPITableAdviseSink* const sink = calendar.Get();
    sink->AddRef();
    std::thread notifier([&] {
        CRowEvent added(TABLE_ROW_ADDED, {0x1A}, {{0xE1}});
        for (int event = 0; event < 100; ++event)
        {
            sink->OnNotify(1, &added.Get());
        }
    });

    asked.WaitFor(1);
    calendar.Reset();

    const std::size_t queued = trace.Count("PushPendingWork tasktype[12]");
    notifier.join();
    EXPECT_EQ(trace.Count("PushPendingWork tasktype[12]"), queued);
    sink->Release();
}
