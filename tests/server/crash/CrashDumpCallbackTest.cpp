#include <windows.h>

#include <gtest/gtest.h>

#include "CrashDump.h"

namespace
{

constexpr ULONG kDataSegment = 2;
constexpr ULONG kOtherFlags = 0x15;

/// The flags that are left after the callback has seen a module with the data segment asked for.
ULONG FlagsOf(const wchar_t* path)
{
    std::wstring writable(path);
    MINIDUMP_CALLBACK_INPUT input{};
    input.CallbackType = ModuleCallback;
    input.Module.FullPath = writable.data();
    MINIDUMP_CALLBACK_OUTPUT output{};
    output.ModuleWriteFlags = kDataSegment | kOtherFlags;
    EXPECT_NE(CrashDumpCallback(nullptr, &input, &output), FALSE);
    return output.ModuleWriteFlags;
}

BOOL AnswerFor(ULONG type)
{
    MINIDUMP_CALLBACK_INPUT input{};
    input.CallbackType = type;
    MINIDUMP_CALLBACK_OUTPUT output{};
    return CrashDumpCallback(nullptr, &input, &output);
}

} // namespace

TEST(CrashDumpCallback, ExecutableAndNtdllKeepTheirDataSegments)
{
    EXPECT_EQ(FlagsOf(L"C:\\Program Files\\dtOIEx64.exe"), kDataSegment | kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\x\\OTHER.EXE"), kDataSegment | kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\Windows\\System32\\ntdll.dll"), kDataSegment | kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\WINDOWS\\SYSTEM32\\NTDLL.DLL"), kDataSegment | kOtherFlags);
    EXPECT_EQ(FlagsOf(L"ntdll"), kDataSegment | kOtherFlags);
}

TEST(CrashDumpCallback, AllOtherModulesLoseTheirDataSegmentsAlone)
{
    EXPECT_EQ(FlagsOf(L"C:\\Windows\\System32\\mapi32.dll"), kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\folder.exe\\plain.dll"), kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\ntdll\\other.dll"), kOtherFlags);
    EXPECT_EQ(FlagsOf(L"C:\\x\\ntdll2.dll"), kOtherFlags);
    EXPECT_EQ(FlagsOf(L""), kOtherFlags);
}

TEST(CrashDumpCallback, ThreadsAndInclusionsAreWantedAndNothingElse)
{
    for (ULONG type = 1; type <= 4; type++)
    {
        EXPECT_NE(AnswerFor(type), FALSE) << "type " << type;
    }
    for (ULONG type = 5; type <= 20; type++)
    {
        EXPECT_EQ(AnswerFor(type), FALSE) << "type " << type;
    }
}

TEST(CrashDumpCallback, NullInputOrOutputIsRefused)
{
    MINIDUMP_CALLBACK_INPUT input{};
    MINIDUMP_CALLBACK_OUTPUT output{};

    EXPECT_EQ(CrashDumpCallback(nullptr, nullptr, &output), FALSE);
    EXPECT_EQ(CrashDumpCallback(nullptr, &input, nullptr), FALSE);
}
