#include "OrdinalText.h"

#include <gtest/gtest.h>

TEST(OrdinalText, CaseDoesNotCountInAnyScript)
{
    EXPECT_TRUE(EqualIgnoringCase(WTEXT("Vantor"), WTEXT("vANTOR")));
    EXPECT_TRUE(EqualIgnoringCase(WTEXT("\u0416\u00C4"), WTEXT("\u0436\u00E4")));
    EXPECT_FALSE(EqualIgnoringCase(WTEXT("Vantor"), WTEXT("Vantos")));
}

TEST(OrdinalText, TextsOfDifferentLengthDiffer)
{
    EXPECT_FALSE(EqualIgnoringCase(WTEXT("a"), WTEXT("ab")));
    EXPECT_FALSE(EqualIgnoringCase(WTEXT(""), WTEXT("a")));
    EXPECT_TRUE(EqualIgnoringCase(WTEXT(""), WTEXT("")));
}

TEST(OrdinalText, ZeroUnitsAreOrdinaryText)
{
    EXPECT_FALSE(EqualIgnoringCase(WStringView(WTEXT("a\0b"), 3), WStringView(WTEXT("a\0c"), 3)));
    EXPECT_TRUE(EqualIgnoringCase(WStringView(WTEXT("a\0b"), 3), WStringView(WTEXT("A\0B"), 3)));
}

TEST(OrdinalText, LowerCaseFollowsNoLocale)
{
    EXPECT_TRUE(LowerCaseText(WTEXT("IPM.Appointment")) == WTEXT("ipm.appointment"));
    EXPECT_TRUE(LowerCaseText(WTEXT("\u0416I")) == WTEXT("\u0436i"));
    EXPECT_TRUE(LowerCaseText(WTEXT("")).empty());
}

TEST(OrdinalText, LowerCaseKnowsEveryAlphabetOfTheBasicPlane)
{
    EXPECT_TRUE(LowerCaseText(WTEXT("\u00C4\u0178\u01C4\u0391\u0531\u1F88\u2C00\uFF21")) ==
                WTEXT("\u00E4\u00FF\u01C6\u03B1\u0561\u1F80\u2C30\uFF41"));
    EXPECT_TRUE(LowerCaseText(WTEXT("\u00E4\u4E2D1-")) == WTEXT("\u00E4\u4E2D1-"));
}

TEST(OrdinalText, LettersWhoseOtherCaseDoesNotLeadBackStayAsTheyAre)
{
    // Kelvin sign, micro sign, titlecase digraph, sharp S.
    const WString text = WTEXT("\u212A\u00B5\u01C5\u1E9E");

    EXPECT_TRUE(LowerCaseText(text) == text);
    EXPECT_FALSE(EqualIgnoringCase(WTEXT("\u212A"), WTEXT("k")));
}
