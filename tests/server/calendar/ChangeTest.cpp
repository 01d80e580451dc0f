#include <gtest/gtest.h>

#include "Handle.h"
#include "MailScript.h"
#include "PatternBlob.h"
#include "TestOutlook.h"
#include "WorkThread.h"

namespace
{

using Texts = std::vector<std::wstring>;

class ChangeTest : public CalendarTest
{
protected:
    ~ChangeTest() override { m_message.Reset(); }

    /// Adds the appointment and lists it, so that the data store holds it.
    void AddListed()
    {
        m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
        ListDay();
    }
    void AddListedSeries()
    {
        m_message = AddSeries(1,
                              "2024-03-01T09:00:00",
                              "2024-03-01T10:00:00",
                              pattern::Daily("2024-03-01", 1).Write());
    }
    void ListDay() { List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); }

    ULONG Notify(const WString& entryHex = L"00000001", const WString& instanceHex = L"AA01")
    {
        m_change.clear();
        return m_outlook.GetMsgInfoByTableSink(m_folder.Get(), entryHex, instanceHex, m_change);
    }
    ULONG NotifyDelete(const WString& instanceHex = L"AA01")
    {
        m_change.clear();
        return m_outlook.DeleteMsgInfoByTableSink(instanceHex, m_change);
    }
    Texts Changed(const std::wstring& element) const { return ValuesIn(m_change, element); }

    CComRef<CFakeMessage> m_message;
    WString m_change;
};

TEST_F(ChangeTest, AControllerThatIsNotUpAnswersWithAnEmptyText)
{
    m_outlook.m_hrInit = 1;

    EXPECT_EQ(Notify(), 1U);

    EXPECT_EQ(m_change, L"");
    EXPECT_TRUE(m_trace.Has(2, "GetMsgInfoByTableSink"));
    EXPECT_EQ(m_folder->opened, 0);
}

TEST_F(ChangeTest, AnAddedRowIsReportedAndStored)
{
    m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");

    EXPECT_EQ(Notify(), 1U);

    EXPECT_TRUE(m_change.starts_with(L"<appointment>"));
    EXPECT_EQ(Changed(L"subject"), Texts{L"subject 1"});
    EXPECT_EQ(Changed(L"instanceEntryID"), Texts{L"AA01"});
    EXPECT_EQ(Changed(L"storeEntryID"), Texts{L"5E"});
    EXPECT_EQ(Changed(L"profile"), Texts{L"profile"});
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"00000001", stored));
}

TEST_F(ChangeTest, AControllerThatIsNotUpLeavesTheTextAlone)
{
    m_outlook.m_hrInit = 1;
    WString text = L"before";

    EXPECT_EQ(m_outlook.GetMsgInfoByTableSink(m_folder.Get(), L"00000001", L"AA01", text), 1U);

    EXPECT_EQ(text, L"before");
}

TEST_F(ChangeTest, WithoutAFolderOnlyTheDataStoreIsAsked)
{
    AddListed();

    EXPECT_EQ(m_outlook.GetMsgInfoByTableSink(nullptr, L"00000001", L"AA01", m_change), 0U);

    EXPECT_TRUE(m_trace.Has(2, "lpFolder == NULL"));
    MeetingInfo stored;
    EXPECT_FALSE(MapiDataStore().GetAppointment(L"00000001", stored));
}

TEST_F(ChangeTest, ARowOfAnyClassIsReadOnThisRoad)
{
    m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    m_message->props.SetText(PR_MESSAGE_CLASS_W, L"IPM.Note");

    EXPECT_EQ(Notify(), 1U);
}

TEST_F(ChangeTest, AChangedSubjectIsReported)
{
    AddListed();
    m_message->props.SetText(PR_SUBJECT_W, L"changed");

    EXPECT_EQ(Notify(), 1U);
    EXPECT_EQ(Changed(L"subject"), Texts{L"changed"});
}

TEST_F(ChangeTest, TheSecondOfTwoEqualNotificationsStaysSilent)
{
    AddListed();
    m_message->props.SetText(PR_SUBJECT_W, L"changed");

    EXPECT_EQ(Notify(), 1U);
    EXPECT_EQ(Notify(), 0U);
}

TEST_F(ChangeTest, AChangeOfSecondsIsNone)
{
    AddListed();
    m_message->props.SetTime(NamedTag(PSETID_Appointment, 0x820D, PT_SYSTIME),
                             Moment("2024-03-05T10:00:59"));

    EXPECT_EQ(Notify(), 0U);
    EXPECT_EQ(Changed(L"subject"), Texts{L""});
    EXPECT_EQ(Changed(L"entryID"), Texts{L""});
}

TEST_F(ChangeTest, AnAddressInOtherCaseIsNoChangeButAnAnswerIs)
{
    m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    m_message->recipients = {Recipient(L"Host", L"host@example.org", 3)};
    ListDay();

    m_message->recipients = {Recipient(L"Host", L"HOST@example.org", 3)};
    EXPECT_EQ(Notify(), 0U);
    m_message->recipients[0].SetLong(PR_RECIPIENT_TRACKSTATUS, 3);
    EXPECT_EQ(Notify(), 1U);
}

TEST_F(ChangeTest, AfterTheStoreWasClearedEveryRowCountsAsChanged)
{
    AddListed();
    MapiDataStore().ClearDataStore();

    EXPECT_EQ(Notify(), 1U);
}

TEST_F(ChangeTest, ARowThatCannotBeReadIsForgottenInSilence)
{
    AddListed();
    m_folder->messages.clear();

    EXPECT_EQ(Notify(), 0U);

    MeetingInfo stored;
    EXPECT_FALSE(MapiDataStore().GetAppointment(L"00000001", stored));
}

TEST_F(ChangeTest, AnExceptionOfASeriesWithThePropertyIsReportedAsTheStoredMaster)
{
    AddListedSeries();
    m_message->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"joined");
    ListDay();

    EXPECT_EQ(Notify(), 1U);

    EXPECT_EQ(Changed(L"subject"), Texts{L"subject 1"});
    EXPECT_EQ(Changed(L"startTime"), Texts{L"03/01/2024 09:00:00"});
    EXPECT_TRUE(m_trace.Has(0, "Notify modifications for DT Recurrence meeting."));
}

TEST_F(ChangeTest, TheSameHoldsWhenTheSeriesCannotBeReadAnyMore)
{
    AddListedSeries();
    m_message->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"joined");
    ListDay();
    m_folder->messages.clear();

    EXPECT_EQ(Notify(), 1U);
    EXPECT_EQ(Changed(L"desktoolsproperty"), Texts{L"joined"});
}

TEST_F(ChangeTest, AnExceptionOfASeriesWithoutThePropertyIsNotReported)
{
    AddListedSeries();
    ListDay();

    EXPECT_EQ(Notify(), 0U);
    EXPECT_FALSE(m_trace.Has(0, "Notify modifications for DT Recurrence meeting."));
}

TEST_F(ChangeTest, ThePropertyAloneDoesNotReportASingleAppointment)
{
    m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    m_message->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"joined");
    ListDay();

    EXPECT_EQ(Notify(), 0U);
}

TEST_F(ChangeTest, ANotificationLetsTheChangedInstancesBeReadAfresh)
{
    AddListedSeries();
    ListDay();
    EXPECT_TRUE(MapiDataStore().HasSeries(L"00000001"));

    Notify();

    EXPECT_FALSE(MapiDataStore().HasSeries(L"00000001"));
}

TEST_F(ChangeTest, OutsideAPersonalStoreTheLongTermIdentifierIsTheKey)
{
    m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    m_message->props.SetBlock(PR_ENTRYID, {0x10, 0x20});
    m_folder->messages[{0x10, 0x20}] = m_message;
    m_outlook.m_bNeedRealEntryID = 1;

    EXPECT_EQ(Notify(), 1U);

    EXPECT_EQ(Changed(L"entryID"), Texts{L"1020"});
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"1020", stored));
}

TEST_F(ChangeTest, ADeletedRowIsReportedByWhatWasHeld)
{
    AddListed();
    m_trace.Clear();

    EXPECT_EQ(NotifyDelete(), 1U);

    EXPECT_EQ(Changed(L"subject"), Texts{L"subject 1"});
    EXPECT_EQ(m_trace.Messages(),
              (std::vector<std::string>{"3 instanceID[AA01]",
                                        "3 name=[c3ViamVjdCAx], rectype=[0], meetingstatus=[0] "
                                        "stFirst=[2024/3/5 10:0]"}));
    MeetingInfo stored;
    EXPECT_FALSE(MapiDataStore().GetAppointment(L"00000001", stored));
}

TEST_F(ChangeTest, ADeletedSeriesTakesItsChangedInstancesWithIt)
{
    AddListedSeries();
    ListDay();

    EXPECT_EQ(NotifyDelete(), 1U);

    EXPECT_FALSE(MapiDataStore().HasSeries(L"00000001"));
}

TEST_F(ChangeTest, ARowThatWasNeverListedIsDeletedInSilence)
{
    AddListed();

    EXPECT_EQ(NotifyDelete(L"AA99"), 0U);

    EXPECT_EQ(m_change, L"");
    EXPECT_EQ(m_trace.Lines().back().message, "instanceID[AA99]");
}

TEST_F(ChangeTest, DeletingNeedsNoControllerThatIsUp)
{
    AddListed();
    m_outlook.m_hrInit = 1;

    EXPECT_EQ(NotifyDelete(), 1U);
}

/// The row comes back under another entry identifier.
class ReplacedRowTest : public ChangeTest
{
protected:
    ReplacedRowTest()
    {
        AddListed();
        m_folder->messages[{0, 0, 0, 2}] = m_message;
        m_message->props.SetBlock(PR_ENTRYID, {0, 0, 0, 2});
        m_script.deleteMsgInfo = [this](WString&) {
            const std::string call = m_script.Calls().back();
            if (call == NameOf("BUSY"))
            {
                SetEvent(m_busy.Get());
                WaitForSingleObject(m_goOn.Get(), INFINITE);
            }
            else if (call == NameOf("LAST"))
            {
                SetEvent(m_done.Get());
            }
            return ULONG{0};
        };
        (void)EnsureWorkThread();
    }
    ~ReplacedRowTest() override
    {
        SetEvent(m_goOn.Get());
        ReleaseWorkThread(false);
    }

    static std::string NameOf(const std::string& key)
    {
        return "DeleteMsgInfoByTableSink(" + key + ")";
    }
    static void QueueDeletion(WStringView key)
    {
        WorkTask task;
        task.eTaskType = TaskType::DeleteAppt;
        task.Param3 = TaskText(key);
        const CWorkThreadUse worker;
        worker->AddTableWork(task);
    }
    /// The deletions that the work thread ran until a last one of the test's own.
    std::vector<std::string> Deletions() const;

    CHandle m_busy{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CMailScript m_script;
};

std::vector<std::string> ReplacedRowTest::Deletions() const
{
    QueueDeletion(L"LAST");
    EXPECT_EQ(WaitForSingleObject(m_done.Get(), 60000), WAIT_OBJECT_0);
    std::vector<std::string> deletions;
    for (const std::string& call : m_script.Calls())
    {
        if (call.starts_with("DeleteMsgInfoByTableSink") && call != NameOf("LAST"))
        {
            deletions.push_back(call);
        }
    }
    return deletions;
}

TEST_F(ReplacedRowTest, TheUpdateIsReportedAndADeletionIsQueuedBehindIt)
{
    EXPECT_EQ(Notify(L"00000002"), 1U);

    EXPECT_EQ(Changed(L"entryID"), Texts{L"00000002"});
    EXPECT_EQ(Deletions(), std::vector<std::string>{"DeleteMsgInfoByTableSink(AA01)"});
}

TEST_F(ReplacedRowTest, TheQueuedDeletionGoesWithItsFolder)
{
    QueueDeletion(L"BUSY"); // which the next one waits behind
    ASSERT_EQ(WaitForSingleObject(m_busy.Get(), 60000), WAIT_OBJECT_0);
    Notify(L"00000002");

    {
        const CWorkThreadUse worker;
        worker->DropTableWork(m_folder.Get());
    }
    SetEvent(m_goOn.Get());

    EXPECT_EQ(Deletions(), std::vector<std::string>{NameOf("BUSY")});
}

TEST_F(ReplacedRowTest, TheOldEntryStaysUntilTheDeletionTakesTheFirstOfBoth)
{
    Notify(L"00000002");
    MeetingInfo stored;
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"00000001", stored));
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"00000002", stored));

    EXPECT_EQ(NotifyDelete(), 1U);

    EXPECT_EQ(Changed(L"entryID"), Texts{L"00000001"});
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"00000002", stored));
}

TEST_F(ReplacedRowTest, AKnownKeyQueuesNoDeletion)
{
    Notify(L"00000001");

    EXPECT_TRUE(Deletions().empty());
}

} // namespace
