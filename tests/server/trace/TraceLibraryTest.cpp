// The server's trace with a trace library beside the program: each test puts a recording library and
// a probe program into a folder of their own.

#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProgram.h"

namespace
{

struct Call
{
    std::string head; ///< "entry|code|module|tag|zero"
    std::string text;
};

/// Stops at the first record that is not whole.
std::vector<Call> ParseCalls(const std::string& log)
{
    std::vector<Call> calls;
    std::size_t at = 0;
    while (at < log.size())
    {
        const std::size_t lineEnd = log.find('\n', at);
        const std::size_t lastBar = log.rfind('|', lineEnd);
        if (lineEnd == std::string::npos || lastBar == std::string::npos || lastBar < at)
        {
            ADD_FAILURE() << "torn record at " << at;
            break;
        }
        const std::size_t length = std::stoul(log.substr(lastBar + 1, lineEnd - lastBar - 1));
        if (length > log.size() - lineEnd - 1)
        {
            ADD_FAILURE() << "short record at " << at;
            break;
        }
        calls.push_back({log.substr(at, lastBar - at), log.substr(lineEnd + 1, length)});
        at = lineEnd + 1 + length;
    }
    return calls;
}

class TraceLibraryTest : public testing::Test
{
protected:
    /// Runs the probe beside the library with these exports, and gives the recorded calls.
    std::vector<Call> RunProbe(const std::wstring& exports,
                               const std::wstring& mode,
                               const std::wstring& folderName = L"trace_library_test")
    {
        const CTestFolder folder(folderName);
        folder.CopyIn(OwnFolder() + L"\\trace_probe.exe", L"trace_probe.exe");
        folder.CopyIn(OwnFolder() + L"\\trace_recording_" + exports + L".dll", L"tlvtraceX64.dll");
        SetEnvironmentVariableW(L"TRACE_PROBE_LOG", folder.File(L"calls.log").c_str());
        const ChildResult result = RunChild(folder.File(L"trace_probe.exe"), {mode});
        EXPECT_EQ(result.exitCode, 0U);
        m_output = result.output;
        return ParseCalls(FileBytes(folder.File(L"calls.log")));
    }

    std::string m_output;
};

} // namespace

TEST_F(TraceLibraryTest, EntryPointWithModuleNameAndTagComesFirst)
{
    const std::vector<Call> calls = RunProbe(L"all", L"lines");

    ASSERT_GE(calls.size(), 4U);
    EXPECT_EQ(calls[0].head, "TLVTRACERAWADLLNAME_RESIDENT|8|trace_probe.exe|OI|0");
    EXPECT_EQ(calls[0].text, " [probe.cpp:10][P::F]:level 0,\n");
    EXPECT_EQ(calls[1].head, "TLVTRACERAWADLLNAME_RESIDENT|4|trace_probe.exe|OI|0");
    EXPECT_EQ(calls[1].text, " [probe.cpp:10][P::F]:level 1,\n");
    EXPECT_EQ(calls[2].head, "TLVTRACERAWADLLNAME_RESIDENT|2|trace_probe.exe|OI|0");
    EXPECT_EQ(calls[2].text, " [probe.cpp:10][P::F]:level 2,\n");
    EXPECT_EQ(calls[3].head, "TLVTRACERAWADLLNAME_RESIDENT|2|trace_probe.exe|OI|0");
    EXPECT_EQ(calls[3].text, " [probe.cpp:10][P::F]:level 3,\n");
}

TEST_F(TraceLibraryTest, ResidentEntryPointWithoutModuleNameComesSecond)
{
    const std::vector<Call> calls = RunProbe(L"raw_and_resident", L"lines");

    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[0].head, "TLVTRACERAWA_RESIDENT|8||OI|0");
    EXPECT_EQ(calls[1].head, "TLVTRACERAWA_RESIDENT|4||OI|0");
    EXPECT_EQ(calls[1].text, " [probe.cpp:10][P::F]:level 1,\n");
}

TEST_F(TraceLibraryTest, PlainEntryPointComesLast)
{
    const std::vector<Call> calls = RunProbe(L"raw", L"lines");

    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[0].head, "TLVTRACERAWA|8|trace_probe.exe||0");
    EXPECT_EQ(calls[1].head, "TLVTRACERAWA|4|trace_probe.exe||0");
    EXPECT_EQ(calls[1].text, " [probe.cpp:10][P::F]:level 1,\n");
}

TEST_F(TraceLibraryTest, LibraryWithoutAnyEntryPointIsNotCalled)
{
    EXPECT_TRUE(RunProbe(L"none", L"lines").empty());
}

TEST_F(TraceLibraryTest, LibraryIsAskedToWriteOutWhatItHolds)
{
    const std::vector<Call> calls = RunProbe(L"all", L"flush");

    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].text, " [probe.cpp:13][P::F]:last,\n");
    EXPECT_EQ(calls[1].head, "TLVTRACEFLUSH|500|||0");
}

TEST_F(TraceLibraryTest, LibraryThatCannotWriteOutIsNotWaitedFor)
{
    const std::vector<Call> calls = RunProbe(L"raw", L"flush");

    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].text, " [probe.cpp:13][P::F]:last,\n");
}

TEST_F(TraceLibraryTest, LibraryIsFoundInAFolderThatTheCodePageHasNoLettersFor)
{
    const std::wstring folderName = L"trace_\x4F1A\x8B70_\x0416";
    BOOL isLossy = FALSE;
    WideCharToMultiByte(CP_ACP, 0, folderName.c_str(), -1, nullptr, 0, nullptr, &isLossy);
    ASSERT_NE(isLossy, FALSE) << "this code page has the letters, so the test would show nothing";

    const std::vector<Call> calls = RunProbe(L"all", L"lines", folderName);

    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0].text, " [probe.cpp:10][P::F]:level 0,\n");
}

TEST_F(TraceLibraryTest, LineOfThreeThousandBytesGoesOutAsTwoPieces)
{
    const std::vector<Call> calls = RunProbe(L"all", L"lines");

    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[4].text.size(), 2047U);
    EXPECT_EQ(calls[4].text.rfind(" [probe.cpp:12][P::F]:xxx", 0), 0U);
    // A blank before the line, a comma and a line feed behind it.
    EXPECT_EQ(calls[5].text, std::string(3000 + 1 - 2047, 'x') + ",\n");
}

TEST_F(TraceLibraryTest, HeartbeatNeverReachesTheLibrary)
{
    for (const Call& call : RunProbe(L"all", L"lines"))
    {
        EXPECT_EQ(call.text.find("##dtOIEx##process##exist##"), std::string::npos);
    }
}

TEST_F(TraceLibraryTest, TenThousandLinesOfEightThreadsArriveUntornAndLeaveNoMemory)
{
    const std::vector<Call> calls = RunProbe(L"all", L"flood");

    // Eight lines warm the threads up, then 1250 of each follow.
    EXPECT_EQ(calls.size(), 8U + 10000U);
    std::multiset<std::string> lines;
    for (const Call& call : calls)
    {
        const std::size_t open = call.text.find('<');
        const std::size_t close = call.text.find('>');
        ASSERT_NE(open, std::string::npos);
        ASSERT_NE(close, std::string::npos);
        EXPECT_EQ(call.text.substr(close), ">,\n");
        lines.insert(call.text.substr(open, close - open));
    }
    for (int thread = 0; thread < 8; thread++)
    {
        const std::string body(static_cast<std::size_t>(40 + 200 * thread),
                               static_cast<char>('a' + thread));
        for (int i = 0; i < 1250; i++)
        {
            std::ostringstream line;
            line << '<' << thread << ':' << i << ':' << body;
            ASSERT_EQ(lines.count(line.str()), i == 0 ? 2U : 1U);
        }
    }
    // The threads come and go between the two counts, but no line may leave a block.
    EXPECT_LT(std::stol(m_output), 100);
}
