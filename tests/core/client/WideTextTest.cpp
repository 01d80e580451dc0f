#include "WideText.h"

#include <gtest/gtest.h>

using dtclient::Utf8FromUtf16;

TEST(WideText, EveryLengthOfUtf8IsWritten)
{
    EXPECT_EQ(Utf8FromUtf16(u"aé\u4f1a\U0001F600"), "a\xC3\xA9\xE4\xBC\x9A\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8FromUtf16(u"\u007F\u0080\u07FF\u0800\uFFFF"),
              "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(Utf8FromUtf16(u""), "");
}

TEST(WideText, HalfASurrogatePairIsReplaced)
{
    const char16_t high[] = {0xD83D, u'x', 0};
    const char16_t low[] = {0xDE00, 0};
    const char16_t last[] = {u'y', 0xD83D, 0};

    EXPECT_EQ(Utf8FromUtf16(high), "\xEF\xBF\xBDx");
    EXPECT_EQ(Utf8FromUtf16(low), "\xEF\xBF\xBD");
    EXPECT_EQ(Utf8FromUtf16(last), "y\xEF\xBF\xBD");
}

#ifdef _WIN32
TEST(WideText, ThePlatformsWideTextGoesThereAndBack)
{
    const std::wstring wide = L"Prüfung \u4f1a\u8b70";

    EXPECT_EQ(dtclient::WideFromUtf8(dtclient::Utf8FromWide(wide)), wide);
    EXPECT_EQ(dtclient::WideFromUtf8(""), L"");
}
#endif
