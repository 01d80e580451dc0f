#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// A folder of its own for one test, removed at its end.
class CTraceFolder
{
public:
    CTraceFolder();
    CTraceFolder(const CTraceFolder&) = delete;
    CTraceFolder& operator=(const CTraceFolder&) = delete;
    ~CTraceFolder();

    [[nodiscard]] const std::wstring& Path() const { return m_path; }

private:
    std::wstring m_path;
};

/// Full paths of the files in a folder that match a pattern, in order of their names.
std::vector<std::wstring> FilesIn(const std::wstring& folder, const std::wstring& pattern);

/// The whole file; opened as the crash copy opens it, shared for reading and writing.
std::string ContentOf(const std::wstring& path);

/// Lines of all trace files in a folder that hold `mark`.
std::vector<std::string> LinesWith(const std::wstring& folder, const std::string& mark);

/// A text that no other run has used.
std::string UniqueMark();

/// Starts tlvtrace_writer.exe, which stands beside this test.
HANDLE StartWriter(const std::wstring& arguments);

/// Waits for a process to end, closes the handle and returns its exit code.
DWORD ExitCodeOf(HANDLE process);

/// Path of tlvtraceX64.dll in the build.
std::wstring LibraryPath();
