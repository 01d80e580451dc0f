#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "TraceFile.h"
#include "TraceFolder.h"

namespace
{
std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

// What stands behind the mark.
std::vector<std::string> Rests(const std::vector<std::string>& lines, const std::string& mark)
{
    std::vector<std::string> rests;
    for (const std::string& line : lines)
    {
        rests.push_back(line.substr(line.find(mark) + mark.size()));
    }
    return rests;
}

// "café" in the process's code page, as it stands in the file.
std::string CafeInUtf8()
{
    wchar_t wide[16] = {};
    const int units = MultiByteToWideChar(CP_ACP, 0, " caf\xE9", 5, wide, 16);
    char utf8[64] = {};
    WideCharToMultiByte(CP_UTF8, 0, wide, units, utf8, sizeof utf8, nullptr, nullptr);
    return utf8;
}
} // namespace

TEST(TraceLibrary, EachEntryPointWritesOneLineAndKeepsTheLastError)
{
    const std::string mark = UniqueMark();

    ASSERT_EQ(ExitCodeOf(StartWriter(L"entries \"" + LibraryPath() + L"\" " + Wide(mark))), 0U);

    const std::vector<std::string> lines = LinesWith(tlvtrace::TraceDirectory(), mark);
    EXPECT_EQ(Rests(lines, mark),
              (std::vector<std::string>{" named\r",
                                        " tagged\r",
                                        " plain\r",
                                        " first piece\r",
                                        " second piece\r",
                                        " two\\r\\nlines\r",
                                        CafeInUtf8() + "\r"}));
}

TEST(TraceLibrary, ALineTellsWhoWroteIt)
{
    const std::string mark = UniqueMark();
    HANDLE writer = StartWriter(L"entries \"" + LibraryPath() + L"\" " + Wide(mark));
    const std::string process = std::to_string(GetProcessId(writer));
    ASSERT_EQ(ExitCodeOf(writer), 0U);

    const std::vector<std::string> lines = LinesWith(tlvtrace::TraceDirectory(), mark);

    ASSERT_EQ(lines.size(), 7U);
    const std::string who = " " + process + ":";
    EXPECT_NE(lines[0].find(who), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find(" E writer.exe tt "), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find(" W - tt "), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find(" I writer.exe - "), std::string::npos) << lines[2];
    // 2026-11-02 14:30:15.007
    EXPECT_EQ(lines[0][4], '-');
    EXPECT_EQ(lines[0][13], ':');
    EXPECT_EQ(lines[0][19], '.');
}

TEST(TraceLibrary, TheRestOfACutLineIsMarkedAsSuch)
{
    const std::string mark = UniqueMark();

    ASSERT_EQ(ExitCodeOf(StartWriter(L"entries \"" + LibraryPath() + L"\" " + Wide(mark))), 0U);

    const std::vector<std::string> lines = LinesWith(tlvtrace::TraceDirectory(), mark);
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[3].find("(continued)"), std::string::npos);
    EXPECT_NE(lines[4].find(" tt (continued) " + mark), std::string::npos) << lines[4];
    EXPECT_EQ(lines[5].find("(continued)"), std::string::npos);
}

TEST(TraceLibrary, AProcessThatEndsAtOnceLeavesWhatItHadWrittenOut)
{
    const std::string mark = UniqueMark();

    ASSERT_EQ(ExitCodeOf(StartWriter(L"killed \"" + LibraryPath() + L"\" " + Wide(mark))), 0U);

    EXPECT_EQ(Rests(LinesWith(tlvtrace::TraceDirectory(), mark), mark),
              std::vector<std::string>{" last words\r"});
}

TEST(TraceLibrary, SeveralProcessesWithSeveralThreadsTearNoLineAndLoseNone)
{
    constexpr int kProcesses = 4;
    constexpr int kThreads = 4;
    constexpr int kLines = 400;
    const std::string mark = UniqueMark();
    std::vector<HANDLE> writers;
    for (int process = 0; process < kProcesses; ++process)
    {
        writers.push_back(StartWriter(L"dll \"" + LibraryPath() + L"\" " + Wide(mark) + L"process" +
                                      std::to_wstring(process) + L" " + std::to_wstring(kThreads) +
                                      L" " + std::to_wstring(kLines)));
    }
    for (HANDLE writer : writers)
    {
        EXPECT_EQ(ExitCodeOf(writer), 0U);
    }

    const std::vector<std::string> rests = Rests(LinesWith(tlvtrace::TraceDirectory(), mark), mark);
    EXPECT_EQ(rests.size(), static_cast<std::size_t>(kProcesses * kThreads * kLines));
    EXPECT_EQ(std::set<std::string>(rests.begin(), rests.end()).size(), rests.size());
    EXPECT_TRUE(std::all_of(rests.begin(), rests.end(), [](const std::string& rest) {
        return rest.starts_with("process") && rest.ends_with(" end,\r");
    }));
}
