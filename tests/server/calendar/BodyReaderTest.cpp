#include <gtest/gtest.h>

#include "TestOutlook.h"

namespace
{

constexpr const wchar_t* kNotRead = L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI";

class BodyReaderTest : public testing::Test
{
protected:
    ~BodyReaderTest() override
    {
        m_message.Reset();
        EXPECT_EQ(LiveFakes(), 0);
    }

    MeetingInfo Read()
    {
        MeetingInfo info;
        CTestOutlook::GetMAPIAppointmentInfo(m_message.Get(), info);
        return info;
    }
    WString Body() { return Read().strDesc; }

    /// A body that does not fit into one answer.
    void SetLongBody(const std::wstring& text)
    {
        m_message->props.SetError(PR_BODY_W, E_OUTOFMEMORY);
        m_message->streams[PR_BODY_W] = WideBytes(text);
    }

    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
    CTraceCapture m_trace;
};

TEST_F(BodyReaderTest, LeadingBlanksGoAndTrailingOnesStay)
{
    m_message->props.SetText(PR_BODY_W, L" \t\r\n\x00A0text \r\n");

    EXPECT_EQ(Body(), L"text \r\n");
}

TEST_F(BodyReaderTest, ABodyOfBlanksBecomesEmpty)
{
    m_message->props.SetText(PR_BODY_W, L" \r\n ");

    EXPECT_EQ(Body(), L"");
}

TEST_F(BodyReaderTest, ABodyTooLargeForOneAnswerComesThroughAStream)
{
    const std::wstring text(1000, L'x');
    SetLongBody(L"  " + text + L"  ");

    EXPECT_EQ(Body(), text + L"  ");
    EXPECT_FALSE(m_trace.Has(1, "Get BODY failed"));
}

TEST_F(BodyReaderTest, AStreamOfExactlyOneReadIsReadOnceMore)
{
    const std::wstring text(127, L'x'); // 254 bytes
    SetLongBody(text);

    EXPECT_EQ(Body(), text);
    EXPECT_EQ(m_message->streamReads, (std::vector<std::string>{"254 gave 254", "254 gave 0"}));
}

TEST_F(BodyReaderTest, AShortReadIsTheLast)
{
    SetLongBody(std::wstring(130, L'x'));

    EXPECT_EQ(Body(), std::wstring(130, L'x'));
    EXPECT_EQ(m_message->streamReads, (std::vector<std::string>{"254 gave 254", "254 gave 6"}));
}

TEST_F(BodyReaderTest, ABodyThatFitsIsNotReadFromItsStream)
{
    m_message->props.SetText(PR_BODY_W, L"text");
    m_message->streams[PR_BODY_W] = WideBytes(L"never read");

    EXPECT_EQ(Body(), L"text");
    EXPECT_TRUE(m_message->streamReads.empty());
}

TEST_F(BodyReaderTest, TheStatusOfTheWholeCallCountsLikeThatOfTheValue)
{
    m_message->streams[PR_BODY_W] = WideBytes(L"from the stream");

    m_message->failures[PR_BODY_W] = E_OUTOFMEMORY;
    EXPECT_EQ(Body(), L"from the stream");
    m_message->failures[PR_BODY_W] = MAPI_E_NO_ACCESS;
    EXPECT_EQ(Body(), kNotRead);
}

TEST_F(BodyReaderTest, AnEmptyStreamGivesAnEmptyBody)
{
    SetLongBody(L"");

    EXPECT_EQ(Body(), L"");
}

TEST_F(BodyReaderTest, ATerminatorCutsItsReadOnly)
{
    std::wstring text(130, L'x');
    text[1] = L'\0';
    SetLongBody(text);

    EXPECT_EQ(Body(), L"xxxx");
}

TEST_F(BodyReaderTest, ALargeBodyWithoutAStreamIsNotRead)
{
    m_message->props.SetError(PR_BODY_W, E_OUTOFMEMORY);

    EXPECT_EQ(Body(), kNotRead);
    EXPECT_TRUE(m_trace.Has(1, "Get BODY failed"));
}

TEST_F(BodyReaderTest, AnyOtherRefusalDoesNotAskForAStream)
{
    m_message->props.SetError(PR_BODY_W, MAPI_E_NO_ACCESS);
    m_message->streams[PR_BODY_W] = WideBytes(L"never read");

    EXPECT_EQ(Body(), kNotRead);
    EXPECT_TRUE(m_trace.Has(1, "Get BODY failed"));
}

TEST_F(BodyReaderTest, TheHtmlBodyIsAskedForAsNarrowText)
{
    m_message->props.SetNarrow(PROP_TAG(PT_STRING8, 0x1013), " <p>text</p> ");
    EXPECT_EQ(Read().strXaltDesc, L" <p>text</p> ");
    EXPECT_FALSE(m_trace.Has(1, "Get XaltDesc failed"));

    m_message->props.SetBlock(PROP_TAG(PT_BINARY, 0x1013), {'<'});
    EXPECT_EQ(Read().strXaltDesc, kNotRead);
    EXPECT_TRUE(m_trace.Has(1, "Get XaltDesc failed"));
}

} // namespace
