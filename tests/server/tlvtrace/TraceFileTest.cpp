#include "TraceFile.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "TraceFolder.h"

using tlvtrace::CTraceFile;
using tlvtrace::RotationLimits;

namespace
{
std::wstring Current(const CTraceFolder& folder)
{
    return folder.Path() + L"\\strato-mapi.txt";
}

std::wstring Older(const CTraceFolder& folder, int age)
{
    return folder.Path() + L"\\strato-mapi." + std::to_wstring(age) + L".txt";
}
} // namespace

TEST(TraceFile, TheDirectoryIsTheRoamingDataOfTheProduct)
{
    const std::wstring directory = tlvtrace::TraceDirectory();
    const std::wstring tail = L"\\AppData\\Roaming\\Talvo Connect";

    ASSERT_GE(directory.size(), tail.size());
    EXPECT_EQ(directory.substr(directory.size() - tail.size()), tail);
}

TEST(TraceFile, FolderAndFileAreMadeByTheFirstAppend)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path(), L"strato-mapi", RotationLimits{});

    EXPECT_TRUE(file.Append("one\r\n"));
    EXPECT_TRUE(file.Append("two\r\n"));

    EXPECT_EQ(ContentOf(Current(folder)), "one\r\ntwo\r\n");
}

TEST(TraceFile, HoldsWhatWasAppendedLatelyAlsoBehindARotationAndOtherLines)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path(), L"strato-mapi", {20, 2});
    EXPECT_FALSE(file.Holds("one\r\ntwo\r\n")); // no file yet

    ASSERT_TRUE(file.Append("one\r\ntwo\r\n"));
    EXPECT_TRUE(file.Holds("one\r\ntwo\r\n"));
    EXPECT_FALSE(file.Holds("two\r\none\r\n"));
    ASSERT_TRUE(file.Append("other\r\n"));
    EXPECT_TRUE(file.Holds("one\r\ntwo\r\n"));
    ASSERT_TRUE(file.Append("a line that rotates\r\n"));
    EXPECT_TRUE(file.Holds("one\r\ntwo\r\n"));
    ASSERT_TRUE(file.Append("a line that rotates\r\n"));
    EXPECT_FALSE(file.Holds("one\r\ntwo\r\n")); // two files ago
}

TEST(TraceFile, AFileThatWouldGrowTooLargeIsRenamedFirst)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path(), L"strato-mapi", {10, 2});

    for (const char* const line : {"aaaaaa\r\n", "bbbbbb\r\n", "cccccc\r\n", "dddddd\r\n"})
    {
        ASSERT_TRUE(file.Append(line));
    }

    EXPECT_EQ(ContentOf(Current(folder)), "dddddd\r\n");
    EXPECT_EQ(ContentOf(Older(folder, 1)), "cccccc\r\n");
    EXPECT_EQ(ContentOf(Older(folder, 2)), "bbbbbb\r\n");
    EXPECT_EQ(FilesIn(folder.Path(), L"*").size(), 3U); // the oldest has gone
}

TEST(TraceFile, AReaderDoesNotKeepLinesOut)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path(), L"strato-mapi", RotationLimits{});
    ASSERT_TRUE(file.Append("one\r\n"));
    HANDLE reader = CreateFileW(Current(folder).c_str(),
                                GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr,
                                OPEN_EXISTING,
                                0,
                                nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);

    EXPECT_TRUE(file.Append("two\r\n"));

    char content[32];
    DWORD cbRead = 0;
    EXPECT_TRUE(ReadFile(reader, content, sizeof content, &cbRead, nullptr));
    CloseHandle(reader);
    EXPECT_EQ(std::string(content, cbRead), "one\r\ntwo\r\n");
}

TEST(TraceFile, AFileThatCannotBeRenamedGrowsToFourTimesTheLimitAndNotBeyond)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path(), L"strato-mapi", {10, 2});
    ASSERT_TRUE(file.Append("aaaaaa\r\n"));
    HANDLE reader = CreateFileW(Current(folder).c_str(),
                                GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, // not for deleting
                                nullptr,
                                OPEN_EXISTING,
                                0,
                                nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);

    int taken = 1;
    while (taken < 100 && file.Append("bbbbbb\r\n"))
    {
        ++taken;
    }

    EXPECT_EQ(taken, 5); // 40 bytes
    CloseHandle(reader);
    EXPECT_TRUE(file.Append("cccccc\r\n"));
    EXPECT_EQ(ContentOf(Current(folder)), "cccccc\r\n");
}

TEST(TraceFile, APlaceThatCannotBeWrittenIsReported)
{
    const CTraceFolder folder;
    CTraceFile file(folder.Path() + L"\\strato-mapi.txt\\below-a-file", L"x", RotationLimits{});
    CTraceFile blocker(folder.Path(), L"strato-mapi", RotationLimits{});
    ASSERT_TRUE(blocker.Append("one\r\n"));

    EXPECT_FALSE(file.Append("two\r\n"));
}

TEST(TraceFile, SeveralProcessesShareTheFileAcrossRotations)
{
    constexpr int kWriters = 4;
    constexpr int kLines = 300;
    const CTraceFolder folder;
    std::vector<HANDLE> writers;
    for (int writer = 0; writer < kWriters; ++writer)
    {
        writers.push_back(StartWriter(L"file \"" + folder.Path() + L"\" writer" +
                                      std::to_wstring(writer) + L" " + std::to_wstring(kLines) +
                                      L" 8000"));
    }
    for (HANDLE writer : writers)
    {
        EXPECT_EQ(ExitCodeOf(writer), 0U);
    }

    EXPECT_GT(FilesIn(folder.Path(), L"*").size(), 5U);
    std::map<std::string, int> seen;
    for (const std::string& line : LinesWith(folder.Path(), ""))
    {
        EXPECT_TRUE(line.ends_with("end,")) << line;
        EXPECT_TRUE(line.starts_with(" writer")) << line;
        ++seen[line];
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kWriters * kLines));
    for (const auto& [line, count] : seen)
    {
        EXPECT_EQ(count, 1) << line;
    }
}
