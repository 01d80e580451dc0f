#include "RegValue.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kText = 1;
constexpr std::uint32_t kExpandText = 2;
constexpr std::uint32_t kBinary = 3;
constexpr std::uint32_t kDword = 4;

TEST(RegValue, ADwordIsReadLowestByteFirst)
{
    std::uint32_t value = 7;

    EXPECT_TRUE(regvalue::TakeDword(kDword, Bytes{0x78, 0x56, 0x34, 0x12}, value));
    EXPECT_EQ(value, 0x12345678U);
}

TEST(RegValue, MissingBytesOfADwordAreZero)
{
    std::uint32_t value = 7;

    EXPECT_TRUE(regvalue::TakeDword(kDword, Bytes{0xFF, 0xFE}, value));
    EXPECT_EQ(value, 0xFEFFU);
    EXPECT_TRUE(regvalue::TakeDword(kDword, Bytes{}, value));
    EXPECT_EQ(value, 0U);
}

TEST(RegValue, ADwordOfAnotherTypeOrOfFiveBytesIsAbsent)
{
    std::uint32_t value = 7;

    EXPECT_FALSE(regvalue::TakeDword(kBinary, Bytes{1, 0, 0, 0}, value));
    EXPECT_FALSE(regvalue::TakeDword(kText, Bytes{1, 0, 0, 0}, value));
    EXPECT_FALSE(regvalue::TakeDword(kDword, Bytes{1, 0, 0, 0, 0}, value));
    EXPECT_EQ(value, 7U);
}

TEST(RegValue, ATextEndsAtItsFirstZeroOrAtItsEnd)
{
    WString text;

    EXPECT_TRUE(regvalue::TakeText(kText, Bytes{'a', 0, 'b', 0, 0, 0, 'c', 0}, text));
    EXPECT_EQ(text, WTEXT("ab"));
    EXPECT_TRUE(regvalue::TakeText(kText, Bytes{'a', 0, 'b', 0}, text));
    EXPECT_EQ(text, WTEXT("ab"));
    EXPECT_TRUE(regvalue::TakeText(kText, Bytes{'a', 0, 'b'}, text));
    EXPECT_EQ(text, WTEXT("a"));
    EXPECT_TRUE(regvalue::TakeText(kText, Bytes{'a'}, text));
    EXPECT_EQ(text, WTEXT(""));
}

TEST(RegValue, ATextOfAnotherTypeIsAbsent)
{
    WString text = WTEXT("before");

    EXPECT_FALSE(regvalue::TakeText(kExpandText, Bytes{'a', 0}, text));
    EXPECT_FALSE(regvalue::TakeText(kDword, Bytes{'a', 0}, text));
    EXPECT_EQ(text, WTEXT("before"));
}

} // namespace
