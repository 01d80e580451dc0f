#include <gtest/gtest.h>

#include <array>

#include "RegisterUtil.h"
#include "SettingsKeys.h"
#include "TraceCapture.h"

namespace
{

class RegTextTest : public testing::Test
{
protected:
    int Read(REGSAM view = 0)
    {
        return ReadRegString(HKEY_CURRENT_USER, kScratchKey, L"name", m_text, view);
    }

    CRegistryValues m_values;
    WString m_text = L"before";
};

TEST_F(RegTextTest, ATextOfAnySizeIsRead)
{
    const std::wstring longText(5000, L'x');

    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"site");
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(m_text, L"site");

    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", longText);
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(m_text, longText);
}

TEST_F(RegTextTest, AnAbsentValueEmptiesTheTextWithoutATraceLine)
{
    const CTraceCapture trace;

    EXPECT_EQ(Read(), 0);

    EXPECT_TRUE(m_text.empty());
    EXPECT_TRUE(trace.Lines().empty());
}

TEST_F(RegTextTest, AValueOfAnotherTypeIsAbsent)
{
    for (const DWORD type :
         {DWORD{REG_EXPAND_SZ}, DWORD{REG_MULTI_SZ}, DWORD{REG_BINARY}, DWORD{REG_DWORD}})
    {
        m_values.Set(HKEY_CURRENT_USER, kScratchKey, L"name", type, BytesOf(L"ab"));
        m_text = L"before";

        EXPECT_EQ(Read(), 0) << type;
        EXPECT_TRUE(m_text.empty()) << type;
    }
}

TEST_F(RegTextTest, ATextWithoutItsTerminatorIsReadWhole)
{
    m_values.Set(HKEY_CURRENT_USER, kScratchKey, L"name", REG_SZ, BytesOf(L"site"));

    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(m_text, L"site");
}

TEST_F(RegTextTest, TheFirstTerminatorEndsTheText)
{
    m_values.Set(
        HKEY_CURRENT_USER, kScratchKey, L"name", REG_SZ, BytesOf(std::wstring(L"a\0b\0", 4)));

    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(m_text, L"a");
}

TEST_F(RegTextTest, AnOddLastByteIsNoPartOfTheText)
{
    m_values.Set(HKEY_CURRENT_USER, kScratchKey, L"name", REG_SZ, {'a', 0, 'b', 0, 'c'});

    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(m_text, L"ab");
}

TEST_F(RegTextTest, AnEmptyTextIsThere)
{
    m_values.Set(HKEY_CURRENT_USER, kScratchKey, L"name", REG_SZ, {});

    EXPECT_EQ(Read(), 1);
    EXPECT_TRUE(m_text.empty());
}

TEST_F(RegTextTest, TheSizeOfAValueIsInBytesAndMinusOneWithoutOne)
{
    EXPECT_EQ(GetRegValueSize(HKEY_CURRENT_USER, kScratchKey, L"name", 0), -1);
    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"site");

    EXPECT_EQ(GetRegValueSize(HKEY_CURRENT_USER, kScratchKey, L"name", 0), 10);
    EXPECT_EQ(GetRegValueSize(HKEY_CURRENT_USER, kScratchKey, L"other", 0), -1);
}

TEST_F(RegTextTest, TheBufferReaderTakesATextThatFits)
{
    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"site");
    std::array<WCHAR, 6> buffer;
    buffer.fill(L'#');

    EXPECT_EQ(RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), 12, 0), 1);

    EXPECT_EQ(buffer, (std::array<WCHAR, 6>{L's', L'i', L't', L'e', L'\0', L'#'}));
}

TEST_F(RegTextTest, TheBufferReaderLeavesTheBufferAloneWhenItFails)
{
    m_values.SetText(HKEY_CURRENT_USER, kScratchKey, L"name", L"site");
    std::array<WCHAR, 6> buffer;
    buffer.fill(L'#');
    const std::array<WCHAR, 6> untouched = buffer;

    EXPECT_EQ(RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), 8, 0), 0);
    EXPECT_EQ(RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), 0, 0), 0);
    EXPECT_EQ(RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"name", nullptr, 12, 0), 0);
    m_values.Set(HKEY_CURRENT_USER, kScratchKey, L"name", REG_BINARY, BytesOf(L"ab"));
    EXPECT_EQ(RegValueToBuffer(HKEY_CURRENT_USER, kScratchKey, L"name", buffer.data(), 12, 0), 0);

    EXPECT_EQ(buffer, untouched);
}

TEST_F(RegTextTest, EachViewOfTheMachineHiveHasItsOwnText)
{
    m_values.SetText(HKEY_LOCAL_MACHINE, kScratchKey, L"name", L"sixty-four", KEY_WOW64_64KEY);
    m_values.SetText(HKEY_LOCAL_MACHINE, kScratchKey, L"name", L"thirty-two", KEY_WOW64_32KEY);

    EXPECT_EQ(ReadRegString(HKEY_LOCAL_MACHINE, kScratchKey, L"name", m_text, KEY_WOW64_32KEY), 1);
    EXPECT_EQ(m_text, L"thirty-two");
    EXPECT_EQ(ReadRegString(HKEY_LOCAL_MACHINE, kScratchKey, L"name", m_text, 0), 1);
    EXPECT_EQ(m_text, L"sixty-four");
}

} // namespace
