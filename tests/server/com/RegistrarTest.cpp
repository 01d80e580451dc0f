#include "Registrar.h"

#include <gtest/gtest.h>

#include "RegistryTree.h"

namespace
{

using Lines = std::vector<std::wstring>;

class RegistrarTest : public testing::Test
{
protected:
    std::vector<ScriptTree> Parse(const std::wstring& keys)
    {
        std::vector<ScriptTree> trees;
        const std::wstring script = L"HKCU { NoRemove Software { '%SCRATCH%' { " + keys + L" } } }";
        EXPECT_FALSE(ParseRegistrarScript(script, {{L"SCRATCH", L"dtOIEx64ScratchKey"}}, trees));
        return trees;
    }

    void Run(const std::wstring& keys) { EXPECT_EQ(RunRegistrarTrees(Parse(keys)), S_OK); }
    void Undo(const std::wstring& keys) { EXPECT_EQ(UndoRegistrarTrees(Parse(keys)), S_OK); }

    CScratchKey m_scratch;
};

TEST_F(RegistrarTest, KeysAndValuesOfEveryKindAreWritten)
{
    Run(L"Key = s 'default' { val S = s 'text' val E = e '%%TEMP%%' val M = m 'a\\0b\\0' "
        L"val D = d 7 val B = b 00FF Child }");

    EXPECT_EQ(m_scratch.Lines(),
              (Lines{L"",
                     L"Key",
                     L"Key @=s:default",
                     L"Key B=b:00FF",
                     L"Key D=d:7",
                     L"Key E=e:%TEMP%",
                     L"Key M=m:a|b||",
                     L"Key S=s:text",
                     L"Key\\Child"}));
}

TEST_F(RegistrarTest, ForceRemoveEmptiesTheKeyBeforeItIsWritten)
{
    Run(L"Key = s 'old' { val Old = s 'x' Below { Deep } }");
    Run(L"ForceRemove Key = s 'new'");

    EXPECT_EQ(m_scratch.Lines(), (Lines{L"", L"Key", L"Key @=s:new"}));
}

TEST_F(RegistrarTest, AKeyWithoutForceRemoveKeepsWhatIsThere)
{
    Run(L"Key = s 'old' { val Old = s 'x' Below }");
    Run(L"Key = s 'new'");

    EXPECT_EQ(m_scratch.Lines(),
              (Lines{L"", L"Key", L"Key @=s:new", L"Key Old=s:x", L"Key\\Below"}));
}

TEST_F(RegistrarTest, DeleteRemovesAndDoesNotWrite)
{
    Run(L"Key { Below }");
    Run(L"Delete Key");
    EXPECT_EQ(m_scratch.Lines(), (Lines{L""}));

    Run(L"Delete Key");
    EXPECT_EQ(m_scratch.Lines(), (Lines{L""}));
}

TEST_F(RegistrarTest, UndoingRemovesEverythingThatWasWritten)
{
    const std::wstring script = L"Key = s 'x' { val V = d 1 Child { ForceRemove Deep } }";
    Run(script);
    Undo(script);

    EXPECT_EQ(m_scratch.Lines(), Lines{});
}

TEST_F(RegistrarTest, UndoingLeavesSharedKeysButTakesItsOwnValuesOutOfThem)
{
    const std::wstring script = L"NoRemove Shared { val Ours = s 'x' Ours }";
    Run(L"NoRemove Shared { val Theirs = s 'y' Theirs }");
    Run(script);
    Undo(script);

    EXPECT_EQ(m_scratch.Lines(), (Lines{L"", L"Shared", L"Shared Theirs=s:y", L"Shared\\Theirs"}));
}

TEST_F(RegistrarTest, UndoingLeavesAKeyUnderWhichForeignKeysStand)
{
    const std::wstring script = L"Key { val Ours = s 'x' Ours }";
    Run(script);
    Run(L"Key { Theirs }");
    Undo(script);

    EXPECT_EQ(m_scratch.Lines(), (Lines{L"", L"Key", L"Key\\Theirs"}));
}

TEST_F(RegistrarTest, UndoingForceRemoveTakesForeignKeysWithIt)
{
    Run(L"ForceRemove Key");
    Run(L"Key { Theirs { Deep } }");
    Undo(L"ForceRemove Key");

    EXPECT_EQ(m_scratch.Lines(), Lines{});
}

TEST_F(RegistrarTest, UndoingWhatIsNotThereSucceeds)
{
    Undo(L"Key { val V = s 'x' Child } ForceRemove Other NoRemove Shared { val W = s 'x' }");
    EXPECT_EQ(m_scratch.Lines(), Lines{});
}

TEST_F(RegistrarTest, AFailureIsToldAndWhatWasWrittenIsTakenBack)
{
    // A name of more than 255 characters is refused by the registry.
    const std::wstring tooLong(300, L'n');
    EXPECT_EQ(RunRegistrarTrees(Parse(L"First = s 'x' " + tooLong)),
              HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(m_scratch.Lines(), Lines{});
}

} // namespace
