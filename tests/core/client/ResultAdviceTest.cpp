#include "ResultAdvice.h"

#include <gtest/gtest.h>

using dtclient::AdviceForCall;
using dtclient::AdviceForInitialize;

TEST(ResultAdvice, CodesStandInEightHexadecimalDigits)
{
    EXPECT_EQ(dtclient::CodeText(0x80080002U), "0x80080002");
    EXPECT_EQ(dtclient::CodeText(1), "0x00000001");
}

TEST(ResultAdvice, AFailureSaysWhatWasTriedTheCodeAndWhatToDo)
{
    EXPECT_EQ(dtclient::FailureText("Calling X", 0x80040154U, {"it is missing", "install it"}),
              "Calling X failed with 0x80040154: it is missing.\nWhat to do: install it.\n");
    EXPECT_EQ(dtclient::TroubleText("Reading X", {"it is empty", "fill it"}),
              "Reading X: it is empty.\nWhat to do: fill it.\n");
}

TEST(ResultAdvice, TheThreeResultsOfBringUpAreTold)
{
    EXPECT_EQ(AdviceForInitialize(0x80080002U).meaning,
              "no mail client is installed, or its library cannot be loaded");
    EXPECT_EQ(AdviceForInitialize(0x80080003U).meaning, "the user has no default mail profile");
    EXPECT_EQ(AdviceForInitialize(0x80080004U).meaning,
              "logon, the user's identity or the default store failed");
}

TEST(ResultAdvice, AnUnregisteredServerLeadsToTheRegistrationVerbs)
{
    for (const std::uint32_t code : {0x80040154U, 0x800401F3U, 0x80040155U})
    {
        EXPECT_NE(AdviceForCall(code).remedy.find("-RegServerPerUser"), std::string::npos) << code;
    }
}

TEST(ResultAdvice, EveryCodeHasAMeaningAndARemedy)
{
    for (const std::uint32_t code : {0x80004005U,
                                     0x80070005U,
                                     0x800706BAU,
                                     0x800706BEU,
                                     0x80080005U,
                                     0x80010108U,
                                     0x12345678U})
    {
        EXPECT_FALSE(AdviceForCall(code).meaning.empty());
        EXPECT_FALSE(AdviceForCall(code).remedy.empty());
        EXPECT_FALSE(AdviceForInitialize(code).remedy.empty());
    }
}
