#include <gtest/gtest.h>

#include <vector>

#include "TestOutlook.h"

// What a message is asked for, what is traced, and in which order.

namespace
{

using Asked = std::vector<std::string>;

constexpr const char* kStep = "1 kovantest GetMAPIAppointmentInfo";

ULONG Appointment(LONG id, ULONG type)
{
    return NamedTag(PSETID_Appointment, id, type);
}

class ReaderOrderTest : public testing::Test
{
protected:
    ~ReaderOrderTest() override
    {
        m_message.Reset();
        EXPECT_EQ(LiveFakes(), 0);
    }

    void Read()
    {
        MeetingInfo info;
        CTestOutlook::GetMAPIAppointmentInfo(m_message.Get(), info);
    }

    /// The trace without the reader's own steps.
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines = m_trace.Messages();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with(kStep); });
        return lines;
    }

    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
    CFakeProps& m_props = m_message->props;
    CTraceCapture m_trace;
};

TEST_F(ReaderOrderTest, ASeriesThatHasNothingElseIsAskedForEverySource)
{
    m_props.SetFlag(Appointment(0x8223, PT_BOOLEAN), true);

    Read();

    EXPECT_EQ(m_message->asked,
              (Asked{"62002:820D 0040",
                     "80140040",
                     "62002:820E 0040",
                     "0037001F",
                     "6ED8DA90:3 0102",
                     "TalvoKey 001F",
                     "TalvoSpace 001F",
                     "tlvmeetingcalendarproperty 001F",
                     "tlv_meeting_calendar_property 001F",
                     "UCCapabilities 001F",
                     "62002:8208 0000",
                     "62002:8213 0000",
                     "80E00003",
                     "1000001F",
                     "1000001F", // once more, for the status of the refusal
                     "1013001E",
                     "62002:8217 0000",
                     "62002:8215 0000",
                     "62002:8218 0000",
                     "62002:8205 0000",
                     "00410102",
                     "0C190102",
                     "TalvoOI 001F",
                     "62002:8223 0000",
                     "62002:8232 001F",
                     "62002:8216 0102",
                     "62002:8231 0003",
                     "62002:8233 0102"}));
}

TEST_F(ReaderOrderTest, ASecondSourceIsNotAskedWhenTheFirstAnswers)
{
    m_props.SetTime(0x80140040, Moment("2024-03-05T15:00:00"));
    m_props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"one");
    m_props.SetLong(Appointment(0x8213, PT_LONG), 30);
    m_props.SetText(PR_BODY_W, L"body");
    m_props.SetNarrow(PROP_TAG(PT_STRING8, 0x1013), "<p>body</p>");
    m_props.SetLong(Appointment(0x8217, PT_LONG), 3);
    m_props.SetBlock(PR_SENT_REPRESENTING_ENTRYID, {1});

    Read();

    EXPECT_EQ(m_message->asked,
              (Asked{"62002:820D 0040",
                     "80140040",
                     "0037001F",
                     "6ED8DA90:3 0102",
                     "TalvoKey 001F",
                     "TalvoSpace 001F",
                     "tlvmeetingcalendarproperty 001F",
                     "UCCapabilities 001F",
                     "62002:8208 0000",
                     "62002:8213 0000",
                     "1000001F",
                     "1013001E",
                     "62002:8217 0000",
                     "62002:8215 0000",
                     "62002:8218 0000",
                     "62002:8205 0000",
                     "00410102",
                     "TalvoOIAttendee 001F",
                     "62002:8223 0000"}));
}

TEST_F(ReaderOrderTest, AnEmptyMessageIsTracedLineByLine)
{
    Read();

    EXPECT_EQ(Lines(),
              (std::vector<std::string>{
                  "3 failed to get tlvmeetingcalendarproperty,hresult=0x8004010f",
                  "3 failed to get tlv_meeting_calendar_property,hresult=0x8004010f",
                  "3 failed to get UCCapabilities,hresult=0x8004010f",
                  "3 failed to get PR_CALENDAR_DURATION",
                  "1 Get BODY failed",
                  "1 Get XaltDesc failed",
                  "3 get PR_SENDER_ENTRYID failed",
                  "3 get PR_SENDER_ENTRYID failed",
                  "3 CUtil::GetPropFromStream, OpenProperty failed"}));
}

TEST_F(ReaderOrderTest, TheDefaultPropertyIsTracedBehindTheFailureThatLedToIt)
{
    m_props.SetText(NamedTag(L"tlv_meeting_calendar_property"), L"");

    Read();

    const std::vector<std::string> lines = Lines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[0], "3 failed to get tlvmeetingcalendarproperty,hresult=0x8004010f");
    EXPECT_EQ(lines[1], "1 DT Property with empty value!! Use the default vaule!!");
}

TEST_F(ReaderOrderTest, TheStepsStandAroundAllOtherLines)
{
    Read();

    const std::vector<std::string> lines = m_trace.Messages();
    EXPECT_TRUE(lines.front().starts_with(kStep)) << lines.front();
    EXPECT_TRUE(lines.back().starts_with(kStep)) << lines.back();
    for (const TraceLine& line : m_trace.Lines())
    {
        const bool isOfTheReader = line.message.find("GetPropFromStream") == std::string::npos;
        EXPECT_EQ(line.function,
                  isOfTheReader ? "CMAPIMessageBase::GetMAPIAppointmentInfo"
                                : "CUtil::GetPropFromStream");
    }
}

} // namespace
