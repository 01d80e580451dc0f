#include "CrashFiles.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <string>

namespace
{

constexpr const wchar_t* kUser = L"Software\\dtOIEx64CrashFilesTest";

/// A user of the test's own, whose application data are said to stand in `folder`.
class CUserWithFolder final
{
public:
    explicit CUserWithFolder(const wchar_t* folder)
    {
        RegCreateKeyExW(
            HKEY_CURRENT_USER, kUser, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_user, nullptr);
        EXPECT_EQ(RegSetKeyValueW(
                      m_user,
                      L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                      L"AppData",
                      REG_SZ,
                      folder,
                      static_cast<DWORD>((wcslen(folder) + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, m_user), ERROR_SUCCESS);
    }
    CUserWithFolder(const CUserWithFolder&) = delete;
    CUserWithFolder& operator=(const CUserWithFolder&) = delete;
    ~CUserWithFolder()
    {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(m_user);
        RegDeleteTreeW(HKEY_CURRENT_USER, kUser);
    }

private:
    HKEY m_user = nullptr;
};

} // namespace

TEST(CrashFiles, TheDirectoryStandsInTheUsersApplicationDataAndIsMade)
{
    wchar_t temporary[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temporary);
    const std::wstring folder = std::wstring(temporary) + L"dtOIEx64CrashFilesTest";
    const std::wstring directory = folder + L"\\Talvo Connect\\";
    const CUserWithFolder user(folder.c_str());
    CrashPath path;
    FindCrashDirectory(path);

    EXPECT_EQ(std::wstring(path.text), directory);
    EXPECT_EQ(path.cchDirectory, directory.size());
    EXPECT_NE(GetFileAttributesW(directory.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0U);
    EXPECT_EQ(std::wstring(path.With(L"a.txt")), directory + L"a.txt");
    EXPECT_EQ(std::wstring(path.With(L"b.dmp")), directory + L"b.dmp");
    RemoveDirectoryW(directory.c_str());
    RemoveDirectoryW(folder.c_str());
}

TEST(CrashFiles, WithoutApplicationDataTheNamesStandAlone)
{
    const CUserWithFolder user(L"Q:\\a drive that is not there");
    CrashPath path;
    FindCrashDirectory(path);

    EXPECT_EQ(path.cchDirectory, 0U);
    EXPECT_EQ(std::wstring(path.text), L"");
    EXPECT_EQ(std::wstring(path.With(L"a.txt")), L"a.txt");
}
