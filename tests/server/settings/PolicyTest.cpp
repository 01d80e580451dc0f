#include <gtest/gtest.h>

#include "RegisterUtil.h"
#include "SettingsKeys.h"
#include "TraceCapture.h"

namespace
{

constexpr const WCHAR* kFeature = L"FEATURE_DTOIEX64_TEST";

TEST(ReadPolicyFeature, IsOffWithoutAnyValue)
{
    const CTraceCapture trace;

    EXPECT_FALSE(ReadPolicyFeature(kFeature));
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(ReadPolicyFeature, AUserValueCountsWhereNoMachineValueExists)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, 1);

    EXPECT_TRUE(ReadPolicyFeature(kFeature));
}

TEST(ReadPolicyFeature, AMachineValueOfZeroBeatsAUserValueOfOne)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, 1);
    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 0);

    EXPECT_FALSE(ReadPolicyFeature(kFeature));
}

TEST(ReadPolicyFeature, AMachineValueOfOneBeatsAUserValueOfZero)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, 0);
    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 1);

    EXPECT_TRUE(ReadPolicyFeature(kFeature));
}

TEST(ReadPolicyFeature, AnyNumberButOneIsOff)
{
    CRegistryValues values;

    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 2);
    EXPECT_FALSE(ReadPolicyFeature(kFeature));
    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 0xFFFFFFFF);
    EXPECT_FALSE(ReadPolicyFeature(kFeature));
    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 1);
    EXPECT_TRUE(ReadPolicyFeature(kFeature));
}

TEST(ReadPolicyFeature, AValueOfAnotherTypeIsAbsentWithoutATraceLine)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, 1);
    values.SetText(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, L"0");
    const CTraceCapture trace;

    EXPECT_TRUE(ReadPolicyFeature(kFeature));
    values.Set(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, REG_BINARY, {0, 0, 0, 0});
    EXPECT_TRUE(ReadPolicyFeature(kFeature));
    values.Set(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, REG_QWORD, {0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_TRUE(ReadPolicyFeature(kFeature));
    EXPECT_TRUE(trace.Lines().empty());
}

// The views share one policy key, so which of them answers first cannot be told apart there.
TEST(ReadPolicyFeature, AValueWrittenThroughTheThirtyTwoBitViewCounts)
{
    CRegistryValues values;
    values.SetDword(HKEY_LOCAL_MACHINE, kPolicyTestKey, kFeature, 1, KEY_WOW64_32KEY);

    EXPECT_TRUE(ReadPolicyFeature(kFeature));
}

TEST(ReadPolicyDword, EachViewOfTheMachineHiveHasItsOwnValue)
{
    CRegistryValues values;
    values.SetDword(HKEY_LOCAL_MACHINE, kScratchKey, kFeature, 64, KEY_WOW64_64KEY);
    values.SetDword(HKEY_LOCAL_MACHINE, kScratchKey, kFeature, 32, KEY_WOW64_32KEY);
    DWORD value = 0;

    EXPECT_EQ(ReadPolicyDword(HKEY_LOCAL_MACHINE, kScratchKey, kFeature, value, 0), 1);
    EXPECT_EQ(value, 64U);
    EXPECT_EQ(ReadPolicyDword(HKEY_LOCAL_MACHINE, kScratchKey, kFeature, value, KEY_WOW64_32KEY),
              1);
    EXPECT_EQ(value, 32U);
    EXPECT_EQ(ReadPolicyDword(HKEY_LOCAL_MACHINE, kScratchKey, kFeature, value, KEY_WOW64_64KEY),
              1);
    EXPECT_EQ(value, 64U);
}

TEST(ReadPolicyDword, AnAbsentValueLeavesTheOutValueAlone)
{
    DWORD value = 7;

    EXPECT_EQ(ReadPolicyDword(HKEY_CURRENT_USER, kPolicyTestKey, kFeature, value, 0), 0);
    EXPECT_EQ(value, 7U);
}

TEST(ReadPolicyDword, ADwordOfTheWrongSizeIsTakenAsFarAsItGoes)
{
    CRegistryValues values;
    DWORD value = 7;

    values.Set(HKEY_CURRENT_USER, kScratchKey, L"d", REG_DWORD, {0x01, 0x02});
    EXPECT_EQ(ReadPolicyDword(HKEY_CURRENT_USER, kScratchKey, L"d", value, 0), 1);
    EXPECT_EQ(value, 0x0201U);

    values.Set(HKEY_CURRENT_USER, kScratchKey, L"d", REG_DWORD, {1, 0, 0, 0, 0});
    EXPECT_EQ(ReadPolicyDword(HKEY_CURRENT_USER, kScratchKey, L"d", value, 0), 0);
    EXPECT_EQ(value, 0x0201U);
}

} // namespace
