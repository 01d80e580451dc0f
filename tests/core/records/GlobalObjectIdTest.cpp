#include "GlobalObjectId.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "NarrowText.h"

namespace
{

using Block = std::vector<std::uint8_t>;

/// A block with `uid` behind the mark and `length` as its stored length.
Block GlobalObjectId(const std::string& uid, std::uint32_t length)
{
    Block block(52, 0xEE);
    for (std::size_t byte = 0; byte < 4; ++byte)
    {
        block[36 + byte] = static_cast<std::uint8_t>(length >> (8 * byte));
    }
    const std::string mark = "vCal-Uid";
    std::copy(mark.begin(), mark.end(), block.begin() + 40);
    block.insert(block.end(), uid.begin(), uid.end());
    return block;
}

TEST(GetUidFromGlobalObjectId, GivesTheTextBehindTheMark)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abc@example.org", 27)),
              WTEXT("abc@example.org"));
}

TEST(GetUidFromGlobalObjectId, TheTextIsReadInTheCodePageOfTheThread)
{
    const std::string uid = "\xE4\x80z";

    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId(uid, 15)), WidenThreadText(uid));
}

TEST(GetUidFromGlobalObjectId, AZeroByteEndsTheTextEarly)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId(std::string("ab\0cd", 5), 17)), WTEXT("ab"));
}

TEST(GetUidFromGlobalObjectId, AShorterLengthCutsTheText)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 15)), WTEXT("abc"));
}

TEST(GetUidFromGlobalObjectId, ALengthOfTwelveMeansNoText)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 12)), WTEXT(""));
}

TEST(GetUidFromGlobalObjectId, ALengthBeyondTheBlockIsCutAtItsEnd)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 1000)), WTEXT("abcdef"));
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 0xFFFFFFFF)), WTEXT("abcdef"));
}

TEST(GetUidFromGlobalObjectId, ALengthBelowTwelveIsCutAtTheEndOfTheBlockAsWell)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 11)), WTEXT("abcdef"));
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("abcdef", 0)), WTEXT("abcdef"));
}

TEST(GetUidFromGlobalObjectId, FiftyThreeBytesOrFewerGiveNothing)
{
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("a", 13)), WTEXT(""));
    EXPECT_EQ(GetUidFromGlobalObjectId(GlobalObjectId("ab", 14)), WTEXT("ab"));
    EXPECT_EQ(GetUidFromGlobalObjectId(Block()), WTEXT(""));
}

TEST(GetUidFromGlobalObjectId, EitherHalfOfTheMarkMissingGivesNothing)
{
    Block first = GlobalObjectId("abc", 15);
    first[40] = 'V';
    Block second = GlobalObjectId("abc", 15);
    second[47] = 'D';

    EXPECT_EQ(GetUidFromGlobalObjectId(first), WTEXT(""));
    EXPECT_EQ(GetUidFromGlobalObjectId(second), WTEXT(""));
}

} // namespace
