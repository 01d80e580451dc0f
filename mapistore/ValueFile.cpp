#include "ValueFile.h"

namespace mapistore
{
namespace
{

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kPiece = 16 * 1024 * 1024;

} // namespace

bool ReadWholeFile(const std::wstring& path, std::string& content, DWORD& error)
{
    content.clear();
    error = ERROR_SUCCESS;
    HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        error = GetLastError();
        return false;
    }
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    content.resize(static_cast<size_t>(size.QuadPart));
    size_t done = 0;
    bool good = true;
    while (good && done < content.size())
    {
        const size_t left = content.size() - done;
        DWORD cb = 0;
        good = ReadFile(file,
                        content.data() + done,
                        left < kPiece ? static_cast<DWORD>(left) : kPiece,
                        &cb,
                        nullptr) != FALSE;
        if (!good)
        {
            error = GetLastError();
        }
        else if (cb == 0)
        {
            break;
        }
        done += cb;
    }
    content.resize(done);
    CloseHandle(file);
    return good;
}

std::shared_ptr<const CValueFile> CValueFile::Find(const std::wstring& folder,
                                                   const std::wstring& path)
{
    std::wstring whole = folder + L"\\" + path;
    for (wchar_t& unit : whole)
    {
        unit = unit == L'/' ? L'\\' : unit;
    }
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(whole.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        return nullptr;
    }
    const std::uint64_t cb = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
    return std::shared_ptr<const CValueFile>(new CValueFile(std::move(whole), cb));
}

std::string CValueFile::Read() const
{
    std::string content;
    DWORD error = ERROR_SUCCESS;
    if (!ReadWholeFile(m_path, content, error) || content.size() != m_cb)
    {
        throw CMapiError(MAPI_E_DISK_ERROR, L"a value's file is gone or has changed");
    }
    return content;
}

} // namespace mapistore
