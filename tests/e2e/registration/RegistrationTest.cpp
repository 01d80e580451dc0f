#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>
#include <string>

#include "ChildProcess.h"
#include "RegistryListing.h"

namespace
{
// Key names have no case: the system writes "Typelib" where the scripts say "TypeLib".
std::wstring Lower(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(), std::towlower);
    return text;
}

RegistryListing LowerPaths(const RegistryListing& listing)
{
    RegistryListing lower;
    for (const auto& [path, data] : listing)
    {
        lower[Lower(path)] = data;
    }
    return lower;
}

// The places where a registration may write: the classes of the machine and of the user, in the views
// of 64-bit and of 32-bit programs.
struct ClassesListing
{
    RegistryListing machine = List(HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY);
    RegistryListing machine32 = List(HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY);
    RegistryListing user = List(HKEY_CURRENT_USER, KEY_WOW64_64KEY);
    RegistryListing user32 = List(HKEY_CURRENT_USER, KEY_WOW64_32KEY);

private:
    static RegistryListing List(HKEY root, REGSAM view)
    {
        return LowerPaths(ListRegistry(root, L"Software\\Classes", view));
    }
};

std::wstring ServerPath()
{
    return BuildPath(L"dtOIEx64.exe");
}

DWORD RunServer(const std::wstring& arguments)
{
    return RunProgram(ServerPath(), arguments).exitCode;
}

// What two listings do not share, with "+" before what came and "-" before what went; empty when they
// are the same.
std::wstring Difference(const ClassesListing& before, const ClassesListing& after)
{
    std::wstring text;
    for (const auto part : {&ClassesListing::machine,
                            &ClassesListing::machine32,
                            &ClassesListing::user,
                            &ClassesListing::user32})
    {
        for (const auto& [path, data] : Added(before.*part, after.*part))
        {
            text += L"+ " + path + L" = " + data + L"\n";
        }
        for (const auto& [path, data] : Added(after.*part, before.*part))
        {
            text += L"- " + path + L" = " + data + L"\n";
        }
    }
    return text;
}

// Everything that a registration writes, below the classes root.
RegistryListing Registered()
{
    const std::wstring path = ServerPath();
    const std::wstring folder = path.substr(0, path.rfind(L'\\'));
    const std::wstring appId = L"{D0418E03-DEDF-40BE-8DCD-9189B3197D23}";
    const std::wstring clsid = L"{1019ADC7-17CB-4489-AFD5-6642C7400ACE}";
    const std::wstring library = L"{A470B11E-041B-407E-BE88-C2039972F999}";
    const std::wstring dual = L"{00020424-0000-0000-C000-000000000046}";
    const std::wstring dispatch = L"{00020420-0000-0000-C000-000000000046}";
    const std::wstring classKey = L"\\CLSID\\" + clsid;
    const std::wstring client = L"\\Interface\\{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}";
    const std::wstring events = L"\\Interface\\{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}";
    const std::wstring typeLib = L"\\TypeLib\\" + library;
    return LowerPaths({
        {L"\\AppID\\" + appId + L"\\", L""},
        {L"\\AppID\\" + appId + L"\\@", L"dtOIEx64"},
        {L"\\AppID\\dtOIEx64.EXE\\", L""},
        {L"\\AppID\\dtOIEx64.EXE\\@AppID", appId},
        {L"\\dtOIEx64.MapiClient.1\\", L""},
        {L"\\dtOIEx64.MapiClient.1\\@", L"MapiClient Class"},
        {L"\\dtOIEx64.MapiClient.1\\CLSID\\", L""},
        {L"\\dtOIEx64.MapiClient.1\\CLSID\\@", clsid},
        {L"\\dtOIEx64.MapiClient\\", L""},
        {L"\\dtOIEx64.MapiClient\\@", L"MapiClient Class"},
        {L"\\dtOIEx64.MapiClient\\CLSID\\", L""},
        {L"\\dtOIEx64.MapiClient\\CLSID\\@", clsid},
        {L"\\dtOIEx64.MapiClient\\CurVer\\", L""},
        {L"\\dtOIEx64.MapiClient\\CurVer\\@", L"dtOIEx64.MapiClient.1"},
        {classKey + L"\\", L""},
        {classKey + L"\\@", L"MapiClient Class"},
        {classKey + L"\\@AppID", appId},
        {classKey + L"\\ProgID\\", L""},
        {classKey + L"\\ProgID\\@", L"dtOIEx64.MapiClient.1"},
        {classKey + L"\\VersionIndependentProgID\\", L""},
        {classKey + L"\\VersionIndependentProgID\\@", L"dtOIEx64.MapiClient"},
        {classKey + L"\\Programmable\\", L""},
        {classKey + L"\\LocalServer32\\", L""},
        {classKey + L"\\LocalServer32\\@", path},
        {classKey + L"\\TypeLib\\", L""},
        {classKey + L"\\TypeLib\\@", library},
        {typeLib + L"\\", L""},
        {typeLib + L"\\1.0\\", L""},
        {typeLib + L"\\1.0\\@", L"dtOIEx64 1.0 Type Library"},
        {typeLib + L"\\1.0\\0\\", L""},
        {typeLib + L"\\1.0\\0\\win64\\", L""},
        {typeLib + L"\\1.0\\0\\win64\\@", path},
        {typeLib + L"\\1.0\\FLAGS\\", L""},
        {typeLib + L"\\1.0\\FLAGS\\@", L"8"},
        {typeLib + L"\\1.0\\HELPDIR\\", L""},
        {typeLib + L"\\1.0\\HELPDIR\\@", folder},
        {client + L"\\", L""},
        {client + L"\\@", L"IMapiDtClient"},
        {client + L"\\ProxyStubClsid\\", L""},
        {client + L"\\ProxyStubClsid\\@", dual},
        {client + L"\\ProxyStubClsid32\\", L""},
        {client + L"\\ProxyStubClsid32\\@", dual},
        {client + L"\\TypeLib\\", L""},
        {client + L"\\TypeLib\\@", library},
        {client + L"\\TypeLib\\@Version", L"1.0"},
        {events + L"\\", L""},
        {events + L"\\@", L"_IMapiDtClientEvents"},
        {events + L"\\ProxyStubClsid\\", L""},
        {events + L"\\ProxyStubClsid\\@", dispatch},
        {events + L"\\ProxyStubClsid32\\", L""},
        {events + L"\\ProxyStubClsid32\\@", dispatch},
        {events + L"\\TypeLib\\", L""},
        {events + L"\\TypeLib\\@", library},
        {events + L"\\TypeLib\\@Version", L"1.0"},
    });
}

// The part of a registration that 32-bit clients see in a view of their own.
RegistryListing InterfacesOf(const RegistryListing& listing)
{
    RegistryListing interfaces;
    for (const auto& [path, data] : listing)
    {
        if (path.rfind(L"\\interface\\{bceda04e-", 0) == 0 ||
            path.rfind(L"\\interface\\{f912582e-", 0) == 0)
        {
            interfaces[path] = data;
        }
    }
    return interfaces;
}

// The machine's registration: all of it, and the interfaces in the view of 32-bit clients as well.
RegistryListing RegisteredForMachine()
{
    RegistryListing all = Registered();
    for (const auto& [path, data] : InterfacesOf(Registered()))
    {
        all[L"\\wow6432node" + path] = data;
    }
    return all;
}

// Wine 8 registers a user's type library in the machine's 32-bit view as well, past the user's view of
// the registry. Can go when the tests of the user's verbs pass without it.
RegistryListing WithoutThirtyTwoBit(const RegistryListing& listing)
{
    RegistryListing rest;
    for (const auto& [path, data] : listing)
    {
        if (path.rfind(L"\\wow6432node\\", 0) != 0)
        {
            rest[path] = data;
        }
    }
    return rest;
}

std::wstring Text(const RegistryListing& listing)
{
    std::wstring text;
    for (const auto& [path, data] : listing)
    {
        text += path + L" = " + data + L"\n";
    }
    return text;
}

// Starts and ends without a registration of either kind, and with the containers in which every
// class registers: they are the system's, and stay.
class RegistrationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        Clean();
        for (const wchar_t* const container : {L"AppID", L"CLSID", L"Interface", L"TypeLib"})
        {
            HKEY key = nullptr;
            const std::wstring path = std::wstring(L"Software\\Classes\\") + container;
            ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER,
                                      path.c_str(),
                                      0,
                                      nullptr,
                                      0,
                                      KEY_READ,
                                      nullptr,
                                      &key,
                                      nullptr),
                      ERROR_SUCCESS);
            RegCloseKey(key);
        }
    }
    void TearDown() override { Clean(); }

private:
    static void Clean()
    {
        RunServer(L"-UnregServer");
        RunServer(L"-UnregServerPerUser");
    }
};
} // namespace

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

    const RegistryListing view =
        LowerPaths(ListRegistry(HKEY_LOCAL_MACHINE, L"Software\\Classes", KEY_WOW64_32KEY));

    EXPECT_EQ(Text(InterfacesOf(view)), Text(InterfacesOf(Registered())));
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
