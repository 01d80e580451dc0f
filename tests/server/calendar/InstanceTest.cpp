#include <gtest/gtest.h>

#include "DateTexts.h"
#include "Minutes1601.h"
#include "PatternBlob.h"
#include "TestOutlook.h"

namespace
{

using Texts = std::vector<std::wstring>;

/// A series each day at 9:00 for an hour, from 1 March 2024, in UTC.
class InstanceTest : public CalendarTest
{
protected:
    pattern::Pattern m_pattern = pattern::Daily("2024-03-01", 1);

    CComRef<CFakeMessage> AddDaily()
    {
        m_master = AddSeries(1, "2024-03-01T09:00:00", "2024-03-01T10:00:00", m_pattern.Write());
        m_master->props.SetText(PR_SUBJECT_W, L"stand-up");
        return m_master;
    }
    ~InstanceTest() override { m_master.Reset(); }

    Texts Starts(const std::string& start, const std::string& end)
    {
        List(start, end);
        return Values(L"startTime");
    }
    Texts ListDay() { return List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); }

    /// An embedded message for the instance of 5 March.
    CComRef<CFakeMessage> AttachException(const std::string& end = "2024-03-05T10:00:00")
    {
        CComRef<CFakeMessage> exception = MakeException("2024-03-05T09:00:00", end);
        m_master->Attach(exception);
        return exception;
    }

    CComRef<CFakeMessage> m_master;
};

TEST_F(InstanceTest, ASeriesIsListedByItsInstances)
{
    AddDaily();

    EXPECT_EQ(List("2024-03-05T00:00:00", "2024-03-07T00:00:00"),
              (Texts{L"stand-up", L"stand-up"}));

    EXPECT_EQ(Values(L"startTime"), (Texts{L"03/05/2024 09:00:00", L"03/06/2024 09:00:00"}));
    EXPECT_EQ(Values(L"endTime"), (Texts{L"03/05/2024 10:00:00", L"03/06/2024 10:00:00"}));
    EXPECT_EQ(Values(L"firstTime"), (Texts{L"03/01/2024 09:00:00", L"03/01/2024 09:00:00"}));
    EXPECT_EQ(Values(L"isRecurrent"), (Texts{L"TRUE", L"TRUE"}));
    EXPECT_EQ(Values(L"duration"), (Texts{L"60", L"60"}));
    const auto midnight = std::to_wstring(MinutesFromSystemTime(TimeOf("2024-03-05T00:00:00")));
    EXPECT_EQ(Values(L"subKey").at(0), midnight);
    EXPECT_TRUE(m_trace.Has(3, "check recurrent appointment"));
    EXPECT_TRUE(m_trace.Has(2, "iter->subject=stand-up,startdate=2024-3-5"));
}

TEST_F(InstanceTest, OnlyTheStartOfAnInstanceIsTestedWithBothEndsIncluded)
{
    AddDaily();

    EXPECT_EQ(Starts("2024-03-05T09:00:00", "2024-03-06T09:00:00"),
              (Texts{L"03/05/2024 09:00:00", L"03/06/2024 09:00:00"}));
    EXPECT_EQ(Starts("2024-03-05T09:30:00", "2024-03-06T08:59:59"), Texts{});
    EXPECT_EQ(Starts("2024-03-05T09:00:00", "2024-03-05T09:00:00"), Texts{L"03/05/2024 09:00:00"});
}

TEST_F(InstanceTest, WhatARuleYieldsOutsideTheWindowIsDropped)
{
    // Every fifth leap day: behind 2020 the rule goes on in 1604, for hundreds of instances.
    AddSeries(2,
              "2020-02-29T09:00:00",
              "2020-02-29T10:00:00",
              pattern::YearlyDay("2020-02-29", 29, 5).Write());
    // A last day that begins behind the window comes out of the rule all the same.
    pattern::Pattern ended = pattern::Daily("2024-03-01", 1);
    ended.endType = pattern::kEndByDate;
    ended.endDate = pattern::Minutes("2024-03-05");
    AddSeries(3, "2024-03-01T09:00:00", "2024-03-01T10:00:00", ended.Write());

    EXPECT_EQ(Starts("2020-01-01T00:00:00", "2024-03-05T08:00:00"),
              (Texts{L"02/29/2020 09:00:00",
                     L"03/01/2024 09:00:00",
                     L"03/02/2024 09:00:00",
                     L"03/03/2024 09:00:00",
                     L"03/04/2024 09:00:00"}));
}

TEST_F(InstanceTest, ASeriesWithoutAnInstanceInTheWindowGivesNothingAndNoError)
{
    AddDaily();

    EXPECT_TRUE(List("2024-02-01T00:00:00", "2024-02-28T00:00:00").empty());
    EXPECT_EQ(m_listed, 0U);
    EXPECT_EQ(m_xml, L"<appointments></appointments>");
}

TEST_F(InstanceTest, ASeriesWhosePatternCannotBeReadGivesNothing)
{
    AddDaily()->props.SetBlock(NamedTag(PSETID_Appointment, 0x8216, PT_BINARY), {1, 2, 3});

    EXPECT_TRUE(ListDay().empty());
    EXPECT_EQ(m_listed, 0U);
}

TEST_F(InstanceTest, ALongSubjectIsMaskedInTheTrace)
{
    AddDaily()->props.SetText(PR_SUBJECT_W, L"abcde-secret-vwxyz");
    ListDay();

    EXPECT_TRUE(m_trace.Has(2, "iter->subject=abcde********vwxyz,startdate=2024-3-5"));
}

TEST_F(InstanceTest, TheSubjectOfAChangedInstancesMessageIsMaskedInTheTraceToo)
{
    AddDaily();
    AttachException()->props.SetText(PR_SUBJECT_W, L"abcde-hidden-vwxyz");

    ListDay();

    EXPECT_EQ(
        LinesWith(m_trace, "bFound=1, meetInfoCurrent.strName=abcde********vwxyz,strDesc size=4,")
            .size(),
        1U);
}

TEST_F(InstanceTest, ACancelledInstanceHasStatusSeven)
{
    pattern::Modified cancelled =
        pattern::Moved("2024-03-05T09:00:00", "2024-03-05T09:00:00", "2024-03-05T10:00:00");
    cancelled.meetingType = 7;
    m_pattern.modified = {cancelled};
    AddDaily()->props.SetLong(NamedTag(PSETID_Appointment, 0x8217, PT_LONG), 3);

    List("2024-03-05T00:00:00", "2024-03-07T00:00:00");

    EXPECT_EQ(Values(L"meetStatus"), (Texts{L"7", L"3"}));
}

TEST_F(InstanceTest, AMovedInstanceHasItsOwnTimesTextsAndDuration)
{
    pattern::Modified moved =
        pattern::Moved("2024-03-05T09:00:00", "2024-03-05T13:00:00", "2024-03-05T13:45:00");
    moved.subject = "later";
    moved.location = "elsewhere";
    m_pattern.modified = {moved};
    AddDaily();

    EXPECT_EQ(ListDay(), Texts{L"later"});

    EXPECT_EQ(Values(L"startTime"), Texts{L"03/05/2024 13:00:00"});
    EXPECT_EQ(Values(L"location"), Texts{L"elsewhere"});
    EXPECT_EQ(Values(L"duration"), Texts{L"45"});
}

TEST_F(InstanceTest, TheMessageOfAChangedInstanceReplacesBodiesAndCapabilities)
{
    AddDaily();
    CFakeProps& props = AttachException()->props;
    props.SetText(PR_BODY_W, L"changed body");
    props.SetNarrow(PROP_TAG(PT_STRING8, 0x1013), "<p>changed</p>");
    props.SetText(NamedTag(L"UCCapabilities"), L"video");

    List("2024-03-05T00:00:00", "2024-03-07T00:00:00");

    EXPECT_EQ(Values(L"description"), (Texts{L"changed body", L"body"}));
    EXPECT_EQ(Values(L"xaltdescription"),
              (Texts{L"&lt;p&gt;changed&lt;/p&gt;", L"&lt;p&gt;body&lt;/p&gt;"}));
    EXPECT_EQ(Values(L"UCCapabilities"), (Texts{L"video", L""}));
    EXPECT_EQ(m_trace.Count("Meeting description is modified."), 1U);
    EXPECT_EQ(LinesWith(m_trace, "bFound=1, meetInfoCurrent.strName=,strDesc size=12,").size(), 1U);
    EXPECT_EQ(LinesWith(m_trace,
                        "bFound=0, meetInfoCurrent.strName=,strDesc size=0,strXaltDesc size=0,"
                        "strPropertyFromDeskTools size=0,m_strUCCapabilities.size=0")
                  .size(),
              1U);
}

TEST_F(InstanceTest, TextsThatDifferInCaseOnlyStay)
{
    AddDaily();
    AttachException()->props.SetText(PR_BODY_W, L"BODY");

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{L"body"});
    EXPECT_EQ(m_trace.Count("Meeting description is modified."), 0U);
}

TEST_F(InstanceTest, AChangedInstanceThatEndsOnAnotherDayIsNotTaken)
{
    AddDaily();
    AttachException("2024-03-06T10:00:00")->props.SetText(PR_BODY_W, L"changed body");

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{L"body"});
}

TEST_F(InstanceTest, AnEmptyPropertyOfTheChangedInstanceBlanksTheCopy)
{
    AddDaily()->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"Joined");
    AttachException();

    List("2024-03-05T00:00:00", "2024-03-07T00:00:00");

    EXPECT_EQ(Values(L"desktoolsproperty"), (Texts{L"", L"Joined"}));
    EXPECT_TRUE(m_trace.Has(2, "DT property is modified []"));
}

TEST_F(InstanceTest, APropertyThatDiffersInCaseOnlyStays)
{
    AddDaily()->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"Joined");
    AttachException()->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"JOINED");

    ListDay();

    EXPECT_EQ(Values(L"desktoolsproperty"), Texts{L"Joined"});
    EXPECT_TRUE(LinesWith(m_trace, "DT property is modified").empty());
}

TEST_F(InstanceTest, AChangedPropertyIsTaken)
{
    AddDaily()->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"one");
    AttachException()->props.SetText(NamedTag(L"tlvmeetingcalendarproperty"), L"two");

    ListDay();

    EXPECT_EQ(Values(L"desktoolsproperty"), Texts{L"two"});
    EXPECT_TRUE(m_trace.Has(2, "DT property is modified [two]"));
}

TEST_F(InstanceTest, BodiesThatCouldNotBeReadAreThoseOfTheSeries)
{
    AddDaily();
    CFakeProps& props = AttachException()->props;
    props.Remove(PR_BODY_W);
    props.Remove(PROP_TAG(PT_STRING8, 0x1013));

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{L"body"});
    EXPECT_EQ(Values(L"xaltdescription"), Texts{L"&lt;p&gt;body&lt;/p&gt;"});
}

TEST_F(InstanceTest, ASeriesThatCouldNotBeReadItselfShowsTheMark)
{
    AddDaily()->props.Remove(PR_BODY_W);

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{L"FAILED_TO_READ_MAIL_BODY_FROM_MAPI"});
}

TEST_F(InstanceTest, TheRecipientsOfAChangedInstanceReplaceThoseOfTheSeries)
{
    AddDaily()->recipients = {Recipient(L"Host", L"host@example.org", 3)};
    AttachException()->recipients = {Recipient(L"Host", L"host@example.org", 3),
                                     Recipient(L"Guest", L"guest@example.org")};

    List("2024-03-05T00:00:00", "2024-03-07T00:00:00");

    EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Guest", L"Host"}));
}

TEST_F(InstanceTest, AChangedInstanceWithoutRecipientsKeepsThoseOfTheSeries)
{
    AddDaily()->recipients = {Recipient(L"Host", L"host@example.org", 3)};
    AttachException();

    ListDay();

    EXPECT_EQ(Values(L"name"), Texts{L"Host"});
}

TEST_F(InstanceTest, RecipientsOfAllChangedInstancesAreReadOnceForTheSeries)
{
    AddDaily();
    const CComRef<CFakeMessage> exception = AttachException();
    const auto reads = [&] {
        const auto& calls = exception->calls;
        return std::count(calls.begin(), calls.end(), "recipients");
    };

    List("2024-03-05T00:00:00", "2024-03-10T00:00:00");
    EXPECT_EQ(reads(), 1);
    ListDay();
    EXPECT_EQ(reads(), 1);
    MapiDataStore().ClearDataStore();
    ListDay();
    EXPECT_EQ(reads(), 2);
}

TEST_F(InstanceTest, RecipientsThatCouldNotBeReadAreLookedForWithTheNextInstance)
{
    AddDaily()->recipients = {Recipient(L"Host", L"host@example.org", 3)};
    AttachException()->recipients = {Recipient(L"Guest", L"guest@example.org", 3)};
    m_master->script["GetAttachmentTable"] = {MAPI_E_CALL_FAILED, MAPI_E_CALL_FAILED};

    List("2024-03-04T00:00:00", "2024-03-06T00:00:00");

    // The two looks for 4 March failed.
    EXPECT_EQ(Values(L"name"), (Texts{L"Host", L"Guest"}));
}

TEST_F(InstanceTest, AMasterThatCannotBeOpenedAgainStillGivesItsInstances)
{
    AddDaily();
    AttachException()->props.SetText(PR_BODY_W, L"changed body");
    m_store->messages.clear();

    ListDay();

    EXPECT_EQ(Values(L"description"), Texts{L"body"});
    EXPECT_TRUE(LinesWith(m_trace, "bFound=").empty());
}

TEST_F(InstanceTest, TheInstancesOfAKnownSeriesAreListedByItsKey)
{
    AddDaily();
    ListDay();
    const int opened = m_folder->opened;
    const FILETIME start = Moment("2024-06-03T12:00:00");
    const FILETIME end = Moment("2024-06-05T12:00:00");
    WString xml;

    EXPECT_NE(m_outlook.ListRecurrentInstance(L"00000001", &start, &end, xml), 0U);

    EXPECT_EQ(ValuesIn(xml, L"startTime"), (Texts{L"06/04/2024 09:00:00", L"06/05/2024 09:00:00"}));
    EXPECT_TRUE(xml.starts_with(L"<appointments><appointment>"));
    EXPECT_EQ(m_folder->opened, opened);
}

TEST_F(InstanceTest, AnUnknownSeriesOrAControllerThatIsNotUpGivesNothing)
{
    AddDaily();
    const FILETIME start = Moment("2024-06-03T12:00:00");
    const FILETIME end = Moment("2024-06-05T12:00:00");
    WString xml = L"before";

    EXPECT_EQ(m_outlook.ListRecurrentInstance(L"00000001", &start, &end, xml), 0U);
    ListDay();
    m_outlook.m_hrInit = 1;
    EXPECT_EQ(m_outlook.ListRecurrentInstance(L"00000001", &start, &end, xml), 0U);
    EXPECT_EQ(xml, L"before");
}

} // namespace
