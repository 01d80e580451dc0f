#include "RegistryTree.h"

#include <algorithm>
#include <cstdio>

namespace
{

std::wstring DataText(DWORD type, const std::vector<BYTE>& data)
{
    const auto* const text = reinterpret_cast<const wchar_t*>(data.data());
    const std::size_t cch = data.size() / sizeof(wchar_t);
    std::wstring line;
    switch (type)
    {
    case REG_SZ:
        return L"s:" + std::wstring(text, cch > 0 ? cch - 1 : 0);
    case REG_EXPAND_SZ:
        return L"e:" + std::wstring(text, cch > 0 ? cch - 1 : 0);
    case REG_MULTI_SZ:
        line = L"m:" + std::wstring(text, cch);
        std::replace(line.begin(), line.end(), L'\0', L'|');
        return line;
    case REG_DWORD:
        return L"d:" + std::to_wstring(*reinterpret_cast<const DWORD*>(data.data()));
    default:
        line = L"b:";
        for (const BYTE byte : data)
        {
            wchar_t digits[3]{};
            std::swprintf(digits, 3, L"%02X", byte);
            line += digits;
        }
        return line;
    }
}

void AddValues(HKEY key, const std::wstring& path, std::vector<std::wstring>& lines)
{
    for (DWORD i = 0;; i++)
    {
        wchar_t name[256]{};
        DWORD cchName = 256;
        std::vector<BYTE> data(4096);
        auto cbData = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueW(key, i, name, &cchName, nullptr, &type, data.data(), &cbData) !=
            ERROR_SUCCESS)
        {
            return;
        }
        data.resize(cbData);
        const std::wstring shown = cchName == 0 ? L"@" : std::wstring(name);
        lines.push_back(path + L" " + shown + L"=" + DataText(type, data));
    }
}

void AddKey(HKEY key, const std::wstring& path, std::vector<std::wstring>& lines)
{
    lines.push_back(path);
    AddValues(key, path, lines);
    for (DWORD i = 0;; i++)
    {
        wchar_t name[256]{};
        DWORD cchName = 256;
        if (RegEnumKeyExW(key, i, name, &cchName, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
        {
            return;
        }
        HKEY child = nullptr;
        if (RegOpenKeyExW(key, name, 0, KEY_READ, &child) == ERROR_SUCCESS)
        {
            AddKey(child, path.empty() ? name : path + L"\\" + name, lines);
            RegCloseKey(child);
        }
    }
}

} // namespace

std::vector<std::wstring> RegistryLines(HKEY root, const std::wstring& path, REGSAM view)
{
    std::vector<std::wstring> lines;
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) == ERROR_SUCCESS)
    {
        AddKey(key, L"", lines);
        RegCloseKey(key);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

CScratchKey::CScratchKey()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, Path().c_str());
}

CScratchKey::~CScratchKey()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, Path().c_str());
}
