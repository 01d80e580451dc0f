#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

/// Registers a MAPI library as the machine's mail client for the time of a test program.
///
/// The system's MAPI32.dll reads the registration when it is loaded, which is before the first line of
/// a program that links it. So the first run of the program registers and starts a second one, which
/// tests and takes the registration back: other programs of the same machine run without a library.
class CMailClientEnvironment final : public testing::Environment
{
public:
    /// `folder` is relative to the folder of the program, empty for that folder itself.
    CMailClientEnvironment(std::wstring folder, std::wstring file)
        : m_folder(std::move(folder)), m_file(std::move(file))
    {
    }

    void SetUp() override;
    void TearDown() override;

private:
    [[nodiscard]] std::wstring LibraryPath() const;
    void Register() const;
    static void RunAgain();

    std::wstring m_folder;
    std::wstring m_file;
};

/// The folder of the program, without a separator at its end.
std::wstring ProgramFolder();

/// Sets a text value under HKEY_LOCAL_MACHINE; a null name is the default value.
void SetMachineText(const wchar_t* key,
                    const wchar_t* name,
                    const std::wstring& text,
                    DWORD type = REG_SZ);
