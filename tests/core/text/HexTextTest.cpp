#include "HexText.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using Bytes = std::vector<std::uint8_t>;

TEST(HexText, BytesBecomeUpperCasePairsHighHalfFirst)
{
    const std::array<std::uint8_t, 4> bytes = {0x01, 0xAB, 0xFF, 0x00};
    WString text = WTEXT("old");

    BinToHexText(bytes.data(), text, 4);

    EXPECT_EQ(text, WTEXT("01ABFF00"));
}

TEST(HexText, ANullBlockLeavesTheTextAlone)
{
    WString text = WTEXT("old");

    BinToHexText(nullptr, text, 4);

    EXPECT_EQ(text, WTEXT("old"));
}

TEST(HexText, ACountOfZeroEmptiesTheText)
{
    const std::uint8_t byte = 1;
    WString text = WTEXT("old");

    BinToHexText(&byte, text, 0);

    EXPECT_TRUE(text.empty());
}

TEST(HexText, PairsBecomeBytesAndAnOddLastCharacterIsIgnored)
{
    Bytes bytes(3, 0xEE);
    std::uint32_t count = 99;

    HexTextToBin(WTEXT("01ABF"), bytes.data(), count);

    EXPECT_EQ(count, 2U);
    EXPECT_EQ(bytes, (Bytes{0x01, 0xAB, 0xEE}));
}

TEST(HexText, LowerCaseLettersAndJunkReadAsZero)
{
    EXPECT_EQ(BytesOfHexText(WTEXT("abA1g2 3")), (Bytes{0x00, 0xA1, 0x02, 0x03}));
    EXPECT_EQ(BytesOfHexText(WTEXT("/:@GF`")), (Bytes{0x00, 0x00, 0xF0}));
    EXPECT_EQ(BytesOfHexText(WString{0x0141, 0xFF21, 0x0041, 0x0080}), (Bytes{0x00, 0xA0}));
}

TEST(HexText, ANullTargetReturnsAtOnce)
{
    std::uint32_t count = 99;

    HexTextToBin(WTEXT("0102"), nullptr, count);

    EXPECT_EQ(count, 99U);
}

TEST(HexText, EveryByteSurvivesTheWayThereAndBack)
{
    Bytes all;
    for (int value = 0; value < 256; ++value)
    {
        all.push_back(static_cast<std::uint8_t>(value));
    }

    const WString text = HexTextOf(all);

    EXPECT_EQ(text.size(), 512U);
    EXPECT_EQ(text.substr(0, 8), WTEXT("00010203"));
    EXPECT_EQ(text.substr(504), WTEXT("FCFDFEFF"));
    EXPECT_EQ(BytesOfHexText(text), all);
}

TEST(HexText, AppendingKeepsWhatStoodBefore)
{
    WString text = WTEXT("id=");

    AppendHexText(text, Bytes{0x0A, 0xB0});
    AppendHexText(text, Bytes{});

    EXPECT_EQ(text, WTEXT("id=0AB0"));
}

TEST(HexText, TheComparisonAsksForTheExactText)
{
    const Bytes bytes = {0x0A, 0xB0};

    EXPECT_TRUE(IsHexTextOf(WTEXT("0AB0"), bytes));
    EXPECT_FALSE(IsHexTextOf(WTEXT("0ab0"), bytes));
    EXPECT_FALSE(IsHexTextOf(WTEXT("0AB"), bytes));
    EXPECT_FALSE(IsHexTextOf(WTEXT("0AB000"), bytes));
    EXPECT_TRUE(IsHexTextOf(WTEXT(""), Bytes{}));
}

} // namespace
