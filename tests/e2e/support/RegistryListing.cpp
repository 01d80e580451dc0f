#include "RegistryListing.h"

#include <vector>

namespace
{
std::wstring DataText(DWORD type, const std::vector<BYTE>& data)
{
    if (type == REG_SZ || type == REG_EXPAND_SZ)
    {
        std::wstring text(reinterpret_cast<const wchar_t*>(data.data()),
                          data.size() / sizeof(wchar_t));
        while (!text.empty() && text.back() == L'\0')
        {
            text.pop_back();
        }
        return text;
    }
    std::wstring text = L"(type " + std::to_wstring(type) + L")";
    for (const BYTE byte : data)
    {
        text += L" " + std::to_wstring(byte);
    }
    return text;
}

void ListKey(HKEY key, const std::wstring& path, RegistryListing& listing)
{
    listing[path + L"\\"] = L"";
    for (DWORD index = 0;; ++index)
    {
        wchar_t name[512];
        DWORD cchName = 512;
        DWORD type = 0;
        DWORD cbData = 0;
        LSTATUS status =
            RegEnumValueW(key, index, name, &cchName, nullptr, &type, nullptr, &cbData);
        if (status != ERROR_SUCCESS)
        {
            break;
        }
        std::vector<BYTE> data(cbData);
        RegQueryValueExW(key, name, nullptr, &type, data.data(), &cbData);
        listing[path + L"\\@" + name] = DataText(type, data);
    }
    for (DWORD index = 0;; ++index)
    {
        wchar_t name[512];
        DWORD cchName = 512;
        if (RegEnumKeyExW(key, index, name, &cchName, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
        {
            break;
        }
        HKEY child = nullptr;
        if (RegOpenKeyExW(key, name, REG_OPTION_OPEN_LINK, KEY_READ, &child) == ERROR_SUCCESS)
        {
            ListKey(child, path + L"\\" + name, listing);
            RegCloseKey(child);
        }
    }
}
} // namespace

RegistryListing ListRegistry(HKEY root, const std::wstring& path, REGSAM view)
{
    RegistryListing listing;
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) == ERROR_SUCCESS)
    {
        ListKey(key, L"", listing);
        RegCloseKey(key);
    }
    return listing;
}

RegistryListing Added(const RegistryListing& before, const RegistryListing& after)
{
    RegistryListing added;
    for (const auto& [path, data] : after)
    {
        const auto found = before.find(path);
        if (found == before.end() || found->second != data)
        {
            added[path] = data;
        }
    }
    return added;
}
