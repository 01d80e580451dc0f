// From a change in the store to the task of the work thread, through the library's own thread.

#include "RecordingSwitch.h"
#include "StoreTest.h"
#include "StoreText.h"
#include "WorkThread.h"

class NotificationTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        g_asked = &asked;
        SetMailSwitchFactory(&MakeRecordingSwitch);
        ASSERT_TRUE(EnsureWorkThread());
        ASSERT_EQ(outlook.Init(1), 0U);
        ASSERT_EQ(outlook.Init(2), 0U);
    }
    void TearDown() override
    {
        outlook.FreeLib();
        ReleaseWorkThread(false);
        SetMailSwitchFactory(nullptr);
        g_asked = nullptr;
        StoreTest::TearDown();
    }

    std::string WithMessage(const std::string& message) const
    {
        return DocumentWith("\"messages\": [\n        {",
                            "\"messages\": [\n        " + message + ",\n        {");
    }
    /// The document as a writer would leave it: one revision on.
    static void Change(std::string text)
    {
        const std::string revision = "\"revision\": 1";
        text.replace(text.find(revision), revision.size(), "\"revision\": 2");
        WriteDocument(text);
        Refresh();
    }

    Asked asked;
    CBroughtUp outlook;
};

TEST_F(NotificationTest, NewAppointmentBecomesATaskOfItsFolder)
{
    Change(WithMessage(R"({ "id": 21, "folder": 10, "class": "IPM.Appointment",
                            "properties": { "PR_SUBJECT_W": "Stand-up" } })"));

    const std::vector<std::string> operations = asked.WaitFor(1);

    EXPECT_TRUE(operations[0].starts_with("appointment ")) << operations[0];
    EXPECT_EQ(asked.folders[0], outlook.m_CalendarSinks[1].folder.Get());
    EXPECT_TRUE(trace.Has(2, "CMAPITableAdviseSink::OnNotify TABLE_ROW_ADDED"));
    EXPECT_TRUE(trace.Has(3, "PushPendingWork tasktype[12]"));
}

TEST_F(NotificationTest, RemovedAppointmentBecomesADeleteTask)
{
    std::string text = kStoreDocument;
    const std::size_t begin = text.find("{ \"id\": 20,");
    text.erase(begin, text.find("\"PidLidRecurring\": false } }") + 28 - begin);
    Change(text);

    const std::vector<std::string> operations = asked.WaitFor(1);

    EXPECT_TRUE(operations[0].starts_with("appointment deleted ")) << operations[0];
    EXPECT_TRUE(trace.Has(3, "PushPendingWork tasktype[10]"));
}

TEST_F(NotificationTest, ChangedAppointmentBecomesAModifyTask)
{
    Change(DocumentWith("\"Review\"", "\"Review, moved\""));

    const std::vector<std::string> operations = asked.WaitFor(1);

    EXPECT_TRUE(operations[0].starts_with("appointment ")) << operations[0];
    EXPECT_TRUE(trace.Has(3, "PushPendingWork tasktype[11]"));
}

TEST_F(NotificationTest, NewContactBecomesAContactTask)
{
    Change(WithMessage(R"({ "id": 22, "folder": 14, "class": "IPM.Contact",
                            "properties": { "PR_DISPLAY_NAME_W": "Bo" } })"));

    const std::vector<std::string> operations = asked.WaitFor(1);

    EXPECT_TRUE(operations[0].starts_with("contact ")) << operations[0];
    EXPECT_TRUE(trace.Has(3, "PushPendingWork tasktype[18]"));
}

TEST_F(NotificationTest, AfterTheWayDownNoChangeIsHeard)
{
    outlook.FreeLib();
    trace.Clear();

    Change(
        WithMessage(R"({ "id": 21, "folder": 9, "class": "IPM.Appointment", "properties": {} })"));

    EXPECT_EQ(trace.Messages(), Strings{});
}
