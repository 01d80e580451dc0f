#include <gtest/gtest.h>

#include "ContactXml.h"
#include "EventMessages.h"
#include "MailXml.h"
#include "ResolveNameXml.h"
#include "WorkFixture.h"

namespace
{

class WorkHandlersTest : public WorkThreadTest
{
protected:
    /// Runs one task and gives the message that it posted.
    InboxMessage Run(const WorkTask& task)
    {
        Queue(task);
        return m_inbox.Next();
    }

    /// The one call that the script saw beside Init.
    std::string LastCall() { return m_script.Calls().back(); }
};

ContactRecord Contact(WStringView name)
{
    ContactRecord contact;
    contact.displayName = name;
    contact.imAddress = WTEXT("im:") + WString(name);
    return contact;
}

void ExpectMessage(const InboxMessage& message, EventMessage number, WPARAM word, WStringView text)
{
    EXPECT_EQ(message.message, static_cast<UINT>(number));
    EXPECT_EQ(message.wParam, word);
    EXPECT_EQ(message.text, text);
}

} // namespace

TEST_F(WorkHandlersTest, TaskZeroBringsTheMailSystemUpOnTheWorkThreadAndPostsTheStatus)
{
    Start();
    {
        const CWorkThreadUse work;
        EXPECT_EQ(work->AddInitWork(111, 1, 2), S_OK);
    }

    const InboxMessage answer = m_inbox.Next();

    EXPECT_EQ(answer.message, static_cast<UINT>(WM_EVENT_INITIALIZE));
    EXPECT_EQ(answer.wParam, 111U);
    EXPECT_EQ(answer.lParam, 0);
    ASSERT_EQ(m_script.Calls(), (std::vector<std::string>{"Init(1, 2)"}));
    EXPECT_NE(m_script.ThreadOfCall(0), GetCurrentThreadId());
    EXPECT_TRUE(m_trace.Has(3, "Status = [0x1]"));
    EXPECT_TRUE(m_trace.Has(3, "Post message"));
}

TEST_F(WorkHandlersTest, TaskOneSendsAMailAndPostsNothing)
{
    StartReady();
    WorkTask task = Task(TaskType::SendMail, 112);
    task.Param1 = Text(WTEXT("subject"));
    task.Param2 = Text(WTEXT("a@b.example;"));
    task.Param3 = Text(WTEXT("body"));

    Queue(task);
    Flush();

    EXPECT_EQ(m_script.Calls().at(1), "SendMail(subject, a@b.example;, body, 0)");
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}

TEST_F(WorkHandlersTest, TaskTwoResolvesANameAndPostsTheDocument)
{
    StartReady();
    m_script.getSmtp = [](WString& smtp) -> ULONG {
        smtp = WTEXT("ann@b.example");
        return 1;
    };
    WorkTask task = Task(TaskType::GetSmtpAddress, 113);
    task.Param1 = Text(WTEXT("Ann"));

    const InboxMessage message = Run(task);

    ExpectMessage(message,
                  WM_EVENT_RESOLVE_NAME,
                  113,
                  BuildResolveNameXml(true, WTEXT("Ann"), WTEXT("ann@b.example")));
    EXPECT_EQ(LastCall(), "GetSMTPFromDispName(Ann)");
}

TEST_F(WorkHandlersTest, TaskTwoReportsANameThatIsNotFound)
{
    StartReady();
    WorkTask task = Task(TaskType::GetSmtpAddress, 114);
    task.Param1 = Text(WTEXT("Nobody"));

    ExpectMessage(
        Run(task), WM_EVENT_RESOLVE_NAME, 114, BuildResolveNameXml(false, WTEXT("Nobody"), {}));
}

TEST_F(WorkHandlersTest, TaskThreeListsAppointmentsOfTheWindow)
{
    StartReady();
    m_script.listAppointment = [](WString& xml) -> ULONG {
        xml = WTEXT("<appointments></appointments>");
        return 0;
    };
    {
        const CWorkThreadUse work;
        EXPECT_EQ(work->AddListAppointmentWork({7, 1}, {9, 2}, 115), S_OK);
    }

    ExpectMessage(
        m_inbox.Next(), WM_EVENT_LIST_APPOINTMENT, 115, WTEXT("<appointments></appointments>"));
    EXPECT_EQ(LastCall(), "ListAppointment(4294967303, 8589934601)");
}

TEST_F(WorkHandlersTest, TaskFourExpandsOneSeries)
{
    StartReady();
    m_script.listRecurrentInstance = [](WString& xml) -> ULONG {
        xml = WTEXT("<series/>");
        return 0;
    };
    WorkTask task = Task(TaskType::GetRecurrentInstances, 116);
    task.Param1 = TaskTime({5, 0});
    task.Param2 = TaskTime({6, 0});
    task.Param3 = Text(WTEXT("00AB"));

    ExpectMessage(Run(task), WM_EVENT_LIST_RECURRENT, 116, WTEXT("<series/>"));
    EXPECT_EQ(LastCall(), "ListRecurrentInstance(00AB, 5, 6)");
}

TEST_F(WorkHandlersTest, TaskFiveListsRecentMails)
{
    StartReady();
    MailRecord mail;
    mail.subject = WTEXT("news");
    m_script.listRecentEmail = [mail](std::vector<MailRecord>& mails) -> ULONG {
        mails.push_back(mail);
        return 0;
    };
    WorkTask task = Task(TaskType::GetRecentEmail, 117);
    task.Param1 = TaskHalves(20, 3);
    task.Param2 = Text(WTEXT("ann@b.example"));

    ExpectMessage(Run(task), WM_EVENT_RECENT_EMAILS, 117, BuildMailsXml({&mail, 1}));
    EXPECT_EQ(LastCall(), "ListRecentEmail(20, ann@b.example, 3)");
}

TEST_F(WorkHandlersTest, TaskSixReadsOneAppointment)
{
    StartReady();
    m_script.getAppointment = [](WString& xml) -> ULONG {
        xml = WTEXT("<appointment/>");
        return 0;
    };
    WorkTask task = Task(TaskType::GetAppointment, 118);
    task.Param1 = Text(WTEXT("00CD"));

    ExpectMessage(Run(task), WM_EVENT_GET_APPOINTMENT, 118, WTEXT("<appointment/>"));
    EXPECT_EQ(LastCall(), "GetAppointment(00CD)");
}

TEST_F(WorkHandlersTest, TaskSevenDropsItsTextAndPostsNothing)
{
    StartReady();
    WorkTask task = Task(TaskType::DroppedText, 119);
    task.Param1 = Text(WTEXT("for nobody"));

    Queue(task);
    Flush();

    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)", "SearchContacts(flush, 0)"}));
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}

TEST_F(WorkHandlersTest, TasksFourteenAndFifteenOnlyTrace)
{
    StartReady();
    for (const TaskType type : {TaskType::PostUpdate, TaskType::PostAdd})
    {
        WorkTask task = Task(type);
        task.Param2 = Text(WTEXT("key"));
        Queue(task);
    }
    Flush();

    EXPECT_EQ(m_trace.Count("CallModifyNoteApp"), 2U);
    EXPECT_TRUE(m_trace.Has(3, "CallModifyNoteApp"));
    EXPECT_EQ(m_script.Calls(),
              (std::vector<std::string>{"Init(1, 1)", "SearchContacts(flush, 0)"}));
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}

TEST_F(WorkHandlersTest, TaskNineteenListsPersonalContacts)
{
    StartReady();
    const ContactRecord contact = Contact(WTEXT("Ann"));
    m_script.getPersonalContact = [contact](std::vector<ContactRecord>& contacts) -> ULONG {
        contacts.push_back(contact);
        return 1;
    };

    ExpectMessage(Run(Task(TaskType::GetPersonalContact, 120)),
                  WM_EVENT_PERSONAL_CONTACT,
                  120,
                  BuildContactsXml({&contact, 1}));
}

TEST_F(WorkHandlersTest, TaskTwentySearchesContactsUpToTheMaximum)
{
    StartReady();
    const ContactRecord contact = Contact(WTEXT("Ann"));
    m_script.searchContacts = [contact](std::vector<ContactRecord>& contacts) -> ULONG {
        contacts.push_back(contact);
        return 0;
    };
    WorkTask task = Task(TaskType::SearchForContacts, 121);
    task.Param1 = Text(WTEXT("ann"));
    task.Param2 = 0x7700000005ULL;

    ExpectMessage(Run(task), WM_EVENT_SEARCH_CONTACTS, 121, BuildContactsImXml({&contact, 1}));
    EXPECT_EQ(LastCall(), "SearchContacts(ann, 5)");
}

TEST_F(WorkHandlersTest, TaskTwentyOneResolvesByUriWithKindOne)
{
    StartReady();
    const ContactRecord contact = Contact(WTEXT("Ann"));
    m_script.resolveContacts = [contact](std::vector<ContactRecord>& contacts) -> ULONG {
        contacts.push_back(contact);
        return 0;
    };
    WorkTask task = Task(TaskType::ResolveByUri, 122);
    task.Param1 = Text(WTEXT("sip:ann"));

    ExpectMessage(Run(task), WM_EVENT_RESOLVE_BY_URI, 122, BuildContactsImXml({&contact, 1}));
    EXPECT_EQ(LastCall(), "ResolveContacts(sip:ann, 1)");
}

TEST_F(WorkHandlersTest, TaskTwentyTwoResolvesByPhoneNumberWithKindTwo)
{
    StartReady();
    WorkTask task = Task(TaskType::ResolveByPhoneNumber, 123);
    task.Param1 = Text(WTEXT("0441"));

    ExpectMessage(Run(task), WM_EVENT_RESOLVE_BY_PHONE, 123, WTEXT("<Contacts></Contacts>"));
    EXPECT_EQ(LastCall(), "ResolveContacts(0441, 2)");
}

TEST_F(WorkHandlersTest, RequestsBeforeTheBringUpAnswerWithEmptyDocuments)
{
    Start();
    const auto ask = [this](TaskType type, std::uint64_t first = 0) {
        WorkTask task = Task(type, 7);
        task.Param1 = first;
        return Run(task).text;
    };

    EXPECT_EQ(ask(TaskType::GetAppointments), WString());
    EXPECT_EQ(ask(TaskType::GetRecurrentInstances), WString());
    EXPECT_EQ(ask(TaskType::GetSmtpAddress, Text(WTEXT("Ann"))),
              BuildResolveNameXml(false, WTEXT("Ann"), {}));
    EXPECT_TRUE(m_script.Calls().empty()) << "these ask nobody before the status is 0";

    // These reach the controller whatever the status.
    EXPECT_EQ(ask(TaskType::GetAppointment), WString());
    EXPECT_EQ(ask(TaskType::GetRecentEmail), WTEXT("<Mails></Mails>"));
    EXPECT_EQ(ask(TaskType::GetPersonalContact), BuildContactsXml({}));
    EXPECT_EQ(ask(TaskType::SearchForContacts), WTEXT("<Contacts></Contacts>"));
    EXPECT_EQ(ask(TaskType::ResolveByUri), WTEXT("<Contacts></Contacts>"));
    EXPECT_EQ(m_script.Calls().size(), 5U);
}

TEST_F(WorkHandlersTest, MailIsNotSentBeforeTheBringUp)
{
    Start();
    Queue(TaskType::SendMail);
    Flush();

    EXPECT_EQ(m_script.Calls(), (std::vector<std::string>{"SearchContacts(flush, 0)"}));
}

TEST_F(WorkHandlersTest, WithoutAControllerRequestsAnswerWithEmptyDocumentsAndChangesAreSilent)
{
    const MailSwitchFactory scripted = SetMailSwitchFactory(nullptr);
    Start();
    SetMailSwitchFactory(scripted);
    const auto ask = [this](TaskType type) { return Run(Task(type, 7)).text; };

    EXPECT_TRUE(m_trace.Has(0, "new CMapiCtrl failed"));
    for (const TaskType type : {TaskType::DeleteAppt,
                                TaskType::ModifyAppt,
                                TaskType::AddAppt,
                                TaskType::PostDelete,
                                TaskType::DeleteContact,
                                TaskType::ModifyContact,
                                TaskType::AddContact,
                                TaskType::SendMail})
    {
        Queue(type);
    }
    EXPECT_EQ(ask(TaskType::GetAppointments), WString());
    EXPECT_EQ(ask(TaskType::GetRecurrentInstances), WString());
    EXPECT_EQ(ask(TaskType::GetAppointment), WString());
    EXPECT_EQ(ask(TaskType::GetRecentEmail), WTEXT("<Mails></Mails>"));
    EXPECT_EQ(ask(TaskType::GetPersonalContact), BuildContactsXml({}));
    EXPECT_EQ(ask(TaskType::GetSmtpAddress), BuildResolveNameXml(false, {}, {}));
    EXPECT_EQ(ask(TaskType::SearchForContacts), WTEXT("<Contacts></Contacts>"));
    EXPECT_EQ(ask(TaskType::ResolveByUri), WTEXT("<Contacts></Contacts>"));
    EXPECT_EQ(ask(TaskType::ResolveByPhoneNumber), WTEXT("<Contacts></Contacts>"));
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}
