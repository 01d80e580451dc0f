#include "RegistrationVerb.h"

#include <gtest/gtest.h>

namespace
{

RegistrationVerb Find(WStringView arguments)
{
    return FindRegistrationVerb(arguments);
}

TEST(RegistrationVerb, EachOfTheFourIsFoundBehindDashAndSlash)
{
    EXPECT_EQ(Find(WTEXT("-RegServer")), RegistrationVerb::RegServer);
    EXPECT_EQ(Find(WTEXT("/UnregServer")), RegistrationVerb::UnregServer);
    EXPECT_EQ(Find(WTEXT("-RegServerPerUser")), RegistrationVerb::RegServerPerUser);
    EXPECT_EQ(Find(WTEXT("/UnregServerPerUser")), RegistrationVerb::UnregServerPerUser);
}

TEST(RegistrationVerb, CaseDoesNotMatter)
{
    EXPECT_EQ(Find(WTEXT("/regserver")), RegistrationVerb::RegServer);
    EXPECT_EQ(Find(WTEXT("-UNREGSERVERPERUSER")), RegistrationVerb::UnregServerPerUser);
}

TEST(RegistrationVerb, AnythingMoreBehindAVerbMakesItNone)
{
    EXPECT_EQ(Find(WTEXT("/RegServerX")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("/regservers")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("/RegServer\"")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("/RegServer\n")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("/RegServe")), RegistrationVerb::None);
}

TEST(RegistrationVerb, AVerbEndsAtABlankOrATab)
{
    EXPECT_EQ(Find(WTEXT("/RegServer more")), RegistrationVerb::RegServer);
    EXPECT_EQ(Find(WTEXT("-UnregServer\t/x")), RegistrationVerb::UnregServer);
}

TEST(RegistrationVerb, TheFirstVerbCountsAndTheRestIsIgnored)
{
    EXPECT_EQ(Find(WTEXT("/x -UnregServer /RegServer")), RegistrationVerb::UnregServer);
    EXPECT_EQ(Find(WTEXT("/RegServer /UnregServer")), RegistrationVerb::RegServer);
}

TEST(RegistrationVerb, AVerbNeedsItsMark)
{
    EXPECT_EQ(Find(WTEXT("RegServer")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("- RegServer")), RegistrationVerb::None);
}

TEST(RegistrationVerb, AMarkWithinAWordCounts)
{
    EXPECT_EQ(Find(WTEXT("--RegServer")), RegistrationVerb::RegServer);
    EXPECT_EQ(Find(WTEXT("setup/RegServer")), RegistrationVerb::RegServer);
}

TEST(RegistrationVerb, NothingOrAnActivationIsNoVerb)
{
    EXPECT_EQ(Find(WTEXT("")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT("-")), RegistrationVerb::None);
    EXPECT_EQ(Find(WTEXT(" -Embedding")), RegistrationVerb::None);
}

TEST(RegistrationVerb, OnlyTheVerbsAskedForAreFound)
{
    const auto find = [](WStringView arguments) {
        return FindRegistrationVerb(arguments,
                                    {RegistrationVerb::UnregServer, RegistrationVerb::RegServer});
    };

    EXPECT_EQ(find(WTEXT("/RegServerPerUser")), RegistrationVerb::None);
    EXPECT_EQ(find(WTEXT("/UnregServerPerUser")), RegistrationVerb::None);
    EXPECT_EQ(find(WTEXT("/RegServerPerUser /regserver")), RegistrationVerb::RegServer);
}

TEST(RegistrationVerb, TheProgramsPathIsSkipped)
{
    EXPECT_EQ(SkipProgramPath(WTEXT("\"C:\\my-regserver /RegServer\\a.exe\" -Embedding")),
              WTEXT(" -Embedding"));
    EXPECT_EQ(SkipProgramPath(WTEXT("C:\\a-RegServer\\a.exe /x")), WTEXT(" /x"));
    EXPECT_EQ(SkipProgramPath(WTEXT("C:\\a.exe\t/x")), WTEXT("\t/x"));
}

TEST(RegistrationVerb, ACommandLineOfThePathAloneHasNoArguments)
{
    EXPECT_EQ(SkipProgramPath(WTEXT("C:\\a.exe")), WTEXT(""));
    EXPECT_EQ(SkipProgramPath(WTEXT("\"C:\\a b.exe\"")), WTEXT(""));
    EXPECT_EQ(SkipProgramPath(WTEXT("\"C:\\never closed /RegServer")), WTEXT(""));
    EXPECT_EQ(SkipProgramPath(WTEXT("")), WTEXT(""));
}

} // namespace
