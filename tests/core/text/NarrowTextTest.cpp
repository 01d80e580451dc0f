#include "NarrowText.h"

#include <gtest/gtest.h>

TEST(NarrowText, AsciiComesBackUnchanged)
{
    EXPECT_EQ(NarrowText(WTEXT("strato 1")), "strato 1");
    EXPECT_EQ(WidenText("strato 1"), WTEXT("strato 1"));
}

TEST(NarrowText, EveryAsciiCharacterComesBackTheTerminatorAmongThem)
{
    WString wide;
    std::string narrow;
    for (char letter = 0;; ++letter)
    {
        wide += static_cast<WCHAR>(letter);
        narrow += letter;
        if (letter == 0x7F)
        {
            break;
        }
    }

    EXPECT_EQ(NarrowText(wide), narrow);
}

TEST(NarrowText, OneOtherCharacterAnywhereIsConverted)
{
    for (std::size_t place = 0; place < 20; ++place)
    {
        WString wide(20, static_cast<WCHAR>('a'));
        wide[place] = 0x00E9;

        EXPECT_EQ(WidenText(NarrowText(wide)), wide) << place;
        EXPECT_NE(NarrowText(wide), std::string(20, 'a')) << place;
    }
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
