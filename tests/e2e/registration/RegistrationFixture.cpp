#include "RegistrationFixture.h"

#include <algorithm>
#include <cwctype>

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

RegistryListing List(HKEY root, REGSAM view)
{
    return LowerPaths(ListRegistry(root, L"Software\\Classes", view));
}

std::wstring ServerPath()
{
    return BuildPath(L"dtOIEx64.exe");
}

void TakeRegistrationsAway()
{
    RunServer(L"-UnregServer");
    RunServer(L"-UnregServerPerUser");
}
} // namespace

ClassesListing::ClassesListing()
    : machine(List(HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY)),
      machine32(List(HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY)),
      user(List(HKEY_CURRENT_USER, KEY_WOW64_64KEY)),
      user32(List(HKEY_CURRENT_USER, KEY_WOW64_32KEY))
{
}

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

std::wstring Text(const RegistryListing& listing)
{
    std::wstring text;
    for (const auto& [path, data] : listing)
    {
        text += path + L" = " + data + L"\n";
    }
    return text;
}

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

RegistryListing RegisteredForMachine()
{
    RegistryListing all = Registered();
    for (const auto& [path, data] : InterfacesOf(Registered()))
    {
        all[L"\\wow6432node" + path] = data;
    }
    return all;
}

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

DWORD RunServer(const std::wstring& arguments)
{
    const ProgramResult result = RunProgram(ServerPath(), arguments);
    EXPECT_EQ(result.errors, "") << "of the server itself nothing is written there";
    return result.exitCode;
}

void RegistrationTest::SetUp()
{
    TakeRegistrationsAway();
    for (const wchar_t* const container : {L"AppID", L"CLSID", L"Interface", L"TypeLib"})
    {
        HKEY key = nullptr;
        const std::wstring path = std::wstring(L"Software\\Classes\\") + container;
        ASSERT_EQ(
            RegCreateKeyExW(
                HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr),
            ERROR_SUCCESS);
        RegCloseKey(key);
    }
}

void RegistrationTest::TearDown()
{
    TakeRegistrationsAway();
}
