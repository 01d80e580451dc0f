#include <gtest/gtest.h>

#include "ContactXml.h"
#include "EventMessages.h"
#include "WorkFixture.h"

namespace
{

constexpr std::uint64_t kFolder = 4096;

/// One kind of change: the task, what it asks the controller, and what the client is told.
struct Change
{
    const char* name;
    TaskType type;
    const char* call;
    EventMessage message;
    WPARAM word;
};

class ChangeHandlersTest : public WorkThreadTest, public testing::WithParamInterface<Change>
{
protected:
    /// Queues the change, as a sink or PostEvent would.
    void QueueChange(const Change& change)
    {
        WorkTask task = Task(change.type);
        const bool isPosted = change.type == TaskType::PostDelete;
        const bool hasEntry = change.type != TaskType::DeleteAppt &&
                              change.type != TaskType::DeleteContact && !isPosted;
        task.Param1 = isPosted ? 0 : kFolder;
        if (isPosted)
        {
            task.Param2 = Text(WTEXT("KEY"));
        }
        else
        {
            task.Param2 = hasEntry ? Text(WTEXT("E1")) : 0;
            task.Param3 = Text(WTEXT("I1"));
        }
        {
            const CWorkThreadUse work;
            EXPECT_EQ(work->AddTableWork(task), S_OK);
        }
    }

    /// Lets every question be answered with this value, and with content.
    void AnswerAll(ULONG value)
    {
        const auto document = [value](WString& xml) -> ULONG {
            xml = WTEXT("<appointment/>");
            return value;
        };
        const auto contact = [value](ContactRecord& record) -> ULONG {
            record.displayName = WTEXT("Ann");
            return value;
        };
        m_script.getMsgInfo = document;
        m_script.deleteMsgInfo = document;
        m_script.getContactInfo = contact;
        m_script.getContactDetail = contact;
    }
};

std::string ChangeName(const testing::TestParamInfo<Change>& info)
{
    return info.param.name;
}

} // namespace

TEST_P(ChangeHandlersTest, ChangeWorthTellingIsPostedWithItsType)
{
    StartReady();
    AnswerAll(1);

    QueueChange(GetParam());

    const InboxMessage message = m_inbox.Next();
    EXPECT_EQ(message.message, static_cast<UINT>(GetParam().message));
    EXPECT_EQ(message.wParam, GetParam().word);
    if (GetParam().message == WM_EVENT_CALENDAR_UPDATED)
    {
        EXPECT_EQ(message.text, WTEXT("<appointment/>"));
    }
    else
    {
        ContactRecord contact;
        contact.displayName = WTEXT("Ann");
        EXPECT_EQ(message.text, BuildContactInfoXml(contact));
    }
    EXPECT_EQ(m_script.Calls().back(), GetParam().call);
}

TEST_P(ChangeHandlersTest, ChangeNotWorthTellingPostsNothing)
{
    StartReady();
    AnswerAll(0);

    QueueChange(GetParam());
    Flush();

    EXPECT_EQ(m_script.Calls().at(1), GetParam().call);
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}

TEST_P(ChangeHandlersTest, HandlerTracesItsName)
{
    const std::string name =
        GetParam().type == TaskType::PostDelete ? "CallDeleteAppt" : std::string(GetParam().name);
    StartReady();

    QueueChange(GetParam());
    Flush();

    EXPECT_TRUE(m_trace.Has(3, name));
}

INSTANTIATE_TEST_SUITE_P(AllChanges,
                         ChangeHandlersTest,
                         testing::Values(Change{"CallDeleteAppt",
                                                TaskType::DeleteAppt,
                                                "DeleteMsgInfoByTableSink(I1)",
                                                WM_EVENT_CALENDAR_UPDATED,
                                                2},
                                         Change{"CallModifyApp",
                                                TaskType::ModifyAppt,
                                                "GetMsgInfoByTableSink(4096, E1, I1)",
                                                WM_EVENT_CALENDAR_UPDATED,
                                                3},
                                         Change{"CallAddApp",
                                                TaskType::AddAppt,
                                                "GetMsgInfoByTableSink(4096, E1, I1)",
                                                WM_EVENT_CALENDAR_UPDATED,
                                                1},
                                         Change{"PostedDelete",
                                                TaskType::PostDelete,
                                                "DeleteMsgInfoByTableSink(KEY)",
                                                WM_EVENT_CALENDAR_UPDATED,
                                                2},
                                         Change{"CallDeleteContact",
                                                TaskType::DeleteContact,
                                                "GetContactDetail(I1)",
                                                WM_EVENT_CONTACT_UPDATED,
                                                2},
                                         Change{"CallModifyContact",
                                                TaskType::ModifyContact,
                                                "GetContactInfoByTableSink(4096, E1, I1)",
                                                WM_EVENT_CONTACT_UPDATED,
                                                3},
                                         Change{"CallAddContact",
                                                TaskType::AddContact,
                                                "GetContactInfoByTableSink(4096, E1, I1)",
                                                WM_EVENT_CONTACT_UPDATED,
                                                1}),
                         ChangeName);

TEST_F(WorkThreadTest, NotesAnswerIsPostedUnderTheTypeOfItsTask)
{
    CWorkThread::SendModifyMessage(TaskType::PostUpdate, WTEXT("u"));
    CWorkThread::SendModifyMessage(TaskType::PostAdd, WTEXT("a"));
    CWorkThread::SendModifyMessage(TaskType::PostDelete, WTEXT("d"));
    CWorkThread::SendModifyMessage(TaskType::AddAppt, WTEXT("x"));

    const std::vector<InboxMessage> messages = m_inbox.TakeAll();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].wParam, 3U);
    EXPECT_EQ(messages[0].text, WTEXT("u"));
    EXPECT_EQ(messages[1].wParam, 1U);
    EXPECT_EQ(messages[2].wParam, 2U);
    for (const InboxMessage& message : messages)
    {
        EXPECT_EQ(message.message, static_cast<UINT>(WM_EVENT_CALENDAR_UPDATED));
    }
}
