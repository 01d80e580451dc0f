#include "RegisterUtil.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <span>
#include <vector>

#include "OsClass.h"
#include "RegKey.h"
#include "RegValue.h"
#include "Trace.h"
#include "UserProfile.h"

namespace
{

constexpr const WCHAR* kPolicyKey = L"SOFTWARE\\Policies\\VantorTalvo";

/// The hive in which the logged-on user's settings are found.
HKEY HiveOfLogonUser(HKEY hive) noexcept
{
    const bool isReplaced = hive == HKEY_CURRENT_USER && CurrentOsClass() == OsClass::VistaOrLater;
    return isReplaced ? CUserProfile::RootKey() : hive;
}

/// Reads at most `cb` bytes of a value, or only its type and size without a buffer. `cb` becomes the
/// number of bytes.
bool ReadValue(HKEY hive,
               const WCHAR* subKey,
               const WCHAR* valueName,
               REGSAM viewFlag,
               DWORD& type,
               BYTE* bytes,
               DWORD& cb) noexcept
{
    CRegKey key;
    return RegOpenKeyExW(HiveOfLogonUser(hive), subKey, 0, KEY_READ | viewFlag, key.Put()) ==
               ERROR_SUCCESS &&
           RegQueryValueExW(key.Get(), valueName, nullptr, &type, bytes, &cb) == ERROR_SUCCESS;
}

} // namespace

bool CRegisterUtil::ReadReg(HKEY hive,
                            const WCHAR* subKey,
                            const WCHAR* valueName,
                            void* buffer,
                            DWORD bufferSize,
                            DWORD* dwordOut,
                            int wantDword)
{
    constexpr const char* kFunction = "CRegisterUtil::ReadReg";
    if (buffer != nullptr)
    {
        std::memset(buffer, 0, bufferSize);
    }
    CRegKey key;
    if (RegOpenKeyExW(hive, subKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
    {
        SEND_TRACE(3, kFunction, "failed 1");
        return false;
    }
    const bool isDword = wantDword != 0;
    DWORD found = 0; // a value of fewer bytes leaves the rest zero
    DWORD cbValue = isDword ? sizeof(found) : bufferSize;
    if (RegQueryValueExW(key.Get(),
                         valueName,
                         nullptr,
                         nullptr,
                         isDword ? reinterpret_cast<BYTE*>(&found) : static_cast<BYTE*>(buffer),
                         &cbValue) != ERROR_SUCCESS)
    {
        SEND_TRACE(3, kFunction, "failed 2");
        return false;
    }
    if (isDword && dwordOut != nullptr)
    {
        *dwordOut = found;
    }
    return true;
}

bool CRegisterUtil::WriteReg(HKEY hive,
                             const WCHAR* subKey,
                             const WCHAR* valueName,
                             DWORD type,
                             const void* data,
                             DWORD size)
{
    CRegKey key;
    if (RegOpenKeyExW(hive, subKey, 0, KEY_READ | KEY_WRITE, key.Put()) != ERROR_SUCCESS)
    {
        (void)RegCreateKeyExW(
            hive, subKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr);
    }
    if (key)
    {
        (void)RegSetValueExW(key.Get(), valueName, 0, type, static_cast<const BYTE*>(data), size);
    }
    return true;
}

int ReadPolicyDword(
    HKEY hive, const WCHAR* subKey, const WCHAR* valueName, DWORD& value, REGSAM viewFlag)
{
    DWORD type = REG_NONE;
    std::array<BYTE, sizeof(DWORD)> bytes{};
    DWORD cb = sizeof(bytes);
    if (!ReadValue(hive, subKey, valueName, viewFlag, type, bytes.data(), cb))
    {
        return 0;
    }
    std::uint32_t found = 0;
    if (!regvalue::TakeDword(type, {bytes.data(), cb}, found))
    {
        return 0;
    }
    value = found;
    return 1;
}

bool ReadPolicyFeature(const WCHAR* valueName)
{
    DWORD value = 0;
    for (HKEY const hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        for (const REGSAM view : {REGSAM{0}, REGSAM{KEY_WOW64_32KEY}, REGSAM{KEY_WOW64_64KEY}})
        {
            if (ReadPolicyDword(hive, kPolicyKey, valueName, value, view) != 0)
            {
                break;
            }
        }
    }
    return value == 1;
}

int GetRegValueSize(HKEY hive, const WCHAR* subKey, const WCHAR* valueName, REGSAM viewFlag)
{
    DWORD type = REG_NONE;
    DWORD cb = 0;
    if (!ReadValue(hive, subKey, valueName, viewFlag, type, nullptr, cb) || cb > INT_MAX)
    {
        return -1;
    }
    return static_cast<int>(cb);
}

int RegValueToBuffer(HKEY hive,
                     const WCHAR* subKey,
                     const WCHAR* valueName,
                     void* buffer,
                     DWORD size,
                     REGSAM viewFlag)
{
    DWORD type = REG_NONE;
    DWORD cb = size;
    // Never empty: without a buffer the platform answers the size of the value alone.
    std::vector<BYTE> bytes(static_cast<std::size_t>(size) + 1);
    if (buffer == nullptr ||
        !ReadValue(hive, subKey, valueName, viewFlag, type, bytes.data(), cb) || type != REG_SZ)
    {
        return 0;
    }
    std::copy_n(bytes.data(), cb, static_cast<BYTE*>(buffer));
    return 1;
}

int ReadRegString(
    HKEY hive, const WCHAR* subKey, const WCHAR* valueName, WString& text, REGSAM viewFlag)
{
    text.clear();
    const int size = GetRegValueSize(hive, subKey, valueName, viewFlag);
    if (size < 0)
    {
        return 0;
    }
    std::vector<BYTE> bytes(static_cast<std::size_t>(size) + sizeof(WCHAR));
    if (RegValueToBuffer(
            hive, subKey, valueName, bytes.data(), static_cast<DWORD>(size), viewFlag) == 0)
    {
        return 0;
    }
    const std::span<const BYTE> value(bytes.data(), static_cast<std::size_t>(size));
    return regvalue::TakeText(REG_SZ, value, text) ? 1 : 0;
}
