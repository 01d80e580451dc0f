#include "CrashFiles.h"

#include <windows.h>

#include <shlobj.h>

#include "Handle.h"

namespace
{

constexpr const wchar_t* kSubdirectory = L"\\Talvo Connect\\";
constexpr DWORD kCopyBlockBytes = 65536;
constexpr DWORD kShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;

} // namespace

const wchar_t* CrashPath::With(const wchar_t* name) noexcept
{
    lstrcpynW(text + cchDirectory, name, static_cast<int>(ARRAYSIZE(text) - cchDirectory));
    return text;
}

void FindCrashDirectory(CrashPath& path) noexcept
{
    path.cchDirectory = 0;
    path.text[0] = L'\0';
    if (SHGetSpecialFolderPathW(nullptr, path.text, CSIDL_APPDATA, TRUE) == FALSE)
    {
        path.text[0] = L'\0';
        return;
    }
    path.cchDirectory = static_cast<unsigned>(lstrlenW(path.text));
    path.cchDirectory = static_cast<unsigned>(lstrlenW(path.With(kSubdirectory)));
    SHCreateDirectoryExW(nullptr, path.text, nullptr);
}

void CopyTraceFile(CrashPath& path, const wchar_t* from, const wchar_t* to) noexcept
{
    static BYTE s_block[kCopyBlockBytes];
    const CFileHandle source(
        CreateFileW(path.With(from), GENERIC_READ, kShareBoth, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!source)
    {
        return;
    }
    const CFileHandle copy(
        CreateFileW(path.With(to), GENERIC_WRITE, kShareBoth, nullptr, OPEN_ALWAYS, 0, nullptr));
    if (!copy)
    {
        return;
    }
    DWORD cbRead = 0;
    while (ReadFile(source.Get(), s_block, kCopyBlockBytes, &cbRead, nullptr) != FALSE &&
           cbRead != 0)
    {
        DWORD cbWritten = 0;
        WriteFile(copy.Get(), s_block, cbRead, &cbWritten, nullptr);
    }
}
