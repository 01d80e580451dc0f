#include "FileVersion.h"

#include <windows.h>

#include <winver.h>

#include <cstdio>
#include <iterator>
#include <vector>

int GetFileVersionText(const WCHAR* path, WString& text)
{
    DWORD ignored = 0;
    const DWORD cbVersion = GetFileVersionInfoSizeW(path, &ignored);
    if (cbVersion == 0)
    {
        return 0;
    }
    // Twice the size: the look-ups below may put converted texts behind the block.
    std::vector<BYTE> version(static_cast<std::size_t>(cbVersion) * 2);
    if (!GetFileVersionInfoW(path, 0, static_cast<DWORD>(version.size()), version.data()))
    {
        return 0;
    }
    struct Translation
    {
        WORD language;
        WORD codePage;
    };
    Translation* translation = nullptr;
    UINT count = 0;
    if (!VerQueryValueW(version.data(),
                        L"\\VarFileInfo\\Translation",
                        reinterpret_cast<void**>(&translation),
                        &count) ||
        count < sizeof(Translation))
    {
        return 0;
    }
    WCHAR name[64] = {};
    std::swprintf(name,
                  std::size(name),
                  L"\\StringFileInfo\\%04x%04x\\FileVersion",
                  static_cast<unsigned>(translation->language),
                  static_cast<unsigned>(translation->codePage));
    WCHAR* found = nullptr;
    if (!VerQueryValueW(version.data(), name, reinterpret_cast<void**>(&found), &count) ||
        found == nullptr)
    {
        return 0;
    }
    // The count includes the terminator, where there is one.
    text.assign(found, wcsnlen(found, count));
    return 1;
}
