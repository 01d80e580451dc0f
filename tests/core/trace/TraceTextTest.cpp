#include "TraceText.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

std::pmr::string RawText(std::string_view prefix, std::span<const TracePair> pairs)
{
    return RawTraceText(prefix, pairs, std::pmr::get_default_resource());
}

std::vector<std::string> Pieces(std::string_view text)
{
    std::vector<std::string> pieces;
    ForEachTracePiece(text, [&pieces](const char* piece) { pieces.emplace_back(piece); });
    return pieces;
}

} // namespace

TEST(TraceText, LevelsGiveTheCodesOfTheLibrary)
{
    EXPECT_EQ(TraceCode(TL_SDK::TLLoggerLevelFailure), 8);
    EXPECT_EQ(TraceCode(TL_SDK::TLLoggerLevelWarning), 4);
    EXPECT_EQ(TraceCode(TL_SDK::TLLoggerLevelMilestone), 2);
    EXPECT_EQ(TraceCode(TL_SDK::TLLoggerLevelDetail), 2);
    EXPECT_EQ(TraceCode(static_cast<TL_SDK::TLLoggerLevel>(7)), 2);
}

TEST(TraceText, OnePairWithoutNameIsABlankTheLineACommaAndALineFeed)
{
    const TracePair pair{nullptr, CVarAdapter("[a.cpp:1][F]:m")};

    EXPECT_EQ(RawText("", {&pair, 1}), " [a.cpp:1][F]:m,\n");
}

TEST(TraceText, PrefixNamesAndValuesStandInOrder)
{
    const TracePair pairs[] = {
        {"a", CVarAdapter("1")}, {nullptr, CVarAdapter("2")}, {"c", CVarAdapter("")}};

    EXPECT_EQ(RawText("head", pairs), "head a=1,2,c=,\n");
}

TEST(TraceText, NoPairsLeaveThePrefixABlankAndALineFeed)
{
    EXPECT_EQ(RawText("head", {}), "head \n");
}

TEST(TraceText, ThreeThousandBytesAreTwoPieces)
{
    const std::string text = std::string(2047, 'a') + std::string(953, 'b');

    EXPECT_EQ(Pieces(text),
              (std::vector<std::string>{std::string(2047, 'a'), std::string(953, 'b')}));
}

TEST(TraceText, ExactlyOnePieceIsNotCut)
{
    EXPECT_EQ(Pieces(std::string(2047, 'a')), (std::vector<std::string>{std::string(2047, 'a')}));
}

TEST(TraceText, OneByteMoreMakesASecondPiece)
{
    EXPECT_EQ(Pieces(std::string(2048, 'a')),
              (std::vector<std::string>{std::string(2047, 'a'), "a"}));
}

TEST(TraceText, LongestLineIsThreePieces)
{
    // 4095 bytes of line with the blank, the comma and the line feed around them.
    const std::string line(4095, 'x');
    const TracePair pair{nullptr, CVarAdapter(line)};

    const std::vector<std::string> pieces = Pieces(RawText("", {&pair, 1}));

    ASSERT_EQ(pieces.size(), 3U);
    EXPECT_EQ(pieces[0], " " + std::string(2046, 'x'));
    EXPECT_EQ(pieces[1], std::string(2047, 'x'));
    EXPECT_EQ(pieces[2], "xx,\n");
}
