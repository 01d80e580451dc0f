#include "OrdinalText.h"

#include <gtest/gtest.h>

TEST(OrdinalText, CaseDoesNotCountInAnyScript)
{
    EXPECT_TRUE(EqualIgnoringCase(L"Vantor", L"vANTOR"));
    EXPECT_TRUE(EqualIgnoringCase(L"\u0416\u00C4", L"\u0436\u00E4"));
    EXPECT_FALSE(EqualIgnoringCase(L"Vantor", L"Vantos"));
}

TEST(OrdinalText, TextsOfDifferentLengthDiffer)
{
    EXPECT_FALSE(EqualIgnoringCase(L"a", L"ab"));
    EXPECT_FALSE(EqualIgnoringCase(L"", L"a"));
    EXPECT_TRUE(EqualIgnoringCase(L"", L""));
}

TEST(OrdinalText, ZeroUnitsAreOrdinaryText)
{
    EXPECT_FALSE(EqualIgnoringCase(WStringView(L"a\0b", 3), WStringView(L"a\0c", 3)));
    EXPECT_TRUE(EqualIgnoringCase(WStringView(L"a\0b", 3), WStringView(L"A\0B", 3)));
}

TEST(OrdinalText, LowerCaseFollowsNoLocale)
{
    EXPECT_EQ(LowerCaseText(L"IPM.Appointment"), L"ipm.appointment");
    EXPECT_EQ(LowerCaseText(L"\u0416I"), L"\u0436i");
    EXPECT_EQ(LowerCaseText(L""), L"");
}
