// The work thread over the whole controller and the file-backed mail library: bring-up as the client hears
// of it, and once more after a hibernate.

#include "Bstr.h"
#include "EventInbox.h"
#include "EventMessages.h"
#include "MapiCtrl.h"
#include "MapiDataStore.h"
#include "StoreTest.h"
#include "WorkThread.h"

class HibernateTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        SetMailSwitchFactory(&MakeMapiCtrl);
        ASSERT_TRUE(EnsureWorkThread());
    }
    void TearDown() override
    {
        ReleaseWorkThread(false);
        EXPECT_EQ(g_pWorkThread.load(), nullptr);
        SetMailSwitchFactory(nullptr);
        StoreTest::TearDown();
    }

    static void QueueInit(ULONG sequence, ULONG mailType, ULONG initType)
    {
        CWorkThreadUse()->AddInitWork(sequence, mailType, initType);
    }
    /// The status that OnInitialize would bring.
    ULONG Init(ULONG sequence, ULONG mailType, ULONG initType)
    {
        QueueInit(sequence, mailType, initType);
        const InboxMessage answer = inbox.Next();
        EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_INITIALIZE));
        EXPECT_EQ(answer.wParam, sequence);
        return static_cast<ULONG>(answer.lParam);
    }
    /// The document of a listing, behind everything that was queued before it.
    WString List(ULONG sequence)
    {
        CWorkThreadUse()->AddListAppointmentWork({}, {}, sequence);
        const InboxMessage answer = inbox.Next();
        EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_LIST_APPOINTMENT))
            << "nothing else is posted before the listing";
        EXPECT_EQ(answer.wParam, sequence);
        return answer.text;
    }
    static std::wstring ProfileDocument()
    {
        CBstr profile;
        CWorkThreadUse()->GetProfileInfo(profile.Put());
        return profile.IsNull() ? std::wstring() : std::wstring(profile.View());
    }
    /// Waits until the release that a failed bring-up asks for has run.
    void WaitForHibernate() const
    {
        for (int tries = 0; trace.Count("CallReleaseMapi") == 0 && tries < 6000; ++tries)
        {
            Sleep(10);
        }
        ASSERT_EQ(trace.Count("CallReleaseMapi"), 1U);
    }

    CEventInbox inbox;
};

TEST_F(HibernateTest, BringUpAfterAHibernateIsReadyAndMute)
{
    ASSERT_EQ(Init(111, 1, 1), 0U);
    const std::wstring document = ProfileDocument();
    EXPECT_TRUE(document.starts_with(L"<CurrentOLProfile>"));
    EXPECT_EQ(List(112), L"<appointments></appointments>");

    ReleaseWorkThread(true);
    EXPECT_EQ(List(113), L"");
    EXPECT_EQ(CWorkThreadUse()->Status(), 1U);
    EXPECT_EQ(ProfileDocument(), L"");
    ExpectCleanLedger();

    QueueInit(114, 1, 1);
    EXPECT_EQ(List(115), L"<appointments></appointments>") << "no answer to the bring-up came";
    EXPECT_EQ(CWorkThreadUse()->Status(), 0U);
    EXPECT_EQ(ProfileDocument(), document);
    EXPECT_EQ(trace.Count("CMapiCtrl::LoadLib - MAPI dll load success"), 2U);
    EXPECT_EQ(trace.Count("CMapiCtrl::MAPIXInit - MAPIInitialize successful"), 2U);
    EXPECT_EQ(trace.Count("CMapiCtrl.InitAppTbl - sink table successfull"), 4U)
        << "two calendars, each subscribed anew";
}

TEST_F(HibernateTest, TableThatIsBusyAfterAHibernateIsWaitedForAllTheSame)
{
    ASSERT_EQ(Init(111, 1, 1), 0U);
    ReleaseWorkThread(true);
    EXPECT_EQ(List(112), L"");
    SetFaults("IMAPITable::QueryRows(profiles) call 1 fail MAPI_E_BUSY\n"
              "IMAPITable::QueryRows(stores) call 1 fail MAPI_E_BUSY");

    QueueInit(113, 1, 1);
    (void)List(114);

    EXPECT_EQ(CWorkThreadUse()->Status(), 0U);
    EXPECT_EQ(trace.Count("QueryAllRows hResult==MAPI_E_BUSY"), 2U);
}

TEST_F(HibernateTest, FailedBringUpIsFreedAndTheNextOneStartsAnew)
{
    SetFaults("IMAPISession::OpenMsgStore call 1 fail MAPI_E_FAILONEPROVIDER");
    EXPECT_EQ(Init(111, 1, 1), 0x80080004U);
    WaitForHibernate();
    SetFaults("");

    QueueInit(112, 1, 1);
    EXPECT_EQ(List(113), L"<appointments></appointments>");

    EXPECT_EQ(CWorkThreadUse()->Status(), 0U);
    EXPECT_EQ(trace.Count("CMapiCtrl::FreeLib - Free MAPI Library"), 1U);
    EXPECT_TRUE(MapiDataStore().IsReleasing()) << "the failure has silenced the server";
}

TEST_F(HibernateTest, BringUpOfANewWorkThreadIsHeardAgain)
{
    ASSERT_EQ(Init(111, 1, 1), 0U);
    ReleaseWorkThread(true);
    ReleaseWorkThread(false);
    ASSERT_EQ(g_pWorkThread.load(), nullptr);
    ExpectCleanLedger();

    ASSERT_TRUE(EnsureWorkThread());
    EXPECT_EQ(Init(112, 1, 2), 0U);

    EXPECT_FALSE(MapiDataStore().IsReleasing());
    EXPECT_EQ(trace.Count("CMapiCtrl.InitContactTbl - sink table successfull"), 2U);
}

TEST_F(HibernateTest, SecondInitOfATypeIsAnsweredAndRunsNothing)
{
    EXPECT_EQ(Init(111, 1, 1), 0U);
    EXPECT_EQ(Init(112, 1, 1), 0U);
    EXPECT_EQ(Init(113, 1, 2), 0U);

    EXPECT_EQ(trace.Count("initType[1]"), 1U);
    EXPECT_EQ(trace.Count("initType[2]"), 1U);
    EXPECT_EQ(trace.Count("CMapiCtrl::MAPIXInit - MAPIInitialize successful"), 1U);
}

TEST_F(HibernateTest, NotesIsAnsweredWithItsFailure)
{
    EXPECT_EQ(Init(111, 16, 1), 0x80004005U);
}

TEST_F(HibernateTest, UnknownMailTypeIsAnsweredWithOne)
{
    EXPECT_EQ(Init(111, 5, 1), 1U);
}
