#include <gtest/gtest.h>

#include <algorithm>

#include "TestOutlook.h"

namespace
{

// "Plan" in Cyrillic letters, in the code page of Russian threads.
constexpr const char* kNarrow = "\xCF\xEB\xE0\xED";
constexpr LCID kRussian = 0x0419;
constexpr const wchar_t* kWide = L"\x041F\x043B\x0430\x043D";

/// Makes this thread a Russian one; the process and its code page stay as they are.
class ReaderCodePageTest : public testing::Test
{
protected:
    ReaderCodePageTest()
    {
        EXPECT_NE(GetACP(), 1251U) << "the process's own code page would hide the thread's";
        EXPECT_TRUE(SetThreadLocale(kRussian));
    }
    ~ReaderCodePageTest() override
    {
        SetThreadLocale(m_before);
        m_message.Reset();
        EXPECT_EQ(LiveFakes(), 0);
    }

    MeetingInfo Read()
    {
        MeetingInfo info;
        CTestOutlook::GetMAPIAppointmentInfo(m_message.Get(), info);
        return info;
    }

    const LCID m_before = GetThreadLocale();
    CComRef<CFakeMessage> m_message = MakeFake<CFakeMessage>();
};

TEST_F(ReaderCodePageTest, TheHtmlBodyIsReadByTheCodePageOfTheThread)
{
    m_message->props.SetNarrow(PROP_TAG(PT_STRING8, 0x1013), kNarrow);

    EXPECT_EQ(Read().strXaltDesc, kWide);
}

TEST_F(ReaderCodePageTest, TheGlobalIdentifierIsReadByTheCodePageOfTheThread)
{
    std::vector<BYTE> block(52, 0);
    block[36] = 16; // the mark and four characters
    const std::string mark = "vCal-Uid";
    std::copy(mark.begin(), mark.end(), block.begin() + 40);
    for (const char unit : std::string(kNarrow))
    {
        block.push_back(static_cast<BYTE>(unit));
    }
    m_message->props.SetBlock(NamedTag(PSETID_Meeting, 3, PT_BINARY), block);

    EXPECT_EQ(Read().uid, kWide);
}

} // namespace
