#include <gtest/gtest.h>

#include "DateTexts.h"
#include "TestOutlook.h"

namespace
{

constexpr ULONG kFixedEnd = 0x80140040;
constexpr ULONG kFixedDuration = 0x80E00003;

ULONG Appointment(LONG id, ULONG type)
{
    return NamedTag(PSETID_Appointment, id, type);
}

class ReaderTest : public testing::Test
{
protected:
    ~ReaderTest() override
    {
        m_message.Reset();
        EXPECT_EQ(LiveFakes(), 0);
    }

    MeetingInfo Read()
    {
        MeetingInfo info;
        EXPECT_TRUE(CTestOutlook::GetMAPIAppointmentInfo(m_message.Get(), info));
        return info;
    }

    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
    CFakeProps& m_props = m_message->props;
    CTraceCapture m_trace;
};

TEST_F(ReaderTest, AMessageWithoutPropertiesGivesAnEmptyRecord)
{
    const MeetingInfo info = Read();

    EXPECT_EQ(TextOf(info.firstTime), "0000-00-00T00:00:00");
    EXPECT_EQ(TextOf(info.end), "0000-00-00T00:00:00");
    EXPECT_EQ(info.strName, L"");
    EXPECT_EQ(info.uid, L"");
    EXPECT_EQ(info.duration, 0U);
    EXPECT_EQ(info.strDesc, L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI");
    EXPECT_EQ(info.strXaltDesc, L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI");
    EXPECT_EQ(info.isRecurring, 0);
    EXPECT_TRUE(m_trace.Has(3, "failed to get tlvmeetingcalendarproperty,hresult=0x8004010f"));
    EXPECT_TRUE(m_trace.Has(3, "failed to get tlv_meeting_calendar_property,hresult=0x8004010f"));
    EXPECT_TRUE(m_trace.Has(3, "failed to get UCCapabilities,hresult=0x8004010f"));
    EXPECT_TRUE(m_trace.Has(3, "failed to get PR_CALENDAR_DURATION"));
    EXPECT_TRUE(m_trace.Has(1, "Get BODY failed"));
    EXPECT_TRUE(m_trace.Has(1, "Get XaltDesc failed"));
    EXPECT_EQ(m_trace.Count("get PR_SENDER_ENTRYID failed"), 2U);
}

TEST_F(ReaderTest, EveryPropertyFindsItsField)
{
    m_props.SetTime(Appointment(0x820D, PT_SYSTIME), Moment("2024-03-05T14:07:09"));
    m_props.SetTime(Appointment(0x820E, PT_SYSTIME), Moment("2024-03-05T15:00:00"));
    m_props.SetText(PR_SUBJECT_W, L"plan");
    m_props.SetText(NamedTag(L"TalvoKey"), L"key");
    m_props.SetText(NamedTag(L"TalvoSpace"), L"space");
    m_props.SetText(NamedTag(L"UCCapabilities"), L"audio");
    m_props.SetText(Appointment(0x8208, PT_UNICODE), L"room");
    m_props.SetLong(Appointment(0x8213, PT_LONG), 53);
    m_props.SetLong(Appointment(0x8217, PT_LONG), 3);
    m_props.SetFlag(Appointment(0x8215, PT_BOOLEAN), true);
    m_props.SetLong(Appointment(0x8218, PT_LONG), 5);
    m_props.SetLong(Appointment(0x8205, PT_LONG), 2);

    const MeetingInfo info = Read();

    EXPECT_EQ(TextOf(info.firstTime), "2024-03-05T14:07:09");
    EXPECT_EQ(TextOf(info.end), "2024-03-05T15:00:00");
    EXPECT_EQ(TextOf(info.start), "0000-00-00T00:00:00");
    EXPECT_EQ(info.strName, L"plan");
    EXPECT_EQ(info.key, L"key");
    EXPECT_EQ(info.space, L"space");
    EXPECT_EQ(info.m_strUCCapabilities, L"audio");
    EXPECT_EQ(info.location, L"room");
    EXPECT_EQ(info.duration, 53U);
    EXPECT_EQ(info.meetingStatus, 3U);
    EXPECT_EQ(info.isAllDay, 1);
    EXPECT_EQ(info.responseStatus, 5U);
    EXPECT_EQ(info.busyStatus, 2U);
}

TEST_F(ReaderTest, TheFixedEndTagGoesBeforeTheNamedOne)
{
    m_props.SetTime(kFixedEnd, Moment("2024-03-05T15:00:00"));
    m_props.SetTime(Appointment(0x820E, PT_SYSTIME), Moment("2024-03-05T16:00:00"));

    EXPECT_EQ(TextOf(Read().end), "2024-03-05T15:00:00");
}

TEST_F(ReaderTest, TheNamedDurationGoesBeforeTheFixedTag)
{
    m_props.SetLong(Appointment(0x8213, PT_LONG), 30);
    m_props.SetLong(kFixedDuration, 99);
    EXPECT_EQ(Read().duration, 30U);

    m_props.Remove(Appointment(0x8213, PT_LONG));
    EXPECT_EQ(Read().duration, 99U);
    EXPECT_FALSE(m_trace.Has(3, "failed to get PR_CALENDAR_DURATION"));
}

TEST_F(ReaderTest, WithoutADurationTheTimesGiveIt)
{
    m_props.SetTime(Appointment(0x820D, PT_SYSTIME), Moment("2024-03-05T14:00:00"));
    m_props.SetTime(Appointment(0x820E, PT_SYSTIME), Moment("2024-03-05T15:30:59"));

    EXPECT_EQ(Read().duration, 90U);
    EXPECT_TRUE(m_trace.Has(3, "failed to get PR_CALENDAR_DURATION"));
}

TEST_F(ReaderTest, WithoutAnEndTheDurationWrapsBelowZero)
{
    m_props.SetTime(Appointment(0x820D, PT_SYSTIME), Moment("1601-01-01T00:10:00"));

    EXPECT_EQ(Read().duration, 0xFFFFFFF6U);
}

TEST_F(ReaderTest, TheGlobalIdentifierIsReadFromItsBlock)
{
    std::vector<BYTE> block(52, 0);
    block[36] = 17; // the mark and five characters
    const std::string mark = "vCal-Uid";
    std::copy(mark.begin(), mark.end(), block.begin() + 40);
    for (const char unit : std::string("u@x.y"))
    {
        block.push_back(static_cast<BYTE>(unit));
    }
    m_props.SetBlock(NamedTag(PSETID_Meeting, 3, PT_BINARY), block);
    EXPECT_EQ(Read().uid, L"u@x.y");

    m_props.IgnoreAskedTypes();
    m_props.SetBlock(NamedTag(PSETID_Meeting, 3, PT_CLSID), block);
    EXPECT_EQ(Read().uid, L"");

    block.resize(53);
    m_props.SetBlock(NamedTag(PSETID_Meeting, 3, PT_BINARY), block);
    EXPECT_EQ(Read().uid, L"");
}

class DeskToolsPropertyTest : public ReaderTest
{
protected:
    static constexpr const wchar_t* kFirst = L"tlvmeetingcalendarproperty";
    static constexpr const wchar_t* kSecond = L"tlv_meeting_calendar_property";
    static constexpr const wchar_t* kDefault =
        L"PHByb3BlcnR5PjxwbXI+ZmFsc2U8L3Btcj48am9pbnVybD48L2pvaW51cmw+PHNpcHVybD48L3NpcHVybD48bWVl"
        L"dGluZ251bWJlcj48L21lZXRpbmdudW1iZXI+PC9wcm9wZXJ0eT4AAA==";
    static constexpr const char* kDefaultLine =
        "DT Property with empty value!! Use the default vaule!!";

    WString ReadProperty() { return Read().strPropertyFromDeskTools; }
};

TEST_F(DeskToolsPropertyTest, TheFirstNameIsEnoughWhenItHasAText)
{
    m_props.SetText(NamedTag(kFirst), L"one");
    m_props.SetText(NamedTag(kSecond), L"two");

    EXPECT_EQ(ReadProperty(), L"one");
    EXPECT_TRUE(LinesWith(m_trace, "failed to get tlv").empty());
    EXPECT_FALSE(m_trace.Has(1, kDefaultLine));
}

TEST_F(DeskToolsPropertyTest, TheSecondNameIsReadWhenTheFirstIsAbsentOrEmpty)
{
    m_props.SetText(NamedTag(kSecond), L"two");
    EXPECT_EQ(ReadProperty(), L"two");

    m_props.SetText(NamedTag(kFirst), L"");
    EXPECT_EQ(ReadProperty(), L"two");
}

TEST_F(DeskToolsPropertyTest, BothEmptyGiveTheDefault)
{
    m_props.SetText(NamedTag(kFirst), L"");
    m_props.SetText(NamedTag(kSecond), L"");

    EXPECT_EQ(ReadProperty(), kDefault);
    EXPECT_TRUE(m_trace.Has(1, kDefaultLine));
}

TEST_F(DeskToolsPropertyTest, AnEmptyFirstAndAnAbsentSecondGiveNothing)
{
    m_props.SetText(NamedTag(kFirst), L"");

    EXPECT_EQ(ReadProperty(), L"");
    EXPECT_FALSE(m_trace.Has(1, kDefaultLine));
}

TEST_F(DeskToolsPropertyTest, AnAbsentFirstAndAnEmptySecondGiveTheDefault)
{
    m_props.SetText(NamedTag(kSecond), L"");

    EXPECT_EQ(ReadProperty(), kDefault);
}

TEST_F(ReaderTest, TheHostIsWhoIsRepresentedOrElseTheSender)
{
    m_props.SetBlock(PR_SENDER_ENTRYID, {2});
    EXPECT_EQ(Read().hostEntryId, BinaryBlock{2});
    EXPECT_EQ(m_trace.Count("get PR_SENDER_ENTRYID failed"), 1U);

    m_props.SetBlock(PR_SENT_REPRESENTING_ENTRYID, {1});
    EXPECT_EQ(Read().hostEntryId, BinaryBlock{1});
    EXPECT_EQ(m_trace.Count("get PR_SENDER_ENTRYID failed"), 1U);
}

TEST_F(ReaderTest, AMeetingOfSomebodyElseHasItsCalendarTextInOneProperty)
{
    m_props.SetText(NamedTag(L"TalvoOIAttendee"), L"theirs");
    m_props.SetText(NamedTag(L"TalvoOI"), L"own");

    m_props.SetLong(Appointment(0x8217, PT_LONG), 2);
    EXPECT_EQ(Read().calendarText, L"theirs");
    m_props.SetLong(Appointment(0x8217, PT_LONG), 1);
    EXPECT_EQ(Read().calendarText, L"own");
}

TEST_F(ReaderTest, AMeetingOfSomebodyElseWithoutThatPropertyHasNoCalendarText)
{
    m_props.SetLong(Appointment(0x8217, PT_LONG), 2);
    m_props.SetText(NamedTag(L"TalvoOI"), L"own");
    m_message->streams[NamedTag(L"TalvoOIAttendee")] = WideBytes(L"never read");

    EXPECT_EQ(Read().calendarText, L"");
    EXPECT_TRUE(m_message->streamReads.empty());
}

TEST_F(ReaderTest, TheCalendarFamilyIsReadUntilAMemberIsMissing)
{
    m_props.SetText(NamedTag(L"TalvoOI"), L"  one ");
    m_props.SetText(NamedTag(L"TalvoOI1"), L" two ");
    m_props.SetText(NamedTag(L"TalvoOI2"), L"three\t\n");
    m_props.SetText(NamedTag(L"TalvoOI4"), L"never read");

    EXPECT_EQ(Read().calendarText, L"one twothree");
    EXPECT_TRUE(m_trace.Has(3, "name:[TalvoOI] , value:[  one ]"));
    EXPECT_TRUE(m_trace.Has(3, "name:[TalvoOI1] , value:[ two ]"));
    EXPECT_EQ(LinesWith(m_trace, "name:[").size(), 3U);
}

TEST_F(ReaderTest, AnEmptyFirstMemberEndsTheFamily)
{
    m_props.SetText(NamedTag(L"TalvoOI"), L"  ");
    m_props.SetText(NamedTag(L"TalvoOI1"), L"never read");

    EXPECT_EQ(Read().calendarText, L"");
    EXPECT_EQ(LinesWith(m_trace, "name:[").size(), 1U);
}

TEST_F(ReaderTest, AnEmptyLaterMemberDoesNotEndTheFamily)
{
    m_props.SetText(NamedTag(L"TalvoOI"), L"one");
    m_props.SetText(NamedTag(L"TalvoOI1"), L"");
    m_props.SetText(NamedTag(L"TalvoOI2"), L"two");

    EXPECT_EQ(Read().calendarText, L"onetwo");
}

TEST_F(ReaderTest, AFamilyTooLongForOneAnswerComesThroughAStream)
{
    m_props.SetError(NamedTag(L"TalvoOI"), E_OUTOFMEMORY);
    m_message->streams[NamedTag(L"TalvoOI")] = WideBytes(L" from the stream ");

    EXPECT_EQ(Read().calendarText, L" from the stream ");
}

TEST_F(ReaderTest, ASeriesHasFourMoreProperties)
{
    m_props.SetFlag(Appointment(0x8223, PT_BOOLEAN), true);
    m_props.SetText(Appointment(0x8232, PT_UNICODE), L"in words");
    m_props.SetBlock(Appointment(0x8216, PT_BINARY), {4, 48});
    m_props.SetLong(Appointment(0x8231, PT_LONG), 2);
    m_props.SetBlock(Appointment(0x8233, PT_BINARY), {7});

    const MeetingInfo info = Read();

    EXPECT_EQ(info.isRecurring, 1);
    EXPECT_EQ(info.recurrencePattern, L"in words");
    EXPECT_EQ(info.recurrenceState, (BinaryBlock{4, 48}));
    EXPECT_EQ(info.recurrenceType, 2);
    EXPECT_EQ(info.timeZone, BinaryBlock{7});
}

TEST_F(ReaderTest, ASingleAppointmentHasNone)
{
    m_props.SetFlag(Appointment(0x8223, PT_BOOLEAN), false);
    m_props.SetText(Appointment(0x8232, PT_UNICODE), L"in words");
    m_props.SetBlock(Appointment(0x8233, PT_BINARY), {7});

    const MeetingInfo info = Read();

    EXPECT_EQ(info.isRecurring, 0);
    EXPECT_EQ(info.recurrencePattern, L"");
    EXPECT_TRUE(info.timeZone.empty());
}

TEST_F(ReaderTest, AnyNumberButZeroIsAFlagThatIsSet)
{
    m_props.SetLong(Appointment(0x8215, PT_LONG), 2);
    m_props.SetLong(Appointment(0x8223, PT_LONG), 0x10000);
    const MeetingInfo set = Read();
    m_props.SetLong(Appointment(0x8215, PT_LONG), 0);
    m_props.SetLong(Appointment(0x8223, PT_LONG), 0);
    const MeetingInfo clear = Read();

    EXPECT_EQ(set.isAllDay, 1);
    EXPECT_EQ(set.isRecurring, 1);
    EXPECT_EQ(clear.isAllDay, 0);
    EXPECT_EQ(clear.isRecurring, 0);
}

TEST_F(ReaderTest, ThreeTagsOfASeriesAreLookedUpOnceForTheProcess)
{
    m_props.SetFlag(Appointment(0x8223, PT_BOOLEAN), true);
    Read();
    m_message->calls.clear();
    Read();
    const auto asSeries = m_message->calls.size();
    m_props.SetFlag(Appointment(0x8223, PT_BOOLEAN), false);
    m_message->calls.clear();
    Read();

    // Beyond the names of a single appointment only that of the zone is asked for.
    EXPECT_EQ(asSeries, m_message->calls.size() + 1);
}

TEST_F(ReaderTest, AValueOfTheWrongTypeCountsAsAbsent)
{
    m_props.SetText(Appointment(0x8217, PT_UNICODE), L"no number");
    m_props.SetLong(Appointment(0x8208, PT_LONG), 7);
    m_props.SetText(Appointment(0x8213, PT_UNICODE), L"no number");

    const MeetingInfo info = Read();

    EXPECT_EQ(info.meetingStatus, 0U);
    EXPECT_EQ(info.location, L"");
    EXPECT_TRUE(m_trace.Has(3, "failed to get PR_CALENDAR_DURATION"));
}

} // namespace
