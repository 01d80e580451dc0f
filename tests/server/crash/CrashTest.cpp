// Each test runs a program that dies on purpose and looks at what it left.

#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "ChildProgram.h"
#include "MiniDumpFile.h"

namespace
{

constexpr DWORD kAccessViolation = 0xC0000005;
constexpr DWORD kOwnCode = 0xE1234567;
constexpr DWORD kGccThrow = 0x20474343;

std::wstring CrashFolder()
{
    wchar_t path[MAX_PATH] = {};
    SHGetSpecialFolderPathW(nullptr, path, CSIDL_APPDATA, TRUE);
    return std::wstring(path) + L"\\Talvo Connect\\";
}

class CrashTest : public testing::Test
{
protected:
    void SetUp() override { RemoveFiles(); }
    void TearDown() override { RemoveFiles(); }

    void RemoveFiles() const
    {
        DeleteFileW(m_traceFile.c_str());
        DeleteFileW(m_traceCopy.c_str());
        DeleteFileW(m_dumpFile.c_str());
    }

    /// Leaves a trace file as a running trace library would.
    void LeaveTrace(const std::string& text) const
    {
        CreateDirectoryW(CrashFolder().c_str(), nullptr);
        WriteFileBytes(m_traceFile, text);
    }

    ChildResult Die(const std::wstring& mode)
    {
        const ChildResult result = RunChild(OwnFolder() + L"\\crash_probe.exe", {mode});
        std::istringstream lines(result.output);
        std::string line;
        while (std::getline(lines, line))
        {
            line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
            m_lastLine = line;
            m_firstLine = m_firstLine.empty() ? line : m_firstLine;
        }
        return result;
    }

    [[nodiscard]] CMiniDumpFile Dump() const { return CMiniDumpFile(FileBytes(m_dumpFile)); }
    /// The thread that the probe said it would die on.
    [[nodiscard]] DWORD DyingThread() const { return std::stoul(m_lastLine); }

    /// A dump that a debugger can work with: the thread that died, with its registers and stack.
    void ExpectUsableDump(DWORD code) const
    {
        const CMiniDumpFile dump = Dump();
        ASSERT_TRUE(dump.IsWhole());
        EXPECT_EQ(dump.ReadFlags(), 0x1A25U);
        EXPECT_EQ(dump.ReadArchitecture(), 9);
        const CMiniDumpFile::Exception exception = dump.ReadException();
        EXPECT_EQ(exception.code, code);
        EXPECT_EQ(exception.threadId, DyingThread());
        EXPECT_GT(exception.cbContext, 0U);
        bool found = false;
        for (const CMiniDumpFile::Thread& thread : dump.ReadThreads())
        {
            if (thread.id == DyingThread())
            {
                found = true;
                EXPECT_GT(thread.cbContext, 0U);
                EXPECT_GT(thread.cbStack, 0U);
                EXPECT_TRUE(dump.HoldsMemoryAt(thread.stackStart));
            }
        }
        EXPECT_TRUE(found) << "the dying thread is not in the dump";
        const auto modules = dump.ReadModules();
        EXPECT_TRUE(std::any_of(modules.begin(), modules.end(), [](const auto& module) {
            return module.path.ends_with("crash_probe.exe");
        }));
    }

    const std::wstring m_traceFile = CrashFolder() + L"strato-mapi.txt";
    const std::wstring m_traceCopy = CrashFolder() + L"strato_mapi_last_crash.txt";
    const std::wstring m_dumpFile = CrashFolder() + L"dtOIEx64.exe.300.dmp";
    std::string m_firstLine;
    std::string m_lastLine;
};

} // namespace

TEST_F(CrashTest, FaultOnTheWorkThreadLeavesTheDumpAndTheTraceCopy)
{
    LeaveTrace("what happened before\n");

    const ChildResult result = Die(L"worker-fault");

    EXPECT_EQ(result.exitCode, kAccessViolation);
    ExpectUsableDump(kAccessViolation);
    EXPECT_EQ(FileBytes(m_traceCopy), "what happened before\n");
}

TEST_F(CrashTest, DumpOpensInADebuggerThatShowsWhereTheProgramDied)
{
    Die(L"worker-fault");

    const ChildResult debugger = RunChild(L"C:\\windows\\system32\\winedbg.exe", {m_dumpFile});

    EXPECT_NE(debugger.output.find("crash_probe.exe was running"), std::string::npos);
    const std::size_t backtrace = debugger.output.find("Backtrace:");
    ASSERT_NE(backtrace, std::string::npos) << debugger.output;
    const std::size_t frame = debugger.output.find("=>0 ", backtrace);
    ASSERT_NE(frame, std::string::npos);
    const std::string firstFrame =
        debugger.output.substr(frame, debugger.output.find('\n', frame) - frame);
    EXPECT_NE(firstFrame.find("crash_probe"), std::string::npos) << firstFrame;
}

TEST_F(CrashTest, FaultOnTheMainThreadLeavesADumpThatShowsTheWorkThreadToo)
{
    const ChildResult result = Die(L"main-fault");

    EXPECT_EQ(result.exitCode, kAccessViolation);
    ExpectUsableDump(kAccessViolation);
    EXPECT_GE(Dump().ReadThreads().size(), 2U);
}

TEST_F(CrashTest, UncaughtExceptionOnTheWorkThreadLeavesADump)
{
    const ChildResult result = Die(L"worker-throw");

    EXPECT_EQ(result.exitCode, kGccThrow);
    ExpectUsableDump(kGccThrow);
}

TEST_F(CrashTest, UncaughtExceptionOnTheMainThreadIsLedToTheFilter)
{
    const ChildResult result = Die(L"main-throw");

    ExpectUsableDump(0xE0544552);
    EXPECT_EQ(result.exitCode, 0xE0544552U);
}

TEST_F(CrashTest, ExceptionOutOfANoexceptFunctionIsLedToTheFilter)
{
    Die(L"noexcept-throw");

    ExpectUsableDump(0xE0544552);
}

TEST_F(CrashTest, FilterTellsTheDebuggerAndTheTraceAndReleasesTheMailSystemLast)
{
    LeaveTrace("to be copied\n");

    const ChildResult result = Die(L"told-fault");

    std::string output = result.output;
    output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
    EXPECT_EQ(output,
              "debugger ######## in _UnhandledExceptionFilter\n"
              "2 #################### _UnhandledExceptionFilter.\tCRASH!!! "
              "####################\n"
              "flush 500 before the copy\n"
              "release behind the dump\n");
    EXPECT_EQ(result.exitCode, kAccessViolation);
}

TEST_F(CrashTest, FaultWithinTheFilterEndsItWithoutADump)
{
    LeaveTrace("kept for nobody\n");

    const ChildResult result = Die(L"filter-fault");

    EXPECT_NE(result.exitCode, kNoExit);
    EXPECT_NE(result.exitCode, 99U);
    EXPECT_FALSE(FileExists(m_dumpFile));
    EXPECT_FALSE(FileExists(m_traceCopy));
}

TEST_F(CrashTest, FaultBehindTheDumpMakesNoSecondOne)
{
    const ChildResult result = Die(L"worker-release-fault");

    EXPECT_NE(result.exitCode, kNoExit);
    EXPECT_NE(result.exitCode, 99U);
    ExpectUsableDump(kOwnCode);
}

TEST_F(CrashTest, LibraryThatSetsItsFilterLaterGetsNullAndChangesNothing)
{
    const ChildResult result = Die(L"later-filter");

    EXPECT_EQ(m_firstLine, "null");
    EXPECT_EQ(result.exitCode, kAccessViolation);
    ExpectUsableDump(kAccessViolation);
}

TEST_F(CrashTest, WithoutATraceFileTheCopyIsNotTouchedAndTheDumpIsMade)
{
    CreateDirectoryW(CrashFolder().c_str(), nullptr);
    WriteFileBytes(m_traceCopy, "of an earlier crash\n");

    Die(L"main-fault");

    EXPECT_EQ(FileBytes(m_traceCopy), "of an earlier crash\n");
    ExpectUsableDump(kAccessViolation);
}

TEST_F(CrashTest, OlderAndLongerCopyKeepsItsTail)
{
    LeaveTrace("NEW");
    WriteFileBytes(m_traceCopy, "older text");

    Die(L"main-fault");

    EXPECT_EQ(FileBytes(m_traceCopy), "NEWer text");
}

TEST_F(CrashTest, TraceOfManyBlocksIsCopiedWhole)
{
    std::string trace;
    for (int i = 0; trace.size() < 65536 * 3 + 17; i++)
    {
        trace += std::to_string(i) + "\n";
    }
    LeaveTrace(trace);

    Die(L"main-fault");

    EXPECT_EQ(FileBytes(m_traceCopy), trace);
}

TEST_F(CrashTest, OlderDumpIsReplaced)
{
    CreateDirectoryW(CrashFolder().c_str(), nullptr);
    WriteFileBytes(m_dumpFile, std::string(10000, 'x'));

    Die(L"main-fault");

    ExpectUsableDump(kAccessViolation);
}

TEST_F(CrashTest, DumpThatCannotBeMadeDoesNotStopTheRest)
{
    LeaveTrace("still copied\n");
    CreateDirectoryW(m_dumpFile.c_str(), nullptr); // a folder stands where the dump would go

    const ChildResult result = Die(L"main-fault");

    RemoveDirectoryW(m_dumpFile.c_str());
    EXPECT_EQ(result.exitCode, kAccessViolation);
    EXPECT_EQ(FileBytes(m_traceCopy), "still copied\n");
}
