#include "SettingsKeys.h"

#include <gtest/gtest.h>

#include <cstring>

#include "RegKey.h"

CRegistryValues::~CRegistryValues()
{
    for (const Written& written : m_written)
    {
        {
            CRegKey key;
            if (RegOpenKeyExW(written.hive,
                              written.key.c_str(),
                              0,
                              KEY_ALL_ACCESS | written.view,
                              key.Put()) == ERROR_SUCCESS)
            {
                RegDeleteValueW(key.Get(), written.name.c_str());
            }
        }
        // Does nothing while the key holds other keys.
        RegDeleteKeyExW(written.hive, written.key.c_str(), written.view, 0);
    }
}

void CRegistryValues::Set(HKEY hive,
                          const WCHAR* key,
                          const WCHAR* name,
                          DWORD type,
                          const std::vector<BYTE>& bytes,
                          REGSAM view)
{
    CRegKey opened;
    ASSERT_EQ(RegCreateKeyExW(
                  hive, key, 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, opened.Put(), nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(
        RegSetValueExW(opened.Get(), name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size())),
        ERROR_SUCCESS);
    m_written.push_back({hive, key, name != nullptr ? name : L"", view});
}

void CRegistryValues::SetDword(
    HKEY hive, const WCHAR* key, const WCHAR* name, DWORD value, REGSAM view)
{
    std::vector<BYTE> bytes(sizeof(value));
    std::memcpy(bytes.data(), &value, sizeof(value));
    Set(hive, key, name, REG_DWORD, bytes, view);
}

void CRegistryValues::SetText(
    HKEY hive, const WCHAR* key, const WCHAR* name, const std::wstring& text, REGSAM view)
{
    Set(hive, key, name, REG_SZ, BytesOf(text + L'\0'), view);
}

std::vector<BYTE> BytesOf(const std::wstring& text)
{
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}
