#include "ColumnText.h"

#include <gtest/gtest.h>

using dtclient::CellText;
using dtclient::ColumnsOf;
using dtclient::TableText;

TEST(ColumnText, LettersCountByTheirWidthOnATerminal)
{
    EXPECT_EQ(ColumnsOf(""), 0U);
    EXPECT_EQ(ColumnsOf("abc"), 3U);
    EXPECT_EQ(ColumnsOf("\u00e9\u0416"), 2U);
    EXPECT_EQ(ColumnsOf("\u4f1a\u8b70"), 4U);
    EXPECT_EQ(ColumnsOf("e\u0301"), 1U);
    EXPECT_EQ(ColumnsOf("\U0001F600"), 2U);
}

TEST(ColumnText, BytesThatDoNotBelongCountAsOneColumnEach)
{
    EXPECT_EQ(ColumnsOf("\xFF\x80"), 2U);
    EXPECT_EQ(ColumnsOf("a\xE4"), 2U);
    EXPECT_EQ(ColumnsOf("\xE4z"), 2U);
}

TEST(ColumnText, ACellIsOneLineWithoutControlCharacters)
{
    EXPECT_EQ(CellText("  one\r\n\ttwo  ", 40), "one two");
    EXPECT_EQ(CellText("\x1B[31mred", 40), "[31mred");
    EXPECT_EQ(CellText("a\u202Eb\u2066c", 40), "a b c");
}

TEST(ColumnText, ALongCellIsCutWithAnEllipsis)
{
    EXPECT_EQ(CellText("1234567890", 10), "1234567890");
    EXPECT_EQ(CellText("12345678901", 10), "123456789\u2026");
    EXPECT_EQ(CellText("12345678 0123", 10), "12345678\u2026");
    // Two columns a letter: nine columns hold four of them and the mark.
    EXPECT_EQ(CellText("\u4f1a\u4f1a\u4f1a\u4f1a\u4f1a", 9), "\u4f1a\u4f1a\u4f1a\u4f1a\u2026");
}

TEST(ColumnText, ColumnsStandUnderEachOtherWithoutBlanksAtTheEnd)
{
    EXPECT_EQ(TableText({{"A", "Bbb", "C"}, {"xx", "", "z"}, {"\u4f1a\u8b70"}}),
              "A     Bbb  C\n"
              "----  ---  -\n"
              "xx         z\n"
              "\u4f1a\u8b70\n");
}
