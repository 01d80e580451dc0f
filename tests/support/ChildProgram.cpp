#include "ChildProgram.h"

#include <gtest/gtest.h>

#include "Handle.h"

namespace
{

CFileHandle OpenTemporary()
{
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"dt", 0, path);
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    return CFileHandle(CreateFileW(path,
                                   GENERIC_READ | GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                   &inherit,
                                   CREATE_ALWAYS,
                                   FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                                   nullptr));
}

std::string ReadAll(HANDLE file)
{
    std::string bytes;
    char block[4096];
    DWORD got = 0;
    while (ReadFile(file, block, sizeof block, &got, nullptr) != FALSE && got != 0)
    {
        bytes.append(block, got);
    }
    return bytes;
}

} // namespace

ChildResult RunChild(const std::wstring& path,
                     const std::vector<std::wstring>& arguments,
                     DWORD patienceMs)
{
    std::wstring commandLine = L"\"" + path + L"\"";
    for (const std::wstring& argument : arguments)
    {
        commandLine += L" \"" + argument + L"\"";
    }
    const CFileHandle output = OpenTemporary();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = output.Get();
    startup.hStdError = output.Get();
    PROCESS_INFORMATION process{};
    if (CreateProcessW(path.c_str(),
                       commandLine.data(),
                       nullptr,
                       nullptr,
                       TRUE,
                       0,
                       nullptr,
                       nullptr,
                       &startup,
                       &process) == FALSE)
    {
        ADD_FAILURE() << "the child did not start, error " << GetLastError();
        return {kNoExit, {}};
    }
    const CHandle child(process.hProcess);
    const CHandle thread(process.hThread);
    DWORD exitCode = kNoExit;
    if (WaitForSingleObject(child.Get(), patienceMs) == WAIT_OBJECT_0)
    {
        GetExitCodeProcess(child.Get(), &exitCode);
    }
    else
    {
        ADD_FAILURE() << "the child did not end";
        TerminateProcess(child.Get(), kNoExit);
        WaitForSingleObject(child.Get(), patienceMs);
    }
    SetFilePointer(output.Get(), 0, nullptr, FILE_BEGIN);
    return {exitCode, ReadAll(output.Get())};
}

std::wstring OwnFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring whole(path);
    return whole.substr(0, whole.rfind(L'\\'));
}

CTestFolder::CTestFolder(const std::wstring& name) : m_path(OwnFolder() + L"\\" + name)
{
    CreateDirectoryW(m_path.c_str(), nullptr);
    Empty();
}

CTestFolder::~CTestFolder()
{
    Empty();
    RemoveDirectoryW(m_path.c_str());
}

void CTestFolder::CopyIn(const std::wstring& from, const std::wstring& name) const
{
    EXPECT_NE(CopyFileW(from.c_str(), File(name).c_str(), FALSE), FALSE);
}

void CTestFolder::Empty() const
{
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(File(L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return;
    }
    do
    {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        {
            DeleteFileW(File(found.cFileName).c_str());
        }
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);
}

std::string FileBytes(const std::wstring& path)
{
    const CFileHandle file(CreateFileW(path.c_str(),
                                       GENERIC_READ,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr,
                                       OPEN_EXISTING,
                                       0,
                                       nullptr));
    return file ? ReadAll(file.Get()) : std::string();
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes)
{
    const CFileHandle file(CreateFileW(
        path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr));
    ASSERT_TRUE(static_cast<bool>(file));
    DWORD written = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ASSERT_EQ(written, bytes.size());
}

bool FileExists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}
