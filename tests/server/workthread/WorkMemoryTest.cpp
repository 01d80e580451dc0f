// What happens when there is no memory for a document: the allocation of the handlers is led through a
// switch here.

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

#include "EventMessages.h"
#include "EventPost.h"
#include "WorkFixture.h"

extern "C" void* __real_at_mem_alloc(std::size_t size) noexcept; // NOLINT
extern "C" void* __wrap_at_mem_alloc(std::size_t size) noexcept; // NOLINT

namespace
{

std::atomic<DWORD> g_starvedThread{0};

/// No memory from at_mem_alloc for the work thread while it lives.
class CStarvation final
{
public:
    explicit CStarvation(DWORD threadId) { g_starvedThread = threadId; }
    CStarvation(const CStarvation&) = delete;
    CStarvation& operator=(const CStarvation&) = delete;
    ~CStarvation() { g_starvedThread = 0; }
};

struct Starved
{
    const char* name;
    TaskType type;
    const char* line; ///< null for a handler that says nothing
};

class WorkMemoryTest : public WorkThreadTest, public testing::WithParamInterface<Starved>
{
};

std::string StarvedName(const testing::TestParamInfo<Starved>& info)
{
    return info.param.name;
}

} // namespace

void* __wrap_at_mem_alloc(std::size_t size) noexcept
{
    return g_starvedThread == GetCurrentThreadId() ? nullptr : __real_at_mem_alloc(size);
}

TEST_P(WorkMemoryTest, HandlerWithoutMemoryTracesItsLineAndPostsNothing)
{
    StartReady();
    const auto yes = [](WString&) -> ULONG { return 1; };
    const auto yesContact = [](ContactRecord&) -> ULONG { return 1; };
    m_script.getMsgInfo = yes;
    m_script.deleteMsgInfo = yes;
    m_script.getContactInfo = yesContact;
    m_script.getContactDetail = yesContact;
    m_trace.Clear();
    const DWORD workThread = m_script.ThreadOfCall(0);
    {
        const CStarvation starvation(workThread);
        const CSignal done;
        // A low task whose own document starves silently tells that the one before it has run.
        m_script.resolveContacts = [&done](std::vector<ContactRecord>& contacts) -> ULONG {
            contacts.clear();
            done.Set();
            return 0;
        };
        Queue(GetParam().type, 5);
        Queue(TaskType::ResolveByUri, 6);
        done.Wait();
    }
    Flush();

    EXPECT_TRUE(m_inbox.TakeAll().empty());
    std::size_t failures = 0;
    for (const TraceLine& line : m_trace.Lines())
    {
        if (line.level == TL_SDK::TLLoggerLevelFailure)
        {
            failures++;
            ASSERT_NE(GetParam().line, nullptr) << line.message;
            EXPECT_EQ(line.message, GetParam().line);
        }
    }
    EXPECT_EQ(failures, GetParam().line != nullptr ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    AllHandlers,
    WorkMemoryTest,
    testing::Values(
        Starved{"GetSMTPAddress",
                TaskType::GetSmtpAddress,
                "CWorkThread::CallGetSMTPAddress, lpszXML is NULL !!"},
        Starved{"GetAppointments",
                TaskType::GetAppointments,
                "CWorkThread::CallGetAppointments, lpszXML is NULL !!"},
        Starved{"GetRecurrentInstances",
                TaskType::GetRecurrentInstances,
                "CWorkThread::CallGetAppointments, lpszXML is NULL !!"},
        Starved{"GetRecentEmail",
                TaskType::GetRecentEmail,
                "CWorkThread::CallGetAppointments, lpszXML is NULL !!"},
        Starved{"GetAppointment",
                TaskType::GetAppointment,
                "CWorkThread::CallGetAppointment, lpszXML is NULL !!"},
        Starved{"GetPersonalContact",
                TaskType::GetPersonalContact,
                "CWorkThread::CallGetPersonalContact, lpszXML is NULL !!"},
        Starved{
            "DeleteAppt", TaskType::DeleteAppt, "CWorkThread::CallDeleteAppt, lpszXML is NULL !!"},
        Starved{
            "ModifyApp", TaskType::ModifyAppt, "CWorkThread::CallModifyApp, lpszXML is NULL !!"},
        Starved{"AddApp", TaskType::AddAppt, "CWorkThread::CallAddApp, lpszXML is NULL !!"},
        Starved{"DeleteContact",
                TaskType::DeleteContact,
                "CWorkThread::CallDeleteContact, lpszXML is NULL !!"},
        Starved{"ModifyContact",
                TaskType::ModifyContact,
                "CWorkThread::CallModifyContact, lpszXML is NULL !!"},
        Starved{
            "AddContact", TaskType::AddContact, "CWorkThread::CallAddContact, lpszXML is NULL !!"},
        Starved{"SearchForContacts", TaskType::SearchForContacts, nullptr},
        Starved{"ResolveByUri", TaskType::ResolveByUri, nullptr},
        Starved{"ResolveByPhoneNumber", TaskType::ResolveByPhoneNumber, nullptr}),
    StarvedName);

TEST_F(WorkMemoryTest, NotesAnswerWithoutMemoryTracesBothNames)
{
    const CStarvation starvation(GetCurrentThreadId());

    CWorkThread::SendModifyMessage(TaskType::PostAdd, WTEXT("x"));

    EXPECT_EQ(m_trace.Messages(),
              (std::vector<std::string>{
                  "0 CWorkThread::CallModifyNoteApp SendModifyMessage, lpszXML is NULL !!"}));
    EXPECT_TRUE(m_inbox.TakeAll().empty());
}

TEST_F(WorkMemoryTest, PostedEventWithoutMemoryForItsKeyFails)
{
    m_script.mailType = MailTypeNotes;
    Start();
    const CStarvation starvation(GetCurrentThreadId());

    EXPECT_EQ(CWorkThreadUse()->AddPostEventWork(TaskType::PostAdd, L"key"), E_FAIL);
}
