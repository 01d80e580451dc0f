#include "RegistrationFixture.h"

TEST_F(RegistrationTest, TheMachinesVerbsWriteExactlyTheirKeysAndLeaveNone)
{
    const ClassesListing before;
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);
    const ClassesListing registered;
    ASSERT_EQ(RunServer(L"-UnregServer"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Text(Added(before.machine, registered.machine)), Text(RegisteredForMachine()));
    EXPECT_EQ(Text(Added(registered.machine, before.machine)), L"");
    EXPECT_EQ(Text(Added(before.user, registered.user)), L"");
    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(RegistrationTest, TheUsersVerbsWriteTheSameKeysForTheUserAlone)
{
    const ClassesListing before;
    ASSERT_EQ(RunServer(L"-RegServerPerUser"), 0U);
    const ClassesListing registered;
    ASSERT_EQ(RunServer(L"-UnregServerPerUser"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Text(Added(before.user, registered.user)), Text(Registered()));
    EXPECT_EQ(Text(WithoutThirtyTwoBit(Added(before.machine, registered.machine))), L"");
    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(RegistrationTest, ThirtyTwoBitClientsFindTheInterfacesInTheirOwnView)
{
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);

    const ClassesListing registered;

    EXPECT_EQ(Text(InterfacesOf(registered.machine32)), Text(InterfacesOf(Registered())));
}

TEST_F(RegistrationTest, AVerbIsKnownBehindASlashAndInAnyCase)
{
    const ClassesListing before;

    ASSERT_EQ(RunServer(L"/regserver"), 0U);
    const ClassesListing registered;
    ASSERT_EQ(RunServer(L"/UNREGSERVER ignored rest"), 0U);
    const ClassesListing after;

    EXPECT_EQ(Text(Added(before.machine, registered.machine)), Text(RegisteredForMachine()));
    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(RegistrationTest, AWordThatMerelyBeginsWithAVerbIsNone)
{
    const ClassesListing before;

    // It runs as a server, finds no client's frame window, and ends by itself.
    EXPECT_EQ(RunServer(L"-RegServerX"), 0U);

    const ClassesListing after;
    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(RegistrationTest, RegisteringStartsFromACleanSlate)
{
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);
    const ClassesListing before;
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                              L"Software\\Classes\\TypeLib\\{A470B11E-041B-407E-BE88-C2039972F999}"
                              L"\\0.9\\0\\win64",
                              0,
                              nullptr,
                              0,
                              KEY_READ,
                              nullptr,
                              &key,
                              nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);

    ASSERT_EQ(RunServer(L"-RegServer"), 0U);

    const ClassesListing after;
    EXPECT_EQ(Difference(before, after), L"");
}

TEST_F(RegistrationTest, AUsersRegistrationLeavesTheMachinesAlone)
{
    ASSERT_EQ(RunServer(L"-RegServer"), 0U);
    const ClassesListing before;

    ASSERT_EQ(RunServer(L"-RegServerPerUser"), 0U);
    ASSERT_EQ(RunServer(L"-UnregServerPerUser"), 0U);

    const ClassesListing after;
    EXPECT_EQ(Text(WithoutThirtyTwoBit(Added(before.machine, after.machine))), L"");
    EXPECT_EQ(Text(WithoutThirtyTwoBit(Added(after.machine, before.machine))), L"");
}
