// What counts as a verb, which of several counts, and what the exit code tells.

#include <array>
#include <string>

#include "ChildProgram.h"
#include "RegistrationFixture.h"

namespace
{
// The keys by which the system starts the server, for all users and for this one.
struct Registrations
{
    bool machine = Stands(HKEY_LOCAL_MACHINE);
    bool user = Stands(HKEY_CURRENT_USER);

    bool operator==(const Registrations&) const = default;

private:
    static bool Stands(HKEY root)
    {
        HKEY key = nullptr;
        const LSTATUS status = RegOpenKeyExW(
            root,
            L"Software\\Classes\\CLSID\\{1019ADC7-17CB-4489-AFD5-6642C7400ACE}\\LocalServer32",
            0,
            KEY_READ | KEY_WOW64_64KEY,
            &key);
        if (status == ERROR_SUCCESS)
        {
            RegCloseKey(key);
        }
        return status == ERROR_SUCCESS;
    }
};

Registrations Expected(bool machine, bool user)
{
    Registrations expected;
    expected.machine = machine;
    expected.user = user;
    return expected;
}

const Registrations kNone = Expected(false, false);
const Registrations kMachine = Expected(true, false);
const Registrations kUser = Expected(false, true);

struct Verb
{
    std::wstring name;
    Registrations result; // when nothing was registered before
};

const std::array<Verb, 4> kVerbs = {{
    {L"RegServer", kMachine},
    {L"UnregServer", kNone},
    {L"RegServerPerUser", kUser},
    {L"UnregServerPerUser", kNone},
}};

using VerbTest = RegistrationTest;

// A copy of the product whose type library is not found in it.
class ServerWithoutLibraryTest : public RegistrationTest
{
protected:
    void SetUp() override
    {
        RegistrationTest::SetUp();
        std::string bytes = FileBytes(BuildPath(L"dtOIEx64.exe"));
        const std::wstring type = L"TYPELIB"; // the name of the resource's type
        const std::string name(reinterpret_cast<const char*>(type.data()),
                               type.size() * sizeof(wchar_t));
        const std::size_t at = bytes.find(name);
        ASSERT_NE(at, std::string::npos);
        bytes[at] = 'U'; // behind the same neighbour in the sorted directory
        ASSERT_EQ(bytes.find(name), std::string::npos);
        WriteFileBytes(m_server, bytes);
    }

    [[nodiscard]] DWORD Run(const std::wstring& arguments) const
    {
        return RunProgram(m_server, arguments).exitCode;
    }

    static constexpr DWORD kCannotLoadLibrary = 0x80029C4A;

    const CTestFolder m_folder{L"ServerWithoutLibrary"};
    const std::wstring m_server = m_folder.File(L"dtOIEx64.exe");
};
} // namespace

TEST_F(VerbTest, EachVerbIsKnownBehindBothMarksAndInAnyCase)
{
    struct Case
    {
        const wchar_t* arguments;
        Registrations after;
    };
    const std::array<Case, 8> cases = {{
        {L"/RegServer", kMachine},
        {L"-unregserver", kNone},
        {L"-REGSERVER", kMachine},
        {L"/UnregServer", kNone},
        {L"/regserverperuser", kUser},
        {L"-UnregServerPerUser", kNone},
        {L"-RegServerPerUser", kUser},
        {L"/UNREGSERVERPERUSER", kNone},
    }};
    for (const Case& each : cases)
    {
        EXPECT_EQ(RunServer(each.arguments), 0U) << each.arguments;
        EXPECT_EQ(Registrations(), each.after) << each.arguments;
    }
}

TEST_F(VerbTest, OfTwoVerbsTheFirstCountsAndTheSecondIsIgnored)
{
    for (const Verb& first : kVerbs)
    {
        for (const Verb& second : kVerbs)
        {
            const std::wstring arguments = L"-" + first.name + L" -" + second.name;
            EXPECT_EQ(RunServer(arguments), 0U) << arguments;
            EXPECT_EQ(Registrations(), first.result) << arguments;
            EXPECT_EQ(RunServer(L"-UnregServer"), 0U);
            EXPECT_EQ(RunServer(L"-UnregServerPerUser"), 0U);
        }
    }
}

TEST_F(VerbTest, AVerbMayStandBehindOtherWordsAndBeforeATab)
{
    EXPECT_EQ(RunServer(L"-Embedding -RegServer\tmore"), 0U);
    EXPECT_EQ(Registrations(), kMachine);
}

TEST_F(VerbTest, AVerbWithoutItsMarkOrWithMoreBehindItIsNone)
{
    // Each runs as a server, finds no client's frame window, and ends by itself.
    for (const wchar_t* const arguments : {L"RegServer", L"- RegServer", L"/RegServerPerUsers"})
    {
        EXPECT_EQ(RunServer(arguments), 0U) << arguments;
        EXPECT_EQ(Registrations(), kNone) << arguments;
    }
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);
    EXPECT_EQ(RunServer(L"-UnregServer,"), 0U);
    EXPECT_EQ(Registrations(), kMachine);
}

TEST_F(VerbTest, TakingAwayWhatIsNotThereSucceedsAndChangesNothing)
{
    const ClassesListing before;
    EXPECT_EQ(RunServer(L"-UnregServer"), 0U);
    EXPECT_EQ(RunServer(L"-UnregServerPerUser"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(VerbTest, RegisteringTheUserTwiceGivesTheSame)
{
    ASSERT_EQ(RunServer(L"-RegServerPerUser"), 0U);
    const ClassesListing before;
    EXPECT_EQ(RunServer(L"-RegServerPerUser"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(VerbTest, TheMachinesVerbsLeaveAUsersRegistrationAlone)
{
    ASSERT_EQ(RunServer(L"-RegServerPerUser"), 0U);
    const ClassesListing before;
    EXPECT_EQ(RunServer(L"-RegServer"), 0U);
    EXPECT_EQ(RunServer(L"-UnregServer"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Text(Added(before.user, after.user)), L"");
    EXPECT_EQ(Text(Added(after.user, before.user)), L"");
}

TEST_F(ServerWithoutLibraryTest, TheExitCodeOfAFailedRegistrationIsItsResult)
{
    EXPECT_EQ(Run(L"-RegServer"), kCannotLoadLibrary);
    EXPECT_EQ(Run(L"-RegServerPerUser"), kCannotLoadLibrary);
}

TEST_F(ServerWithoutLibraryTest, AFailedUnregistrationTellsItAndTakesTheRestAwayAllTheSame)
{
    const ClassesListing before;
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);
    EXPECT_EQ(Run(L"-UnregServer"), kCannotLoadLibrary);
    const ClassesListing after;

    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(ServerWithoutLibraryTest, ALibraryBesideTheProgramServes)
{
    m_folder.CopyIn(BuildPath(L"idl\\dtOIEx64.tlb"), L"dtOIEx64.tlb");

    EXPECT_EQ(Run(L"-RegServer"), 0U);
    EXPECT_EQ(Registrations(), kMachine);
    EXPECT_EQ(Run(L"-UnregServer"), 0U);
    EXPECT_EQ(Registrations(), kNone);
}
