#include "RoundTripFigures.h"

#include <gtest/gtest.h>

using dtclient::PingFigures;
using dtclient::Spread;
using dtclient::SpreadOf;

TEST(RoundTripFigures, TheMiddleOfAnEvenRowLiesBetweenTwo)
{
    const Spread spread = SpreadOf({4, 1, 3, 8});

    EXPECT_DOUBLE_EQ(spread.least, 1);
    EXPECT_DOUBLE_EQ(spread.median, 3.5);
    EXPECT_DOUBLE_EQ(spread.mean, 4);
    EXPECT_DOUBLE_EQ(spread.most, 8);
}

TEST(RoundTripFigures, TheMiddleOfAnOddRowIsOneOfThem)
{
    EXPECT_DOUBLE_EQ(SpreadOf({9, 1, 5}).median, 5);
}

TEST(RoundTripFigures, NoMeasurementIsAllZero)
{
    EXPECT_DOUBLE_EQ(SpreadOf({}).most, 0);
}

TEST(RoundTripFigures, TheTextNamesUnitsAndWhetherTheServerRan)
{
    PingFigures figures;
    figures.activationMs = 12.34;
    figures.calls = 3;
    figures.roundTrip = SpreadOf({1, 2, 3});

    EXPECT_EQ(dtclient::PingText(figures),
              "activation  12.3 ms (a fresh server)\n"
              "round trip  2.0 us median, 1.0 least, 2.0 mean, 3.0 most, over 3 empty calls\n");
    figures.serverWasRunning = true;
    EXPECT_NE(dtclient::PingText(figures).find("the server was running already"),
              std::string::npos);
}

TEST(RoundTripFigures, JsonHoldsTheSameNumbers)
{
    PingFigures figures;
    figures.activationMs = 1.5;
    figures.calls = 1;
    figures.roundTrip = SpreadOf({2});

    EXPECT_EQ(
        dtclient::PingJson(figures),
        "{\n  \"serverWasRunning\": false,\n  \"activationMs\": 1.5,\n  \"calls\": 1,\n"
        "  \"roundTripUs\": {\n    \"median\": 2.0,\n    \"least\": 2.0,\n    \"mean\": 2.0,\n"
        "    \"most\": 2.0\n  }\n}\n");
}
