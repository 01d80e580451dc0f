#include "NarrowText.h"

#include <gtest/gtest.h>

TEST(NarrowText, AsciiComesBackUnchanged)
{
    EXPECT_EQ(NarrowText(WTEXT("strato 1")), "strato 1");
    EXPECT_EQ(WidenText("strato 1"), WTEXT("strato 1"));
}

TEST(NarrowText, EmptyTextGivesEmptyText)
{
    EXPECT_EQ(NarrowText({}), "");
    EXPECT_EQ(WidenText({}), WString());
}

#ifndef _WIN32
TEST(NarrowText, SurrogatePairsBecomeFourBytesAndComeBack)
{
    const WString smile = {0xD83D, 0xDE00};

    EXPECT_EQ(NarrowText(smile), "\xF0\x9F\x98\x80");
    EXPECT_EQ(WidenText("\xF0\x9F\x98\x80"), smile);
}

TEST(NarrowText, LoneSurrogatesAndTornSequencesBecomeTheReplacementCharacter)
{
    EXPECT_EQ(NarrowText(WString{0xD83D}), "\xEF\xBF\xBD");
    EXPECT_EQ(NarrowText(WString{0xDE00, u'a'}),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(WidenText("\xF0\x9F"), (WString{0xFFFD, 0xFFFD}));
}
#endif
