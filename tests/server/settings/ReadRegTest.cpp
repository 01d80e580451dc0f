#include <gtest/gtest.h>

#include <array>

#include "RegisterUtil.h"
#include "SettingsKeys.h"
#include "TraceCapture.h"

namespace
{

TEST(ReadReg, ATextGoesIntoTheBufferWhichIsZeroedFirst)
{
    CRegistryValues values;
    values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"text");
    std::array<WCHAR, 10> buffer;
    buffer.fill(L'#');

    EXPECT_TRUE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), 16, nullptr, 0));

    EXPECT_STREQ(buffer.data(), L"text");
    EXPECT_EQ(buffer[7], L'\0');
    EXPECT_EQ(buffer[8], L'#');
}

TEST(ReadReg, ANullNameReadsTheDefaultValue)
{
    CRegistryValues values;
    values.SetText(HKEY_CURRENT_USER, kScratchKey, nullptr, L"default");
    std::array<WCHAR, 10> buffer{};

    EXPECT_TRUE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, nullptr, buffer.data(), sizeof(buffer), nullptr, 0));

    EXPECT_STREQ(buffer.data(), L"default");
}

TEST(ReadReg, ADwordGoesIntoItsOwnPlace)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kScratchKey, L"number", 0x12345678);
    DWORD number = 0;

    EXPECT_TRUE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"number", nullptr, 0, &number, 1));

    EXPECT_EQ(number, 0x12345678U);
}

TEST(ReadReg, TheTypeIsNotChecked)
{
    CRegistryValues values;
    values.Set(HKEY_CURRENT_USER, kScratchKey, L"bytes", REG_BINARY, {0x41, 0x00});
    DWORD number = 0xFFFFFFFF;

    EXPECT_TRUE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"bytes", nullptr, 0, &number, 1));

    EXPECT_EQ(number, 0x41U);
}

TEST(ReadReg, AValueThatIsTooLargeFails)
{
    CRegistryValues values;
    values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"a longer text");
    std::array<WCHAR, 4> buffer{};
    DWORD number = 7;
    const CTraceCapture trace;

    EXPECT_FALSE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), sizeof(buffer), nullptr, 0));
    EXPECT_FALSE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"name", nullptr, 0, &number, 1));

    EXPECT_EQ(number, 7U);
    EXPECT_EQ(trace.Count("failed 2"), 2U);
}

TEST(ReadReg, AMissingKeyIsFailure1AndTheBufferIsZeroedAllTheSame)
{
    std::array<WCHAR, 4> buffer;
    buffer.fill(L'#');
    const CTraceCapture trace;

    EXPECT_FALSE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), sizeof(buffer), nullptr, 0));

    EXPECT_EQ(buffer, (std::array<WCHAR, 4>{}));
    ASSERT_EQ(trace.Lines().size(), 1U);
    EXPECT_EQ(trace.Lines()[0].level, 3);
    EXPECT_EQ(trace.Lines()[0].function, "CRegisterUtil::ReadReg");
    EXPECT_EQ(trace.Lines()[0].message, "failed 1");
}

TEST(ReadReg, AMissingValueIsFailure2)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kScratchKey, L"other", 1);
    DWORD number = 7;
    const CTraceCapture trace;

    EXPECT_FALSE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"name", nullptr, 0, &number, 1));

    EXPECT_EQ(number, 7U);
    ASSERT_EQ(trace.Lines().size(), 1U);
    EXPECT_EQ(trace.Lines()[0].level, 3);
    EXPECT_EQ(trace.Lines()[0].message, "failed 2");
}

TEST(WriteReg, WhatWasWrittenIsRead)
{
    CRegistryValues values;
    values.SetDword(HKEY_CURRENT_USER, kScratchKey, L"written", 1);
    const DWORD two = 2;
    DWORD number = 0;

    EXPECT_TRUE(CRegisterUtil::WriteReg(
        HKEY_CURRENT_USER, kScratchKey, L"written", REG_DWORD, &two, sizeof(two)));
    EXPECT_TRUE(
        CRegisterUtil::ReadReg(HKEY_CURRENT_USER, kScratchKey, L"written", nullptr, 0, &number, 1));

    EXPECT_EQ(number, 2U);
}

TEST(WriteReg, AKeyThatIsMissingIsMade)
{
    const std::wstring text = L"new";
    WCHAR buffer[8] = {};

    EXPECT_TRUE(
        CRegisterUtil::WriteReg(HKEY_CURRENT_USER, kScratchKey, L"made", REG_SZ, text.c_str(), 6));
    EXPECT_TRUE(CRegisterUtil::ReadReg(
        HKEY_CURRENT_USER, kScratchKey, L"made", buffer, sizeof(buffer), nullptr, 0));

    EXPECT_STREQ(buffer, L"new");
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, kScratchKey), ERROR_SUCCESS);
}

TEST(WriteReg, AFailureIsNotNoticed)
{
    const DWORD one = 1;
    // No key can be made directly below this root.
    EXPECT_TRUE(CRegisterUtil::WriteReg(
        HKEY_USERS, L"dtOIEx64\\No\\Such\\Hive", L"x", REG_DWORD, &one, sizeof(one)));
    // Nor below what is no key at all.
    EXPECT_TRUE(CRegisterUtil::WriteReg(reinterpret_cast<HKEY>(static_cast<LONG_PTR>(0x1234)),
                                        kScratchKey,
                                        L"x",
                                        REG_DWORD,
                                        &one,
                                        sizeof(one)));
    RegDeleteTreeW(HKEY_USERS, L"dtOIEx64");
}

} // namespace
