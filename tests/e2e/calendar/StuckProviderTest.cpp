#include <windows.h>

#include <shlobj.h>

#include <array>

#include "CalendarFixture.h"

namespace
{
// A listing that hangs inside the mail library.
constexpr const wchar_t* kHangInListing = L"IMAPITable::Restrict(contents) call 1 hang listing";

std::wstring DumpPath()
{
    std::array<wchar_t, MAX_PATH> folder{};
    SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_APPDATA, TRUE);
    return std::wstring(folder.data()) + L"\\Talvo Connect\\dtOIEx64.exe.300.dmp";
}

bool Exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}
} // namespace

TEST_F(CalendarTest, AReleaseDuringAListingWaitsForItAndDropsItsAnswer)
{
    const CHangingCall listing(L"listing");
    SetFaults(kHangInListing);
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result(kListTheDay), kOk);
    ASSERT_TRUE(listing.WaitUntilReached());

    // The wait for the work thread has its bound, and the call answers all the same.
    EXPECT_EQ(client.Result("releaseapp 0"), kOk);
    listing.LetGo();
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(client.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_TRUE(client.Waiting().empty());
}

TEST_F(CalendarTest, AHibernateDuringAListingAnswersAtOnce)
{
    const CHangingCall listing(L"listing");
    SetFaults(kHangInListing);
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result(kListTheDay), kOk);
    ASSERT_TRUE(listing.WaitUntilReached());

    EXPECT_EQ(client.Result("releaseapp -1"), kOk); // while the listing still hangs
    listing.LetGo();
    const auto server = Server();
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(client.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_TRUE(client.Waiting().empty());
}

TEST_F(CalendarTest, AProviderThatHangsInTheListingDoesNotKeepTheServer)
{
    const CHangingCall listing(L"listing");
    SetFaults(kHangInListing);
    CRemoteClient client;
    Connect(client);
    ASSERT_EQ(client.Result(kListTheDay), kOk);
    ASSERT_TRUE(listing.WaitUntilReached());
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    EXPECT_EQ(client.Result("closeframe"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
    EXPECT_EQ(server->ExitCode(), 0U);
}

TEST_F(CalendarTest, AProviderThatHangsInTheLogonDoesNotKeepTheServer)
{
    const CHangingCall logon(L"logon");
    SetFaults(L"MAPILogonEx call 1 hang logon");
    CRemoteClient client;
    ASSERT_EQ(client.Result("frame"), kOk);
    ASSERT_EQ(client.Result("create"), kOk);
    ASSERT_EQ(client.Result("advise main"), kOk);
    ASSERT_EQ(client.Result("initialize 1 CALENDARING"), kOk);
    ASSERT_TRUE(logon.WaitUntilReached());
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    EXPECT_EQ(client.Do("empties vtable").value, "10"); // the interface still answers
    EXPECT_EQ(client.Result("release"), kOk);

    EXPECT_TRUE(server->WaitForEnd());
}

TEST_F(CalendarTest, AProviderThatCrashesTheServerLeavesADumpAndTheClientIsTold)
{
    DeleteFileW(DumpPath().c_str());
    SetFaults(L"IMAPITable::Restrict(contents) call 1 crash");
    CRemoteClient client;
    Connect(client);
    const auto server = Server();
    ASSERT_NE(server, nullptr);

    ASSERT_EQ(client.Result(kListTheDay), kOk);

    ASSERT_TRUE(server->WaitForEnd());
    EXPECT_TRUE(Exists(DumpPath()));
    const CommandAnswer answer = client.Do("empties vtable");
    EXPECT_EQ(answer.value, "0");
    EXPECT_NE(answer.result, kOk);
    DeleteFileW(DumpPath().c_str());
}
