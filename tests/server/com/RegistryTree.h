#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// Every key and value at and below a key, as sorted lines such as `A\B @=s:text`; empty when the key
/// is not there. `view` is KEY_WOW64_64KEY or KEY_WOW64_32KEY.
std::vector<std::wstring> RegistryLines(HKEY root,
                                        const std::wstring& path,
                                        REGSAM view = KEY_WOW64_64KEY);

/// A key below HKEY_CURRENT_USER that is empty at the start and gone at the end.
class CScratchKey final
{
public:
    CScratchKey();
    CScratchKey(const CScratchKey&) = delete;
    CScratchKey& operator=(const CScratchKey&) = delete;
    ~CScratchKey();

    /// Relative to HKEY_CURRENT_USER.
    [[nodiscard]] std::wstring Path() const { return L"Software\\dtOIEx64ScratchKey"; }
    /// Everything below, by lines that leave out the scratch key's own path.
    [[nodiscard]] std::vector<std::wstring> Lines() const
    {
        return RegistryLines(HKEY_CURRENT_USER, Path());
    }
};
