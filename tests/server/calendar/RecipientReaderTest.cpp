#include <gtest/gtest.h>

#include "PauseCounter.h"
#include "TestOutlook.h"

namespace
{

class RecipientReaderTest : public testing::Test
{
protected:
    ~RecipientReaderTest() override
    {
        m_message.Reset();
        EXPECT_EQ(LiveFakes(), 0);
    }

    std::vector<AttendeeInfo> Read()
    {
        std::vector<AttendeeInfo> attendees;
        CTestOutlook::GetMAPIApptAttenddeeList(m_message.Get(), attendees);
        return attendees;
    }

    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
    CTraceCapture m_trace;
};

TEST_F(RecipientReaderTest, EveryColumnFindsItsField)
{
    CFakeProps row;
    row.SetText(PR_DISPLAY_NAME_W, L"Ada");
    row.SetText(PR_EMAIL_ADDRESS_W, L"/o=x/cn=ada");
    row.SetLong(PR_RECIPIENT_TYPE, 2);
    row.SetLong(PR_RECIPIENT_TRACKSTATUS, 3);
    row.SetLong(PR_RECIPIENT_FLAGS, 0x203);
    row.SetText(PR_ADDRTYPE_W, L"EX");
    row.SetText(PR_SMTP_ADDRESS_W, L"ada@example.org");
    row.SetBlock(PR_ENTRYID, {1, 2});
    row.SetText(PR_SUBJECT_W, L"ignored");
    m_message->recipients = {row};

    const std::vector<AttendeeInfo> attendees = Read();

    ASSERT_EQ(attendees.size(), 1U);
    EXPECT_EQ(attendees[0].name, L"Ada");
    EXPECT_EQ(attendees[0].address, L"/o=x/cn=ada");
    EXPECT_EQ(attendees[0].recipientType, 2U);
    EXPECT_EQ(attendees[0].trackStatus, 3U);
    EXPECT_EQ(attendees[0].recipientFlags, 0x203U);
    EXPECT_EQ(attendees[0].addressType, L"EX");
    EXPECT_EQ(attendees[0].email, L"ada@example.org");
    EXPECT_EQ(attendees[0].entryId, (BinaryBlock{1, 2}));
    EXPECT_EQ(m_message->calls, std::vector<std::string>{"recipients"});
}

TEST_F(RecipientReaderTest, WithoutFlagsARecipientHasOne)
{
    CFakeProps row;
    row.SetText(PR_SMTP_ADDRESS_W, L"ada@example.org");
    row.SetError(PR_RECIPIENT_FLAGS, MAPI_E_NOT_FOUND);
    m_message->recipients = {row};

    EXPECT_EQ(Read().at(0).recipientFlags, 1U);
}

TEST_F(RecipientReaderTest, EitherAddressIsEnough)
{
    CFakeProps smtp;
    smtp.SetText(PR_SMTP_ADDRESS_W, L"ada@example.org");
    CFakeProps native;
    native.SetText(PR_EMAIL_ADDRESS_W, L"/o=x/cn=ada");
    m_message->recipients = {smtp, native};

    EXPECT_EQ(Read().size(), 2U);
    EXPECT_TRUE(LinesWith(m_trace, "Appointment's recipient").empty());
}

TEST_F(RecipientReaderTest, ANameThatIsAnAddressBecomesBothAddresses)
{
    CFakeProps row;
    row.SetText(PR_DISPLAY_NAME_W, L"ada@example.org");
    row.SetText(PR_ADDRTYPE_W, L"EX");
    row.SetLong(PR_RECIPIENT_FLAGS, 3);
    m_message->recipients = {row};

    const std::vector<AttendeeInfo> attendees = Read();

    ASSERT_EQ(attendees.size(), 1U);
    EXPECT_EQ(attendees[0].email, L"ada@example.org");
    EXPECT_EQ(attendees[0].address, L"ada@example.org");
    EXPECT_TRUE(m_trace.Has(0,
                            "Appointment's recipient's Display Name is mail address, "
                            "emailType[EX], AttdType[3]"));
}

TEST_F(RecipientReaderTest, ANameThatBeginsWithTheAtSignIsDropped)
{
    CFakeProps row;
    row.SetText(PR_DISPLAY_NAME_W, L"@ada@example.org");
    row.SetText(PR_ADDRTYPE_W, L"SMTP");
    m_message->recipients = {row};

    EXPECT_TRUE(Read().empty());
    EXPECT_TRUE(m_trace.Has(0,
                            "Appointment's recipient[@ada@example.org] without mail address, "
                            "emailType[SMTP], AttdType[1]"));
}

TEST_F(RecipientReaderTest, ADroppedRecipientDoesNotStopTheOthers)
{
    CFakeProps nobody;
    nobody.SetText(PR_DISPLAY_NAME_W, L"Nobody");
    m_message->recipients = {
        Recipient(L"Ada", L"ada@example.org"), nobody, Recipient(L"Grace", L"grace@example.org")};

    const std::vector<AttendeeInfo> attendees = Read();

    ASSERT_EQ(attendees.size(), 2U);
    EXPECT_EQ(attendees[1].name, L"Grace");
}

TEST_F(RecipientReaderTest, TheListIsAppendedTo)
{
    m_message->recipients = {Recipient(L"Ada", L"ada@example.org")};
    std::vector<AttendeeInfo> attendees(2);

    CTestOutlook::GetMAPIApptAttenddeeList(m_message.Get(), attendees);

    EXPECT_EQ(attendees.size(), 3U);
}

TEST_F(RecipientReaderTest, WithoutMessageOrTableOrRowsNothingHappens)
{
    std::vector<AttendeeInfo> attendees;
    CTestOutlook::GetMAPIApptAttenddeeList(nullptr, attendees);
    EXPECT_TRUE(attendees.empty());

    EXPECT_TRUE(Read().empty());
    m_message->recipients = {Recipient(L"Ada", L"ada@example.org")};
    m_message->script["GetRecipientTable"] = {MAPI_E_NO_ACCESS};
    EXPECT_TRUE(Read().empty());
    EXPECT_TRUE(m_trace.Lines().empty());
}

TEST_F(RecipientReaderTest, TheRowsAreCountedAndReadInOneGo)
{
    m_message->recipientTable = MakeFake<CFakeTable>();
    m_message->recipientTable->rows = {Recipient(L"Ada", L"ada@example.org"),
                                       Recipient(L"Grace", L"grace@example.org"),
                                       Recipient(L"Mary", L"mary@example.org")};

    EXPECT_EQ(Read().size(), 3U);

    EXPECT_EQ(m_message->recipientTable->calls,
              (std::vector<std::string>{"GetRowCount", "QueryRows 3"}));
}

TEST_F(RecipientReaderTest, ACountOf0OrAFailureEndsTheReadingInSilence)
{
    m_message->recipientTable = MakeFake<CFakeTable>();
    CFakeTable& table = *m_message->recipientTable.Get();

    EXPECT_TRUE(Read().empty());
    EXPECT_EQ(table.calls, std::vector<std::string>{"GetRowCount"});

    table.rows = {Recipient(L"Ada", L"ada@example.org")};
    table.script["GetRowCount"] = {MAPI_E_CALL_FAILED};
    EXPECT_TRUE(Read().empty());
    table.script["QueryRows"] = {MAPI_E_CALL_FAILED};
    EXPECT_TRUE(Read().empty());
    EXPECT_TRUE(m_trace.Lines().empty());
}

TEST_F(RecipientReaderTest, AfterEveryRowThereIsAPauseOfAMillisecondWhateverBecameOfIt)
{
    CFakeProps nobody;
    nobody.SetText(PR_DISPLAY_NAME_W, L"Nobody");
    m_message->recipients = {Recipient(L"Ada", L"ada@example.org"), nobody, nobody};
    PausesOfThisThread().clear();

    EXPECT_EQ(Read().size(), 1U);

    EXPECT_EQ(PausesOfThisThread(), (std::vector<DWORD>{1, 1, 1}));
}

} // namespace
