#include <gtest/gtest.h>

#include "DateTexts.h"
#include "Minutes1601.h"
#include "TestOutlook.h"

namespace
{

using Calls = std::vector<std::string>;

constexpr const char* kMatchLine = "Get the mathced instance of Recurrence meeting.";

class ExceptionReaderTest : public CalendarTest
{
protected:
    ~ExceptionReaderTest() override { m_message.Reset(); }

    bool Find(const std::string& start, const std::string& end)
    {
        return CTestOutlook::GetExceptionAppointmentInfo(
            Moment(start), Moment(end), m_message.Get(), m_found);
    }

    CComRef<CFakeMessage> Attach(const std::string& start,
                                 const std::wstring& subject,
                                 LONG method = 5)
    {
        CComRef<CFakeMessage> embedded = MakeException(start, "2024-03-05T23:00:00");
        embedded->props.SetText(PR_SUBJECT_W, subject);
        m_message->Attach(embedded, method);
        return embedded;
    }

    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
    MeetingInfo m_found;
};

TEST_F(ExceptionReaderTest, ANullMessageIsTraced)
{
    EXPECT_FALSE(CTestOutlook::GetExceptionAppointmentInfo({}, {}, nullptr, m_found));

    EXPECT_TRUE(m_trace.Has(0, "lpAttachedMessage is NULL"));
}

TEST_F(ExceptionReaderTest, AMessageWithoutATableIsTraced)
{
    m_message->script["GetAttachmentTable"] = {MAPI_E_NO_ACCESS};

    EXPECT_FALSE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_TRUE(m_trace.Has(0, "GetAttachmentTable failed, hresult=-2147024891"));
}

TEST_F(ExceptionReaderTest, AnEmbeddedMessageThatBeginsInTheWindowIsFound)
{
    Attach("2024-03-05T09:00:00", L"before");
    Attach("2024-03-05T10:30:00", L"inside");
    Attach("2024-03-05T12:00:00", L"behind");

    EXPECT_TRUE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(m_found.strName, L"inside");
    EXPECT_EQ(m_trace.Count(kMatchLine), 1U);
    EXPECT_TRUE(m_trace.Has(0, kMatchLine));
    EXPECT_EQ(m_message->calls,
              (Calls{"attachments",
                     "OpenAttach 0 flags 16",
                     "OpenProperty data IMessage flags 1",
                     "OpenAttach 1 flags 16",
                     "OpenProperty data IMessage flags 1",
                     "OpenAttach 2 flags 16",
                     "OpenProperty data IMessage flags 1"}));
}

TEST_F(ExceptionReaderTest, BothEndsOfTheWindowAreIncluded)
{
    Attach("2024-03-05T10:00:00", L"edge");

    EXPECT_TRUE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));
    EXPECT_TRUE(Find("2024-03-05T09:00:00", "2024-03-05T10:00:00"));
    EXPECT_FALSE(Find("2024-03-05T10:00:01", "2024-03-05T11:00:00"));
    EXPECT_FALSE(Find("2024-03-05T09:00:00", "2024-03-05T09:59:59"));
}

TEST_F(ExceptionReaderTest, OfTwoMatchesTheLastInTableOrderWins)
{
    Attach("2024-03-05T10:30:00", L"first");
    Attach("2024-03-05T10:10:00", L"second");

    EXPECT_TRUE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(m_found.strName, L"second");
    EXPECT_EQ(m_trace.Count(kMatchLine), 2U);
}

TEST_F(ExceptionReaderTest, WithoutAMatchTheRecordIsLeftAlone)
{
    Attach("2024-03-05T09:00:00", L"before");
    m_found.strName = L"untouched";

    EXPECT_FALSE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(m_found.strName, L"untouched");
}

TEST_F(ExceptionReaderTest, AttachedFilesAreNotOpened)
{
    Attach("2024-03-05T10:30:00", L"a file", ATTACH_BY_VALUE);

    EXPECT_FALSE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(m_message->calls, Calls{"attachments"});
}

TEST_F(ExceptionReaderTest, AnAttachmentThatCannotBeOpenedDoesNotStopTheWalk)
{
    m_message->Attach(nullptr);
    Attach("2024-03-05T10:20:00", L"refused");
    Attach("2024-03-05T10:30:00", L"inside");
    m_message->script["OpenAttach"] = {S_OK, MAPI_E_NO_ACCESS};

    EXPECT_TRUE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(m_found.strName, L"inside");
}

TEST_F(ExceptionReaderTest, TheTableIsAskedForTheNumbersOfEmbeddedMessages)
{
    m_message->attachmentTable = MakeFake<CFakeTable>();
    SeriesRecipients recipients;
    const Calls expected = {
        "SetColumns 0E210003 flags 0", "Restrict 37050003 = 5 flags 2", "QueryRows 268435455"};

    EXPECT_FALSE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));
    EXPECT_EQ(m_message->attachmentTable->calls, expected);

    m_message->attachmentTable->calls.clear();
    CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients);
    EXPECT_EQ(m_message->attachmentTable->calls, expected);
}

TEST_F(ExceptionReaderTest, ARowWithoutANumberIsPassedOver)
{
    Attach("2024-03-05T10:30:00", L"inside");
    m_message->attachmentTable = MakeFake<CFakeTable>();
    m_message->attachmentTable->rows.resize(2);
    m_message->attachmentTable->rows[1].SetLong(PR_ATTACH_NUM, 0);

    EXPECT_TRUE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));

    EXPECT_EQ(
        m_message->calls,
        (Calls{"attachments", "OpenAttach 0 flags 16", "OpenProperty data IMessage flags 1"}));
}

TEST_F(ExceptionReaderTest, ATableThatCannotBeReadGivesNothing)
{
    Attach("2024-03-05T10:30:00", L"inside");
    m_message->attachmentTable = MakeFake<CFakeTable>();
    m_message->attachmentTable->script["QueryRows"] = {MAPI_E_CALL_FAILED};

    EXPECT_FALSE(Find("2024-03-05T10:00:00", "2024-03-05T11:00:00"));
    EXPECT_EQ(m_message->calls, Calls{"attachments"});
}

TEST_F(ExceptionReaderTest, RecipientsOfAMessageThatGivesNoTableAreNone)
{
    m_message->script["GetAttachmentTable"] = {MAPI_E_NO_ACCESS};
    SeriesRecipients recipients;

    CTestOutlook::GetExceptionRecipients(nullptr, recipients);
    CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients);

    EXPECT_TRUE(recipients.empty());
    EXPECT_TRUE(m_trace.Has(0, "lpAttachedMessage is NULL"));
    EXPECT_TRUE(m_trace.Has(0, "GetAttachmentTable failed, hresult=-2147024891"));
}

TEST_F(ExceptionReaderTest, RecipientsOfAnInstanceWithoutAStartStandUnderMinute0)
{
    m_message->Attach(nullptr); // cannot be opened, and does not stop the walk
    const CComRef<CFakeMessage> embedded = MakeFake<CFakeMessage>();
    embedded->recipients = {Recipient(L"Ada", L"ada@example.org")};
    m_message->Attach(embedded);
    SeriesRecipients recipients;

    CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients);

    ASSERT_EQ(recipients.size(), 1U);
    EXPECT_EQ(recipients.begin()->first, 0U);
    EXPECT_EQ(recipients.begin()->second.at(0).name, L"Ada");
}

TEST_F(ExceptionReaderTest, RecipientsAreKeptByTheUtcStartInMinutes)
{
    Attach("2024-03-05T10:30:59", L"one")->recipients = {Recipient(L"Ada", L"ada@example.org")};
    Attach("2024-03-06T10:00:00", L"two");
    SeriesRecipients recipients;

    CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients);

    ASSERT_EQ(recipients.size(), 2U);
    const auto one = recipients.find(MinutesFromSystemTime(TimeOf("2024-03-05T10:30:00")));
    ASSERT_NE(one, recipients.end());
    ASSERT_EQ(one->second.size(), 1U);
    EXPECT_EQ(one->second[0].name, L"Ada");
    EXPECT_TRUE(recipients[MinutesFromSystemTime(TimeOf("2024-03-06T10:00:00"))].empty());
}

TEST_F(ExceptionReaderTest, AnEntryThatIsThereStays)
{
    Attach("2024-03-05T10:30:00", L"one")->recipients = {Recipient(L"Ada", L"ada@example.org")};
    Attach("2024-03-05T10:30:00", L"two")->recipients = {Recipient(L"Grace", L"g@example.org")};
    SeriesRecipients recipients;

    CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients);

    ASSERT_EQ(recipients.size(), 1U);
    EXPECT_EQ(recipients.begin()->second.at(0).name, L"Ada");
}

TEST_F(ExceptionReaderTest, RecipientsTellWhetherEveryMessageWasOpened)
{
    SeriesRecipients recipients;
    EXPECT_TRUE(CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients));

    Attach("2024-03-05T10:30:00", L"refused");
    Attach("2024-03-06T10:30:00", L"opened");
    m_message->script["OpenAttach"] = {MAPI_E_NO_ACCESS};
    EXPECT_FALSE(CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients));
    EXPECT_EQ(recipients.size(), 1U);

    EXPECT_TRUE(CTestOutlook::GetExceptionRecipients(m_message.Get(), recipients));
    EXPECT_FALSE(CTestOutlook::GetExceptionRecipients(nullptr, recipients));
}

} // namespace
