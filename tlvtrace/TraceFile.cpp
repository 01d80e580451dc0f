#include "TraceFile.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>

namespace tlvtrace
{
namespace
{
// Longer than any write of a buffer takes on a disk that works.
constexpr DWORD kTurnWaitMs = 5000;
constexpr std::uint64_t kStuckFactor = 4;
// What other processes may have appended behind the lines that are looked for.
constexpr std::uint64_t kLookBack = 1024 * 1024;

// The mutex is named after the file, so that programs with different files do not wait for each other.
std::wstring TurnName(const std::wstring& path)
{
    std::wstring folded = path;
    CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    std::uint64_t hash = 14695981039346656037ULL; // FNV-1a
    for (const wchar_t letter : folded)
    {
        hash = (hash ^ static_cast<std::uint16_t>(letter)) * 1099511628211ULL;
    }
    std::array<wchar_t, 48> name{};
    _snwprintf(name.data(), name.size() - 1, L"Local\\tlvtrace-%016I64x", hash);
    return name.data();
}

bool WriteAll(HANDLE file, std::string_view lines)
{
    while (!lines.empty())
    {
        DWORD cbWritten = 0;
        if (WriteFile(file, lines.data(), static_cast<DWORD>(lines.size()), &cbWritten, nullptr) ==
                0 ||
            cbWritten == 0)
        {
            return false;
        }
        lines.remove_prefix(cbWritten);
    }
    return true;
}
// Whether the end of a file has the lines in it.
bool EndHolds(const std::wstring& path, std::string_view lines)
{
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr,
                              OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    std::string end;
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file, &size) != 0)
    {
        const auto cbFile = static_cast<std::uint64_t>(size.QuadPart);
        end.resize(static_cast<std::size_t>(std::min(cbFile, kLookBack + lines.size())));
        LARGE_INTEGER from{};
        from.QuadPart = static_cast<LONGLONG>(cbFile - end.size());
        DWORD cbRead = 0;
        if (SetFilePointerEx(file, from, nullptr, FILE_BEGIN) == 0 ||
            ReadFile(file, end.data(), static_cast<DWORD>(end.size()), &cbRead, nullptr) == 0)
        {
            cbRead = 0;
        }
        end.resize(cbRead);
    }
    CloseHandle(file);
    return end.find(lines) != std::string::npos;
}
} // namespace

std::wstring TraceDirectory()
{
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_APPDATA, TRUE) == 0)
    {
        return {};
    }
    return std::wstring(folder.data()) + L"\\Talvo Connect";
}

CTraceFile::CTraceFile(std::wstring directory, std::wstring name, const RotationLimits& limits)
    : m_directory(std::move(directory)), m_name(std::move(name)), m_limits(limits),
      m_turn(CreateMutexW(nullptr, FALSE, TurnName(m_directory + L"\\" + m_name).c_str()))
{
}

CTraceFile::~CTraceFile()
{
    if (m_turn != nullptr)
    {
        CloseHandle(m_turn);
    }
}

std::wstring CTraceFile::PathOf(unsigned age) const
{
    std::wstring path = m_directory.empty() ? m_name : m_directory + L"\\" + m_name;
    if (age != 0)
    {
        path += L"." + std::to_wstring(age);
    }
    return path + L".txt";
}

HANDLE CTraceFile::Open() const noexcept
{
    // No access beyond appending is asked for: whoever reads the file shares it for reading and
    // writing, not for deleting.
    const auto open = [this] {
        return CreateFileW(PathOf(0).c_str(),
                           FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr,
                           OPEN_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    };
    HANDLE file = open();
    if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_PATH_NOT_FOUND)
    {
        SHCreateDirectoryExW(nullptr, m_directory.c_str(), nullptr);
        file = open();
    }
    return file;
}

void CTraceFile::Rotate() const noexcept
{
    for (unsigned age = m_limits.olderFiles; age != 0; --age)
    {
        MoveFileExW(PathOf(age - 1).c_str(), PathOf(age).c_str(), MOVEFILE_REPLACE_EXISTING);
    }
}

bool CTraceFile::AppendLocked(std::string_view lines) const noexcept
{
    HANDLE file = Open();
    LARGE_INTEGER size{};
    if (file != INVALID_HANDLE_VALUE && GetFileSizeEx(file, &size) != 0 && size.QuadPart != 0 &&
        static_cast<std::uint64_t>(size.QuadPart) + lines.size() > m_limits.cbFile)
    {
        CloseHandle(file);
        Rotate();
        file = Open();
    }
    if (file == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    const bool fits = GetFileSizeEx(file, &size) == 0 ||
                      static_cast<std::uint64_t>(size.QuadPart) < kStuckFactor * m_limits.cbFile;
    const bool written = fits && WriteAll(file, lines);
    CloseHandle(file);
    return written;
}

bool CTraceFile::Append(std::string_view lines) noexcept
{
    // A process that died in its turn leaves the mutex abandoned, which is as good as free.
    const DWORD turn = m_turn == nullptr ? WAIT_OBJECT_0 : WaitForSingleObject(m_turn, kTurnWaitMs);
    if (turn != WAIT_OBJECT_0 && turn != WAIT_ABANDONED)
    {
        return false;
    }
    const bool written = AppendLocked(lines);
    if (m_turn != nullptr)
    {
        ReleaseMutex(m_turn);
    }
    return written;
}

bool CTraceFile::Holds(std::string_view lines) noexcept
{
    try
    {
        // Another process may have rotated the file meanwhile.
        return EndHolds(PathOf(0), lines) || EndHolds(PathOf(1), lines);
    }
    catch (const std::exception&)
    {
        return false;
    }
}
} // namespace tlvtrace
