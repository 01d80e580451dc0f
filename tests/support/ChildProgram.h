#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// How a child program ended.
struct ChildResult
{
    DWORD exitCode; ///< kNoExit when it could not be started, or had to be ended
    std::string output;
};

inline constexpr DWORD kNoExit = 0xDEADBEEF;

/// Runs a program to its end and collects what it writes to its standard output.
/// Errors: a program that is still running after `patienceMs` is ended, and the test fails.
ChildResult RunChild(const std::wstring& path,
                     const std::vector<std::wstring>& arguments,
                     DWORD patienceMs = 120000);

/// The folder of the running test program, without a backslash at its end.
std::wstring OwnFolder();

/// A new empty folder for one test, removed with its files at the end.
class CTestFolder final
{
public:
    explicit CTestFolder(const std::wstring& name);
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;
    ~CTestFolder();

    [[nodiscard]] std::wstring File(const std::wstring& name) const
    {
        return m_path + L"\\" + name;
    }
    void CopyIn(const std::wstring& from, const std::wstring& name) const;

private:
    void Empty() const;

    std::wstring m_path;
};

/// The bytes of a file; empty when there is none.
std::string FileBytes(const std::wstring& path);
void WriteFileBytes(const std::wstring& path, const std::string& bytes);
bool FileExists(const std::wstring& path);
