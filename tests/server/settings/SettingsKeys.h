#pragma once

#include <windows.h>

#include <string>
#include <vector>

inline constexpr const WCHAR* kScratchKey = L"SOFTWARE\\dtOIEx64SettingsTest";
inline constexpr const WCHAR* kPolicyTestKey = L"SOFTWARE\\Policies\\VantorTalvo";

/// Writes values into the real registry, and removes them and their keys at the end of its life.
class CRegistryValues final
{
public:
    CRegistryValues() = default;
    CRegistryValues(const CRegistryValues&) = delete;
    CRegistryValues& operator=(const CRegistryValues&) = delete;
    ~CRegistryValues();

    /// `name` may be null for the key's default value. `view` as for RegOpenKeyExW, 0 for the
    /// default one.
    void Set(HKEY hive,
             const WCHAR* key,
             const WCHAR* name,
             DWORD type,
             const std::vector<BYTE>& bytes,
             REGSAM view = 0);
    void SetDword(HKEY hive, const WCHAR* key, const WCHAR* name, DWORD value, REGSAM view = 0);
    /// With its terminator.
    void SetText(
        HKEY hive, const WCHAR* key, const WCHAR* name, const std::wstring& text, REGSAM view = 0);

private:
    struct Written
    {
        HKEY hive;
        std::wstring key;
        std::wstring name;
        REGSAM view;
    };
    std::vector<Written> m_written;
};

/// The bytes of a text, without a terminator.
std::vector<BYTE> BytesOf(const std::wstring& text);
