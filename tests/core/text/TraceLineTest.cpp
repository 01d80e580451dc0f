#include <gtest/gtest.h>

#include <string>

#include "TraceCapture.h"

TEST(TraceLine, NamesFileLineFunctionAndMessage)
{
    CTraceCapture capture;

    SendTrace(TL_SDK::TLLoggerLevelWarning, "a.cpp", 7, "C::M", "n=%d", 3);

    ASSERT_EQ(capture.Lines().size(), 1U);
    EXPECT_EQ(capture.Lines()[0].text, "[a.cpp:7][C::M]:n=3");
    EXPECT_EQ(capture.Lines()[0].level, TL_SDK::TLLoggerLevelWarning);
}

TEST(TraceLine, MessageAndLineAreBothCutAt4095Bytes)
{
    CTraceCapture capture;
    const std::string longText(5000, 'x');

    SendTrace(TL_SDK::TLLoggerLevelDetail, "a.cpp", 7, "C::M", "%s", longText.c_str());

    ASSERT_EQ(capture.Lines().size(), 1U);
    EXPECT_EQ(capture.Lines()[0].text.size(), 4095U);
}

TEST(TraceLine, MacroGivesTheBaseNameOfTheSource)
{
    CTraceCapture capture;

    SEND_TRACE(2, "C::M", "here");

    ASSERT_EQ(capture.Lines().size(), 1U);
    EXPECT_EQ(capture.Lines()[0].text.rfind("[TraceLineTest.cpp:", 0), 0U);
}

TEST(TraceLine, CodesArePaddedAsTheLinesShowThemAndANullTextIsNamed)
{
    CTraceCapture capture;
    const char* const volatile nothing = nullptr;

    SendTrace(TL_SDK::TLLoggerLevelDetail,
              "a.cpp",
              7,
              "C::M",
              "[%8x] 0x%8x 0x%08X [0x%x] %s",
              0x1234U,
              5U,
              0xABU,
              0x80080002U,
              nothing);

    ASSERT_EQ(capture.Lines().size(), 1U);
    EXPECT_EQ(capture.Lines()[0].message, "[    1234] 0x       5 0x000000AB [0x80080002] (null)");
}

TEST(TraceLine, TextIsNeverTheFormat)
{
    CTraceCapture capture;

    SendTrace(TL_SDK::TLLoggerLevelDetail, "a.cpp", 7, "C::M", "%s", "100%s of %n");

    ASSERT_EQ(capture.Lines().size(), 1U);
    EXPECT_EQ(capture.Lines()[0].message, "100%s of %n");
}
