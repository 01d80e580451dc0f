#include "PatternTail.h"

#include <gtest/gtest.h>

#include "PatternBlob.h"
#include "RuleRun.h"
#include "TraceCapture.h"

namespace
{

using pattern::Bytes;
using pattern::Minutes;

/// A tail alone, with its own end so that reads behind it are caught by the sanitizer.
class TailTest : public testing::Test
{
protected:
    TailTest() { m_pattern = pattern::Daily("2024-01-01", 1); }

    TailResult Read(std::size_t cutBytes = 0)
    {
        Bytes blob = m_pattern.Write();
        blob.resize(blob.size() - cutBytes);
        return ReadBlob(blob);
    }

    TailResult ReadBlob(const Bytes& blob)
    {
        m_size = blob.size();
        m_exceptions.clear();
        m_tail = PatternTail{};
        const CPatternTailReader reader(blob, WTEXT("Standup"), WTEXT("Room 1"));
        return reader.Read(m_pattern.TailOffset(), m_tail, m_exceptions);
    }

    const RecurExceptionInfo& At(const std::string& date) { return m_exceptions.at(Minutes(date)); }

    pattern::Pattern m_pattern;
    PatternTail m_tail;
    ExceptionMap m_exceptions;
    std::size_t m_size = 0;
};

TEST_F(TailTest, ReadsTheFixedPart)
{
    m_pattern.endDate = Minutes("2024-06-30");
    m_pattern.endOffset = 615;

    const TailResult result = Read();

    EXPECT_EQ(result.warning, TailWarning::None);
    EXPECT_FALSE(result.isComplete); // there are no exceptions
    EXPECT_EQ(m_tail.startDate, Minutes("2024-01-01"));
    EXPECT_EQ(m_tail.endDate, Minutes("2024-06-30"));
    EXPECT_EQ(m_tail.startTimeOffset, 540U);
    EXPECT_EQ(m_tail.endTimeOffset, 615U);
}

TEST_F(TailTest, ADeletedDateGetsItsOriginalStartWithTheOffset)
{
    m_pattern.deleted = {Minutes("2024-01-05")};

    Read();

    EXPECT_EQ(m_tail.deletedCount, 1U);
    EXPECT_EQ(At("2024-01-05").state, kExceptionDeleted);
    EXPECT_EQ(At("2024-01-05").originalStart, Minutes("2024-01-05T09:00:00"));
    EXPECT_EQ(At("2024-01-05").start, 0U);
    EXPECT_TRUE(At("2024-01-05").subject.empty());
}

TEST_F(TailTest, AnExceptionOfADeletedDateIsAModifiedOne)
{
    m_pattern.modified.push_back(
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00"));

    Read();

    EXPECT_EQ(At("2024-01-05").state, kExceptionModified);
    EXPECT_EQ(At("2024-01-05").start, Minutes("2024-01-06T10:00:00"));
    EXPECT_EQ(At("2024-01-05").end, Minutes("2024-01-06T11:00:00"));
    EXPECT_TRUE(At("2024-01-05").subject == WTEXT("Standup"));
    EXPECT_TRUE(At("2024-01-05").location == WTEXT("Room 1"));
    EXPECT_EQ(At("2024-01-05").hasMeetingType, 0U);
}

TEST_F(TailTest, AnExceptionWithoutADeletedDateIsDropped)
{
    m_pattern.modified.push_back(
        pattern::Moved("2024-01-05T09:01:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00"));

    Read();

    EXPECT_EQ(m_exceptions.size(), 1U);
    EXPECT_EQ(At("2024-01-05").state, kExceptionDeleted);
}

class WriterVersionTest : public TailTest, public testing::WithParamInterface<std::uint32_t>
{
};

TEST_P(WriterVersionTest, ReadsAllFieldsAndTheExtendedTexts)
{
    m_pattern.writerVersion2 = GetParam();
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = "New subject";
    modified.meetingType = 5;
    modified.reminderDelta = 15;
    modified.reminder = 1;
    modified.location = "Room 2";
    modified.busyStatus = 2;
    modified.attachment = 1;
    modified.subType = 0;
    modified.color = 3;
    modified.hasBody = true;
    m_pattern.modified.push_back(modified);
    modified.original = Minutes("2024-01-08T09:00:00");
    modified.subject = "Second";
    m_pattern.modified.push_back(modified);

    const TailResult result = Read();

    EXPECT_EQ(result.warning, TailWarning::None);
    EXPECT_TRUE(result.isComplete);
    EXPECT_EQ(result.position, m_size); // all was read
    EXPECT_TRUE(At("2024-01-05").subject == WTEXT("New subject"));
    EXPECT_TRUE(At("2024-01-05").location == WTEXT("Room 2"));
    EXPECT_TRUE(At("2024-01-08").subject == WTEXT("Second"));
    EXPECT_EQ(At("2024-01-05").meetingType, 5U);
    EXPECT_EQ(At("2024-01-05").hasMeetingType, 1U);
    EXPECT_EQ(At("2024-01-05").overrideFlags, 0x3FFU);
}

INSTANTIATE_TEST_SUITE_P(Versions, WriterVersionTest, testing::Values(0x3008U, 0x3009U));

TEST_F(TailTest, ASubjectFlagEmptiesTheSubjectUntilTheExtendedTextComes)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = "";
    m_pattern.modified.push_back(modified);

    EXPECT_TRUE(Read().isComplete);
    EXPECT_TRUE(At("2024-01-05").subject.empty());
}

TEST_F(TailTest, AnEmptyExtendedLocationKeepsTheRules)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.location = "";
    m_pattern.modified.push_back(modified);

    EXPECT_TRUE(Read().isComplete);
    EXPECT_TRUE(At("2024-01-05").location == WTEXT("Room 1"));
}

TEST_F(TailTest, AnExtendedTextIsCutAtItsFirstZeroUnit)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = std::string("ab\0cd", 5);
    modified.location = "Room 2";
    m_pattern.modified.push_back(modified);

    EXPECT_TRUE(Read().isComplete);
    EXPECT_TRUE(At("2024-01-05").subject == WTEXT("ab"));
    EXPECT_TRUE(At("2024-01-05").location == WTEXT("Room 2"));
}

TEST_F(TailTest, ARecordWithoutTextsEndsInWarning1)
{
    m_pattern.modified.push_back(
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00"));

    EXPECT_EQ(Read().warning, TailWarning::ExtendedStart);
    EXPECT_EQ(At("2024-01-05").state, kExceptionModified);
}

TEST_F(TailTest, AnAttachmentWithoutABodyPutsTheRestFourBytesOutOfStep)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.attachment = 1;
    modified.hasBody = false;
    m_pattern.modified.push_back(modified);
    modified = pattern::Moved("2024-01-08T09:00:00", "2024-01-09T10:00:00", "2024-01-09T11:00:00");
    m_pattern.modified.push_back(modified);

    Read();

    EXPECT_EQ(At("2024-01-05").state, kExceptionModified);
    EXPECT_EQ(At("2024-01-08").state,
              kExceptionDeleted); // its record was read from the wrong place
    m_pattern.modified[0].hasBody = true;
    Read();
    EXPECT_EQ(At("2024-01-08").state, kExceptionModified);
}

TEST_F(TailTest, TwoRecordsOfOneDateLeaveTheLast)
{
    m_pattern.modified.push_back(
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00"));
    m_pattern.modified.push_back(
        pattern::Moved("2024-01-05T09:00:00", "2024-01-07T10:00:00", "2024-01-07T11:00:00"));

    Read();

    EXPECT_EQ(At("2024-01-05").start, Minutes("2024-01-07T10:00:00"));
}

TEST_F(TailTest, WithoutExceptionsABlobMayEndBehindTheirCount)
{
    Bytes blob = m_pattern.Write();
    blob.resize(blob.size() - 8);

    EXPECT_EQ(ReadBlob(blob).warning, TailWarning::None);
}

TEST_F(TailTest, MissingBytesReadAs0)
{
    m_pattern.startDate = 0x01020304;
    Bytes blob = m_pattern.Write();
    blob.resize(m_pattern.TailOffset() + 8 + 3); // all but the highest byte of the start date

    const TailResult result = ReadBlob(blob);

    EXPECT_EQ(result.warning, TailWarning::FixedPart);
    EXPECT_EQ(m_tail.startDate, 0x00020304U);
    EXPECT_EQ(m_tail.endDate, 0U);
    EXPECT_EQ(result.position, m_pattern.TailOffset() + 32);
}

TEST_F(TailTest, AMeetingTypeThatIsCutOffReadsAs0AndIsStored)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.meetingType = 7;
    m_pattern.modified.push_back(modified);
    Bytes blob = m_pattern.Write();
    // Behind the exception: a reserved size, an extended record of 12 bytes, a reserved size.
    const std::size_t end = blob.size() - 20;
    blob.resize(end - 3);

    EXPECT_EQ(ReadBlob(blob).warning, TailWarning::FirstReservedSize);
    EXPECT_EQ(At("2024-01-05").state, kExceptionModified);
    EXPECT_EQ(At("2024-01-05").meetingType, 0U);
    EXPECT_EQ(At("2024-01-05").hasMeetingType, 1U);
}

TEST_F(TailTest, CountsThatWouldWrapAreSeen)
{
    for (const std::uint32_t count : {0x40000000U, 0x40000001U, 0xFFFFFFFFU})
    {
        Bytes blob = m_pattern.Write();
        const auto put = [&blob, count](std::size_t at) {
            for (std::size_t i = 0; i < 4; ++i)
            {
                blob[at + i] = static_cast<std::uint8_t>(count >> (8 * i) & 0xFF);
            }
        };
        Bytes deleted = blob;
        put(m_pattern.TailOffset() + 4);
        EXPECT_EQ(ReadBlob(blob).warning, TailWarning::FixedPart);
        put(m_pattern.TailOffset());
        EXPECT_EQ(ReadBlob(blob).warning, TailWarning::DeletedList);
    }
}

TEST_F(TailTest, ReservedBlocksOfAnotherSizeBeginTheNextRecord)
{
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = "x";
    m_pattern.modified.push_back(modified);
    Bytes blob = m_pattern.Write();
    const std::size_t reserved = m_pattern.TailOffset() + 4 + 4 + 4 + 4 + 24 + 2 + 14 + 5;
    blob[reserved] = 8; // read as a start date-time, and what follows as end and original date

    EXPECT_EQ(ReadBlob(blob).warning, TailWarning::ExtendedUnknownDate);
}

// Every length of a rich pattern: no length crashes, and each check has its number.
TEST_F(TailTest, EveryCutEndsLikeTheNearestCheck)
{
    m_pattern.deleted = {Minutes("2024-01-03")};
    pattern::Modified modified =
        pattern::Moved("2024-01-05T09:00:00", "2024-01-06T10:00:00", "2024-01-06T11:00:00");
    modified.subject = "ab";
    modified.location = "cd";
    m_pattern.modified.push_back(modified);
    const Bytes whole = m_pattern.Write();
    std::string ends;
    TailWarning last = TailWarning::None;

    for (std::size_t size = m_pattern.TailOffset(); size <= whole.size(); ++size)
    {
        const TailWarning warning =
            ReadBlob(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))
                .warning;
        if (size == m_pattern.TailOffset() || warning != last)
        {
            ends += std::to_string(size - m_pattern.TailOffset()) + ":" +
                    std::to_string(static_cast<unsigned>(warning)) + " ";
        }
        last = warning;
    }

    // 12 bytes of deleted dates; the fixed part to 44; two bytes of the count, which read as 0 until
    // the first of them is there; the record to 60 and its texts to 66 and 72; the first reserved
    // size to 76; the extended record from 88, behind change highlight and reserved size, with its
    // start to 92 and its dates to 100. A count of characters that is missing reads as 0 and ends in
    // silence; one that is there asks for its text to 106 and 112.
    EXPECT_EQ(ends,
              "0:8 12:9 44:0 45:10 60:13 66:14 72:15 76:1 92:2 100:0 101:5 106:0 107:7 112:0 ");
}

TEST(TailWarningTrace, TellsSubjectPositionNumberAndTheWholePattern)
{
    const CTraceCapture trace;
    pattern::Pattern rule = pattern::Daily("2024-01-01", 1);
    Bytes blob = rule.Write();
    blob.resize(38);
    blob[34] = 1; // one deleted date that is not there

    EXPECT_EQ(ExpandRule(blob, "2024-01-01T00:00:00", "2024-01-05T00:00:00").count, 0U);

    EXPECT_EQ(
        trace.Messages(),
        (std::vector<std::string>{"3 CRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=0 "
                                  "m_zInfo.DaylightDate.wMonth=0",
                                  "2 CRecurrentRule::ParseDaily",
                                  "2 CRecurrentRule::ParseNonworkDaily",
                                  "1 Rec rule parse warning, Appt Name[Standup], pos[34], posEx[8]",
                                  "1 Size[38] Info[04300430"
                                  "0A20"
                                  "0000"
                                  "0000"
                                  "00000000"
                                  "A0050000"
                                  "00000000"
                                  "23200000"
                                  "0A000000"
                                  "00000000"
                                  "01000000]"}));
}

} // namespace
