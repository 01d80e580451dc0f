#include "RegisterUtil.h"

#include <cstring>

#include "RegKey.h"
#include "Trace.h"

namespace
{

constexpr const WCHAR* kPolicyKey = L"SOFTWARE\\Policies\\VantorTalvo";

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
    DWORD cbValue = isDword ? sizeof(DWORD) : bufferSize;
    if (RegQueryValueExW(key.Get(),
                         valueName,
                         nullptr,
                         nullptr,
                         isDword ? reinterpret_cast<BYTE*>(dwordOut) : static_cast<BYTE*>(buffer),
                         &cbValue) != ERROR_SUCCESS)
    {
        SEND_TRACE(3, kFunction, "failed 2");
        return false;
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
    CRegKey key;
    if (RegOpenKeyExW(hive, subKey, 0, KEY_READ | viewFlag, key.Put()) != ERROR_SUCCESS)
    {
        return 0;
    }
    DWORD type = REG_NONE;
    DWORD found = 0;
    DWORD cbFound = sizeof found;
    if (RegQueryValueExW(
            key.Get(), valueName, nullptr, &type, reinterpret_cast<BYTE*>(&found), &cbFound) !=
            ERROR_SUCCESS ||
        type != REG_DWORD)
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
