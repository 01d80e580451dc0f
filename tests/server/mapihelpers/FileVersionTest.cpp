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

TEST(GetFileVersionText, TheFirstOfSeveralLanguagesTellsTheFileVersion)
{
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring path = self;
    path.replace(path.rfind(L'\\') + 1, std::wstring::npos, L"versioned.dll");
    WString text;

    EXPECT_EQ(GetFileVersionText(path.c_str(), text), 1);

    EXPECT_EQ(text, L"16.0.1 of the first language");
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
