#include "OsClass.h"

namespace
{

OsClass ClassifyOldFamily(DWORD majorVersion, DWORD minorVersion) noexcept
{
    if (majorVersion != 4)
    {
        return OsClass::Other;
    }
    switch (minorVersion)
    {
    case 0:
        return OsClass::Windows95;
    case 10:
        return OsClass::Windows98;
    case 90:
        return OsClass::WindowsMe;
    default:
        return OsClass::Other;
    }
}

OsClass ClassifyNt(DWORD majorVersion, DWORD minorVersion) noexcept
{
    if (majorVersion < 5)
    {
        return OsClass::OldNt;
    }
    if (majorVersion >= 6)
    {
        return OsClass::VistaOrLater;
    }
    switch (minorVersion)
    {
    case 0:
        return OsClass::Windows2000;
    case 1:
        return OsClass::WindowsXp;
    default:
        return OsClass::Other;
    }
}

OsClass AskSystem() noexcept
{
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXW);
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)))
    {
        version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
        if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)))
        {
            return OsClass::Other;
        }
    }
    return ClassifyOs(version.dwPlatformId, version.dwMajorVersion, version.dwMinorVersion);
}

} // namespace

OsClass ClassifyOs(DWORD platformId, DWORD majorVersion, DWORD minorVersion) noexcept
{
    switch (platformId)
    {
    case VER_PLATFORM_WIN32_WINDOWS:
        return ClassifyOldFamily(majorVersion, minorVersion);
    case VER_PLATFORM_WIN32_NT:
        return ClassifyNt(majorVersion, minorVersion);
    default:
        return OsClass::Other;
    }
}

OsClass CurrentOsClass() noexcept
{
    static const OsClass kCurrent = AskSystem();
    return kCurrent;
}
