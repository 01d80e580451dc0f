#include <gtest/gtest.h>

#include "Registrar.h"
#include "RegistryTree.h"

namespace
{

constexpr const wchar_t* kName = L"dtOIEx64PerUserClassesTest";
constexpr const wchar_t* kUserPath = L"Software\\Classes\\dtOIEx64PerUserClassesTest";
constexpr const wchar_t* kMachinePath = L"Software\\Classes\\dtOIEx64PerUserClassesTest";

std::vector<ScriptTree> Script()
{
    std::vector<ScriptTree> trees;
    EXPECT_FALSE(
        ParseRegistrarScript(L"HKCR { ForceRemove %NAME% = s 'x' }", {{L"NAME", kName}}, trees));
    return trees;
}

TEST(PerUserClasses, TheClassesRootIsTheUsersOwnWhileItLives)
{
    {
        const CPerUserClasses view;
        ASSERT_EQ(view.Result(), S_OK);
        EXPECT_EQ(RunRegistrarTrees(Script()), S_OK);
    }
    EXPECT_EQ(RegistryLines(HKEY_CURRENT_USER, kUserPath),
              (std::vector<std::wstring>{L"", L" @=s:x"}));
    EXPECT_TRUE(RegistryLines(HKEY_LOCAL_MACHINE, kMachinePath).empty());

    const CPerUserClasses view;
    EXPECT_EQ(UndoRegistrarTrees(Script()), S_OK);
    EXPECT_TRUE(RegistryLines(HKEY_CURRENT_USER, kUserPath).empty());
}

TEST(PerUserClasses, TheViewIsPutBackAtItsEnd)
{
    {
        const CPerUserClasses view;
        ASSERT_EQ(view.Result(), S_OK);
    }
    EXPECT_EQ(RunRegistrarTrees(Script()), S_OK);
    EXPECT_FALSE(RegistryLines(HKEY_LOCAL_MACHINE, kMachinePath).empty());
    EXPECT_TRUE(RegistryLines(HKEY_CURRENT_USER, kUserPath).empty());

    EXPECT_EQ(UndoRegistrarTrees(Script()), S_OK);
    EXPECT_TRUE(RegistryLines(HKEY_LOCAL_MACHINE, kMachinePath).empty());
}

} // namespace
