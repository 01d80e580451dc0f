#include "ServerTrace.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ChildProgram.h"
#include "DebuggerText.h"
#include "EventInbox.h"
#include "EventMessages.h"
#include "EventWindow.h"
#include "LiveBlocks.h"

// No trace library stands beside this program, so lines go to the debugger.
namespace
{

constexpr const char* kHeartbeat = "##dtOIEx##process##exist##";

class ServerTraceTest : public testing::Test
{
protected:
    void SetUp() override { StartServerTrace(); }
    void TearDown() override { StopServerTrace(); }

    CEventInbox m_inbox;
};

void Trace(TL_SDK::TLLoggerLevel level, const std::string& message)
{
    SendTrace(level, "a.cpp", 7, "C::M", "%s", message.c_str());
}

} // namespace

TEST_F(ServerTraceTest, WithoutLibraryALineGoesToTheDebuggerBehindANotice)
{
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelFailure, "lost");

    EXPECT_EQ(debugger.Texts(),
              (std::vector<std::string>{"Trace lib invalid\n", " [a.cpp:7][C::M]:lost,\n"}));
}

TEST_F(ServerTraceTest, EachPieceOfALongLineHasItsNotice)
{
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelDetail, std::string(3000, 'x'));

    const std::vector<std::string> texts = debugger.Texts();
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[0], "Trace lib invalid\n");
    EXPECT_EQ(texts[1].size(), 2047U);
    EXPECT_EQ(texts[2], "Trace lib invalid\n");
    EXPECT_EQ(texts[3].size(), std::string(" [a.cpp:7][C::M]:,\n").size() + 3000 - 2047);
}

TEST_F(ServerTraceTest, MessageAndLineAreBothCutAt4095)
{
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelDetail, std::string(5000, 'x'));

    std::size_t total = 0;
    for (const std::string& text : debugger.Texts())
    {
        total += text == "Trace lib invalid\n" ? 0 : text.size();
    }
    EXPECT_EQ(total, 4095U + std::string(" ,\n").size());
}

TEST_F(ServerTraceTest, HeartbeatGoesToTheEventWindowAndNowhereElse)
{
    const CDebuggerText debugger;

    SendTrace(TL_SDK::TLLoggerLevelMilestone, "a.cpp", 7, "C::M", "%s", kHeartbeat);

    const InboxMessage message = m_inbox.Next();
    EXPECT_EQ(message.message, static_cast<UINT>(WM_EVENT_TRACE));
    EXPECT_EQ(message.wParam, 0U);
    EXPECT_EQ(message.line, "[a.cpp:7][C::M]:##dtOIEx##process##exist##");
    EXPECT_TRUE(debugger.Texts().empty());
}

TEST_F(ServerTraceTest, AnyLineThatHoldsTheHeartbeatTextGoesToTheEventWindow)
{
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelFailure, std::string("before ") + kHeartbeat + " behind");

    EXPECT_EQ(m_inbox.Next().line, "[a.cpp:7][C::M]:before ##dtOIEx##process##exist## behind");
    EXPECT_TRUE(debugger.Texts().empty());
}

TEST_F(ServerTraceTest, HeartbeatTextBehindTheCutIsNoHeartbeat)
{
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelDetail, std::string(4090, 'x') + kHeartbeat);

    EXPECT_TRUE(m_inbox.TakeAll().empty());
    EXPECT_FALSE(debugger.Texts().empty());
}

TEST_F(ServerTraceTest, WithoutAWindowNothingIsTracedAtAll)
{
    const EventWindowProvider inbox = SetEventWindowProvider(nullptr);
    const CDebuggerText debugger;

    Trace(TL_SDK::TLLoggerLevelFailure, "unheard");
    Trace(TL_SDK::TLLoggerLevelMilestone, kHeartbeat);

    EXPECT_TRUE(debugger.Texts().empty());
    EXPECT_TRUE(m_inbox.TakeAll().empty());
    SetEventWindowProvider(inbox);
}

TEST_F(ServerTraceTest, TraceKeepsTheLastErrorOfItsCaller)
{
    SetLastError(298);
    Trace(TL_SDK::TLLoggerLevelFailure, "failed");
    EXPECT_EQ(GetLastError(), 298U);

    SetLastError(299);
    Trace(TL_SDK::TLLoggerLevelMilestone, kHeartbeat);
    EXPECT_EQ(GetLastError(), 299U);
}

TEST_F(ServerTraceTest, LinesLeaveNoMemoryBehind)
{
    Trace(TL_SDK::TLLoggerLevelDetail, "warm");
    const long before = LiveBlocks();

    for (int i = 0; i < 1000; i++)
    {
        Trace(TL_SDK::TLLoggerLevelDetail, "a line");
    }

    EXPECT_EQ(LiveBlocks(), before);
}

TEST_F(ServerTraceTest, HeartbeatToADeadWindowLeavesNoMemoryBehind)
{
    DestroyWindow(m_inbox.Window());
    Trace(TL_SDK::TLLoggerLevelMilestone, kHeartbeat);
    const long before = LiveBlocks();

    for (int i = 0; i < 100; i++)
    {
        Trace(TL_SDK::TLLoggerLevelMilestone, kHeartbeat);
    }

    EXPECT_EQ(LiveBlocks(), before);
}

TEST(ServerTraceLife, StartAndStopTellTheDebuggerWhatWasLoaded)
{
    const CDebuggerText debugger;

    StartServerTrace();
    StartServerTrace();
    StopServerTrace();
    StopServerTrace();

    const std::string path = [] {
        char own[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, own, MAX_PATH);
        const std::string whole(own);
        return whole.substr(0, whole.rfind('\\') + 1) + "tlvtraceX64.dll";
    }();
    const std::string values =
        ": g_pfnTLVTRACEA=0x00000000, g_pfnTlvTraceResident=0x00000000, "
        "g_pfnTlvTraceDllResident=0x00000000,g_hTlvTracer=0x00000000, szInstancePath=" +
        path + "\r\n";
    EXPECT_EQ(debugger.Texts(),
              (std::vector<std::string>{"TALVOLOGInitialize\n",
                                        "TKTvf70643 InitTLVTRACER" + values,
                                        "TKTvf70643 UninitTLVTRACER" + values,
                                        "~TALVOLOGInitialize\n"}));
}

TEST(ServerTraceLife, RawWriterLooksForTheLibraryOnItsOwn)
{
    const CDebuggerText debugger;
    const TracePair pair{"k", CVarAdapter("v")};

    WriteRawTrace(2, "head", {&pair, 1});

    const std::vector<std::string> texts = debugger.Texts();
    ASSERT_GE(texts.size(), 2U);
    EXPECT_EQ(texts[texts.size() - 2], "Trace lib invalid\n");
    EXPECT_EQ(texts.back(), "head k=v,\n");
}
