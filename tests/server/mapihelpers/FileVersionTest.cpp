#include "FileVersion.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace
{

std::wstring SystemFile(const wchar_t* name)
{
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\" + name;
}

TEST(GetFileVersionText, ALibraryOfTheSystemTellsItsVersion)
{
    WString text;

    EXPECT_EQ(GetFileVersionText(SystemFile(L"mapi32.dll").c_str(), text), 1);

    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_not_of(L"0123456789.(), abcdefghijklmnopqrstuvwxyz_"), WString::npos);
    EXPECT_EQ(text.find(L'\0'), WString::npos);
}

TEST(GetFileVersionText, AFileThatIsMissingOrHasNoVersionGivesNothing)
{
    WString text = L"before";
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);

    EXPECT_EQ(GetFileVersionText(SystemFile(L"no-such-library.dll").c_str(), text), 0);
    EXPECT_EQ(GetFileVersionText(self, text), 0);
    EXPECT_EQ(text, L"before");
}

} // namespace
