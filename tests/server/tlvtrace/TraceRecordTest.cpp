#include "TraceRecord.h"

#include <gtest/gtest.h>

#include <string>

using tlvtrace::TraceRecord;

namespace
{
constexpr tlvtrace::MomentText kTime = {'2', '0', '2', '6', '-', '1', '1', '-', '0', '2', ' ', '0',
                                        '4', ':', '0', '5', ':', '0', '6', '.', '0', '0', '7'};

std::string_view BodyOf(const TraceRecord& record)
{
    return tlvtrace::BodyOf(tlvtrace::TextOf(record));
}

bool EndsLine(const TraceRecord& record)
{
    return tlvtrace::EndsLine(tlvtrace::TextOf(record));
}

std::string Head(const TraceRecord& record)
{
    char head[tlvtrace::kMaxHead];
    const std::size_t length = tlvtrace::WriteHead(head, record, kTime, 1234, 56);
    return std::string(head, length);
}
} // namespace

TEST(TraceRecord, TheHeadHoldsTimeProcessThreadLevelModuleAndTag)
{
    EXPECT_EQ(Head({8, "dtOIEx64.exe", "oi", ""}),
              "2026-11-02 04:05:06.007 1234:56 E dtOIEx64.exe oi ");
}

TEST(TraceRecord, EachCodeHasItsLetter)
{
    EXPECT_EQ(Head({8, "m", "t", ""}), "2026-11-02 04:05:06.007 1234:56 E m t ");
    EXPECT_EQ(Head({4, "m", "t", ""}), "2026-11-02 04:05:06.007 1234:56 W m t ");
    EXPECT_EQ(Head({2, "m", "t", ""}), "2026-11-02 04:05:06.007 1234:56 I m t ");
    EXPECT_EQ(Head({7, "m", "t", ""}), "2026-11-02 04:05:06.007 1234:56 - m t ");
}

TEST(TraceRecord, WhatTheCallerDoesNotSayIsADash)
{
    EXPECT_EQ(Head({2, nullptr, "", nullptr}), "2026-11-02 04:05:06.007 1234:56 I - - ");
}

TEST(TraceRecord, LongNamesAreCutAndTheHeadStaysWithinItsSize)
{
    const std::string name(500, 'n');

    const std::string head = Head({2, name.c_str(), name.c_str(), ""});

    EXPECT_EQ(head,
              "2026-11-02 04:05:06.007 1234:56 I " + std::string(60, 'n') + " " +
                  std::string(16, 'n') + " ");
}

TEST(TraceRecord, TheBodyLosesLeadingBlanksAndLineEnds)
{
    EXPECT_EQ(BodyOf({2, "", "", " line,\n"}), "line,");
    EXPECT_EQ(BodyOf({2, "", "", "line\r\n"}), "line");
    EXPECT_EQ(BodyOf({2, "", "", "\n"}), "");
    EXPECT_EQ(BodyOf({2, "", "", nullptr}), "");
}

TEST(TraceRecord, ATextBeyondTheLimitIsCut)
{
    const std::string text(tlvtrace::kMaxText + 100, 'x');

    EXPECT_EQ(BodyOf({2, "", "", text.c_str()}).size(), tlvtrace::kMaxText);
    EXPECT_TRUE(EndsLine({2, "", "", text.c_str()}));
}

TEST(TraceRecord, APieceWithoutLineEndIsNotAWholeLine)
{
    EXPECT_TRUE(EndsLine({2, "", "", "x\n"}));
    EXPECT_FALSE(EndsLine({2, "", "", "x"}));
    EXPECT_TRUE(EndsLine({2, "", "", ""}));
    EXPECT_TRUE(EndsLine({2, "", "", nullptr}));
}
