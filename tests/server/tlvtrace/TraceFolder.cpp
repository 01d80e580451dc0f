#include "TraceFolder.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace
{
std::wstring OwnFolder()
{
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring full(path.data());
    return full.substr(0, full.rfind(L'\\'));
}

LONG g_number = 0;
} // namespace

std::string UniqueMark()
{
    return "mark-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(GetTickCount64()) + "-" +
           std::to_string(InterlockedIncrement(&g_number)) + "-";
}

CTraceFolder::CTraceFolder()
{
    std::array<wchar_t, MAX_PATH> temp{};
    GetTempPathW(static_cast<DWORD>(temp.size()), temp.data());
    const std::string mark = UniqueMark();
    m_path = temp.data() + std::wstring(L"tlvtrace-") + std::wstring(mark.begin(), mark.end());
}

CTraceFolder::~CTraceFolder()
{
    for (const std::wstring& file : FilesIn(m_path, L"*"))
    {
        DeleteFileW(file.c_str());
    }
    RemoveDirectoryW(m_path.c_str());
}

std::vector<std::wstring> FilesIn(const std::wstring& folder, const std::wstring& pattern)
{
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW found{};
    HANDLE search = FindFirstFileW((folder + L"\\" + pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return files;
    }
    do
    {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        {
            files.push_back(folder + L"\\" + found.cFileName);
        }
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
    std::sort(files.begin(), files.end());
    return files;
}

std::string ContentOf(const std::wstring& path)
{
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    std::string content;
    if (file == INVALID_HANDLE_VALUE)
    {
        return content;
    }
    std::vector<char> block(65536);
    DWORD cbRead = 0;
    while (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &cbRead, nullptr) != 0 &&
           cbRead != 0)
    {
        content.append(block.data(), cbRead);
    }
    CloseHandle(file);
    return content;
}

std::vector<std::string> LinesWith(const std::wstring& folder, const std::string& mark)
{
    std::vector<std::string> lines;
    for (const std::wstring& file : FilesIn(folder, L"strato-mapi*.txt"))
    {
        std::istringstream content(ContentOf(file));
        for (std::string line; std::getline(content, line);)
        {
            if (line.find(mark) != std::string::npos)
            {
                lines.push_back(line);
            }
        }
    }
    return lines;
}

HANDLE StartWriter(const std::wstring& arguments)
{
    std::wstring commandLine = L"\"" + OwnFolder() + L"\\tlvtrace_writer.exe\" " + arguments;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr,
                       commandLine.data(),
                       nullptr,
                       nullptr,
                       FALSE,
                       0,
                       nullptr,
                       nullptr,
                       &start,
                       &process) == 0)
    {
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

DWORD ExitCodeOf(HANDLE process)
{
    DWORD code = 0xFFFFFFFF;
    if (process != nullptr)
    {
        WaitForSingleObject(process, INFINITE);
        GetExitCodeProcess(process, &code);
        CloseHandle(process);
    }
    return code;
}

std::wstring LibraryPath()
{
    const std::wstring folder = OwnFolder();
    return folder.substr(0, folder.rfind(L'\\')) + L"\\tlvtraceX64.dll";
}
